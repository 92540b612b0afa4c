// CProgressCtrl, a progress bar.
//
// All of it also goes by PBM_ messages, to a window of the class "msctls_progress32".
#pragma once

#include "vnbytstr/window/Export.h"
#include "vnbytstr/window/Wnd.h"

// --- styles and messages -------------------------------------------------------------------------
inline constexpr DWORD PBS_VERTICAL = 0x04;
inline constexpr DWORD PBS_MARQUEE = 0x08; ///< shows that something goes on, not how far
inline constexpr UINT PBM_SETRANGE = WM_USER + 1;
inline constexpr UINT PBM_SETPOS = WM_USER + 2;
inline constexpr UINT PBM_DELTAPOS = WM_USER + 3;
inline constexpr UINT PBM_SETSTEP = WM_USER + 4;
inline constexpr UINT PBM_STEPIT = WM_USER + 5;
inline constexpr UINT PBM_SETRANGE32 = WM_USER + 6;
inline constexpr UINT PBM_GETRANGE = WM_USER + 7;
inline constexpr UINT PBM_GETPOS = WM_USER + 8;
inline constexpr UINT PBM_SETMARQUEE = WM_USER + 10;

class VNBYTSTR_CONTROLS_API CProgressCtrl : public CWnd {
    DECLARE_DYNAMIC(CProgressCtrl)
public:
    CProgressCtrl() = default;
    /// A child window of class "msctls_progress32"; the range begins as 0 to 100.
    virtual BOOL Create(DWORD style, const RECT& rect, CWnd* parent, UINT id);
    using CWnd::Create;

    /// The range, and the position in it.
    void SetRange32(int lower, int upper);
    void GetRange(int& lower, int& upper) const;
    int SetPos(int position); ///< confined to the range; returns the one before
    /// The position.
    int GetPos() const;
    int OffsetPos(int by); ///< returns the position before
    int SetStep(int step); ///< 10 in the beginning; returns the one before
    int StepIt();          ///< past the upper end it begins anew; returns the position before
    BOOL SetMarquee(BOOL on, int interval = 0); ///< of a bar with PBS_MARQUEE
};
