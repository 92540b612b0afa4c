#include "DesFile.h"

#include "Failure.h"
#include "StoreFile.h"

namespace vnquery {

namespace {

CByteStream EightBytes(const char* option, const std::string& hex) {
    CByteStream bytes(hex.c_str());
    if (bytes.GetLength() != 8)
        throw Failure(kBadUsage, std::string(option) +
                                     " needs 8 bytes as 16 hexadecimal digits, such as "
                                     "133457799BBCDFF1.");
    return bytes;
}

/// Refuses what the cipher would not give back.
void CheckLength(const DesRequest& request, DWORD length) {
    if (length % 8 != 0 && !(request.encrypt && request.pad))
        throw Failure(kBadUsage, request.input + " has " + std::to_string(length) +
                                     " bytes, which is no multiple of 8. " +
                                     (request.encrypt ? "Add --des-pad, or bytes."
                                                      : "It is no whole result of this cipher."));
    if (request.encrypt && request.pad && length >= CBytePage::m_dwPageSize)
        throw Failure(kBadUsage, request.input + " has " + std::to_string(length) +
                                     " bytes; padding goes up to 32767. Leave --des-pad out.");
}

} // namespace

void RunDes(const DesRequest& request) {
    const CByteStream key = EightBytes("--des-key", request.key);
    const CByteStream vector = EightBytes("--des-iv", request.vector);
    CByteStore content, result;
    WithMessage("cannot read " + request.input, [&] { OpenAsStore(content, request.input); });
    CheckLength(request, content.GetLength());
    const std::string action = request.encrypt ? "cannot encipher " : "cannot decipher ";
    WithMessage(action + request.input, [&] {
        const int done = request.encrypt
                             ? content.Encrypt(key, vector, request.mode, request.pad, result)
                             : content.Decrypt(key, vector, request.mode, request.pad, result);
        if (!done)
            throw Failure(kBadUsage, action + request.input +
                                         ": the key, the mode or the padding is another one.");
    });
    WithMessage("cannot write " + request.output, [&] { SaveStore(result, request.output); });
}

} // namespace vnquery
