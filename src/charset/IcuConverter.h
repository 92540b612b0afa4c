// Owned ICU converters, and a pool that spares opening one per call.
#pragma once

#include <unicode/ucnv.h>

#include <array>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace vnbytstr::detail {

struct ConverterCloser {
    void operator()(UConverter* converter) const noexcept { ucnv_close(converter); }
};
using ConverterPtr = std::unique_ptr<UConverter, ConverterCloser>;

/// The converter of that name, null when ICU has none. A lack of memory throws std::bad_alloc.
ConverterPtr OpenConverter(const char* name);

/// Idle converters of one character set. A lease takes one out (a fresh one when all are in use)
/// and puts it back, reset. Leases may be taken from several threads; each is used by one at a
/// time.
class ConverterPool {
public:
    /// `prepare` is run once on every converter opened, to set its callbacks.
    explicit ConverterPool(std::string name, void (*prepare)(UConverter*) = nullptr)
        : m_name(std::move(name)), m_prepare(prepare) {}

    class Lease {
    public:
        Lease(ConverterPool& pool, ConverterPtr converter)
            : m_pool(&pool), m_converter(std::move(converter)) {}
        ~Lease() {
            if (m_converter)
                m_pool->Return(std::move(m_converter));
        }
        Lease(Lease&&) noexcept = default;
        Lease& operator=(Lease&&) = delete;
        Lease(const Lease&) = delete;
        Lease& operator=(const Lease&) = delete;

        /// Null when ICU has no such converter.
        UConverter* get() const noexcept { return m_converter.get(); }

    private:
        ConverterPool* m_pool;
        ConverterPtr m_converter;
    };

    Lease Borrow();
    const std::string& Name() const noexcept { return m_name; }

private:
    static constexpr std::size_t kMaxIdle = 8; // what one program's threads use at a time

    void Return(ConverterPtr converter) noexcept;

    std::string m_name;
    void (*m_prepare)(UConverter*);
    std::mutex m_mutex;
    std::array<ConverterPtr, kMaxIdle> m_idle; // the first m_idleCount of them
    std::size_t m_idleCount = 0;
};

} // namespace vnbytstr::detail
