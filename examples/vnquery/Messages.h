// The texts that people see, in the language of the user interface.
#pragma once

#include "messages/ResourceIds.h"

#include <vnbytstr/ByteStream.h>

#include <initializer_list>
#include <string>

namespace vnquery {

/// Loads all texts of the program from the resource library of the interface's language. The first
/// Text does so too; from then on Text may be called from every thread, but for the time of a
/// further LoadTexts.
void LoadTexts();

/// A text of the program (IDS_VQ_...) in UTF-8. What is not in the library either in this language
/// or in English is its number in brackets.
std::string Text(UINT id);
/// With %1 to %9 replaced.
std::string Text(UINT id, std::initializer_list<std::string> insertions);

} // namespace vnquery
