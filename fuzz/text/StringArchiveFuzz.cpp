// ReadStringWithLengthFromArchive on any archive: strings come out until the archive ends. The
// first byte of the input chooses the code page.
#include "fuzz/FuzzInput.h"
#include "vnbytstr/StringPersistence.h"
#include "vnbytstr/framework/Exception.h"

using namespace vnbytstr;
using fuzz::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const ScopedCodePage page(fuzz::PageOf(*data++));
    --size;
    CMemFile file;
    fuzz::Fill(file, data, size);
    CArchive archive(&file, CArchive::load, 128);
    for (;;) {
        CString text("before");
        try {
            ReadStringWithLengthFromArchive(archive, text);
            Require(static_cast<std::size_t>(text.GetLength()) <= 2 * size + 2);
        } catch (CArchiveException* error) {
            Require(error->m_cause == CArchiveException::endOfFile && text == "before");
            error->Delete();
            break;
        }
    }
    archive.Abort();
    return 0;
}
