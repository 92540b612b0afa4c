// Initialising and terminating the parser platform.
#pragma once

namespace vnbytstr::detail {

/// Initialises the parser platform, or counts one more use of it: the parser itself counts how
/// often it was initialised, by an application, too. False when that fails.
bool BeginParserPlatform(const char* messageFolder = nullptr) noexcept;
/// Ends one use.
void EndParserPlatform() noexcept;

} // namespace vnbytstr::detail
