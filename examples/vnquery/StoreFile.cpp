#include "StoreFile.h"

#include "OutputFile.h"
#include "Value.h"

namespace vnquery {

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

void SaveStore(CByteStore& store, const std::string& name) {
    if (IsReplaceable(name))
        store.SaveToFile(name.c_str());
    else
        store.CopyToFile(name.c_str());
}

} // namespace vnquery
