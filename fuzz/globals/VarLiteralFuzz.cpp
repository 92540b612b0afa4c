// The literals of global variables against a parser written as a table of states, and back: what
// Convert makes of any text, ParseGlobal reads as that text.
#include "fuzz/FuzzInput.h"
#include "vnbytstr/GlobalVars.h"

using namespace vnbytstr;
using fuzz::Require;

namespace {

std::string Quoted(const std::string& text) {
    std::string content;
    bool isPending = false; // an apostrophe that the next one would double
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (isPending && text[i] != '\'')
            return content;
        if (isPending || text[i] != '\'')
            content += text[i];
        isPending = text[i] == '\'' && !isPending;
    }
    return content;
}

std::string Parenthesised(const std::string& text) {
    int open = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        open += text[i] == '(' ? 1 : text[i] == ')' ? -1 : 0;
        if (open == 0)
            return text.substr(1, i - 1);
    }
    return text.substr(1);
}

std::string Meaning(const std::string& text) {
    switch (text.empty() ? '\0' : text[0]) {
    case '\'':
        return Quoted(text);
    case '(':
        return Parenthesised(text);
    default:
        return text;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    CString value = fuzz::ToCString(text);
    CGlobalVars::ParseGlobal(value);
    Require(fuzz::ToStdString(value) == Meaning(text));

    value = fuzz::ToCString(text);
    CGlobalVars::Convert(value);
    const std::string literal = fuzz::ToStdString(value);
    Require(literal.size() >= size + 2 && literal.front() == '\'' && literal.back() == '\'');
    CGlobalVars::ParseGlobal(value);
    Require(fuzz::ToStdString(value) == text);
    value = fuzz::ToCString(literal + ' ' + text); // what follows the closing one does not count
    CGlobalVars::ParseGlobal(value);
    Require(fuzz::ToStdString(value) == text);
    return 0;
}
