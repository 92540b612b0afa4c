#include "vnquery/files/FileCipher.h"

#include "vnquery/files/FileContent.h"
#include "vnquery/messages/Messages.h"
#include "vnquery/tasks/Failure.h"

namespace vnquery {

namespace {

CByteStream EightBytes(const char* option, const std::string& hex) {
    CByteStream bytes(hex.c_str());
    if (bytes.GetLength() != 8)
        throw Failure(kBadUsage, Text(IDS_VQ_DES_NEEDS_BYTES, {option}));
    return bytes;
}

/// Refuses lengths that deciphering could not restore.
void CheckLength(const DesRequest& request, DWORD length) {
    if (length % 8 != 0 && !(request.encrypt && request.pad))
        throw Failure(kBadUsage,
                      Text(request.encrypt ? IDS_VQ_DES_NO_MULTIPLE : IDS_VQ_DES_NO_RESULT,
                           {request.input, std::to_string(length)}));
    if (request.encrypt && request.pad && length >= CBytePage::m_dwPageSize)
        throw Failure(kBadUsage, Text(IDS_VQ_DES_PADDING, {request.input, std::to_string(length)}));
}

} // namespace

void CipherFile(const DesRequest& request) {
    const CByteStream key = EightBytes("--des-key", request.key);
    const CByteStream vector = EightBytes("--des-iv", request.vector);
    CByteStore content, result;
    WithMessage(Text(IDS_VQ_CANNOT_READ_FILE, {request.input}),
                [&] { OpenAsStore(content, request.input); });
    CheckLength(request, content.GetLength());
    const std::string what =
        Text(request.encrypt ? IDS_VQ_CANNOT_ENCIPHER : IDS_VQ_CANNOT_DECIPHER, {request.input});
    WithMessage(what, [&] {
        const int done = request.encrypt
                             ? content.Encrypt(key, vector, request.mode, request.pad, result)
                             : content.Decrypt(key, vector, request.mode, request.pad, result);
        if (!done)
            throw Failure(kBadUsage, what + ": " + Text(IDS_VQ_DES_WRONG_KEY));
    });
    WithMessage(Text(IDS_VQ_CANNOT_WRITE_FILE, {request.output}),
                [&] { result.SaveToFile(request.output.c_str()); });
}

} // namespace vnquery
