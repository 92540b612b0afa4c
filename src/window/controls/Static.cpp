#include "vnbytstr/window/Static.h"

IMPLEMENT_DYNAMIC(CStatic, CWnd)

BOOL CStatic::Create(LPCTSTR text, DWORD style, const RECT& rect, CWnd* parent, UINT id) {
    return CWnd::Create("STATIC", text, style | WS_CHILD, rect, parent, id);
}
