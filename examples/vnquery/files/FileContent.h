// The bytes of a file as the content of a store.
#pragma once

#include "vnbytstr/ByteStore.h"

#include <string>

namespace vnquery {

/// Makes the file the store's content: in place where it may be written, else as a copy. The file
/// itself is not changed. Throws the library's exceptions.
void OpenAsStore(CByteStore& store, const std::string& name);

} // namespace vnquery
