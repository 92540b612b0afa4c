#include "platform/system/IcuConverterInternal.h"

namespace vnbytstr::detail {

namespace {
constexpr std::size_t kMostIdle = 8; // what one program's threads use at a time
}

ConverterPtr OpenConverter(const char* name) {
    UErrorCode error = U_ZERO_ERROR;
    ConverterPtr converter(ucnv_open(name, &error));
    if (U_FAILURE(error))
        converter.reset();
    return converter;
}

ConverterPool::Lease ConverterPool::Borrow() {
    {
        const std::lock_guard lock(m_mutex);
        if (!m_idle.empty()) {
            ConverterPtr converter = std::move(m_idle.back());
            m_idle.pop_back();
            return {*this, std::move(converter)};
        }
    }
    ConverterPtr converter = OpenConverter(m_name.c_str());
    if (converter && m_prepare)
        m_prepare(converter.get());
    return {*this, std::move(converter)};
}

void ConverterPool::Return(ConverterPtr converter) {
    ucnv_reset(converter.get());
    const std::lock_guard lock(m_mutex);
    if (m_idle.size() < kMostIdle)
        m_idle.push_back(std::move(converter));
}

} // namespace vnbytstr::detail
