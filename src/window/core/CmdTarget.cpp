#include "vnbytstr/window/CmdTarget.h"

IMPLEMENT_DYNAMIC(CCmdTarget, CObject)

const AFX_MSGMAP* CCmdTarget::GetMessageMap() const { return GetThisMessageMap(); }

const AFX_MSGMAP* CCmdTarget::GetThisMessageMap() {
    static const AFX_MSGMAP_ENTRY entries[] = {{0, 0, 0, 0, nullptr, nullptr}};
    static const AFX_MSGMAP map = {nullptr, entries};
    return &map;
}

namespace {

const AFX_MSGMAP_ENTRY* SearchMaps(const AFX_MSGMAP* map, UINT message, int code, UINT id) {
    constexpr UINT kRegistered = 0xC000;
    for (; map != nullptr; map = map->pfnGetBaseMap != nullptr ? map->pfnGetBaseMap() : nullptr) {
        for (const AFX_MSGMAP_ENTRY* entry = map->lpEntries; entry->nMessage != 0; ++entry) {
            if (entry->nMessage == kRegistered && entry->pRegistered != nullptr) {
                if (*entry->pRegistered == message)
                    return entry;
            } else if (entry->nMessage == message && entry->nCode == code && id >= entry->nID &&
                       id <= entry->nLastID) {
                return entry;
            }
        }
    }
    return nullptr;
}

// The maps of a window's classes are searched for every message; maps never change, so the answers
// are cached.
struct Remembered {
    const AFX_MSGMAP* map = nullptr;
    UINT message = 0;
    const AFX_MSGMAP_ENTRY* entry = nullptr;
};
constexpr std::size_t kRemembered = 512; // a power of two
Remembered remembered[kRemembered];

} // namespace

const AFX_MSGMAP_ENTRY* CCmdTarget::FindMessageEntry(UINT message, int code, UINT id) const {
    constexpr UINT kFirstRegistered = 0xC000;
    const AFX_MSGMAP* map = GetMessageMap();
    if (code != 0 || id != 0 || message >= kFirstRegistered)
        return SearchMaps(map, message, code, id);
    const std::size_t place =
        ((reinterpret_cast<std::uintptr_t>(map) >> 4) ^ (message * 37U)) & (kRemembered - 1);
    Remembered& slot = remembered[place];
    if (slot.map != map || slot.message != message)
        slot = {map, message, SearchMaps(map, message, code, id)};
    return slot.entry;
}

BOOL CCmdTarget::OnCmdMsg(UINT id, int code, void* extra) {
    const AFX_MSGMAP_ENTRY* entry = SearchMaps(GetMessageMap(), WM_COMMAND, code, id);
    if (entry == nullptr)
        return FALSE;
    return entry->pfn(this, id, reinterpret_cast<LPARAM>(extra)) != 0;
}
