#include "vnbytstr/CryptoException.h"

#include <algorithm>
#include <cstdio>
#include <string>

IMPLEMENT_DYNAMIC(CCryptoException, CException)

BOOL CCryptoException::GetErrorMessage(char* buffer, UINT size, UINT* helpContext) const {
    if (helpContext)
        *helpContext = 0;
    std::string name(m_strFile);
    name.erase(0, name.find_last_of("/\\") + 1); // npos + 1 is 0
    name.erase(std::min(name.size(), name.rfind('.')));
    for (char& ch : name) {
        if (ch >= 'a' && ch <= 'z')
            ch = static_cast<char>(ch - 'a' + 'A');
    }
    if (size == 0)
        return FALSE;
    std::snprintf(buffer, size, "Cryptographic error %d (%s,%d)", m_nCode,
                  name.empty() ? "?" : name.c_str(), m_nLine);
    return TRUE;
}

BOOL CCryptoException::GetErrorMessage(char* buffer, int size) {
    return static_cast<const CCryptoException*>(this)->GetErrorMessage(
        buffer, static_cast<UINT>(size < 0 ? 0 : size), nullptr);
}
