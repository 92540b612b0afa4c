// Colours of SQL text.
#pragma once

#include "vnquery/sources/SqlLexer.h"

#include <QSyntaxHighlighter>
#include <QTextCharFormat>

#include <array>
#include <string>
#include <vector>

class QPalette;

namespace vnquery {

/// The text with one byte for each of its units: tokens then have the same places in both. All
/// beyond ASCII become letters, as the lexer takes them.
std::string NarrowSql(const QString& text);

/// Colours key words, strings, numbers, comments, quoted names and parameters (:name, &NAME) as the
/// server reads the text. The colours suit a light or dark base.
class SqlHighlighter : public QSyntaxHighlighter {
    Q_OBJECT

public:
    SqlHighlighter(QTextDocument* document, const QPalette& palette);

    void SetServer(SqlServer server);
    void SetPalette(const QPalette& palette);

protected:
    void highlightBlock(const QString& text) override;

private:
    enum Format { KeyWord, String, Number, Comment, QuotedName, Parameter, FormatCount };
    void MakeFormats(const QPalette& palette);

    SqlServer m_server = SqlServer::Other;
    std::array<QTextCharFormat, FormatCount> m_formats;
    /// What is open at the end of a line; the line's state is the index.
    std::vector<std::string> m_openers = {""};
};

} // namespace vnquery
