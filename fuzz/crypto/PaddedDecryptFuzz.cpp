// Deciphering arbitrary bytes, with padding: the result is what the blocks one by one
// and the chain by hand give, less what the last byte says, or nothing. And what was enciphered
// comes back, at once and in segments.
#include "fuzz/FuzzInput.h"
#include "src/os/CpuKernel.h"
#include "vnbytstr/ByteStream.h"
#include "vnbytstr/DES.h"

using namespace vnbytstr;
using fuzz::Require;

namespace {

const BYTE* Bytes(const std::string& text) { return reinterpret_cast<const BYTE*>(text.data()); }
CByteStream Stream(const std::string& text) {
    return {Bytes(text), static_cast<DWORD>(text.size())};
}
std::string Content(const CByteStream& stream) {
    std::string text(stream.GetLength(), '\0');
    if (!text.empty())
        stream.CopyTo(0, reinterpret_cast<BYTE*>(text.data()), stream.GetLength(),
                      stream.GetLength());
    return text;
}

struct Setting {
    std::string key, vector;
    CDES::EMode mode;
    CDES Cipher(bool pad) const {
        CDES cipher(Bytes(key), 8);
        cipher.SetInitializationVector(Bytes(vector), 8);
        cipher.SetMode(mode);
        cipher.SetPad(pad);
        return cipher;
    }
};

/// Block by block; a partial last one filled with zeros.
std::string ByHand(const Setting& setting, std::string text) {
    const std::size_t length = text.size();
    text.resize((length + 7) / 8 * 8);
    CDES cipher(Bytes(setting.key), 8);
    std::string plain, chain = setting.vector;
    for (std::size_t at = 0; at < text.size(); at += 8) {
        const std::string block = text.substr(at, 8);
        std::string out(8, '\0');
        int room = 8;
        cipher.Decrypt(Bytes(block), 8, reinterpret_cast<BYTE*>(out.data()), room);
        for (std::size_t i = 0; i < 8 && setting.mode == CDES::eCBC; ++i)
            out[i] = static_cast<char>(out[i] ^ chain[i]);
        chain = block;
        plain += out;
    }
    return plain.substr(0, length);
}

void DecryptAny(const Setting& setting, const std::string& text) {
    const CByteStream key = Stream(setting.key), vector = Stream(setting.vector);
    const std::string plain = ByHand(setting, text);
    const std::size_t padding = text.empty() ? 0 : static_cast<BYTE>(plain.back());
    const bool isPossible = padding <= text.size() && text.size() <= CBytePage::m_dwPageSize;

    CByteStream stream = Stream(text);
    Require(stream.Decrypt(key, vector, setting.mode, true) == (isPossible ? 1 : 0));
    Require(Content(stream) == (isPossible ? plain.substr(0, text.size() - padding) : text));
    CByteStore store(Stream(text)), deciphered(Stream("before"));
    Require(store.Decrypt(key, vector, setting.mode, true, deciphered) == (isPossible ? 1 : 0));
    Require(isPossible ? deciphered == stream : deciphered.IsEmpty() != FALSE);

    std::string blocks = text;
    blocks.resize((text.size() + 7) / 8 * 8);
    int length = static_cast<int>(blocks.size());
    CDES cipher = setting.Cipher(true);
    cipher.Decrypt(Bytes(blocks), static_cast<int>(text.size()),
                   reinterpret_cast<BYTE*>(blocks.data()), length); // in place
    Require(length == static_cast<int>(text.size()) - static_cast<int>(padding));
    Require(blocks.substr(0, text.size()) == plain);
}

void RoundTrip(const Setting& setting, const std::string& text) {
    const CByteStream key = Stream(setting.key), vector = Stream(setting.vector);
    CByteStream stream = Stream(text);
    Require(stream.Encrypt(key, vector, setting.mode, true) == 1);
    const std::string secret = Content(stream);
    Require(secret.size() == text.size() / 8 * 8 + 8);
    const auto padding = static_cast<char>(secret.size() - text.size());
    Require(ByHand(setting, secret) == text + std::string(static_cast<BYTE>(padding), padding));
    Require(stream.Decrypt(key, vector, setting.mode, true) == 1 && Content(stream) == text);
}

void InSegments(const Setting& setting, const std::string& text, std::size_t blocks) {
    const std::string secret = text.substr(0, text.size() / 8 * 8);
    CDES cipher = setting.Cipher(false);
    cipher.SetSegmented(true);
    std::string plain(secret.size(), '\0');
    for (std::size_t at = 0; at < secret.size();) {
        const std::size_t count = std::min(secret.size() - at, 8 * blocks);
        int room = static_cast<int>(count);
        cipher.Decrypt(Bytes(secret) + at, room, reinterpret_cast<BYTE*>(plain.data()) + at, room);
        at += count;
    }
    Require(plain == ByHand(setting, secret));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::uint8_t choice = input.Byte();
    Setting setting{input.Bytes(8), input.Bytes(8), choice & 1 ? CDES::eCBC : CDES::eECB};
    setting.key.resize(8);
    setting.vector.resize(8);
    std::string text = input.Bytes(512);
    if (choice & 2) { // the padding may be right by chance
        CByteStream stream = Stream(text);
        stream.Encrypt(Stream(setting.key), Stream(setting.vector), setting.mode, false);
        text = Content(stream);
    }
    const std::span<const Kernel> kernels = AvailableKernels();
    const Kernel before = ForceKernel(kernels[(choice >> 2) % kernels.size()]);
    DecryptAny(setting, text);
    RoundTrip(setting, text);
    InSegments(setting, text, 1 + (choice >> 4));
    ForceKernel(before);
    return 0;
}
