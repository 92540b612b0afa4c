// Finding a pattern in a store, a stream, memory and pieces against the standard library's search.
// Text and pattern are made of repeated units of the input; in the store the text lies across the
// end of a page.
#include "fuzz/FuzzInput.h"
#include "src/bytestore/ByteSearch.h"
#include "src/os/CpuKernel.h"
#include "vnbytstr/ByteStream.h"

using namespace vnbytstr;
using fuzz::Require;

namespace {

constexpr std::size_t kMaxText = 4096, kMaxPattern = 600;

std::string Repeated(fuzz::Input& input, std::size_t most) {
    std::string text;
    for (int part = 0; part < 2; ++part) {
        const std::size_t times = input.Byte();
        const std::string unit = input.Bytes(input.Byte() % 16);
        for (std::size_t i = 0; i < times && text.size() + unit.size() <= most; ++i)
            text += unit;
    }
    return text;
}

std::span<const BYTE> Bytes(const std::string& text) {
    return {reinterpret_cast<const BYTE*>(text.data()), text.size()};
}

std::size_t InPieces(const std::string& text, const std::string& pattern, std::size_t piece) {
    detail::ByteSearcher searcher(Bytes(pattern));
    for (std::size_t at = 0; at <= text.size(); at += piece) {
        const auto found =
            searcher.Feed(Bytes(text).subspan(at, std::min(piece, text.size() - at)));
        if (found)
            return static_cast<std::size_t>(*found);
    }
    return std::string::npos;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const Kernel kernel = AvailableKernels()[input.Byte() % AvailableKernels().size()];
    const std::size_t from = input.Number() % (kMaxText + 2);
    const std::size_t piece = 1 + input.Number() % 700;
    const auto before = static_cast<DWORD>(CBytePage::m_dwPageSize - input.Number() % kMaxText);
    std::string pattern = Repeated(input, kMaxPattern);
    std::string text = Repeated(input, kMaxText);
    if (input.Byte() % 2 != 0) // it is there, or nearly
        text += pattern.substr(0, pattern.size() -
                                      std::min<std::size_t>(pattern.size(), input.Byte() % 2));
    text += input.Rest().substr(0, kMaxText);

    const Kernel previous = ForceKernel(kernel);
    const std::size_t expected = text.find(pattern, from);
    const DWORD inContainer =
        expected == std::string::npos ? CByteStore::kNotFound : static_cast<DWORD>(expected);
    const std::optional<std::size_t> inMemory =
        detail::FindBytes(Bytes(text), Bytes(pattern), from);
    Require(inMemory.value_or(std::string::npos) == expected);
    Require(InPieces(text, pattern, piece) == text.find(pattern));

    const auto length = static_cast<DWORD>(text.size());
    const CByteStream sought(Bytes(pattern).data(), static_cast<DWORD>(pattern.size()));
    const CByteStream stream(Bytes(text).data(), length);
    Require(stream.Find(sought, static_cast<DWORD>(from)) == inContainer);
    CByteStore store;
    store.Concat(before); // nothing is stored below the start
    store.Concat(Bytes(text).data(), length);
    const DWORD found = store.Find(sought, before + static_cast<DWORD>(from));
    Require(found == (inContainer == CByteStore::kNotFound ? inContainer : before + inContainer));
    const std::size_t first = text.find(pattern);
    Require(
        store.Find(sought) ==
        (first == std::string::npos ? CByteStore::kNotFound : before + static_cast<DWORD>(first)));
    ForceKernel(previous);
    return 0;
}
