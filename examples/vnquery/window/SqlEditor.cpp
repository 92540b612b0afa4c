#include "vnquery/window/SqlEditor.h"

#include "vnquery/sources/QueryGuard.h"
#include "vnquery/sources/SqlFormat.h"
#include "vnquery/window/Label.h"
#include "vnquery/window/SqlHighlighter.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCompleter>
#include <QFontDatabase>
#include <QHelpEvent>
#include <QScrollBar>
#include <QStringListModel>
#include <QTextBlock>
#include <QToolTip>

#include <algorithm>

namespace vnquery {

namespace {

constexpr std::size_t kLettersBeforePopup = 3;

int UnitsIn(std::string_view utf8) {
    return static_cast<int>(
        QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size())).size());
}

} // namespace

SqlEditor::SqlEditor(QWidget* parent)
    : QPlainTextEdit(parent), m_highlighter(new SqlHighlighter(document(), palette())),
      m_completer(new QCompleter(this)), m_words(new QStringListModel(this)) {
    setTabChangesFocus(true);
    // SQL runs from left to right in every language.
    QTextOption option = document()->defaultTextOption();
    option.setTextDirection(Qt::LeftToRight);
    document()->setDefaultTextOption(option);
    TakeFont();
    m_completer->setWidget(this);
    m_completer->setModel(m_words);
    m_completer->setCompletionMode(QCompleter::UnfilteredPopupCompletion);
    connect(m_completer, qOverload<const QString&>(&QCompleter::activated), this,
            &SqlEditor::TakeCompletion);
    connect(this, &QPlainTextEdit::cursorPositionChanged, this, &SqlEditor::MarkPlaces);
    connect(document(), &QTextDocument::contentsChange, this, [this](int, int removed, int added) {
        if (removed == 0 && added == 0)
            return; // colours only
        m_error.reset();
        setAccessibleDescription({});
        MarkPlaces();
    });
    Relabel();
}

void SqlEditor::SetCatalog(std::shared_ptr<const Catalog> catalog) {
    if (catalog)
        SetServer(catalog->server);
    m_completion = SqlCompletion(std::move(catalog));
}

void SqlEditor::SetServer(SqlServer server) {
    if (server == m_server)
        return;
    m_server = server;
    m_highlighter->SetServer(server);
}

void SqlEditor::Relabel() {
    setAccessibleName(Label(IDS_VQ_C_EDITOR));
    setPlaceholderText(Label(IDS_VQ_C_EDITOR_HINT));
}

void SqlEditor::TakeFont() {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSizeF(QApplication::font().pointSizeF());
    if (font != this->font())
        setFont(font);
}

void SqlEditor::changeEvent(QEvent* event) {
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        Relabel();
    else if (event->type() == QEvent::ApplicationFontChange)
        TakeFont();
    else if (event->type() == QEvent::PaletteChange)
        m_highlighter->SetPalette(palette());
}

bool SqlEditor::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip && m_error) {
        const auto* const help = static_cast<QHelpEvent*>(event);
        const int at = cursorForPosition(viewport()->mapFromGlobal(help->globalPos())).position();
        if (at >= m_error->begin && at <= m_error->end)
            QToolTip::showText(help->globalPos(), m_errorText, this);
        else
            QToolTip::hideText();
        return true;
    }
    return QPlainTextEdit::event(event);
}

std::vector<SqlPiece> SqlEditor::GetPieces(Which which) const {
    const QTextCursor cursor = textCursor();
    const bool isSelection = which == Which::Selection && cursor.hasSelection();
    const int begin = isSelection ? cursor.selectionStart() : 0;
    QString text = toPlainText();
    if (isSelection)
        text = text.mid(begin, cursor.selectionEnd() - begin);
    const std::string sql = text.toStdString();
    std::vector<SqlPiece> pieces;
    std::size_t done = 0;
    int position = begin;
    for (SqlStatement& statement : SplitStatements(sql, m_server)) {
        position += UnitsIn(std::string_view(sql).substr(done, statement.begin - done));
        done = statement.begin;
        if (which == Which::AtCursor && !pieces.empty()) {
            // The cursor between two statements belongs to the one whose line it is on.
            const std::size_t first =
                std::min(statement.text.find_first_not_of(" \t\r\n"), statement.text.size());
            const int text = position + UnitsIn(std::string_view(statement.text).substr(0, first));
            if (cursor.position() < text)
                break;
            pieces.clear();
        }
        pieces.push_back({std::move(statement.text), position});
    }
    return pieces;
}

void SqlEditor::ShowError(const SqlPiece& piece, std::size_t offset, std::size_t length,
                          const QString& text) {
    const QString sql = QString::fromStdString(piece.sql);
    if (toPlainText().mid(piece.position, sql.size()) != sql)
        return;
    offset = std::min(offset, piece.sql.size());
    if (length == 0) {
        const std::vector<SqlToken> tokens = LexSql(piece.sql, m_server);
        const auto found =
            std::ranges::find_if(tokens, [&](const SqlToken& token) { return token.end > offset; });
        if (found != tokens.end() && found->begin <= offset)
            length = found->end - offset;
        else if (!tokens.empty() && found == tokens.end()) { // at the end: the last word
            offset = tokens.back().begin;
            length = tokens.back().end - offset;
        }
    }
    const std::string_view bytes = piece.sql;
    const int begin = piece.position + UnitsIn(bytes.substr(0, offset));
    const int end = begin + std::max(UnitsIn(bytes.substr(offset, length)), 1);
    QTextCursor cursor = textCursor();
    cursor.setPosition(begin);
    setTextCursor(cursor);
    m_error = Range{begin, end};
    m_errorText = text;
    setAccessibleDescription(text);
    MarkPlaces();
}

std::vector<SqlEditor::Range> SqlEditor::FindBrackets() const {
    const QString text = toPlainText();
    const int cursor = textCursor().position();
    const auto isBracket = [&](int at) {
        return at >= 0 && at < text.size() && QStringLiteral("()[]").contains(text[at]);
    };
    if (!isBracket(cursor - 1) && !isBracket(cursor))
        return {};
    const int at = isBracket(cursor - 1) ? cursor - 1 : cursor;
    const std::string sql = NarrowSql(text);
    std::vector<std::size_t> open;
    for (const SqlToken& token : LexSql(sql, m_server)) {
        const char ch = sql[token.begin];
        if (token.kind != SqlTokenKind::Symbol)
            continue;
        if (ch == '(' || ch == '[') {
            open.push_back(token.begin);
        } else if ((ch == ')' || ch == ']') && !open.empty()) {
            const auto begin = static_cast<int>(open.back());
            const auto end = static_cast<int>(token.begin);
            open.pop_back();
            if (begin == at || end == at)
                return {{begin, begin + 1}, {end, end + 1}};
        }
    }
    return {};
}

void SqlEditor::MarkPlaces() {
    QList<QTextEdit::ExtraSelection> marks;
    const auto mark = [&](Range range, const QTextCharFormat& format) {
        QTextCursor cursor(document());
        cursor.setPosition(std::min(range.begin, document()->characterCount() - 1));
        cursor.setPosition(std::min(range.end, document()->characterCount() - 1),
                           QTextCursor::KeepAnchor);
        marks.append({cursor, format});
    };
    QTextCharFormat bracket;
    QColor colour = palette().color(QPalette::Highlight);
    colour.setAlphaF(0.35F);
    bracket.setBackground(colour);
    for (const Range& range : FindBrackets())
        mark(range, bracket);
    if (m_error) {
        QTextCharFormat wave;
        wave.setUnderlineStyle(QTextCharFormat::WaveUnderline);
        wave.setUnderlineColor(palette().color(QPalette::Base).lightness() < 128
                                   ? QColor(255, 110, 110)
                                   : QColor(200, 0, 0));
        mark(*m_error, wave);
    }
    setExtraSelections(marks);
}

void SqlEditor::Replace(Range range, const QString& text) {
    QTextCursor cursor = textCursor();
    cursor.setPosition(range.begin);
    cursor.setPosition(range.end, QTextCursor::KeepAnchor);
    if (cursor.selectedText().replace(QChar::ParagraphSeparator, u'\n') != text) {
        cursor.beginEditBlock(); // a step of its own for Undo
        cursor.insertText(text);
        cursor.endEditBlock();
    }
}

void SqlEditor::Insert(const QString& text) {
    textCursor().insertText(text);
    setFocus();
}

void SqlEditor::ToggleComment() {
    QTextCursor cursor = textCursor();
    const QTextBlock first = document()->findBlock(cursor.selectionStart());
    QTextBlock last = document()->findBlock(cursor.selectionEnd());
    if (last.position() == cursor.selectionEnd() && first != last)
        last = last.previous(); // the selection ends before this line
    const Range lines{first.position(), last.position() + last.length() - 1};
    const QString text = toPlainText().mid(lines.begin, lines.end - lines.begin);
    const QString toggled = QString::fromStdString(ToggleSqlComment(text.toStdString()));
    const bool hasSelection = cursor.hasSelection();
    Replace(lines, toggled);
    if (!hasSelection)
        return;
    cursor.setPosition(lines.begin);
    cursor.setPosition(lines.begin + static_cast<int>(toggled.size()), QTextCursor::KeepAnchor);
    setTextCursor(cursor);
}

void SqlEditor::Format() {
    QTextCursor cursor = textCursor();
    const bool hasSelection = cursor.hasSelection();
    const QString all = toPlainText();
    const Range range = hasSelection ? Range{cursor.selectionStart(), cursor.selectionEnd()}
                                     : Range{0, static_cast<int>(all.size())};
    const auto isInk = [](QChar ch) { return ch > u' '; };
    const auto ink = std::count_if(all.begin(), all.begin() + cursor.position(), isInk);
    const QString text = QString::fromStdString(
        FormatSql(all.mid(range.begin, range.end - range.begin).toStdString(), m_server));
    Replace(range, text);
    if (hasSelection)
        return;
    // After the same letter as before.
    qsizetype at = 0;
    for (qsizetype left = ink; left > 0 && at < text.size(); ++at)
        left -= isInk(text[at]) ? 1 : 0;
    cursor.setPosition(static_cast<int>(at));
    setTextCursor(cursor);
}

void SqlEditor::Complete() { ShowCompletions(true); }

void SqlEditor::ShowCompletions(bool isAsked) {
    QAbstractItemView* const popup = m_completer->popup();
    const std::string sql = toPlainText().toStdString();
    const std::size_t at = toPlainText().left(textCursor().position()).toStdString().size();
    const SqlCompletion::Answer answer = m_completion.Find(sql, at);
    const bool isDue = isAsked || answer.isAfterPoint || at - answer.begin >= kLettersBeforePopup;
    const std::string_view typed = std::string_view(sql).substr(answer.begin, at - answer.begin);
    QStringList words;
    for (const std::string& word : answer.words)
        words.append(QString::fromStdString(word));
    const bool isComplete = words.size() == 1 && words[0].toStdString() == typed;
    if (!isDue || words.isEmpty() || isComplete) {
        popup->hide();
        return;
    }
    m_wordBegin = textCursor().position() - UnitsIn(typed);
    m_words->setStringList(words);
    QRect where = cursorRect();
    where.setWidth(popup->sizeHintForColumn(0) + popup->verticalScrollBar()->sizeHint().width());
    m_completer->complete(where);
    popup->setCurrentIndex(m_completer->completionModel()->index(0, 0));
}

void SqlEditor::TakeCompletion(const QString& word) {
    Replace({m_wordBegin, textCursor().position()}, word);
}

void SqlEditor::keyPressEvent(QKeyEvent* event) {
    const int key = event->key();
    const bool isCompleting = m_completer->popup()->isVisible();
    if (isCompleting && (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Tab ||
                         key == Qt::Key_Backtab || key == Qt::Key_Escape)) {
        event->ignore(); // the popup takes it
        return;
    }
    if (key == Qt::Key_Space && event->modifiers() == Qt::ControlModifier) {
        Complete();
        return;
    }
    if ((key == Qt::Key_Return || key == Qt::Key_Enter) && event->modifiers() == Qt::NoModifier &&
        !isReadOnly()) {
        QTextCursor cursor = textCursor();
        const QString line = cursor.block().text().left(cursor.positionInBlock());
        const auto text = std::ranges::find_if(line, [](QChar ch) { return !ch.isSpace(); });
        cursor.insertText(u'\n' + line.left(text - line.begin()));
        setTextCursor(cursor);
        ensureCursorVisible();
        return;
    }
    QPlainTextEdit::keyPressEvent(event);
    const bool isTyped = !event->text().isEmpty() && event->text().at(0).isPrint() &&
                         !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier));
    if (isTyped || (isCompleting && key == Qt::Key_Backspace))
        ShowCompletions(false);
    else if (isCompleting && key != Qt::Key_Shift && key != Qt::Key_Control)
        m_completer->popup()->hide();
}

} // namespace vnquery
