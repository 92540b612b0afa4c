// The text of a help index.
#pragma once

#include "vnbytstr/framework/Exception.h"

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace vnbytstr::detail {

/// Why help could not be loaded; the numbers are shown to the user.
enum class HelpFailure : int {
    NotReadable = 1,
    NoHeading = 2,
    NoComma = 3,
    NoNumber = 4,
    TooLarge = 5,
};

/// The file is not a help index.
class HelpIndexException final : public CException {
public:
    HelpIndexException(HelpFailure reason, std::string text)
        : m_reason(reason), m_text(std::move(text)) {}

    HelpFailure GetReason() const { return m_reason; }
    BOOL GetErrorMessage(char* buffer, UINT size, UINT* helpContext = nullptr) const override;

private:
    HelpFailure m_reason;
    std::string m_text;
};

using HelpTopics = std::unordered_map<DWORD, CString>;

/// Reads the lines of an index into `topics`, in linear time. Throws HelpIndexException* at the
/// first that is wrong.
void ReadHelpIndex(std::string_view text, HelpTopics& topics);

/// The identifier of a help request.
DWORD MapHelpRequest(DWORD data, UINT command);

/// The part of a page's name that is its file: up to the ".htm" or ".html" in it, or all before an
/// anchor.
std::string_view FileOfPage(std::string_view page);

/// Whether a page is an address (http:// or https://, in any case).
bool IsAddress(std::string_view page);

} // namespace vnbytstr::detail
