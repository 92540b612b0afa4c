#include "vnbytstr/ListDropTarget.h"

#include "vnbytstr/ListBoxEx.h"

IMPLEMENT_DYNAMIC(CListDropTarget, COleDropTarget)

DROPEFFECT CListDropTarget::OnDragEnter(CWnd* window, COleDataObject* data, DWORD keys,
                                        CPoint point) {
    m_bFilesOnOffer = data != nullptr && data->IsDataAvailable(CF_HDROP);
    return OnDragOver(window, data, keys, point);
}

DROPEFFECT CListDropTarget::OnDragOver(CWnd* window, COleDataObject* data, DWORD keys,
                                       CPoint point) {
    static_cast<void>(window);
    static_cast<void>(data);
    static_cast<void>(keys);
    if (!m_bFilesOnOffer || m_pList == nullptr)
        return DROPEFFECT_NONE;
    vnbytstr::detail::DropOwner& owner = *m_pList;
    return owner.DragOver(point);
}

BOOL CListDropTarget::OnDrop(CWnd* window, COleDataObject* data, DROPEFFECT effect, CPoint point) {
    static_cast<void>(window);
    static_cast<void>(effect);
    static_cast<void>(point);
    m_bFilesOnOffer = FALSE;
    const HDROP drop = data != nullptr ? data->GetDrop() : nullptr;
    const UINT length = drop != nullptr ? DragQueryFile(drop, 0, nullptr, 0) : 0;
    if (length == 0 || m_pList == nullptr)
        return FALSE;
    char* const buffer = m_strFile.GetBuffer(static_cast<int>(length));
    DragQueryFile(drop, 0, buffer, length + 1);
    m_strFile.ReleaseBuffer();
    vnbytstr::detail::DropOwner& owner = *m_pList;
    owner.DropFile(m_strFile);
    return TRUE;
}
