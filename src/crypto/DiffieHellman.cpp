#include "vnbytstr/DiffieHellman.h"

#include "src/os/System.h"
#include "vnbytstr/FixedBinary.h"

#include <cstdlib>
#include <utility>

void CDiffieHellman::Assign(CByteStream& stream, const BYTE* bytes, WORD length) {
    const CByteStream copy(bytes, length); // they may be the stream's own
    stream = copy;
}

CByteStream CDiffieHellman::Take(const CByteStream& value, int length) {
    if (length < 0)
        return value;
    const auto wanted = static_cast<DWORD>(length);
    if (wanted <= value.GetLength())
        return value.Left(wanted);
    CByteStream padded;
    padded.Concat(wanted - value.GetLength());
    padded.Concat(value);
    return padded;
}

int CDiffieHellman::GenerateX() {
    if (m_G.IsEmpty() || m_N.IsEmpty() || m_nExponentLength <= 0)
        return 0;
    std::srand(vnbytstr::System::Current().GetTime());
    const auto random = [] { return static_cast<BYTE>(std::rand()); };
    const int bytes = m_nExponentLength / 8 + (m_nExponentLength % 8 != 0);
    CByteStream exponent(m_x);
    for (int filler = (4 - bytes % 4) % 4; filler > 0; --filler)
        exponent.ConcatByte(0);
    int written = 0;
    if (const int excess = (8 - m_nExponentLength % 8) % 8; excess > 0) {
        exponent.ConcatByte(static_cast<BYTE>(random() >> excess));
        ++written;
    }
    for (; written < bytes; ++written)
        exponent.ConcatByte(random());
    CByteStream own =
        CFixedBinary(m_G).ExpMod(CFixedBinary(exponent), CFixedBinary(m_N)).GetBytes(-1);
    m_x = std::move(exponent); // both or neither
    m_X = std::move(own);
    return 1;
}

int CDiffieHellman::ComputeK() {
    if (m_Y.IsEmpty() || m_N.IsEmpty() || m_x.IsEmpty() || m_nExponentLength <= 0)
        return 0;
    m_K = CFixedBinary(m_Y).ExpMod(CFixedBinary(m_x), CFixedBinary(m_N)).GetBytes(-1);
    return 1;
}
