#include "Translation.h"

#include "Failure.h"
#include "StoreFile.h"

namespace vnquery {

void TranslateFile(WORD fromCcsid, WORD toCcsid, const std::string& from, const std::string& to) {
    const std::string pair = std::to_string(fromCcsid) + " to CCSID " + std::to_string(toCcsid);
    CByteStore text;
    CByteStore translated;
    WithMessage("cannot read " + from, [&] { OpenAsStore(text, from); });
    WithMessage("cannot translate " + from, [&] {
        if (!text.TranslateCCSID(fromCcsid, toCcsid, translated))
            throw Failure(kBadUsage, "cannot translate " + from + " from CCSID " + pair +
                                         ": one of the two is not known.");
    });
    WithMessage("cannot write " + to, [&] { SaveStore(translated, to); });
}

} // namespace vnquery
