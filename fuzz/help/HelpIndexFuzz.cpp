// Reading a help index of any bytes: its topics, or the exception of a damaged one.
#include "fuzz/FuzzInput.h"
#include "src/help/HelpIndex.h"

using namespace vnbytstr;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    detail::HelpTopics topics;
    try {
        detail::ReadHelpIndex(text, topics);
    } catch (detail::HelpIndexException* error) {
        char message[200];
        fuzz::Require(error->GetErrorMessage(message, sizeof message) != FALSE);
        error->Delete();
    }
    for (const auto& [topic, page] : topics) {
        const std::string name(page, static_cast<std::size_t>(page.GetLength()));
        fuzz::Require(text.find(name) != std::string::npos && name.find('\n') == std::string::npos);
        fuzz::Require(name.starts_with(detail::FileOfPage(name)));
    }
    return 0;
}
