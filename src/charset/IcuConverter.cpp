#include "src/charset/IcuConverter.h"

#include <new>

namespace vnbytstr::detail {

ConverterPtr OpenConverter(const char* name) {
    UErrorCode error = U_ZERO_ERROR;
    ConverterPtr converter(ucnv_open(name, &error));
    if (error == U_MEMORY_ALLOCATION_ERROR)
        throw std::bad_alloc();
    if (U_FAILURE(error))
        converter.reset();
    return converter;
}

ConverterPool::Lease ConverterPool::Borrow() {
    {
        const std::lock_guard lock(m_mutex);
        if (m_idleCount > 0)
            return {*this, std::move(m_idle[--m_idleCount])};
    }
    ConverterPtr converter = OpenConverter(m_name.c_str());
    if (converter && m_prepare)
        m_prepare(converter.get());
    return {*this, std::move(converter)};
}

void ConverterPool::Return(ConverterPtr converter) noexcept {
    ucnv_reset(converter.get());
    const std::lock_guard lock(m_mutex);
    if (m_idleCount < kMaxIdle)
        m_idle[m_idleCount++] = std::move(converter);
}

} // namespace vnbytstr::detail
