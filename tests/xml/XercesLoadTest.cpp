// Loading, and what is told when it fails.
#include "tests/xml/XmlFixture.h"

#include "src/charset/CodePage.h"
#include "src/os/Paths.h"
#include "src/xml/FileInput.h"
#include "vnbytstr/StrX.h"
#include "vnbytstr/XercesErrorHandler.h"

namespace vnbytstr::test {
namespace {

using XercesLoadTest = XmlTest;

TEST_F(XercesLoadTest, CreateMakesOrClosesADocument) {
    XMLElement root;
    EXPECT_FALSE(m_xml.GetRootElement(root));
    EXPECT_TRUE(m_xml.Create("first"));
    EXPECT_EQ(Text(), "<first/>");
    EXPECT_TRUE(m_xml.Create("ns:second")); // colons mean nothing here
    EXPECT_EQ(Text(), "<ns:second/>");
    EXPECT_FALSE(m_xml.Create("no name"));
    EXPECT_FALSE(m_xml.GetRootElement(root));
    EXPECT_TRUE(m_xml.Create("third"));
    EXPECT_TRUE(m_xml.Create(nullptr));
    EXPECT_FALSE(m_xml.GetRootElement(root));
    CString text("untouched");
    EXPECT_FALSE(m_xml.GetXML(text));
    EXPECT_EQ(text, "untouched");
    EXPECT_FALSE(m_xml.Save(m_files.File("x").c_str(), false));
    m_xml.Free();
    EXPECT_TRUE(root.IsEmpty());
}

TEST_F(XercesLoadTest, AFailedLoadLeavesNoDocument) {
    const std::string missing = m_files.File("missing.xml");
    for (const bool isLoaded : {true, false}) {
        ASSERT_TRUE(isLoaded ? Load("<before/>") : m_xml.Create("before"));
        EXPECT_FALSE(m_xml.LoadFile(missing.c_str()));
        EXPECT_EQ(Text(), "");
        EXPECT_NE(m_xml.GetLastParseError().m_strMessage.Find(missing.c_str()), -1);
        EXPECT_EQ(m_xml.GetLastParseError().m_severity, SXMLParseError::kFatal);
    }
    EXPECT_FALSE(m_xml.LoadFile(nullptr));
    EXPECT_FALSE(m_xml.LoadFile(""));
    EXPECT_FALSE(m_xml.LoadFile(m_files.Path().c_str())); // a folder
    EXPECT_FALSE(m_xml.LoadFile("http://127.0.0.1:9/x.xml"));
    m_xml.Free();
    EXPECT_TRUE(Load("<after/>"));
    EXPECT_EQ(m_xml.GetLastParseError().m_severity, SXMLParseError::kNone);
    EXPECT_EQ(Text(), "<after/>");
}

TEST_F(XercesLoadTest, ReportsGoToStandardErrorAndToPrograms) {
    EXPECT_FALSE(Load("<a>\n  <b></c>\n</a>"));
    const SXMLParseError& error = m_xml.GetLastParseError();
    EXPECT_EQ(error.m_severity, SXMLParseError::kFatal);
    EXPECT_EQ(error.m_strPlace, "prodInfo");
    EXPECT_EQ(error.m_lineNo, 2u);
    EXPECT_EQ(error.m_charNo, 8u);
    EXPECT_FALSE(error.m_strMessage.IsEmpty());
    EXPECT_EQ(m_system.Diagnostics(),
              "\nFatal Error at file prodInfo, line 2, char 8\n  Message: " +
                  std::string(error.m_strMessage) + "\n");

    m_files.Write("a b%41.xml", "<?xml version='1.0'?>\n<a>");
    const std::string name = m_files.File("a b%41.xml");
    EXPECT_FALSE(m_xml.LoadFile(name.c_str()));
    EXPECT_EQ(m_xml.GetLastParseError().m_strPlace, name.c_str());
    EXPECT_EQ(m_xml.GetLastParseError().m_lineNo, 2u);
}

TEST_F(XercesLoadTest, AWarningFailsTheLoad) {
    // The same notation twice is a warning; the rest of the document is in order.
    const std::string notation = "<!NOTATION n SYSTEM 'x'>";
    EXPECT_TRUE(Load("<!DOCTYPE a [" + notation + "]><a/>"));
    EXPECT_FALSE(Load("<!DOCTYPE a [<!ATTLIST a x CDATA #IMPLIED x CDATA #IMPLIED>]><a/>"));
    EXPECT_EQ(m_xml.GetLastParseError().m_severity, SXMLParseError::kWarning);
    EXPECT_EQ(m_system.Diagnostics().find("\nWarning at file prodInfo, line 1, char "), 0u);
    EXPECT_EQ(Text(), "");
}

TEST_F(XercesLoadTest, TheTextsEncodingIsWhatItSays) {
    const ScopedCodePage page(1252);
    const auto value = [&](const std::string& text) {
        EXPECT_TRUE(Load(text)) << text;
        return Attribute(Root(), "v");
    };
    EXPECT_EQ(value("<a v='\xC3\xA4'/>"), "\xE4"); // UTF-8 without a word
    EXPECT_EQ(value("<a v='\xE4'/>"), "\xE4");     // not valid as that: the code page
    EXPECT_EQ(value("<?xml version='1.0'?><a v='\xE4'/>"), "\xE4");
    EXPECT_EQ(value("<?xml version='1.0' encoding='ISO-8859-1'?><a v='\xC3\xA4'/>"), "\xC3\xA4");
    EXPECT_EQ(value("<?xml version='1.0' encoding='Shift_JIS'?><a v='\x82\x60'/>"), "?");
    EXPECT_EQ(value("\xEF\xBB\xBF<a v='\xC3\xA4'/>"), "\xE4");
    EXPECT_FALSE(Load("<?xml version='1.0' encoding='utf-8'?><a v='\xE4'/>"));
    EXPECT_TRUE(Load(std::string("<a/>\0<b>", 8))); // up to the NUL
}

/// In XML 1.1 other control characters are refused, and more characters are ends of lines.
TEST_F(XercesLoadTest, AfterADocumentOfXml11TheNextIsOneOf10) {
    const ScopedCodePage page(65001);
    const std::string text = "<a b=\"\xC2\x84\">x\xC2\x85y\xE2\x80\xA8z</a>";
    for (const char* before : {"<a/>", "<?xml version='1.1'?><a/>", "<?xml version='1.1'?><a>"}) {
        CString written;
        Load(before);
        EXPECT_FALSE(Load("<a>&#1;</a>")) << before;
        Load(before);
        EXPECT_TRUE(Load(text) && m_xml.GetXML(written)) << before;
        EXPECT_EQ(std::string(written), text) << before;
    }
}

TEST_F(XercesLoadTest, BytesOfNoEncodingAreRefused) {
    const std::pair<UINT, const char*> broken[] = {{65001, "<a>\xE9t\xE9</a>"},
                                                   {65001, "<?xml version='1.0'?><a b='\xFF'/>"},
                                                   {932, "<a>\xFF\xFE</a>"},
                                                   {932, "<a>\xED\xA0\x80</a>"},
                                                   {932, "<a>\xF8\x88\x80\x80\x80</a>"},
                                                   {936, "<a>\x81</a>"}};
    for (const auto& [number, text] : broken) {
        const ScopedCodePage page(number);
        ASSERT_TRUE(m_xml.Create("before"));
        EXPECT_FALSE(Load(text)) << number << text;
        EXPECT_NE(m_xml.GetLastParseError().m_strMessage.Find("neither"), -1);
        EXPECT_EQ(Text(), "");
    }
    const ScopedCodePage page(54936); // has a code for the replacement character itself
    EXPECT_TRUE(Load("<a>\x84\x31\xA4\x37\xB0\xA1</a>"));
    EXPECT_EQ(Text(), "<a>\x84\x31\xA4\x37\xB0\xA1</a>");
}

TEST_F(XercesLoadTest, WhatGetXMLGaveLoadsAgain) {
    CXercesWrapper again;
    for (const UINT number : {1252u, 1255u, 932u, 936u, 949u, 950u, 54936u, 65001u}) {
        const ScopedCodePage scoped(number);
        const CodePage& page = CodePage::Ansi();
        // Every pair of bytes beyond ASCII that is text in the page, among it all that is UTF-8.
        for (int pair = 0x8080; pair <= 0xFFFF; pair += (pair & 0xFF) == 0xFF ? 0x81 : 1) {
            const char bytes[] = {static_cast<char>(pair >> 8), static_cast<char>(pair), '\0'};
            const std::u16string wide = page.ToWide(bytes);
            if (wide.find(u'\xFFFD') != std::u16string::npos || page.FromWide(wide) != bytes)
                continue;
            ASSERT_TRUE(m_xml.Create("r"));
            const XMLNode root = Root();
            m_xml.SetAttribute(root, "a", (std::string("'\"") + bytes).c_str());
            m_xml.SetNodeValue(root, (std::string("<") + bytes + ">").c_str());
            if (pair % 16 == 0)
                m_xml.AddCommentNode(root, bytes); // there are no references in comments
            CString text, value;
            ASSERT_TRUE(m_xml.GetXML(text));
            XMLElement element;
            ASSERT_TRUE(again.LoadXML(text) && again.GetRootElement(element)) << text;
            EXPECT_TRUE(again.GetStringAttribute(element, "a", value));
            EXPECT_EQ(std::string(value), std::string("'\"") + bytes) << number << text;
            EXPECT_TRUE(again.GetStringNodeValue(element, value));
            EXPECT_EQ(std::string(value), std::string("<") + bytes + ">");
            CString second;
            again.GetXML(second);
            EXPECT_EQ(second, text);
        }
    }
    const ScopedCodePage page(932);
    ASSERT_TRUE(m_xml.Create("r"));
    m_xml.SetNodeValue(Root(), "\xCA\xB2");
    EXPECT_EQ(Text(), "<r>&#65418;&#65394;</r>");
}

TEST_F(XercesLoadTest, EntitiesOfTheDocumentItselfAreReplaced) {
    EXPECT_TRUE(Load("<!DOCTYPE a [<!ENTITY e 'deep &amp; <b/>'><!ATTLIST a d CDATA 'default'>]>"
                     "<a x='&lt;'>&e;</a>"));
    EXPECT_EQ(Text(), "<a d=\"default\" x=\"&lt;\">deep &amp; <b/></a>");
    CString text;
    EXPECT_TRUE(m_xml.GetStringNodeValue(Root(), text));
    EXPECT_EQ(text, "deep & ");
    EXPECT_TRUE(Load("<!DOCTYPE a PUBLIC '-//x' 'http://127.0.0.1:9/x.dtd'><a/>"));
    EXPECT_TRUE(Load("<!DOCTYPE a [<!ENTITY e SYSTEM '/etc/passwd'>]><a/>")); // not used
}

TEST_F(XercesLoadTest, FileUrisAndReadErrors) {
    EXPECT_EQ(detail::FileNameOf("file:///a%20b%2fc%"), "/a b/c%");
    EXPECT_EQ(detail::FileNameOf("file://host/x%4"), "/x%4");
    EXPECT_EQ(detail::FileNameOf("file:rel%zz"), "rel%zz");
    EXPECT_EQ(detail::FileNameOf("/a%20b"), "/a%20b");
    EXPECT_EQ(detail::FileNameOf("http://x/y"), "http://x/y");
    if (IsAbsolutePath("C:/a")) {
        EXPECT_EQ(detail::FileNameOf("file:///C:/a%20b"), "C:/a b");
        EXPECT_EQ(detail::FileNameOf("file://localhost/c%3A\\a"), "c:\\a");
        EXPECT_EQ(detail::FileNameOf("file:////host/share/x"), "/host/share/x");
        EXPECT_EQ(detail::FileNameOf("file:%5C%5Chost/share/x"), "\\host/share/x");
    }
    m_files.Write("a b.xml", "<a/>" + std::string(200000, ' '));
    const std::string path = std::filesystem::path(m_files.Path()).generic_string();
    const std::string uri = (path[0] == '/' ? "file://" : "file:///") + path + "a%20b.xml";
    EXPECT_TRUE(m_xml.LoadFile(uri.c_str()));

    const std::string name = m_files.File("a b.xml");
    for (unsigned at = 1; at <= 4; ++at) {
        m_system.Inject(Fault{.call = Call::Read, .at = at, .fromThenOn = true});
        EXPECT_FALSE(m_xml.LoadFile(name.c_str())) << at;
        EXPECT_GT(m_system.Hits(), 0u);
        EXPECT_EQ(m_xml.GetLastParseError().m_severity, SXMLParseError::kFatal);
    }
    m_system.Inject(Fault{.call = Call::Open});
    EXPECT_FALSE(m_xml.LoadFile(name.c_str()));
    m_system.Inject(std::nullopt);
    EXPECT_TRUE(m_xml.LoadFile(name.c_str()));
    EXPECT_TRUE(m_system.OpenHandles().empty());
}

TEST_F(XercesLoadTest, StrXGivesTheCodePagesText) {
    const ScopedCodePage page(1252);
    EXPECT_STREQ(StrX(u"Gr\u00FC\u00DFe \u20AC \u65E5").localForm(), "Gr\xFC\xDF"
                                                                     "e \x80 ?");
    EXPECT_STREQ(StrX(nullptr).localForm(), "");
    const std::u16string long_(1000, u'x');
    EXPECT_EQ(std::string(StrX(long_.c_str()).localForm()), std::string(1000, 'x'));
}

} // namespace
} // namespace vnbytstr::test
