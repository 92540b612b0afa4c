// An open file that is closed with the object that holds it.
#pragma once

#include "src/os/System.h"

#include <utility>

namespace vnbytstr {

class OpenHandle {
public:
    OpenHandle() = default;
    ~OpenHandle() { Close(); }
    OpenHandle(const OpenHandle&) = delete;
    OpenHandle& operator=(const OpenHandle&) = delete;

    /// Closes the file now, if one is open; 0 or an error number.
    int Close() {
        return handle == kNoFile ? 0 : System::Current().CloseFile(std::exchange(handle, kNoFile));
    }

    FileHandle handle = kNoFile;
};

} // namespace vnbytstr
