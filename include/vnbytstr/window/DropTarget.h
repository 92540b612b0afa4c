// COleDropTarget and COleDataObject: what is dragged over a window and dropped on it.
#pragma once

#include "vnbytstr/framework/Arrays.h"
#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Wnd.h"

#include <memory>

namespace vnbytstr::detail {
class TargetSink;
}

/// What kind of data, and the data.
using CLIPFORMAT = WORD;
using HGLOBAL = void*;
/// The kinds that are known.
inline constexpr CLIPFORMAT CF_TEXT = 1;
inline constexpr CLIPFORMAT CF_HDROP = 15; ///< files

/// The effect of a drop on its source.
using DROPEFFECT = DWORD;
inline constexpr DROPEFFECT DROPEFFECT_NONE = 0;
inline constexpr DROPEFFECT DROPEFFECT_COPY = 1;
inline constexpr DROPEFFECT DROPEFFECT_MOVE = 2;
inline constexpr DROPEFFECT DROPEFFECT_LINK = 4;

/// What is being dragged. Valid during the call it is passed to.
class VNBYTSTR_CONTROLS_API COleDataObject {
public:
    COleDataObject();
    /// What a Qt program is told of a drag.
    explicit COleDataObject(const vnbytstr::HostDragData* data);
    /// Local files, for programs (and tests) that drop by themselves.
    explicit COleDataObject(const CStringArray& files);
    ~COleDataObject();
    COleDataObject(const COleDataObject&) = delete;
    COleDataObject& operator=(const COleDataObject&) = delete;

    /// Whether there is data of that kind.
    BOOL IsDataAvailable(CLIPFORMAT format) const;
    /// CF_HDROP: the local files as an HDROP, for DragQueryFile; it belongs to this object.
    /// CF_TEXT: a NUL-terminated text, likewise. Null when the format is not available.
    HGLOBAL GetGlobalData(CLIPFORMAT format) const;
    HDROP GetDrop() const { return static_cast<HDROP>(GetGlobalData(CF_HDROP)); }

private:
    struct Data;
    std::unique_ptr<Data> m_data;
};

/// Takes what is dropped on a window. Points are in the window's client coordinates. What is
/// dragged by another program is copied, whatever effect is answered: DROPEFFECT_MOVE and
/// DROPEFFECT_LINK are told to it as a copy, so that it deletes nothing.
class VNBYTSTR_CONTROLS_API COleDropTarget : public CCmdTarget {
    DECLARE_DYNAMIC(COleDropTarget)
public:
    COleDropTarget() = default;
    ~COleDropTarget() override;

    /// From now on this object is told of drags over `window` (until Revoke, or the window's end).
    /// FALSE when there is no window, or it has a drop target already.
    BOOL Register(CWnd* window);
    virtual void Revoke();

    /// The answers say what a drop would do; DROPEFFECT_NONE refuses. The base refuses.
    /// `keys`: MK_*.
    virtual DROPEFFECT OnDragEnter(CWnd* window, COleDataObject* data, DWORD keys, CPoint point);
    virtual DROPEFFECT OnDragOver(CWnd* window, COleDataObject* data, DWORD keys, CPoint point);
    virtual BOOL OnDrop(CWnd* window, COleDataObject* data, DROPEFFECT effect, CPoint point);
    virtual void OnDragLeave(CWnd* window);

    /// The window; null when none is registered.
    HWND m_hWnd = nullptr;

private:
    friend class vnbytstr::detail::TargetSink;
};
