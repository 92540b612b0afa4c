// The field in which SQL is typed.
#pragma once

#include "vnquery/sources/SqlCompletion.h"

#include <QPlainTextEdit>

#include <optional>

class QCompleter;
class QStringListModel;

namespace vnquery {

class SqlHighlighter;

/// Statements to run, and where they stand in the text.
struct SqlPiece {
    std::string sql;
    int position = 0; ///< in the document
};

/// A plain text editor that knows SQL: colours, matching brackets, completion (by itself after
/// three letters or a point, or with Ctrl+Space), errors shown at their place. Tab goes to the next
/// widget; a new line begins below the one before.
class SqlEditor : public QPlainTextEdit {
    Q_OBJECT

public:
    explicit SqlEditor(QWidget* parent = nullptr);

    /// How the text is read, and the names that completion offers; null for key words only.
    void SetCatalog(std::shared_ptr<const Catalog> catalog);
    /// How the text is read while there is no catalog.
    void SetServer(SqlServer server);

    enum class Which {
        All,
        AtCursor, ///< the statement that the cursor is in, or that ends before it
        Selection ///< like All without a selection
    };
    /// Each of them is one statement.
    std::vector<SqlPiece> GetPieces(Which which) const;
    /// Underlines `length` bytes at `offset` of the statement, or the word there when `length` is
    /// 0, and shows `text` there in a tip, until the text changes. Puts the cursor there. Does
    /// nothing when the statement no longer stands where it was.
    void ShowError(const SqlPiece& piece, std::size_t offset, std::size_t length,
                   const QString& text);

public Q_SLOTS:
    /// Makes the lines of the selection comments, or takes the marks away.
    void ToggleComment();
    /// FormatSql for the selection, or for the whole text, as one step for Undo.
    void Format();
    /// Shows what may stand at the cursor.
    void Complete();
    /// Puts a text in the place of the selection and takes the focus.
    void Insert(const QString& text);

protected:
    void changeEvent(QEvent* event) override;
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    /// Of a part of the text, in the document's units.
    struct Range {
        int begin;
        int end;
    };

    void Relabel();
    void TakeFont();
    void ShowCompletions(bool isAsked);
    void TakeCompletion(const QString& word);
    void MarkPlaces();
    std::vector<Range> FindBrackets() const;
    void Replace(Range range, const QString& text);

    SqlHighlighter* m_highlighter;
    QCompleter* m_completer;
    QStringListModel* m_words;
    int m_wordBegin = 0; ///< of what is completed
    SqlCompletion m_completion;
    SqlServer m_server = SqlServer::Other;
    std::optional<Range> m_error;
    QString m_errorText;
};

} // namespace vnquery
