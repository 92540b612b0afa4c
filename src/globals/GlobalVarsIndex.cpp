#include "src/globals/BuiltInVars.h"
#include "src/globals/GlobalVarsInternal.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <functional>
#include <utility>

namespace {

DWORD HashOf(std::string_view key) noexcept {
    return static_cast<DWORD>(std::hash<std::string_view>()(key));
}

} // namespace

namespace vnbytstr::detail {

std::pair<CGlobalVar*, DWORD> VariablePool::Make(const CString& name, const CString& value) {
    if (m_free.empty()) {
        if (m_used / kSlab == m_slabs.size()) {
            m_free.reserve(m_used + kSlab);
            m_slabs.push_back(std::make_unique<Place[]>(kSlab));
        }
        m_free.push_back(m_used++);
    }
    const DWORD number = m_free.back();
    CGlobalVar* const var = new (&m_slabs[number / kSlab][number % kSlab]) CGlobalVar(name, value);
    m_free.pop_back();
    return {var, number};
}

void VariablePool::Destroy(DWORD number) noexcept {
    std::destroy_at(&At(number));
    m_free.push_back(number);
}

} // namespace vnbytstr::detail

void CGlobalVar::Key::Set(std::string_view key) {
    assert(m_length == 0);
    char* target = m_short;
    if (key.size() > sizeof m_short) {
        target = new char[key.size()];
        std::memcpy(m_short, &target, sizeof target);
    }
    std::memcpy(target, key.data(), key.size());
    m_length = static_cast<DWORD>(key.size());
}

CGlobalVar::Key::~Key() {
    if (IsLong())
        delete[] Long();
}

void CGlobalVars::SIndex::Clear() noexcept {
    std::fill(m_slots.begin(), m_slots.end(), Slot{});
    m_count = 0;
}

void CGlobalVars::SIndex::LearnRules() { m_collation = &vnbytstr::Collation::Current(); }

/// Each thread has its own buffer for keys, so that reading a table changes nothing shared.
std::string_view CGlobalVars::SIndex::KeyOf(std::string_view name) const {
    static thread_local std::string key;
    key.clear();
    vnbytstr::detail::WithMemoryException(
        [&] { vnbytstr::detail::AppendNameKey(*m_collation, name, key); });
    return key;
}

CGlobalVar* CGlobalVars::SIndex::Find(std::string_view key) const noexcept {
    const DWORD hash = HashOf(key);
    for (std::size_t i = hash;; ++i) {
        const Slot& slot = m_slots[i & (m_slots.size() - 1)];
        if (slot.number == kNone)
            return nullptr;
        if (slot.hash != hash)
            continue;
        CGlobalVar& var = pool.At(slot.number);
        if (var.m_key.View() == key)
            return &var;
    }
}

bool CGlobalVars::SIndex::Insert(const CGlobalVar& var) {
    if (Find(var.m_key.View()))
        return false;
    if ((m_count + 1) * 8 > m_slots.size() * 7)
        Grow();
    Put({HashOf(var.m_key.View()), var.m_dwNumber});
    ++m_count;
    return true;
}

void CGlobalVars::SIndex::Put(const Slot& slot) noexcept {
    std::size_t i = slot.hash & (m_slots.size() - 1);
    while (m_slots[i].number != kNone)
        i = (i + 1) & (m_slots.size() - 1);
    m_slots[i] = slot;
}

void CGlobalVars::SIndex::Grow() {
    std::vector<Slot> old(m_slots.size() * 2);
    old.swap(m_slots);
    for (const Slot& slot : old)
        if (slot.number != kNone)
            Put(slot);
}

/// The entries after the gap move up into it if they would not be found past it.
void CGlobalVars::SIndex::Erase(const CGlobalVar& var) noexcept {
    const std::size_t mask = m_slots.size() - 1;
    std::size_t gap = HashOf(var.m_key.View()) & mask;
    while (m_slots[gap].number != var.m_dwNumber) {
        assert(m_slots[gap].number != kNone);
        gap = (gap + 1) & mask;
    }
    m_slots[gap] = {};
    --m_count;
    for (std::size_t i = (gap + 1) & mask; m_slots[i].number != kNone; i = (i + 1) & mask) {
        const std::size_t home = m_slots[i].hash & mask;
        if (((i - home) & mask) >= ((i - gap) & mask)) {
            std::swap(m_slots[gap], m_slots[i]);
            gap = i;
        }
    }
}
