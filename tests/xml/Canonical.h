// What another parser reads in a document.
#pragma once

#include <string>

namespace vnbytstr::test {

/// The canonical form (W3C, Canonical XML 1.0) of a file by libxml2; empty when it is not well-formed.
/// Where that parser is missing, always the same.
std::string Canonical(const std::string& file);

} // namespace vnbytstr::test
