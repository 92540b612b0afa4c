// Attributes, texts, colours and enumerations.
#include "tests/xml/XmlFixture.h"

#include "src/charset/CodePage.h"

#include <vector>

namespace vnbytstr::test {
namespace {

class XercesAttributeTest : public XmlTest {
protected:
    XercesAttributeTest() {
        EXPECT_TRUE(m_xml.Create("root"));
        m_node = Child(Root(), "a");
    }
    XMLNode m_node;
};

TEST_F(XercesAttributeTest, TypedValuesComeBack) {
    EXPECT_TRUE(m_xml.SetAttribute(m_node, "i", -5));
    EXPECT_TRUE(m_xml.SetAttribute(m_node, "d", 2.25));
    EXPECT_TRUE(m_xml.SetAttribute(m_node, "b", true));
    EXPECT_TRUE(m_xml.SetAttribute(m_node, "w", "4294967295"));
    EXPECT_EQ(Attribute(m_node, "d"), "2.250000");
    int integer = 0;
    DWORD dword = 0;
    double number = 0;
    bool boolean = false;
    EXPECT_TRUE(m_xml.GetIntAttribute(m_node, "i", integer));
    EXPECT_TRUE(m_xml.GetDWORDAttribute(m_node, "w", dword));
    EXPECT_TRUE(m_xml.GetDoubleAttribute(m_node, "d", number));
    EXPECT_TRUE(m_xml.GetBoolAttribute(m_node, "b", boolean));
    EXPECT_EQ(integer, -5);
    EXPECT_EQ(dword, 0xFFFFFFFF);
    EXPECT_EQ(number, 2.25);
    EXPECT_TRUE(boolean);

    // Empty or absent: false, and untouched.
    EXPECT_TRUE(m_xml.SetAttribute(m_node, "i", ""));
    for (const char* name : {"i", "absent"}) {
        EXPECT_FALSE(m_xml.GetIntAttribute(m_node, name, integer));
        EXPECT_FALSE(m_xml.GetDWORDAttribute(m_node, name, dword));
        EXPECT_FALSE(m_xml.GetDoubleAttribute(m_node, name, number));
        EXPECT_FALSE(m_xml.GetBoolAttribute(m_node, name, boolean));
        EXPECT_EQ(Attribute(m_node, name), "");
    }
    EXPECT_EQ(integer, -5);
    EXPECT_EQ(dword, 0xFFFFFFFF);
    EXPECT_EQ(number, 2.25);
    EXPECT_TRUE(boolean);
}

TEST_F(XercesAttributeTest, NullHandlesAndNamesAreRefused) {
    const XMLNode none;
    XMLNode node;
    XMLElement element;
    XMLNodeList list;
    CXMLVariant value("untouched");
    CString text("untouched");
    short type = 0;
    LONG count = 7;
    DWORD color = 7;
    for (const bool isTaken : {m_xml.SetAttribute(none, "a", 1),
                               m_xml.SetAttribute(m_node, nullptr, 1),
                               m_xml.SetAttribute(m_node, "1st", 1),
                               m_xml.SetAttribute(m_node, "", 1),
                               m_xml.SetColorAttribute(none, "a", 1),
                               m_xml.GetAttribute(none, "a", value),
                               m_xml.GetAttribute(m_node, nullptr, value),
                               m_xml.GetStringAttribute(none, "a", text),
                               m_xml.GetColorAttribute(none, "a", color),
                               m_xml.SetNodeValue(none, 1),
                               m_xml.GetNodeValue(none, value),
                               m_xml.GetStringNodeValue(none, text),
                               m_xml.GetNodeType(none, type),
                               m_xml.GetNodeName(none, text),
                               m_xml.AppendChildElement(none, "a", node),
                               m_xml.AppendChildElement(m_node, "a b", node),
                               m_xml.AddCommentNode(none, "text"),
                               m_xml.AddCommentNode(m_node, nullptr),
                               m_xml.GetElementNode(none, element),
                               m_xml.GetNodeElement(XMLElement(), node),
                               m_xml.GetXML(none, text),
                               m_xml.GetNode(XMLElement(), "a", node),
                               m_xml.GetList(XMLElement(), "a", list),
                               m_xml.GetList(Root(), nullptr, list),
                               m_xml.GetChilds(XMLElement(), list),
                               m_xml.GetListCount(Root(), XMLNodeList(), count),
                               m_xml.GetListItem(Root(), XMLNodeList(), 0, node)})
        EXPECT_FALSE(isTaken);
    EXPECT_TRUE(node.IsEmpty() && element.IsEmpty() && list.IsEmpty());
    EXPECT_EQ(value, CXMLVariant("untouched"));
    EXPECT_EQ(text, "untouched");
    EXPECT_EQ(count, 7);
    EXPECT_EQ(color, 7u);
    EXPECT_EQ(Text(), "<root><a/></root>");
}

TEST_F(XercesAttributeTest, ControlCharactersAreEncodedInOrder) {
    EXPECT_TRUE(m_xml.SetAttribute(m_node, "x", CString("a\tb\r\nc&t;"), true));
    EXPECT_EQ(Attribute(m_node, "x"), "a&t;b&r;&n;c&t;");
    // What looks encoded already is decoded, too.
    EXPECT_EQ(Attribute(m_node, "x", true), "a\tb\r\nc\t");
    EXPECT_TRUE(m_xml.SetNodeValue(m_node, CString("1\n2"), true));
    CString text;
    EXPECT_TRUE(m_xml.GetStringNodeValue(m_node, text));
    EXPECT_EQ(text, "1&n;2");
    EXPECT_TRUE(m_xml.GetStringNodeValue(m_node, text, true));
    EXPECT_EQ(text, "1\n2");
    // They outlive a file; unencoded ones in a text do not all.
    EXPECT_TRUE(m_xml.Save(m_files.File("x").c_str(), false));
    EXPECT_TRUE(m_xml.LoadFile(m_files.File("x").c_str()));
    EXPECT_TRUE(m_xml.GetNode(Root(), "a", m_node));
    EXPECT_EQ(Attribute(m_node, "x", true), "a\tb\r\nc\t");
    // "&&rr;" holds "&r" and "r;": encoding passes over each kind once, decoding as well.
    EXPECT_TRUE(m_xml.SetAttribute(m_node, "y", CString("&\rr;"), true));
    EXPECT_EQ(Attribute(m_node, "y"), "&&r;r;");
}

TEST_F(XercesAttributeTest, NodeValuesAppend) {
    int integer = 3;
    EXPECT_FALSE(m_xml.GetIntNodeValue(m_node, integer)); // there is no child
    CXMLVariant value("untouched");
    EXPECT_TRUE(m_xml.GetNodeValue(m_node, value));
    EXPECT_EQ(value, CXMLVariant("untouched"));
    EXPECT_TRUE(m_xml.SetNodeValue(m_node, 12));
    EXPECT_TRUE(m_xml.SetNodeValue(m_node, "34"));
    EXPECT_EQ(Text(), "<root><a>1234</a></root>");
    EXPECT_TRUE(m_xml.GetIntNodeValue(m_node, integer)); // the first child is the first text
    EXPECT_EQ(integer, 12);

    const auto numbered = Child(Root(), "b");
    EXPECT_TRUE(m_xml.SetNodeValue(numbered, -1.5));
    double number = 0;
    DWORD dword = 0;
    bool boolean = false;
    EXPECT_TRUE(m_xml.GetDoubleNodeValue(numbered, number));
    EXPECT_TRUE(m_xml.GetDWORDNodeValue(numbered, dword));
    EXPECT_TRUE(m_xml.GetBoolNodeValue(numbered, boolean));
    EXPECT_EQ(number, -1.5);
    EXPECT_EQ(dword, 0xFFFFFFFF);
    EXPECT_TRUE(boolean);
    // An element whose first child is an element has no text.
    CString text("x");
    EXPECT_TRUE(m_xml.GetStringNodeValue(Root(), text));
    EXPECT_EQ(text, "");
    EXPECT_FALSE(m_xml.GetBoolNodeValue(Root(), boolean));
}

TEST_F(XercesAttributeTest, ColorsByNameAndByNumber) {
    struct Color {
        const char* name;
        DWORD red, green, blue;
    };
    const Color colors[] = {
        {"Black", 0, 0, 0},
        {"Red", 255, 0, 0},
        {"PaleYellow", 255, 255, 208},
        {"Navy", 0, 64, 128},
    };
    for (const Color& color : colors) {
        const DWORD wanted = color.red | color.green << 8 | color.blue << 16;
        EXPECT_TRUE(m_xml.SetColorAttribute(m_node, "c", wanted));
        EXPECT_EQ(Attribute(m_node, "c"), color.name);
        CString shouted(color.name);
        shouted.MakeUpper();
        for (const CString& name : {CString(color.name), shouted}) {
            EXPECT_TRUE(m_xml.SetAttribute(m_node, "c", name));
            DWORD read = 1;
            EXPECT_TRUE(m_xml.GetColorAttribute(m_node, "c", read));
            EXPECT_EQ(read, wanted) << color.name;
        }
    }
    EXPECT_TRUE(m_xml.SetColorAttribute(m_node, "c", 0x123456));
    EXPECT_EQ(Attribute(m_node, "c"), "1193046");
    EXPECT_TRUE(m_xml.SetColorAttribute(m_node, "c", 0xFFFFFFFF));
    EXPECT_EQ(Attribute(m_node, "c"), "-1");

    struct Case {
        const char* text;
        bool isColor;
        DWORD value;
    };
    for (const Case& each : {Case{"1193046", true, 0x123456}, Case{"12ab", false, 12},
                             Case{"-1", false, 0xFFFFFFFF}, Case{"", false, 0},
                             Case{"Reddish", false, 0}, Case{" 7", false, 7}, Case{"0", true, 0}}) {
        EXPECT_TRUE(m_xml.SetAttribute(m_node, "c", each.text));
        DWORD read = 99;
        EXPECT_EQ(m_xml.GetColorAttribute(m_node, "c", read), each.isColor) << each.text;
        EXPECT_EQ(read, each.value) << each.text;
    }
}

TEST_F(XercesAttributeTest, EnumerationsTakeTheFirstMatch) {
    const SEnumString table[] = {{1, "one"}, {2, nullptr}, {2, "two"}, {1, "uno"}, {3, "one"}};
    constexpr int kCount = 5;
    EXPECT_TRUE(m_xml.SetEnumAttribute(m_node, "e", table, kCount, 1));
    EXPECT_EQ(Attribute(m_node, "e"), "one");
    EXPECT_FALSE(m_xml.SetEnumAttribute(m_node, "e", table, kCount, 2)); // its name is null
    EXPECT_FALSE(m_xml.SetEnumAttribute(m_node, "e", table, kCount, 9));
    EXPECT_FALSE(m_xml.SetEnumAttribute(m_node, "e", table, 0, 1));
    EXPECT_FALSE(m_xml.SetEnumAttribute(m_node, "e", nullptr, 1, 1));
    EXPECT_EQ(Attribute(m_node, "e"), "one");
    int value = 0;
    EXPECT_TRUE(m_xml.GetEnumAttribute(m_node, "e", table, kCount, value));
    EXPECT_EQ(value, 1);
    EXPECT_TRUE(m_xml.SetAttribute(m_node, "e", "two"));
    EXPECT_TRUE(m_xml.GetEnumAttribute(m_node, "e", table, kCount, value));
    EXPECT_EQ(value, 2);
    EXPECT_FALSE(m_xml.GetEnumAttribute(m_node, "e", table, 2, value));
    EXPECT_TRUE(m_xml.SetAttribute(m_node, "e", "Two"));
    EXPECT_FALSE(m_xml.GetEnumAttribute(m_node, "e", table, kCount, value));
    EXPECT_EQ(value, 2);
}

TEST_F(XercesAttributeTest, NarrowTextIsInTheAnsiCodePage) {
    struct Page {
        UINT number;
        const char* text; // as it is in that page
        const char* utf8;
        const char* name; // of an attribute
    };
    const Page pages[] = {
        {932, "\x93\xFA\x96\x7B\x8C\xEA \x83\x5C\x94\x5C", "日本語 ソ能",
         "\x96\xBC"}, // trail bytes 5C
        {1255, "\xF2\xE1\xF8\xE9\xFA", "עברית", "\xF9\xED"},
        {1252, "Gr\xFC\xDF\x65 \x80", "Grüße €", "Stra\xDF\x65"},
        {65001, "日本語 עברית €", "日本語 עברית €", "名前"},
    };
    for (const Page& page : pages) {
        const ScopedCodePage scoped(page.number);
        const std::string file = m_files.File("page");
        ASSERT_TRUE(m_xml.Create("root"));
        const XMLNode node = Child(Root(), page.name);
        EXPECT_TRUE(m_xml.SetAttribute(node, page.name, page.text, true));
        EXPECT_TRUE(m_xml.SetNodeValue(node, page.text));
        EXPECT_TRUE(m_xml.AddCommentNode(node, page.text));
        EXPECT_EQ(Attribute(node, page.name), page.text);
        EXPECT_TRUE(m_xml.Save(file.c_str(), true));
        EXPECT_NE(m_files.Read("page").find(page.utf8), std::string::npos) << page.number;

        const std::string text = Text();
        for (const bool fromFile : {true, false}) {
            ASSERT_TRUE(fromFile ? m_xml.LoadFile(file.c_str()) : Load(text)) << page.number;
            XMLNode loaded;
            ASSERT_TRUE(m_xml.GetNode(Root(), page.name, loaded)) << page.number;
            EXPECT_EQ(Attribute(loaded, page.name, true), page.text) << page.number;
            CString value;
            EXPECT_TRUE(m_xml.GetNodeName(loaded, value));
            EXPECT_EQ(value, page.name);
        }
    }
    // The same name again under another page is another name.
    const ScopedCodePage scoped(1252);
    ASSERT_TRUE(m_xml.Create("r"));
    EXPECT_TRUE(m_xml.SetAttribute(Root(), "\xE4", "\xDF"));
    {
        const ScopedCodePage other(1255);
        EXPECT_EQ(Attribute(Root(), "\xE4"), "");
    }
    EXPECT_EQ(Attribute(Root(), "\xE4"), "\xDF");
    const ScopedCodePage ascii(20127); // and what a page does not hold
    EXPECT_EQ(Text(), "<r ?=\"?\"/>");
}

/// Its typed getters must all see this.
class Overriding : public CXercesWrapper {
public:
    bool GetAttribute(const XMLNode&, const char*, CXMLVariant& value, bool) override {
        value = m_text;
        return m_result;
    }
    bool SetAttribute(const XMLNode& node, const char* name, const CXMLVariant& value,
                      bool encode) override {
        m_seen.push_back(value);
        return CXercesWrapper::SetAttribute(node, name, value, encode);
    }
    bool GetNodeValue(const XMLNode&, CXMLVariant& value, bool) override {
        value = m_text;
        return m_result;
    }
    bool GetListItem(const XMLElement& parent, const XMLNodeList& list, LONG,
                     XMLNode& node) override {
        return CXercesWrapper::GetListItem(parent, list, 1, node);
    }
    CString m_text;
    bool m_result = true;
    std::vector<CString> m_seen;
};

TEST(XercesOverrideTest, OperationsCallEachOtherThroughTheirSlots) {
    Overriding xml;
    ASSERT_TRUE(xml.Create("root"));
    XMLElement root;
    ASSERT_TRUE(xml.GetRootElement(root));
    int integer = 0;
    DWORD dword = 0;
    double number = 0;
    bool boolean = false;
    CString text;
    xml.m_text = "17";
    EXPECT_TRUE(xml.GetIntAttribute(root, "absent", integer));
    EXPECT_TRUE(xml.GetDWORDAttribute(root, "absent", dword));
    EXPECT_TRUE(xml.GetDoubleAttribute(root, "absent", number));
    EXPECT_TRUE(xml.GetBoolAttribute(root, "absent", boolean));
    EXPECT_TRUE(xml.GetStringAttribute(root, "absent", text));
    EXPECT_TRUE(integer == 17 && dword == 17 && number == 17 && boolean && text == "17");
    EXPECT_TRUE(xml.GetColorAttribute(root, "absent", dword));
    const SEnumString table[] = {{5, "17"}};
    EXPECT_TRUE(xml.GetEnumAttribute(root, "absent", table, 1, integer));
    EXPECT_EQ(integer, 5);
    EXPECT_TRUE(xml.GetIntNodeValue(root, integer));
    EXPECT_TRUE(xml.GetStringNodeValue(root, text));
    EXPECT_EQ(integer, 17);
    xml.m_result = false;
    EXPECT_FALSE(xml.GetIntAttribute(root, "absent", integer));
    EXPECT_FALSE(xml.GetDoubleNodeValue(root, number));

    EXPECT_TRUE(xml.SetColorAttribute(root, "c", 0xFF0000));
    EXPECT_TRUE(xml.SetEnumAttribute(root, "e", table, 1, 5));
    ASSERT_EQ(xml.m_seen.size(), 2u);
    EXPECT_TRUE(xml.m_seen[0] == "Blue" && xml.m_seen[1] == "17");

    XMLNode first, second, found;
    EXPECT_TRUE(xml.AppendChildElement(root, "x", first));
    EXPECT_TRUE(xml.AppendChildElement(root, "x", second));
    EXPECT_TRUE(xml.GetNode(root, "x", found));
    EXPECT_EQ(found, second);
}

} // namespace
} // namespace vnbytstr::test
