#include "vnquery/files/FileContent.h"

#include "vnquery/result/Value.h"

namespace vnquery {

void OpenAsStore(CByteStore& store, const std::string& name) {
    store.SetAutoDelete(FALSE);
    try {
        store.SetFileName(name.c_str());
        return;
    } catch (CFileException* error) {
        if (error->m_cause != CFileException::accessDenied)
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

} // namespace vnquery
