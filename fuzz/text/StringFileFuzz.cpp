// ReadStringFromFile on any file: the text is terminated, the length is the file's, and what is not
// Unicode comes back as it is. The first byte of the input chooses the code page.
#include "fuzz/FuzzInput.h"
#include "vnbytstr/StringPersistence.h"

#include <cstring>

using namespace vnbytstr;
using fuzz::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const ScopedCodePage page(fuzz::PageOf(*data++));
    --size;
    CMemFile file;
    fuzz::Fill(file, data, size);
    char* text = nullptr;
    bool converted = false, hadMark = false;
    Require(ReadStringFromFile(file, text, converted, hadMark) == size);
    const std::size_t length = std::strlen(text);
    const bool hasMark = size >= 2 && data[0] == 0xFF && data[1] == 0xFE;
    Require(hadMark == hasMark);
    Require(converted || (length <= size && (size == 0 || std::memcmp(text, data, size) == 0)));
    Require(!converted || length <= 2 * size + 2);
    if (converted) { // what was read is written and read back without a change
        const CString once(text);
        CMemFile second;
        WriteStringToFile(second, once);
        second.SeekToBegin();
        char* again = nullptr;
        ReadStringFromFile(second, again, converted, hadMark);
        Require(converted && hadMark && once == again);
        std::free(again);
    }
    std::free(text);
    return 0;
}
