// A value grows past the in-memory limit, spills, and is read back; a text of the library comes.
#include <vnbytstr/vnbytstr.h>

#include <cstdio>

int main() {
    try {
        CByteStream value("01020304");
        while (value.GetLength() < 300000)
            value.ConcatByte(static_cast<BYTE>(value.GetLength()));
        LoadResourceDLL("vnurc");
        CString text;
        CGlobalVars::GetDescriptionFromID(CGlobalVars::TLXCP_TENULL, text);
        std::printf("%u bytes, 0x%08x, %s\n", value.GetLength(), value.GetDWord(0),
                    static_cast<const char*>(text));
        return value.IsAllInBuffer() ? 1 : 0;
    } catch (CException* error) {
        error->Delete();
        return 1;
    }
}
