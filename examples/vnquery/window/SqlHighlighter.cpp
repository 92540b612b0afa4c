#include "vnquery/window/SqlHighlighter.h"

#include "vnquery/result/AsciiUpper.h"
#include "vnquery/sources/SqlWords.h"

#include <QPalette>

#include <algorithm>
#include <optional>

namespace vnquery {

std::string NarrowSql(const QString& text) {
    std::string narrow(static_cast<std::size_t>(text.size()), '\0');
    std::ranges::transform(text, narrow.begin(), [](QChar ch) {
        const char16_t unit = ch.unicode();
        return unit == QChar::ParagraphSeparator ? '\n'
               : unit < 0x80                     ? static_cast<char>(unit)
                                                 : static_cast<char>(0x80 | (unit & 0x7F));
    });
    return narrow;
}

SqlHighlighter::SqlHighlighter(QTextDocument* document, const QPalette& palette)
    : QSyntaxHighlighter(document) {
    MakeFormats(palette);
}

void SqlHighlighter::SetServer(SqlServer server) {
    m_server = server;
    rehighlight();
}

void SqlHighlighter::SetPalette(const QPalette& palette) {
    MakeFormats(palette);
    rehighlight();
}

void SqlHighlighter::MakeFormats(const QPalette& palette) {
    const bool isDark = palette.color(QPalette::Base).lightness() < 128;
    // Contrast of at least 4.5 to 1 with white and with the usual dark bases.
    constexpr int kHues[FormatCount] = {214, 120, 28, -1, 290, 340};
    for (int format = 0; format < FormatCount; ++format) {
        const int hue = kHues[format];
        const int saturation = hue < 0 ? 0 : isDark ? 140 : 255;
        m_formats[static_cast<std::size_t>(format)].setForeground(QColor::fromHsl(std::max(hue, 0),
                                                                                  saturation,
                                                                                  isDark    ? 180
                                                                                  : hue < 0 ? 100
                                                                                            : 75));
    }
    m_formats[KeyWord].setFontWeight(QFont::Bold);
    m_formats[Comment].setFontItalic(true);
}

void SqlHighlighter::highlightBlock(const QString& text) {
    const auto state = static_cast<std::size_t>(std::max(previousBlockState(), 0));
    const std::string opener = state < m_openers.size() ? m_openers[state] : std::string();
    const std::string sql = opener + NarrowSql(text) + '\n';
    const auto begin = [&](std::size_t at) {
        return static_cast<int>(std::max(at, opener.size()) - opener.size());
    };
    std::string left;
    const SqlToken* before = nullptr;
    const std::vector<SqlToken> tokens = LexSql(sql, m_server);
    for (const SqlToken& token : tokens) {
        std::optional<Format> format;
        std::size_t from = token.begin;
        switch (token.kind) {
        case SqlTokenKind::Word:
            if (before && before->end == token.begin &&
                std::string_view(":&").find(sql[before->begin]) != std::string_view::npos &&
                (before->begin == 0 || sql[before->begin - 1] != ':')) {
                format = Parameter;
                from = before->begin;
            } else if (IsSqlWord(ToUpper(token.In(sql)))) {
                format = KeyWord;
            }
            break;
        case SqlTokenKind::Number:
            format = Number;
            break;
        case SqlTokenKind::String:
            format = String;
            break;
        case SqlTokenKind::QuotedName:
            format = QuotedName;
            break;
        case SqlTokenKind::Comment:
            format = Comment;
            break;
        case SqlTokenKind::Symbol:
            break;
        }
        if (format)
            setFormat(begin(from), begin(token.end) - begin(from), m_formats[*format]);
        left = token.opener;
        before = &token;
    }
    const auto known = std::ranges::find(m_openers, left);
    setCurrentBlockState(static_cast<int>(known - m_openers.begin()));
    if (known == m_openers.end())
        m_openers.push_back(left);
}

} // namespace vnquery
