// An XML document with typed values: made, saved, loaded again and read.
#include <vnbytstr/vnbytstr.h>

#include <cstdio>

namespace {

constexpr SEnumString kSides[] = {{0, "left"}, {1, "right"}};

bool Make(const char* path) {
    CXercesWrapper document;
    XMLElement root;
    XMLNode column;
    return document.Create("report") && document.GetRootElement(root) &&
           document.AppendChildElement(root, "column", column) &&
           document.SetAttribute(column, "width", 120) &&
           document.SetAttribute(column, "scale", 1.5) &&
           document.SetAttribute(column, "hidden", false) &&
           document.SetColorAttribute(column, "colour", 0x0000FF) && // 0x00BBGGRR
           document.SetEnumAttribute(column, "side", kSides, 2, 1) &&
           document.SetAttribute(column, "note", CString("two\nlines"), true) &&
           document.SetNodeValue(column, CString("Price < 100")) && document.Save(path, true);
}

bool Read(const char* path) {
    CXercesWrapper document;
    XMLElement root;
    XMLNode column;
    int width = 0, side = 0;
    double scale = 0;
    DWORD colour = 0;
    CString note, text;
    if (!document.LoadFile(path)) {
        const SXMLParseError& error = document.GetLastParseError();
        std::fprintf(stderr, "line %llu: %s\n", static_cast<unsigned long long>(error.m_lineNo),
                     static_cast<const char*>(error.m_strMessage));
        return false;
    }
    if (!document.GetRootElement(root) || !document.GetNode(root, "column", column) ||
        !document.GetIntAttribute(column, "width", width) ||
        !document.GetDoubleAttribute(column, "scale", scale) ||
        !document.GetColorAttribute(column, "colour", colour) ||
        !document.GetEnumAttribute(column, "side", kSides, 2, side) ||
        !document.GetStringAttribute(column, "note", note, true) ||
        !document.GetStringNodeValue(column, text))
        return false;
    std::printf("width %d, scale %.1f, colour %06X, side %s, note of %d bytes, text \"%s\"\n",
                width, scale, colour, kSides[side].m_pszName, note.GetLength(),
                static_cast<const char*>(text));
    return true;
}

} // namespace

int main() { return Make("report.xml") && Read("report.xml") ? 0 : 1; }
