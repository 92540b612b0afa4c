// Messages about the profile.
#pragma once

#include "vnbytstr/Profile.h"

#include <string>
#include <utility>
#include <vector>

namespace vnbytstr::detail {

/// Gathers messages while locks are held, and passes them on, to the program's handler or to
/// standard error, when it is destroyed, so declare it before the locks. The handler may call every
/// function of the profile.
class ProfileNotices {
public:
    ProfileNotices() = default;
    ~ProfileNotices();
    ProfileNotices(const ProfileNotices&) = delete;
    ProfileNotices& operator=(const ProfileNotices&) = delete;

    /// `text` is UTF-8.
    void Add(EProfileStatus status, std::string text) {
        m_notices.emplace_back(status, std::move(text));
    }

    static void SetHandler(VNProfileHandler handler, void* context);
    /// The text in the ANSI code page.
    static std::string ToAnsi(const std::string& text);

private:
    std::vector<std::pair<EProfileStatus, std::string>> m_notices;
};

} // namespace vnbytstr::detail
