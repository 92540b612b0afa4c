#include "vnquery/files/FileTranslation.h"

#include "vnquery/files/FileContent.h"
#include "vnquery/messages/Messages.h"
#include "vnquery/tasks/Failure.h"

namespace vnquery {

void TranslateFile(WORD fromCcsid, WORD toCcsid, const std::string& from, const std::string& to) {
    CByteStore text;
    CByteStore translated;
    WithMessage(Text(IDS_VQ_CANNOT_READ_FILE, {from}), [&] { OpenAsStore(text, from); });
    WithMessage(Text(IDS_VQ_CANNOT_TRANSLATE, {from}), [&] {
        if (!text.TranslateCCSID(fromCcsid, toCcsid, translated))
            throw Failure(kBadUsage, Text(IDS_VQ_UNKNOWN_CCSIDS, {from, std::to_string(fromCcsid),
                                                                  std::to_string(toCcsid)}));
    });
    WithMessage(Text(IDS_VQ_CANNOT_WRITE_FILE, {to}), [&] { translated.SaveToFile(to.c_str()); });
}

} // namespace vnquery
