#include "vnbytstr/TempFileName.h"

#include "src/os/System.h"
#include "vnbytstr/framework/Exception.h"

#include <atomic>

using vnbytstr::FileStatus;
using vnbytstr::System;

namespace {
std::atomic<DWORD> g_counter{0};
} // namespace

void GenerateTempFileName(CString& out, const char* prefix, const char* extension) {
    System& system = System::Current();
    const std::string folder =
        vnbytstr::detail::WithMemoryException([&] { return system.GetTemporaryFolder(); });
    FileStatus status;
    do {
        out.Format("%s~%s-%u-%u.%s", folder.c_str(), prefix ? prefix : "tmp",
                   unsigned{system.GetProcessId()}, unsigned{g_counter.fetch_add(1)},
                   extension ? extension : "tmp");
    } while (system.GetFileStatus(static_cast<const char*>(out), status) == 0);
}

void GenerateLOBFileName(CString& out) { GenerateTempFileName(out, nullptr, "lob"); }

void GetTemporaryPath(CString& out) {
    out = vnbytstr::detail::WithMemoryException([] {
              return System::Current().GetTemporaryFolder();
          }).c_str();
}
