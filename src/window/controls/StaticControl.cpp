#include "src/window/controls/StaticControl.h"

#include "src/window/controls/DialogKeys.h"
#include "src/window/core/WidgetDetails.h"
#include "src/window/core/WindowWidget.h"
#include "src/window/draw/GdiInternal.h"
#include "vnbytstr/window/Static.h"

namespace vnbytstr::detail {

namespace {

constexpr DWORD kTypeMask = 0x1F;

Qt::Alignment AlignmentOf(DWORD style) {
    const DWORD type = style & kTypeMask;
    const Qt::Alignment across = type == SS_CENTER  ? Qt::AlignHCenter
                                 : type == SS_RIGHT ? Qt::AlignRight
                                                    : Qt::AlignLeading;
    return across | ((style & SS_CENTERIMAGE) != 0 ? Qt::AlignVCenter : Qt::AlignTop);
}

} // namespace

/// A QLabel that cuts a long text off with an ellipsis if its style asks for it, and that finds the
/// control it labels when it is shown.
class LabelWidget final : public QLabel {
public:
    LabelWidget(StaticControl& control, QWidget* parent) : QLabel(parent), m_control(&control) {}
    void Forget() { m_control = nullptr; }

    void SetElidedText(const QString& text) {
        m_full = text;
        Elide();
    }

protected:
    void showEvent(QShowEvent* event) override {
        QLabel::showEvent(event);
        // The control that follows may not have been created yet.
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (m_control != nullptr)
                    m_control->FindPartner();
            },
            Qt::QueuedConnection);
    }
    void resizeEvent(QResizeEvent* event) override {
        QLabel::resizeEvent(event);
        if (!m_full.isNull())
            Elide();
    }

private:
    void Elide() { setText(fontMetrics().elidedText(m_full, Qt::ElideRight, width())); }

    StaticControl* m_control;
    QString m_full;
};

StaticControl::~StaticControl() {
    if (m_label != nullptr)
        m_label->Forget();
}

LRESULT StaticControl::Proc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CREATE) {
        const LRESULT answer = m_window.GenericProc(message, wParam, lParam);
        if (answer != -1)
            MakeWidget();
        return answer;
    }
    if (m_label != nullptr)
        if (const auto answer = StaticProc(message, wParam, lParam))
            return *answer;
    return m_window.GenericProc(message, wParam, lParam);
}

void StaticControl::MakeWidget() {
    const DWORD style = m_window.Style();
    const DWORD type = style & kTypeMask;
    m_label = new LabelWidget(*this, HostParent(m_window));
    m_label->setTextFormat(Qt::PlainText);
    m_label->setAlignment(AlignmentOf(style));
    m_label->setWordWrap(type == SS_LEFT || type == SS_CENTER || type == SS_RIGHT);
    if ((style & (SS_CENTERIMAGE | SS_ENDELLIPSIS)) != 0)
        m_label->setWordWrap(false);
    HostControl(m_window, m_label);
    m_label->setFocusPolicy(Qt::NoFocus);
    if (type == SS_ETCHEDHORZ) {
        m_label->setFrameStyle(QFrame::HLine | QFrame::Sunken);
    } else if (type == SS_BLACKFRAME) {
        m_label->setFrameStyle(QFrame::Box | QFrame::Plain);
    } else if ((style & SS_SUNKEN) != 0) {
        m_label->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    }
    if ((style & SS_NOTIFY) == 0)
        m_window.Widget()->setAttribute(Qt::WA_TransparentForMouseEvents);
    ShowContents();
}

void StaticControl::ShowContents() {
    const GdiObject* const picture = GdiObject::Of(m_bitmap, GdiObject::Type::Bitmap);
    if (picture != nullptr) {
        const QSize space = m_label->size();
        QPixmap shown = picture->pixmap;
        if (shown.width() > space.width() || shown.height() > space.height())
            shown = shown.scaled(space, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        m_label->setPixmap(shown);
        return;
    }
    QString text = ToQString(m_window.Text());
    const DWORD type = m_window.Style() & kTypeMask;
    if (type == SS_BITMAP || type == SS_ETCHEDHORZ || type == SS_BLACKFRAME)
        text.clear();
    if ((m_window.Style() & SS_NOPREFIX) != 0) {
        // Without a buddy Qt shows '&' itself.
        m_label->setBuddy(nullptr);
    }
    if ((m_window.Style() & SS_ENDELLIPSIS) != 0)
        m_label->SetElidedText(text);
    else
        m_label->setText(text);
}

void StaticControl::FindPartner() {
    if ((m_window.Style() & SS_NOPREFIX) != 0 || m_label == nullptr)
        return;
    Window* const partner = NextFocusable(m_window);
    // Without one the letter leads nowhere, but is still underlined.
    QWidget* target = m_label;
    if (partner != nullptr)
        target = partner->Hosted() != nullptr ? partner->Hosted() : partner->Widget();
    m_label->setBuddy(target);
}

std::optional<LRESULT> StaticControl::StaticProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_GETDLGCODE:
        return DLGC_STATIC;
    case WM_SETTEXT: {
        const LRESULT answer = m_window.GenericProc(message, wParam, lParam);
        ShowContents();
        return answer;
    }
    case WM_SIZE:
        if (m_bitmap != nullptr)
            ShowContents();
        return std::nullopt;
    case STM_SETIMAGE: {
        if (wParam != IMAGE_BITMAP)
            return 0;
        HBITMAP const before = std::exchange(m_bitmap, reinterpret_cast<HBITMAP>(lParam));
        m_label->setPixmap({});
        ShowContents();
        return reinterpret_cast<LRESULT>(before);
    }
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
        if ((m_window.Style() & SS_NOTIFY) != 0)
            m_window.NotifyCommand(message == WM_LBUTTONDOWN ? STN_CLICKED : STN_DBLCLK);
        return 0;
    default:
        return std::nullopt;
    }
}

} // namespace vnbytstr::detail
