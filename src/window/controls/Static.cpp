#include "vnbytstr/window/Static.h"

IMPLEMENT_DYNAMIC(CStatic, CWnd)

BOOL CStatic::Create(LPCTSTR text, DWORD style, const RECT& rect, CWnd* parent, UINT id) {
    return CWnd::Create("STATIC", text, style | WS_CHILD, rect, parent, id);
}

HBITMAP CStatic::SetBitmap(HBITMAP bitmap) {
    return reinterpret_cast<HBITMAP>(
        SendMessage(STM_SETIMAGE, IMAGE_BITMAP, reinterpret_cast<LPARAM>(bitmap)));
}

HBITMAP CStatic::GetBitmap() const {
    return reinterpret_cast<HBITMAP>(SendMessage(STM_GETIMAGE, IMAGE_BITMAP));
}
