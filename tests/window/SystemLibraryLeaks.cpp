/// Libraries below the windows keep a little of their own for the life of the process, where nobody
/// sees it.
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() { return "leak:libfontconfig\nleak:libdbus-1"; }
