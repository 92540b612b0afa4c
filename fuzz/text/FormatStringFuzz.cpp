// Formats of any bytes with arguments of every kind: none reads past them, and a refused one leaves
// the string as it was.
#include "fuzz/FuzzInput.h"
#include "vnbytstr/Messages.h"

#include <string>

using vnbytstr::fuzz::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string format(data, data + size);
    for (const int first : {7, -3}) {
        CString out = "as it was";
        const int length =
            FormatString(out, format.c_str(), first, "text", 2.5, DWORD{9}, nullptr, &out, 'c');
        Require(length >= 0 ? length == out.GetLength() : out.Compare("as it was") == 0);
    }
    const char* const texts[] = {"one", nullptr};
    CString filled;
    FormatStringEx(filled, format.c_str(), texts[0], texts[1]);
    Require(static_cast<std::size_t>(filled.GetLength()) <= 2 * size);
    return 0;
}
