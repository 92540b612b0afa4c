// A text translated in slices of any size, into buffers of any size, against the whole of it at
// once: the same bytes, and the same report. With and without stopping and a change of layout.
#include "fuzz/FuzzInput.h"
#include "src/os/CpuKernel.h"
#include "vnbytstr/Ccsid.h"

#include <vector>

using namespace vnbytstr;
using fuzz::Require;

namespace {

constexpr std::array<WORD, 22> kSets = {37,   273,  420,  424,  930,  933, 935, 939,
                                        1388, 819,  437,  1252, 1255, 932, 936, 1392,
                                        954,  1200, 1202, 1204, 1208, 1232};

struct Outcome {
    bool isDone = false;
    std::vector<BYTE> bytes;
    STranslationReport report;
};

/// Sizes of slices and buffers, over and over.
struct Sizes {
    std::array<std::size_t, 5> values{};
    std::size_t at = 0;
    std::size_t Next() { return values[at++ % values.size()]; }
};

Outcome InSlices(CCCSIDTranslation* translation, const std::string& text, Sizes slices,
                 Sizes rooms) {
    Outcome outcome;
    const auto* in = reinterpret_cast<const BYTE*>(text.data());
    std::size_t left = text.size();
    for (;;) {
        std::size_t slice = std::min(slices.Next(), left);
        const bool isLast = slice == left;
        ETranslation result = translationMore;
        for (int idle = 0; result == translationMore;) {
            std::vector<BYTE> out(1 + rooms.Next());
            auto taken = static_cast<DWORD>(slice), made = static_cast<DWORD>(out.size());
            result = TranslateCCSIDEx(translation, in, &taken, out.data(), &made, isLast);
            Require(taken <= slice && made <= out.size());
            idle = taken + made == 0 ? idle + 1 : 0;
            Require(result != translationMore || idle < 1);
            Require(result != translationDone || taken == slice);
            outcome.bytes.insert(outcome.bytes.end(), out.begin(), out.begin() + made);
            in += taken;
            slice -= taken;
            left -= taken;
        }
        if (result == translationFailed || isLast) {
            outcome.isDone = TranslateEndEx(translation, &outcome.report) != FALSE;
            Require(outcome.isDone == (result == translationDone));
            return outcome;
        }
    }
}

Outcome AtOnce(WORD from, WORD to, const std::string& text, const SCCSIDLayout* layout,
               UINT options) {
    Outcome outcome;
    outcome.bytes.resize(8 * text.size() + 64);
    auto length = static_cast<DWORD>(outcome.bytes.size());
    outcome.isDone = TranslateCCSID(from, to, reinterpret_cast<const BYTE*>(text.data()),
                                    static_cast<DWORD>(text.size()), outcome.bytes.data(), &length,
                                    layout, options, &outcome.report) != FALSE;
    Require(length <= outcome.bytes.size());
    outcome.bytes.resize(length);
    return outcome;
}

void RequireSame(const Outcome& a, const Outcome& b) {
    Require(a.isDone == b.isDone && a.bytes == b.bytes);
    Require(a.report.ullProduced == b.report.ullProduced);
    Require(a.report.ullUntranslatable == b.report.ullUntranslatable);
    Require(a.report.ullFirstUntranslatable == b.report.ullFirstUntranslatable);
    Require(a.report.ullMalformed == b.report.ullMalformed);
    Require(a.report.ullFirstMalformed == b.report.ullFirstMalformed);
    Require(!a.isDone || a.report.ullConsumed == b.report.ullConsumed);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const WORD from = kSets[input.Byte() % kSets.size()], to = kSets[input.Byte() % kSets.size()];
    const std::uint8_t choice = input.Byte();
    const UINT options = choice & (translateStop | translateSwapNewLine);
    SCCSIDLayout layout;
    layout.eFromOrder = (choice & 8) != 0 ? bidiVisual : bidiLogical;
    layout.eToDirection = static_cast<EBidiDirection>((choice >> 4) % 3);
    layout.eShaping = static_cast<EBidiShaping>((choice >> 6) % 3);
    const SCCSIDLayout* const used = (choice & 4) != 0 ? &layout : nullptr;
    Sizes slices, rooms;
    for (std::size_t& value : slices.values)
        value = input.Byte() % 48;
    slices.values.back() += 1; // some bytes are taken in every round
    for (std::size_t& value : rooms.values)
        value = input.Byte() % 48;
    const std::string text = input.Rest();

    const Kernel before = ForceKernel(Kernel::Plain);
    const Outcome whole = AtOnce(from, to, text, used, options);
    Require(whole.isDone || (options & translateStop) != 0);
    Require(!whole.isDone || whole.report.ullConsumed == text.size());
    Require(whole.report.ullProduced == whole.bytes.size());
    ForceKernel(before);
    RequireSame(AtOnce(from, to, text, used, options), whole);
    CCCSIDTranslation* const translation = TranslateBeginEx(from, to, used, options);
    Require(translation != nullptr);
    RequireSame(InSlices(translation, text, slices, rooms), whole);
    return 0;
}
