// The texts that users see, in the language of the user interface.
#pragma once

#include "vnquery/messages/MessageIds.h"

#include "vnbytstr/ByteStream.h"

#include <initializer_list>
#include <span>
#include <string>

namespace vnquery {

/// The prefix of the resource libraries with these texts: vnqueryENU.dll and so on.
constexpr char kTextLibraries[] = "vnquery";

/// Loads the texts of the library and of the program in the interface's language. The first Text
/// does so too; after that, Text may be called from every thread.
void LoadTexts();

/// Where a message text is chosen: the program's text with that id (IDS_VQ_...), in UTF-8, in the
/// interface's language, else in English, else its number in brackets.
std::string Text(UINT id);
/// The same with %1 to %9 replaced by the insertions.
std::string Text(UINT id, std::initializer_list<std::string> insertions);
std::string Text(UINT id, std::span<const std::string> insertions);

/// Whether the texts run from right to left.
bool AreTextsRightToLeft();

} // namespace vnquery
