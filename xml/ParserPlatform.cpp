#include "xml/ParserPlatformInternal.h"

#include "xml/ParserMemoryInternal.h"

#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLUni.hpp>

namespace vnbytstr::detail {

bool BeginParserPlatform(const char* messageFolder) noexcept {
    using namespace xercesc;
    try {
        // An application that was first has chosen the platform's memory manager already; our
        // documents use ours all the same.
        XMLPlatformUtils::Initialize(XMLUni::fgXercescDefaultLocale, messageFolder, nullptr,
                                     &ParserMemory::Process());
        return true;
    } catch (const XMLException&) {
        return false;
    } catch (const OutOfMemoryException&) {
        return false;
    } catch (...) {
        return false;
    }
}

void EndParserPlatform() noexcept {
    xercesc::XMLPlatformUtils::Terminate();
    ParserMemory::Process().Trim();
}

} // namespace vnbytstr::detail
