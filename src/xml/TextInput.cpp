#include "src/xml/TextInput.h"

#include <xercesc/util/BinInputStream.hpp>

#include <algorithm>
#include <cstring>

namespace vnbytstr::detail {

namespace {

class TextStream final : public xercesc::BinInputStream {
public:
    TextStream(std::string_view text, ParseBudget& budget) : m_text(text), m_budget(budget) {}

    XMLFilePos curPos() const override { return m_position; }
    const XMLCh* getContentType() const override { return nullptr; }

    XMLSize_t readBytes(XMLByte* to, XMLSize_t most) override {
        const std::size_t size = std::min<std::size_t>(most, m_text.size() - m_position);
        std::memcpy(to, m_text.data() + m_position, size);
        m_position += size;
        m_budget.Add(size * kBudgetPerByte);
        return size;
    }

private:
    std::string_view m_text;
    ParseBudget& m_budget;
    std::size_t m_position = 0;
};

} // namespace

xercesc::BinInputStream* TextInput::makeStream() const {
    return new (getMemoryManager()) TextStream(m_text, m_budget);
}

} // namespace vnbytstr::detail
