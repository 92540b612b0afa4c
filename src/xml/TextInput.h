// A text in memory as the parser's input.
#pragma once

#include "src/xml/ParserMemory.h"

#include <xercesc/sax/InputSource.hpp>

#include <string_view>

namespace vnbytstr::detail {

/// Bytes in memory. As with a file, each byte that the parser has reached lets it take more memory:
/// a document that is refused at its beginning takes little, however long it is.
class TextInput final : public xercesc::InputSource {
public:
    /// `text` must outlive the object; `name` stands for it in reports.
    TextInput(std::string_view text, const char* name, ParseBudget& budget)
        : InputSource(name, &ParserMemory::Process()), m_text(text), m_budget(budget) {}

    xercesc::BinInputStream* makeStream() const override;

private:
    std::string_view m_text;
    ParseBudget& m_budget;
};

} // namespace vnbytstr::detail
