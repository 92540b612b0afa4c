// Text between coded character sets, and an export in EBCDIC with records of a fixed length.
#include <vnbytstr/vnbytstr.h>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr WORD kUtf8 = 1208;
constexpr WORD kEbcdic = 37;

void TranslateText() {
    CByteStream text(reinterpret_cast<const BYTE*>("Gr\xC3\xBC\xC3\x9F\x65"), 7);
    STranslationReport report;
    text.TranslateCCSID(kUtf8, kEbcdic, &report);
    CString hex;
    text.CopyToHex(0, hex, 0);
    std::printf("in CCSID 37: %s, %llu characters lost\n", static_cast<const char*>(hex),
                static_cast<unsigned long long>(report.ullUntranslatable));
}

/// With translateStop, a character that the target lacks is an error.
void TranslateStrictly() {
    CByteStream text(reinterpret_cast<const BYTE*>("Tokyo \xE6\x9D\xB1\xE4\xBA\xAC"), 12);
    CByteStream target;
    STranslationReport report;
    if (!text.TranslateCCSID(kUtf8, kEbcdic, target, &report, translateStop))
        std::printf("not in CCSID 37: the character at byte %llu\n",
                    static_cast<unsigned long long>(report.ullFirstUntranslatable));
}

void Export() {
    CReplacementFile file("export.37"); // takes its name when it is complete
    {
        COutputStreamWriter writer(file, kEbcdic);
        writer.SetAutoClose(FALSE);
        writer.SetRecordLength(40); // lines are filled with blanks
        writer.SetLineBreak(COutputStreamWriter::eNone);
        writer.SetSubstituteEntityReferences(TRUE);
        writer.Write("Smith & Sons");
        writer.LineBreak();
        writer.FormattedWrite("%d pieces", 12);
        writer.LineBreak();
        std::printf("export: %llu bytes\n",
                    static_cast<unsigned long long>(writer.GetReport().ullProduced));
    }
    file.Commit();
}

} // namespace

int main() {
    setenv("VNBYTSTR_CODEPAGE", "65001", 1); // this program's texts are UTF-8
    try {
        TranslateText();
        TranslateStrictly();
        Export();
        return 0;
    } catch (CException* error) {
        char text[300];
        error->GetErrorMessage(text, sizeof text);
        std::fprintf(stderr, "%s\n", text);
        error->Delete();
        return 1;
    }
}
