// Reading hexadecimal text: every kernel reads the same, in any pieces, and what it read can be
// written and read again. The first byte of the input is the size of a piece.
#include "fuzz/FuzzInput.h"
#include "src/charset/HexText.h"
#include "src/os/CpuKernel.h"

#include <string>
#include <vector>

using namespace vnbytstr;
using fuzz::Require;

namespace {

std::vector<BYTE> Decode(const std::string& text, std::size_t piece) {
    std::vector<BYTE> bytes;
    for (std::size_t at = 0;;) {
        std::vector<BYTE> out(piece);
        const detail::HexDecoded done =
            detail::DecodeHex(text.data() + at, text.size() - at, out.data(), piece);
        Require(done.produced <= piece && done.consumed <= text.size() - at);
        bytes.insert(bytes.end(), out.begin(),
                     out.begin() + static_cast<std::ptrdiff_t>(done.produced));
        if (done.ended)
            return bytes;
        Require(done.produced == piece);
        at += done.consumed;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::size_t piece = data[0] + std::size_t{1};
    const std::string text(data + 1, data + size);
    const Kernel before = ForceKernel(Kernel::Plain);
    const std::vector<BYTE> bytes = Decode(text, text.size() + 1);
    for (const Kernel kernel : AvailableKernels()) {
        ForceKernel(kernel);
        Require(Decode(text, piece) == bytes);
        std::string written(2 * bytes.size(), '\0');
        detail::EncodeHex(bytes, written.data());
        Require(Decode(written, piece) == bytes);
        std::string spaced(bytes.empty() ? 0 : 3 * bytes.size() - 1, '\0');
        detail::EncodeHexSpaced(bytes, spaced.data(), detail::HexCase::Lower);
        Require(Decode(spaced, piece) == bytes);
    }
    ForceKernel(before);
    return 0;
}
