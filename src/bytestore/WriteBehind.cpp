#include "src/bytestore/WriteBehind.h"

#include <algorithm>
#include <cassert>
#include <new>
#include <utility>

namespace vnbytstr::detail {

WriteBehind::~WriteBehind() {
    for (BYTE* buffer : m_buffers)
        delete[] buffer;
}

std::span<const std::span<const BYTE>> WriteBehind::Buffers() noexcept {
    for (std::size_t i = 0; i < m_count; ++i)
        m_spans[i] = {m_buffers[i], CBytePage::m_dwPageSize};
    return std::span(m_spans).first(m_count);
}

const BYTE* WriteBehind::Find(DWORD number) const noexcept {
    return number >= m_first && number - m_first < m_count ? m_buffers[number - m_first] : nullptr;
}

bool WriteBehind::Take(DWORD number, BYTE*& buffer) noexcept {
    assert(!IsFull() && (IsEmpty() || number == m_first + m_count));
    if (!m_buffers[m_count])
        m_buffers[m_count] = new (std::nothrow) BYTE[CBytePage::m_dwPageSize];
    if (!m_buffers[m_count])
        return false;
    if (IsEmpty())
        m_first = number;
    std::swap(m_buffers[m_count++], buffer);
    return true;
}

void WriteBehind::DropFrom(DWORD number) noexcept {
    if (!IsEmpty())
        m_count = number <= m_first ? 0 : std::min<std::size_t>(m_count, number - m_first);
}

} // namespace vnbytstr::detail
