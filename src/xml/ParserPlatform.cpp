#include "src/xml/ParserPlatform.h"

#include "src/xml/ParserMemory.h"

#include <xercesc/util/PanicHandler.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

#include <cstdlib>
#include <new>

namespace vnbytstr::detail {

namespace {

/// What initialising takes, with room to spare: 800 KB, most of it for a short while.
constexpr std::size_t kReserve = std::size_t{1} << 20;
constexpr std::size_t kCushion = std::size_t{64} << 10; // small enough to come from the heap

/// The platform's own handler ends the process when initialising fails.
class ThrowingPanicHandler final : public xercesc::PanicHandler {
public:
    void panic(PanicReasons) override { throw std::bad_alloc(); }
};

} // namespace

/// When initialising fails midway, the parser can neither continue nor clean up, so its memory is
/// secured in advance: a reserve for what comes through the memory manager, and a block freed just
/// before for the little that it and ICU take from malloc themselves.
bool BeginParserPlatform(const char* messageFolder) noexcept {
    static ThrowingPanicHandler panicHandler;
    static bool isBroken = false; // callers come one at a time
    ParserMemory& memory = ParserMemory::Process();
    if (isBroken || !memory.BeginReserve(kReserve))
        return false;
    std::free(std::malloc(kCushion));
    try {
        // An application that was first has chosen the platform's memory manager already; our
        // documents use ours all the same.
        xercesc::XMLPlatformUtils::Initialize(xercesc::XMLUni::fgXercescDefaultLocale,
                                              messageFolder, &panicHandler, &memory);
    } catch (...) {      // objects of several families
        isBroken = true; // for the life of the process: better than a platform half initialised
    }
    memory.EndReserve();
    return !isBroken;
}

void EndParserPlatform() noexcept {
    xercesc::XMLPlatformUtils::Terminate();
    ParserMemory::Process().Trim();
}

} // namespace vnbytstr::detail
