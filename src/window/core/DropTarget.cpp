#include "vnbytstr/window/DropTarget.h"

#include "src/window/core/WindowWidget.h"
#include "vnbytstr/window/WindowFunctions.h"

#include <QDragEnterEvent>
#include <QMimeData>
#include <QUrl>

#include <optional>
#include <string>
#include <vector>

using vnbytstr::detail::FromQString;
using vnbytstr::detail::Window;

// --- the data -----------------------------------------------------------------------------------

namespace {

/// What an HDROP points to: the names of the files.
using DropFiles = std::vector<std::string>;

} // namespace

struct COleDataObject::Data {
    DropFiles files;
    std::optional<std::string> text;
};

COleDataObject::COleDataObject() : m_data(std::make_unique<Data>()) {}

COleDataObject::COleDataObject(const QMimeData* data) : COleDataObject() {
    if (data == nullptr)
        return;
    for (const QUrl& url : data->urls())
        if (url.isLocalFile())
            m_data->files.push_back(FromQString(url.toLocalFile()));
    if (data->hasText())
        m_data->text = FromQString(data->text());
}

COleDataObject::COleDataObject(const CStringArray& files) : COleDataObject() {
    for (int i = 0; i < files.GetSize(); ++i)
        m_data->files.emplace_back(files[i]);
}

COleDataObject::~COleDataObject() = default;

BOOL COleDataObject::IsDataAvailable(CLIPFORMAT format) const {
    return GetGlobalData(format) != nullptr ? TRUE : FALSE;
}

HGLOBAL COleDataObject::GetGlobalData(CLIPFORMAT format) const {
    if (format == CF_HDROP && !m_data->files.empty())
        return &m_data->files;
    if (format == CF_TEXT && m_data->text)
        return m_data->text->data();
    return nullptr;
}

UINT DragQueryFile(HDROP drop, UINT index, LPSTR buffer, UINT size) {
    const auto* const files = reinterpret_cast<const DropFiles*>(drop);
    constexpr UINT kCount = 0xFFFFFFFF;
    if (files == nullptr)
        return 0;
    if (index == kCount)
        return static_cast<UINT>(files->size());
    if (index >= files->size())
        return 0;
    const std::string& name = (*files)[index];
    if (buffer == nullptr || size == 0)
        return static_cast<UINT>(name.size());
    const std::size_t copied = name.copy(buffer, size - 1);
    buffer[copied] = '\0';
    return static_cast<UINT>(copied);
}

// --- the target ---------------------------------------------------------------------------------

IMPLEMENT_DYNAMIC(COleDropTarget, CCmdTarget)

namespace vnbytstr::detail {

/// Tells a COleDropTarget of Qt's drag events. The window owns it.
class TargetSink final : public DropSink {
public:
    TargetSink(COleDropTarget& target, Window& window) : m_target(&target), m_window(window) {}
    ~TargetSink() override {
        if (m_target != nullptr)
            m_target->m_hWnd = nullptr;
    }
    void Forget() { m_target = nullptr; }

    void DragEnter(QDragEnterEvent* event) override {
        COleDataObject data(event->mimeData());
        Ask(*event, data, &COleDropTarget::OnDragEnter);
        // Qt reports further moves only when the drag is accepted; the target may still refuse it.
        event->accept();
    }
    void DragMove(QDragMoveEvent* event) override {
        COleDataObject data(event->mimeData());
        Ask(*event, data, &COleDropTarget::OnDragOver);
    }
    void DragLeave() override {
        m_effect = DROPEFFECT_NONE;
        m_target->OnDragLeave(Object());
    }
    void Drop(QDropEvent* event) override {
        COleDataObject data(event->mimeData());
        if (!Ask(*event, data, &COleDropTarget::OnDragOver))
            return;
        if (m_effect == DROPEFFECT_NONE) {
            m_target->OnDragLeave(Object());
            return;
        }
        const bool taken = m_target->OnDrop(Object(), &data, m_effect, Point(*event)) != FALSE;
        event->setAccepted(taken);
    }

private:
    CWnd* Object() { return m_window.ObjectOrTemporary(); }
    CPoint Point(const QDropEvent& event) const {
        return m_window.ToClient(event.position().toPoint());
    }
    static DWORD Keys(const QDropEvent& event) {
        return ((event.buttons() & Qt::LeftButton) != 0 ? MK_LBUTTON : 0) |
               ((event.buttons() & Qt::RightButton) != 0 ? MK_RBUTTON : 0) |
               ((event.modifiers() & Qt::ShiftModifier) != 0 ? MK_SHIFT : 0) |
               ((event.modifiers() & Qt::ControlModifier) != 0 ? MK_CONTROL : 0);
    }
    using Question = DROPEFFECT (COleDropTarget::*)(CWnd*, COleDataObject*, DWORD, CPoint);
    /// Asks the target, which may end this object meanwhile: false then.
    bool Ask(QDropEvent& event, COleDataObject& data, Question question) {
        const HWND handle = m_window.Handle();
        const DROPEFFECT effect = (m_target->*question)(Object(), &data, Keys(event), Point(event));
        const Window* const window = Window::Of(handle);
        if (window == nullptr || window->Drop() != this) {
            event.ignore();
            return false;
        }
        m_effect = effect;
        Answer(event);
        return true;
    }
    void Answer(QDropEvent& event) const {
        if (m_effect == DROPEFFECT_NONE) {
            event.setDropAction(Qt::IgnoreAction);
            event.ignore();
            return;
        }
        // Another program deletes what it is told was moved.
        Qt::DropAction action = Qt::CopyAction;
        if (event.source() != nullptr && (m_effect & DROPEFFECT_MOVE) != 0)
            action = Qt::MoveAction;
        if ((event.possibleActions() & action) == 0)
            action = event.proposedAction();
        event.setDropAction(action);
        event.accept();
    }

    COleDropTarget* m_target;
    Window& m_window;
    DROPEFFECT m_effect = DROPEFFECT_NONE;
};

} // namespace vnbytstr::detail

using vnbytstr::detail::TargetSink;

COleDropTarget::~COleDropTarget() { COleDropTarget::Revoke(); }

BOOL COleDropTarget::Register(CWnd* object) {
    Window* const window = Window::Of(object);
    if (window == nullptr || window->Drop() != nullptr || m_hWnd != nullptr)
        return FALSE;
    window->SetDrop(std::make_unique<TargetSink>(*this, *window));
    window->SetStyles(window->Style(), window->ExStyle());
    m_hWnd = window->Handle();
    return TRUE;
}

void COleDropTarget::Revoke() {
    Window* const window = Window::Of(m_hWnd);
    m_hWnd = nullptr;
    if (window == nullptr)
        return;
    if (auto* const sink = dynamic_cast<TargetSink*>(window->Drop()))
        sink->Forget();
    window->SetDrop(nullptr);
    window->SetStyles(window->Style(), window->ExStyle());
}

DROPEFFECT COleDropTarget::OnDragEnter(CWnd*, COleDataObject*, DWORD, CPoint) {
    return DROPEFFECT_NONE;
}

DROPEFFECT COleDropTarget::OnDragOver(CWnd*, COleDataObject*, DWORD, CPoint) {
    return DROPEFFECT_NONE;
}

BOOL COleDropTarget::OnDrop(CWnd*, COleDataObject*, DROPEFFECT, CPoint) { return FALSE; }
void COleDropTarget::OnDragLeave(CWnd*) {}
