// Files as the content of stores, and back.
#pragma once

#include <vnbytstr/vnbytstr.h>

#include <string>

namespace vnquery {

/// Makes the file the store's content; as it lies where it may be written, else as a copy. The file
/// stays. Throws the library's exceptions.
void OpenAsStore(CByteStore& store, const std::string& name);

/// Makes the content the file `name`; the store may be empty afterwards.
void SaveStore(CByteStore& store, const std::string& name);

} // namespace vnquery
