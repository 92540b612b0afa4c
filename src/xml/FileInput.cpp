#include "src/xml/FileInput.h"

#include "src/xml/XercesText.h"

#include "src/os/Paths.h"
#include "src/os/System.h"

#include <xercesc/util/BinInputStream.hpp>

#include <string_view>
#include <utility>

namespace vnbytstr::detail {

namespace {

int HexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::string WithoutEscapes(std::string_view text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = text[i] == '%' && i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
        const int low = high >= 0 ? HexDigit(text[i + 2]) : -1;
        if (low >= 0) {
            plain += static_cast<char>(high * 16 + low);
            i += 2;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

class FileStream final : public xercesc::BinInputStream {
public:
    FileStream(System& system, FileHandle handle, bool& hasFailed, ParseBudget& budget)
        : m_system(system), m_handle(handle), m_hasFailed(hasFailed), m_budget(budget) {}
    ~FileStream() override { m_system.CloseFile(m_handle); }
    FileStream(const FileStream&) = delete;
    FileStream& operator=(const FileStream&) = delete;

    XMLFilePos curPos() const override { return m_position; }
    const XMLCh* getContentType() const override { return nullptr; }

    XMLSize_t readBytes(XMLByte* to, XMLSize_t most) override {
        std::size_t done = 0;
        if (m_hasFailed || m_system.ReadFile(m_handle, to, most, done) != 0) {
            m_hasFailed = true;
            return 0;
        }
        m_position += done;
        m_budget.Add(done * kBudgetPerByte);
        return done;
    }

private:
    System& m_system;
    FileHandle m_handle;
    bool& m_hasFailed;
    ParseBudget& m_budget;
    XMLFilePos m_position = 0;
};

} // namespace

std::string FileNameOf(const char* nameOrUri) {
    std::string_view text(nameOrUri);
    constexpr std::string_view kScheme = "file:";
    if (!text.starts_with(kScheme))
        return std::string(text);
    text.remove_prefix(kScheme.size());
    if (text.starts_with("//")) { // the host
        const std::size_t path = text.find('/', 2);
        text.remove_prefix(path == std::string_view::npos ? text.size() : path);
    }
    return NameOfUriPath(WithoutEscapes(text));
}

FileInput::FileInput(std::string name, ParseBudget& budget)
    : InputSource(WideText(name).c_str(), &ParserMemory::Process()), m_name(std::move(name)),
      m_budget(budget) {}

xercesc::BinInputStream* FileInput::makeStream() const {
    System& system = System::Current();
    FileHandle handle = kNoFile;
    if (system.OpenFile(m_name.c_str(), kOpenRead, handle) != 0)
        return nullptr;
    return new (getMemoryManager()) FileStream(system, handle, m_hasFailed, m_budget);
}

} // namespace vnbytstr::detail
