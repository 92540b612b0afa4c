#include "src/resources/Trace.h"

#include "src/os/System.h"

#include <atomic>

namespace vnbytstr::detail {

bool IsTracing() {
    // The count of the system that was asked, times two, plus the answer.
    static std::atomic<unsigned> known{~0u};
    const unsigned count = System::InstallCount();
    unsigned answer = known.load(std::memory_order_relaxed);
    if (answer / 2 != (count & (~0u >> 1))) {
        const bool wanted = System::Current().GetEnvironment("VNBYTSTR_TRACE") == "1";
        answer = count * 2 + (wanted ? 1u : 0u);
        known.store(answer, std::memory_order_relaxed);
    }
    return answer % 2 != 0;
}

void Trace(const char* format, ...) {
    if (!IsTracing())
        return;
    CString line;
    std::va_list arguments;
    va_start(arguments, format);
    line.FormatV(format, arguments);
    va_end(arguments);
    System::Current().WriteDiagnostic(line);
}

} // namespace vnbytstr::detail
