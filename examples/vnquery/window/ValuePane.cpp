#include "vnquery/window/ValuePane.h"

#include "vnquery/result/CellEdit.h"
#include "vnquery/result/HexDump.h"
#include "vnquery/result/PictureKind.h"
#include "vnquery/window/Guard.h"
#include "vnquery/window/IndentedText.h"
#include "vnquery/window/Label.h"
#include "vnquery/window/PictureView.h"
#include "vnquery/window/ValueFiles.h"

#include <QComboBox>
#include <QEvent>
#include <QFontDatabase>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QShortcut>
#include <QStackedWidget>
#include <QTextBlock>
#include <QToolButton>

#include <algorithm>

namespace vnquery {

namespace {

constexpr DWORD kTextPage = 65536;
constexpr DWORD kBytesPage = 2048 * HexDump::kBytesPerLine;
constexpr int kMaxMarks = 1000;
constexpr UINT kPageTexts[] = {IDS_VQ_P_FIRST, IDS_VQ_V_PREVIOUS, IDS_VQ_V_NEXT, IDS_VQ_P_LAST};
/// Characters, which have the palette's colour and turn with the direction of the texts.
constexpr const char16_t* kPageSigns[] = {u"\u00AB", u"\u2039", u"\u203A", u"\u00BB"};
constexpr const char16_t* kFindSigns[] = {u"\u25B2", u"\u25BC", u"\u2715"};
constexpr UINT kFindTexts[] = {IDS_VQ_P_FIND_PREVIOUS, IDS_VQ_P_FIND_NEXT, IDS_VQ_CANCEL};
enum Button { kLoad, kSave, kNull, kDefault, kUndo, kAccept, kButtons };
constexpr UINT kButtonTexts[] = {IDS_VQ_V_LOAD,        IDS_VQ_V_SAVE, IDS_VQ_M_SET_NULL,
                                 IDS_VQ_M_SET_DEFAULT, IDS_VQ_P_UNDO, IDS_VQ_P_ACCEPT};

/// The text as the document has it, with LF between its lines: QPlainTextEdit's own function makes
/// blanks of no-break spaces.
QString RawText(const QPlainTextEdit& edit) {
    return edit.document()->toRawText().replace(QChar::ParagraphSeparator, u'\n');
}

} // namespace

ValuePane::ValuePane(QWidget* parent) : QWidget(parent) {
    Build();
    connect(m_views, &QComboBox::activated, this, [this](int index) {
        m_chosen = static_cast<View>(m_views->itemData(index).toInt());
        Guard(this, [&] { ShowView(*m_chosen); });
    });
    connect(m_text, &QPlainTextEdit::textChanged, this, [this] { UpdateButtons(); });
    for (int i = 0; i < 4; ++i)
        connect(m_pageButtons[i], &QToolButton::clicked, this, [this, i] {
            const DWORD page = m_view == View::Bytes ? kBytesPage : kTextPage;
            const DWORD length = m_paged.GetLength();
            const DWORD places[] = {0, m_begin - std::min(m_begin, page), m_end,
                                    length - (length == 0 ? 0 : (length - 1) % page + 1)};
            Guard(this, [&] { ShowPage(places[i]); });
        });
    connect(m_offset, &QLineEdit::returnPressed, this, [this] { Guard(this, [&] { GoTo(); }); });
    connect(m_needle, &QLineEdit::returnPressed, m_findButtons[1], &QToolButton::click);
    for (int i = 0; i < 2; ++i)
        connect(m_findButtons[i], &QToolButton::clicked, this,
                [this, i] { Guard(this, [&] { Find(i == 1); }); });
    connect(m_findButtons[2], &QToolButton::clicked, this, [this] { StopFind(); });
    connect(m_needle, &QLineEdit::textEdited, this, [this] { StopFind(); });
    connect(&m_findTimer, &QTimer::timeout, this, [this] { StepFind(); });
    const auto press = [this](Button button, auto action) {
        connect(m_buttons[button], &QPushButton::clicked, this,
                [this, action] { Guard(this, action); });
    };
    press(kLoad, [this] { Load(); });
    press(kSave, [this] { SaveValueTo(this, m_shown.value, m_shown.what, m_shown.cell); });
    press(kNull, [this] { Set({}); });
    press(kDefault, [this] { Set({true, {}}); });
    press(kUndo, [this] { UndoDraft(); });
    press(kAccept, [this] { AcceptDraft(); });
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter})
        connect(
            new QShortcut(Qt::CTRL | key, this, nullptr, nullptr, Qt::WidgetWithChildrenShortcut),
            &QShortcut::activated, m_buttons[kAccept], &QPushButton::click);
    Relabel();
    Clear();
}

ValuePane::~ValuePane() = default;

void ValuePane::Build() {
    m_views = new QComboBox;
    m_info = new QLabel;
    m_info->setWordWrap(true);
    m_text = new QPlainTextEdit;
    m_picture = new PictureView;
    m_stack = new QStackedWidget;
    m_stack->addWidget(m_text);
    m_stack->addWidget(m_picture);
    m_page = new QLabel;
    m_offset = new QLineEdit;
    m_needle = new QLineEdit;
    m_needle->setClearButtonEnabled(true);
    m_found = new QLabel;
    const auto add = [](QHBoxLayout* bar, const char16_t* sign) {
        auto* const button = new QToolButton;
        button->setText(QString::fromUtf16(sign));
        button->setAutoRaise(true);
        bar->addWidget(button);
        return button;
    };
    m_pageBar = new QWidget;
    auto* const pages = new QHBoxLayout(m_pageBar);
    pages->setContentsMargins({});
    for (int i = 0; i < 4; ++i)
        m_pageButtons[i] = add(pages, kPageSigns[i]);
    pages->addWidget(m_offset, 1);
    m_findBar = new QWidget;
    auto* const finding = new QHBoxLayout(m_findBar);
    finding->setContentsMargins({});
    finding->addWidget(m_needle, 1);
    finding->addWidget(m_found);
    for (int i = 0; i < 3; ++i)
        m_findButtons[i] = add(finding, kFindSigns[i]);
    auto* const buttons = new QGridLayout;
    for (int i = 0; i < kButtons; ++i)
        buttons->addWidget(m_buttons[i] = new QPushButton, i / 2, i % 2);
    auto* const all = new QVBoxLayout(this);
    all->addWidget(m_views);
    all->addWidget(m_info);
    all->addWidget(m_stack, 1);
    all->addWidget(m_page);
    all->addWidget(m_pageBar);
    all->addWidget(m_findBar);
    all->addLayout(buttons);
}

void ValuePane::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange)
        Relabel();
    QWidget::changeEvent(event);
}

void ValuePane::Relabel() {
    const auto name = [](QWidget* widget, UINT text) {
        widget->setAccessibleName(PlainLabel(text));
        widget->setToolTip(PlainLabel(text));
    };
    name(m_views, IDS_VQ_V_AS);
    name(m_offset, IDS_VQ_V_OFFSET);
    name(m_needle, IDS_VQ_P_FIND);
    m_offset->setPlaceholderText(PlainLabel(IDS_VQ_V_OFFSET));
    m_needle->setPlaceholderText(PlainLabel(IDS_VQ_P_FIND));
    for (int i = 0; i < 4; ++i)
        name(m_pageButtons[i], kPageTexts[i]);
    for (int i = 0; i < 3; ++i)
        name(m_findButtons[i], kFindTexts[i]);
    for (int i = 0; i < kButtons; ++i)
        m_buttons[i]->setText(Label(kButtonTexts[i]).section(u'\t', 0, 0));
    m_buttons[kAccept]->setToolTip(
        QKeySequence(Qt::CTRL | Qt::Key_Return).toString(QKeySequence::NativeText));
    FillViews();
    ShowInfo();
}

void ValuePane::Clear() {
    ShowValue({});
    m_hasValue = false;
    m_views->clear();
    ShowInfo();
    UpdateButtons();
}

void ValuePane::ShowValue(const PaneValue& shown) {
    m_shown = shown;
    m_hasValue = true;
    FillViews();
    const int chosen = m_chosen ? m_views->findData(static_cast<int>(*m_chosen)) : -1;
    Guard(this,
          [&] { ShowView(static_cast<View>(m_views->itemData(std::max(chosen, 0)).toInt())); });
    if (chosen < 0 && !m_fault.isEmpty()) // it only looked like that
        Guard(this, [&] {
            const bool isBytes = m_shown.value.GetType() == Value::Type::Binary;
            ShowView(isBytes ? View::Bytes : View::Text);
        });
}

/// Offers what the value may be shown as, the most fitting first.
void ValuePane::FillViews() {
    m_views->clear();
    if (!m_hasValue)
        return;
    const Value& value = m_shown.value;
    const auto add = [this](View view, const QString& text) {
        m_views->addItem(text, static_cast<int>(view));
    };
    std::string beginning;
    Guard(this, [&] { beginning = value.Read(0, 256); });
    const std::size_t at = beginning.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
    const char first = at == std::string::npos ? '\0' : beginning[at];
    const bool isNumber = value.GetType() == Value::Type::Number;
    const bool isBytes = value.GetType() == Value::Type::Binary;
    if (RecognisePicture(beginning) == PictureKind::Svg ||
        (isBytes && RecognisePicture(beginning) != PictureKind::None))
        add(View::Picture, Label(IDS_VQ_V_PICTURE));
    if (first == '{' || first == '[')
        add(View::Json, QStringLiteral("JSON"));
    if (first == '<')
        add(View::Xml, QStringLiteral("XML"));
    if (!isBytes)
        add(View::Text, Label(IDS_VQ_V_TEXT));
    if (!value.IsNull() && !isNumber)
        add(View::Bytes, Label(IDS_VQ_V_HEX));
    if (isBytes)
        add(View::Text, Label(IDS_VQ_V_TEXT));
    m_views->setCurrentIndex(m_views->findData(static_cast<int>(m_view)));
}

void ValuePane::ShowView(View view) {
    StopFind();
    m_view = view;
    m_hit.reset();
    m_fault.clear();
    m_paged = m_shown.value;
    m_original.clear();
    m_canType = false;
    m_views->setCurrentIndex(m_views->findData(static_cast<int>(view)));
    m_stack->setCurrentIndex(view == View::Picture ? 1 : 0);
    m_picture->SetImage({});
    const QFontDatabase::SystemFont font =
        view == View::Text ? QFontDatabase::GeneralFont : QFontDatabase::FixedFont;
    m_text->setFont(QFontDatabase::systemFont(font));
    m_text->setLineWrapMode(view == View::Bytes ? QPlainTextEdit::NoWrap
                                                : QPlainTextEdit::WidgetWidth);
    m_text->setLayoutDirection(view == View::Text ? layoutDirection() : Qt::LeftToRight);
    if (view == View::Json || view == View::Xml) {
        Value indented;
        m_fault = (view == View::Json ? IndentJson : IndentXml)(m_paged, indented);
        m_paged = indented; // nothing after a fault
    }
    if (view == View::Picture)
        ShowPicture();
    else
        ShowPage(0);
    const bool isText = m_shown.value.GetType() != Value::Type::Binary;
    if (view == View::Text && m_shown.isEditable && isText && m_shown.kind != ColumnKind::Binary &&
        m_end - m_begin == m_paged.GetLength()) {
        m_original = m_shown.value.GetBytes();
        m_canType = DraftText() == m_original;
    }
    m_text->setReadOnly(!m_canType);
    m_text->setTabChangesFocus(!m_canType);
    m_text->setTextInteractionFlags(m_text->textInteractionFlags() | Qt::TextSelectableByKeyboard);
    ShowInfo();
    UpdateButtons();
}

void ValuePane::ShowPicture() {
    QSize size;
    const QImage image = ReadPicture(m_shown.value, size);
    const std::string kind = PictureName(RecognisePicture(m_shown.value));
    const std::string width = std::to_string(size.width());
    const std::string height = std::to_string(size.height());
    const std::string length = FormatSize(m_shown.value.GetLength());
    m_picture->SetImage(image);
    const bool isTooLarge = qint64{size.width()} * size.height() > kMaxPixels;
    m_fault = !image.isNull() ? QString()
              : isTooLarge    ? Label(IDS_VQ_P_BIG_PICTURE, {width, height})
                              : Label(IDS_VQ_V_BAD_PICTURE, {kind});
    m_picture->setAccessibleName(
        image.isNull() ? m_fault : Label(IDS_VQ_V_PICTURE_INFO, {kind, width, height, length}));
}

/// Shows the page that begins at that byte, or at the first character after it.
void ValuePane::ShowPage(DWORD begin) {
    const DWORD length = m_paged.GetLength();
    m_begin = std::min(begin, length);
    if (m_view == View::Bytes) {
        m_begin -= m_begin % HexDump::kBytesPerLine;
        m_end = m_begin + std::min(kBytesPage, length - m_begin);
        std::string lines = HexDump(m_paged).GetLines(m_begin / HexDump::kBytesPerLine,
                                                      kBytesPage / HexDump::kBytesPerLine);
        m_text->setPlainText(QString::fromStdString(lines).trimmed());
    } else {
        const std::string bytes = ReadCharacters(m_paged, m_begin, kTextPage);
        m_end = m_begin + static_cast<DWORD>(bytes.size());
        m_text->setPlainText(DecodeText(bytes));
    }
    m_text->document()->setModified(false);
    MarkHits();
    const auto range = [](ULONGLONG number) { return GroupDigits(number); };
    m_page->setText(
        length == 0 ? QString()
                    : Label(IDS_VQ_V_PAGE, {range(m_begin + 1ull), range(m_end), range(length)}));
    for (int i = 0; i < 4; ++i)
        m_pageButtons[i]->setEnabled(i < 2 ? m_begin > 0 : m_end < length);
    UpdateButtons();
}

void ValuePane::ShowInfo() {
    const Value& value = m_shown.value;
    const std::string size = FormatSize(value.GetLength());
    QString info;
    if (m_shown.isDefault)
        info = Label(IDS_VQ_V_DEFAULT_INFO);
    else if (value.IsNull())
        info = m_hasValue ? Label(IDS_VQ_V_NULL_INFO) : QString();
    else if (!m_fault.isEmpty())
        info = m_fault;
    else if (m_view == View::Picture)
        info = m_picture->accessibleName();
    else if (value.GetType() == Value::Type::Number)
        info = Label(IDS_VQ_V_NUMBER_INFO);
    else if (value.GetType() == Value::Type::Binary)
        info = Label(IDS_VQ_V_BYTES_INFO, {size});
    else
        info = Label(IDS_VQ_V_TEXT_INFO, {FormatSize(value.GetLength()) + " (UTF-8)"});
    if (m_shown.isEditable && m_view == View::Text && !m_canType &&
        value.GetType() == Value::Type::Text)
        info += u'\n' + Label(IDS_VQ_P_NOT_TYPED);
    m_info->setText(info);
    // NULL and the default stand where a text would, greyed, and an empty text shows nothing.
    const bool isMarker = m_hasValue && (value.IsNull() || m_shown.isDefault);
    m_text->setPlaceholderText(isMarker ? info : QString());
    m_text->setAccessibleName(QString::fromStdString(m_shown.what) + QStringLiteral(": ") + info);
}

void ValuePane::UpdateButtons() {
    const bool isEditable = m_hasValue && m_shown.isEditable;
    const bool hasDraft = HasDraft();
    const bool isPaged = m_begin > 0 || m_end < m_paged.GetLength() || m_view == View::Bytes;
    m_pageBar->setVisible(m_view != View::Picture && isPaged);
    m_page->setVisible(m_view != View::Picture && isPaged);
    m_findBar->setVisible(IsTextView() && m_paged.GetLength() > 0);
    m_buttons[kLoad]->setEnabled(isEditable);
    m_buttons[kSave]->setEnabled(m_hasValue && !m_shown.value.IsNull());
    m_buttons[kNull]->setEnabled(isEditable && m_shown.isNullable &&
                                 (m_shown.isDefault || !m_shown.value.IsNull()));
    m_buttons[kDefault]->setEnabled(isEditable && !m_shown.isDefault);
    m_buttons[kUndo]->setEnabled(hasDraft);
    m_buttons[kAccept]->setEnabled(hasDraft);
}

// --- changing the value --------------------------------------------------------------------------

std::string ValuePane::DraftText() const {
    return FromFieldText(RawText(*m_text).toStdString(), m_original);
}

bool ValuePane::HasDraft() const { return m_canType && m_text->document()->isModified(); }

bool ValuePane::AcceptDraft() {
    if (!HasDraft())
        return true;
    NewValue value;
    const EditFault fault = ParseText(DraftText(), m_shown.kind, value);
    if (fault != EditFault::None) {
        QMessageBox::warning(this, Label(IDS_VQ_APP),
                             Label(IDS_VQ_P_NOT_A_NUMBER, {m_shown.what, "42"}));
        m_text->setFocus();
        return false;
    }
    Set(value);
    return true;
}

void ValuePane::UndoDraft() {
    if (HasDraft())
        ShowView(m_view);
}

void ValuePane::Set(const NewValue& value) {
    m_shown.value = value.value;
    m_shown.isDefault = value.isDefault;
    ShowValue(PaneValue(m_shown));
    Q_EMIT Edited(value);
}

void ValuePane::Load() {
    NewValue value;
    if (!LoadValueFrom(this, m_shown.kind, m_shown.what, value.value).empty())
        Set(value);
}

// --- places and hits -----------------------------------------------------------------------------

void ValuePane::GoTo() {
    const std::optional<DWORD> offset = ParseOffset(m_offset->text());
    const DWORD length = m_paged.GetLength();
    if (!offset || *offset >= length) {
        QMessageBox::warning(this, Label(IDS_VQ_APP),
                             Label(IDS_VQ_V_BAD_OFFSET,
                                   {m_offset->text().toStdString(), std::to_string(length - 1)}));
        return;
    }
    if (HasDraft())
        return; // of one page
    const DWORD page = m_view == View::Bytes ? kBytesPage : kTextPage;
    ShowPage(*offset - *offset % page);
    QTextCursor cursor = m_text->textCursor();
    if (m_view == View::Bytes) {
        const DWORD line = (*offset - m_begin) / HexDump::kBytesPerLine;
        cursor.setPosition(
            m_text->document()->findBlockByNumber(static_cast<int>(line)).position());
        cursor.movePosition(QTextCursor::EndOfBlock);
        cursor.movePosition(QTextCursor::StartOfBlock, QTextCursor::KeepAnchor); // the offsets stay
    } else {
        cursor.setPosition(PositionOf(*offset));
    }
    m_text->setTextCursor(cursor);
    m_text->setFocus();
}

void ValuePane::Find(bool forward) {
    const QString needle = m_needle->text();
    if (needle.isEmpty())
        return m_needle->setFocus();
    if (HasDraft()) { // a page at most, and not yet in the value
        QTextDocument::FindFlags flags;
        flags.setFlag(QTextDocument::FindBackward, !forward);
        if (m_text->find(needle, flags))
            return m_found->clear();
        m_text->moveCursor(forward ? QTextCursor::Start : QTextCursor::End);
        return m_found->setText(m_text->find(needle, flags) ? QString()
                                                            : Label(IDS_VQ_P_NOT_FOUND));
    }
    const DWORD from = !m_hit ? m_begin : m_hit->begin + (forward ? 1 : 0);
    m_find = std::make_unique<ValueFind>(m_paged, needle, from, forward);
    m_findButtons[2]->show();
    m_findTimer.start(0);
}

void ValuePane::StepFind() {
    bool goesOn = false;
    std::optional<ValueFind::Hit> hit;
    QString outcome;
    Guard(this, [&] {
        goesOn = m_find->Step();
        hit = m_find->GetHit();
        outcome = hit ? QString() : Label(IDS_VQ_P_NOT_FOUND);
    });
    if (goesOn)
        return m_found->setText(QStringLiteral("%1 %").arg(m_find->GetPercent()));
    StopFind(outcome);
    if (!hit)
        return;
    m_hit = hit;
    Guard(this, [&] {
        if (hit->begin >= m_begin && hit->end <= m_end)
            return MarkHits();
        // A hit that lies across the border of two pages is shown in the middle of one.
        const DWORD page = hit->begin - hit->begin % kTextPage;
        const bool isWithin = hit->begin >= page + 3 && hit->end + 3 <= page + kTextPage;
        ShowPage(isWithin ? page : hit->begin - std::min(hit->begin, kTextPage / 2));
    });
}

void ValuePane::StopFind(const QString& outcome) {
    m_findTimer.stop();
    m_find.reset();
    m_found->setText(outcome);
    m_findButtons[2]->hide();
}

/// Where the document shows that byte of the page.
int ValuePane::PositionOf(DWORD byte) const {
    QString before = DecodeText(m_paged.Read(m_begin, byte - std::min(byte, m_begin)));
    return static_cast<int>(before.replace(QLatin1String("\r\n"), QLatin1String("\n")).size());
}

/// Marks what was looked for on the page, and selects the hit.
void ValuePane::MarkHits() {
    QList<QTextEdit::ExtraSelection> marks;
    const QString needle = m_needle->text();
    const bool isMarked = m_hit && IsTextView() && !needle.isEmpty();
    QTextCursor at(m_text->document());
    while (isMarked && marks.size() < kMaxMarks &&
           !(at = m_text->document()->find(needle, at)).isNull()) {
        QTextEdit::ExtraSelection mark;
        QColor colour = palette().color(QPalette::Highlight);
        colour.setAlphaF(0.35F);
        mark.format.setBackground(colour);
        mark.cursor = at;
        marks.push_back(mark);
    }
    m_text->setExtraSelections(marks);
    if (!isMarked || m_hit->begin < m_begin || m_hit->end > m_end)
        return;
    QTextCursor cursor = m_text->textCursor();
    cursor.setPosition(PositionOf(m_hit->begin));
    cursor.setPosition(PositionOf(m_hit->end), QTextCursor::KeepAnchor);
    m_text->setTextCursor(cursor);
}

} // namespace vnquery
