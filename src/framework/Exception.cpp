#include "vnbytstr/framework/Exception.h"

#include <cerrno>
#include <cstddef>
#include <new>
#include <string>
#include <string_view>
#include <system_error>

IMPLEMENT_DYNAMIC(CException, CObject)
IMPLEMENT_DYNAMIC(CMemoryException, CException)
IMPLEMENT_DYNAMIC(CInvalidArgException, CException)
IMPLEMENT_DYNAMIC(CUserException, CException)
IMPLEMENT_DYNAMIC(CFileException, CException)
IMPLEMENT_DYNAMIC(CArchiveException, CException)

namespace {

// The longest beginning of `text` that has at most `room` bytes and ends with a whole UTF-8
// sequence.
std::size_t WholeCharacters(std::string_view text, std::size_t room) {
    if (text.size() <= room)
        return text.size();
    std::size_t cut = room;
    while (cut > 0 && room - cut < 3 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80)
        --cut;
    // No lead byte there: not UTF-8, so any place is as good.
    return (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80 ? room : cut;
}

BOOL CopyMessage(std::string_view text, char* buffer, UINT size, UINT* helpContext) {
    if (helpContext != nullptr)
        *helpContext = 0;
    if (buffer == nullptr || size == 0)
        return FALSE;
    const std::size_t length = WholeCharacters(text, size - 1);
    text.copy(buffer, length);
    buffer[length] = '\0';
    return text.empty() ? FALSE : TRUE;
}

// A sentence about a file is `subject "name" predicate`, then what to do.
struct Wording {
    const char* m_predicate;
    const char* m_advice;
};

Wording FileWording(int cause) {
    switch (cause) {
    case CFileException::fileNotFound:
        return {"was not found.", "Check the name and the folder."};
    case CFileException::badPath:
        return {"cannot be reached by this name.", "Check the folders in it."};
    case CFileException::tooManyOpenFiles:
        return {"cannot be opened: too many files are open.", "Close some and try again."};
    case CFileException::accessDenied:
        return {"cannot be used: access was denied.",
                "Check the permissions, and whether a file of that name is there already."};
    case CFileException::invalidFile:
        return {"is not open, or not open for this.", "Open it again."};
    case CFileException::removeCurrentDir:
        return {"is the current folder and cannot be removed.", "Change to another folder first."};
    case CFileException::directoryFull:
        return {"cannot be made: its folder is full.",
                "Remove files there, or use another folder."};
    case CFileException::badSeek:
        return {"has no such position, or allows no change of position.", ""};
    case CFileException::hardIO:
        return {"could not be read or written: the device failed.",
                "Check the device; the file may be damaged."};
    case CFileException::sharingViolation:
        return {"is in use by another program.", "Close it there and try again."};
    case CFileException::lockViolation:
        return {"is locked by another program.", "Try again when that program has finished."};
    case CFileException::diskFull:
        return {"cannot be written: there is no room on the disk.",
                "Free some space and try again."};
    case CFileException::endOfFile:
        return {"ended earlier than expected.", "It may be damaged or cut short."};
    default:
        return {"could not be used.", ""};
    }
}

Wording ArchiveWording(int cause) {
    switch (cause) {
    case CArchiveException::readOnly:
        return {"was opened for reading and cannot be written.", ""};
    case CArchiveException::writeOnly:
        return {"was opened for writing and cannot be read.", ""};
    case CArchiveException::endOfFile:
        return {"ended earlier than expected.", "It may be damaged or cut short."};
    case CArchiveException::badIndex:
    case CArchiveException::badClass:
        return {"has a content that does not fit.",
                "It may be damaged, or made by another program."};
    case CArchiveException::badSchema:
        return {"was made by another version of the program.", "Use that version to open it."};
    default:
        return {"could not be used.", ""};
    }
}

std::string Sentence(const char* subject, const CString& name, const Wording& wording,
                     LONG osError) {
    std::string text = subject;
    if (!name.IsEmpty())
        text.append(" \"").append(name).append("\"");
    text.append(" ").append(wording.m_predicate);
    if (osError > 0) {
        text.append(" The system says: ")
            .append(std::generic_category().message(osError))
            .append(" (error ")
            .append(std::to_string(osError))
            .append(").");
    }
    if (*wording.m_advice != '\0')
        text.append(" ").append(wording.m_advice);
    return text;
}

} // namespace

void CException::Delete() {
    if (m_bAutoDelete)
        delete this;
}

BOOL CException::GetErrorMessage(char* buffer, UINT size, UINT* helpContext) const {
    return CopyMessage({}, buffer, size, helpContext);
}

BOOL CMemoryException::GetErrorMessage(char* buffer, UINT size, UINT* helpContext) const {
    return CopyMessage("There is not enough memory. Close other programs or windows and try again.",
                       buffer, size, helpContext);
}

BOOL CInvalidArgException::GetErrorMessage(char* buffer, UINT size, UINT* helpContext) const {
    return CopyMessage("The program asked for something that is not there. The operation was not "
                       "carried out; please report this.",
                       buffer, size, helpContext);
}

BOOL CFileException::GetErrorMessage(char* buffer, UINT size, UINT* helpContext) const {
    if (m_cause == none)
        return CopyMessage("No error occurred.", buffer, size, helpContext);
    return CopyMessage(Sentence("The file", m_strFileName, FileWording(m_cause), m_lOsError),
                       buffer, size, helpContext);
}

BOOL CArchiveException::GetErrorMessage(char* buffer, UINT size, UINT* helpContext) const {
    if (m_cause == none)
        return CopyMessage("No error occurred.", buffer, size, helpContext);
    return CopyMessage(Sentence("The archive", m_strFileName, ArchiveWording(m_cause), -1), buffer,
                       size, helpContext);
}

int CFileException::OsErrorToException(LONG osError) {
    switch (osError) {
    case 0:
        return none;
    case ENOENT:
        return fileNotFound;
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP:
        return badPath;
    case EMFILE:
    case ENFILE:
        return tooManyOpenFiles;
    case EACCES:
    case EPERM:
    case EROFS:
    case EEXIST:
    case EISDIR:
    case ENOTEMPTY:
        return accessDenied;
    case EBADF:
        return invalidFile;
    case EMLINK:
        return directoryFull;
    case ESPIPE:
    case EOVERFLOW:
        return badSeek;
    case EIO:
    case ENXIO:
    case ENODEV:
        return hardIO;
    case ETXTBSY:
    case EBUSY:
        return sharingViolation;
    case EAGAIN:
    case ENOLCK:
    case EDEADLK:
        return lockViolation;
    case ENOSPC:
    case EFBIG:
#ifdef EDQUOT
    case EDQUOT:
#endif
        return diskFull;
    default:
        return genericException;
    }
}

void CFileException::ThrowOsError(LONG osError, const char* fileName) {
    AfxThrowFileException(OsErrorToException(osError), osError, fileName);
}

void AfxThrowMemoryException() {
    // Made beforehand, never freed: when memory is short there may be none for the exception.
    alignas(CMemoryException) static std::byte place[sizeof(CMemoryException)];
    static auto* const exception = new (place) CMemoryException(FALSE);
    throw exception;
}

void AfxThrowInvalidArgException() { throw new CInvalidArgException; }

void AfxThrowUserException() { throw new CUserException; }

void AfxThrowFileException(int cause, LONG osError, const char* fileName) {
    throw new CFileException(cause, osError, fileName);
}

void AfxThrowArchiveException(int cause, const char* fileName) {
    throw new CArchiveException(cause, fileName);
}
