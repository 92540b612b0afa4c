// resource_dump FILE: prints the strings of a PE file, each as id=text in UTF-8 and a NUL.
#include "src/charset/CodePage.h"
#include "vnbytstr/ResourceLibrary.h"

#include <cstdio>

int main(int argc, char** argv) {
    using namespace vnbytstr;
    const ScopedCodePage utf8(65001);
    HINSTANCE library = nullptr;
    if (argc != 2 || LoadResourceLibrary(argv[1], library) != 0)
        return 1;
    for (const UINT id : ListResourceStrings(library)) {
        CString text;
        FindResourceString(library, id, text);
        std::printf("%u=%s%c", id, static_cast<const char*>(text), '\0');
    }
    return 0;
}
