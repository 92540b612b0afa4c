#include "Translation.h"

#include "Failure.h"
#include "TargetFile.h"
#include "Value.h"

namespace vnquery {

namespace {

/// Makes the file the store's content; as it lies where it may be written, else as a copy.
void OpenAsStore(CByteStore& store, const std::string& name) {
    store.SetAutoDelete(FALSE);
    try {
        store.SetFileName(name.c_str());
        return;
    } catch (CFileException* error) {
        const bool isProtected = error->m_cause == CFileException::accessDenied;
        if (!isProtected)
            throw;
        error->Delete();
    }
    CFile file(name.c_str(), CFile::modeRead);
    store.Empty();
    store.SetAutoDelete(TRUE);
    const auto piece = std::make_unique<BYTE[]>(kPieceSize);
    while (const UINT count = file.Read(piece.get(), kPieceSize))
        store.Concat(piece.get(), count);
}

} // namespace

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
    WithMessage("cannot write " + to, [&] {
        if (IsReplaceable(to))
            translated.SaveToFile(to.c_str());
        else
            translated.CopyToFile(to.c_str());
    });
}

} // namespace vnquery
