// The file that Save writes, and what happens when it cannot.
#include "tests/xml/XmlFixture.h"

namespace vnbytstr::test {
namespace {

constexpr char kDeclaration[] = "<?xml version=\"1.0\" encoding=\"utf-8\"?>";

class XercesSaveTest : public XmlTest {
protected:
    bool Save(bool pretty) { return m_xml.Save(m_files.File("out.xml").c_str(), pretty); }
    std::string Saved() const { return m_files.Read("out.xml"); }
};

TEST_F(XercesSaveTest, DeclarationInstructionsAndRoot) {
    ASSERT_TRUE(m_xml.Create("root"));
    const XMLNode child = Child(Root(), "child");
    EXPECT_TRUE(m_xml.SetAttribute(child, "a", "<\"&'>"));
    EXPECT_TRUE(m_xml.SetNodeValue(child, "1 < 2 & 3"));
    EXPECT_TRUE(m_xml.AddCommentNode(Root(), " note "));
    EXPECT_TRUE(m_xml.AddProcessingInstruction("xml-stylesheet", "href=\"a.xsl\""));
    EXPECT_FALSE(m_xml.AddProcessingInstruction("xml-stylesheet", "href=\"b.xsl\""));
    EXPECT_FALSE(m_xml.AddProcessingInstruction("version=\"1.0\" encoding=\"%s\"", "x"));
    EXPECT_TRUE(m_xml.AddProcessingInstruction("Zebra", ""));
    EXPECT_TRUE(m_xml.AddProcessingInstruction("app", "data"));
    const std::string root =
        "<root><child a=\"&lt;&quot;&amp;'>\">1 &lt; 2 &amp; 3</child><!-- note --></root>";
    ASSERT_TRUE(Save(false));
    EXPECT_EQ(Saved(), std::string(kDeclaration) +
                           "<?Zebra?><?app data?><?xml-stylesheet href=\"a.xsl\"?>" + root);
    EXPECT_EQ(Text(), root);

    ASSERT_TRUE(Save(true));
    const std::string pretty = Saved();
    EXPECT_EQ(
        pretty.find(
            std::string(kDeclaration) +
            "\r\n<?Zebra?>\r\n<?app data?>\r\n<?xml-stylesheet href=\"a.xsl\"?>\r\n<root>\r\n"),
        0u)
        << pretty;
    for (std::size_t at = pretty.find('\n'); at != std::string::npos;
         at = pretty.find('\n', at + 1))
        EXPECT_EQ(pretty[at - 1], '\r');
    // Instructions outlive the document.
    ASSERT_TRUE(m_xml.Create("next"));
    ASSERT_TRUE(Save(false));
    EXPECT_NE(Saved().find("<?app data?>"), std::string::npos);
}

TEST_F(XercesSaveTest, TheFileIsUtf8WhateverWasLoaded) {
    ASSERT_TRUE(Load("<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4</a>"));
    ASSERT_TRUE(Save(false));
    EXPECT_EQ(Saved(), std::string(kDeclaration) + "<a>\xC3\xA4</a>");
    ASSERT_TRUE(Load("<?xml version='1.1'?><a>&#xE4;</a>"));
    ASSERT_TRUE(Save(false));
    EXPECT_EQ(Saved(), std::string(kDeclaration) + "<a>\xC3\xA4</a>");
    ASSERT_TRUE(Load("<?xml version='1.1'?><a>&#1;</a>")); // which 1.0 does not have
    EXPECT_FALSE(Save(false));
}

TEST_F(XercesSaveTest, WhatCouldNotBeReadAgainIsRefused) {
    const auto refuses = [&](auto change) {
        m_files.Write("out.xml", "before");
        ASSERT_TRUE(m_xml.Create("root"));
        change(XMLNode(Root()));
        EXPECT_FALSE(Save(false));
        EXPECT_FALSE(Save(true));
        EXPECT_EQ(Saved(), "before");
        EXPECT_EQ(m_files.Names().size(), 1u);
    };
    refuses([&](const XMLNode& root) { m_xml.AddCommentNode(root, "a--b"); });
    refuses([&](const XMLNode& root) { m_xml.AddCommentNode(root, "a-"); });
    refuses([&](const XMLNode& root) { m_xml.SetAttribute(root, "a", "\x01"); });
    refuses([&](const XMLNode& root) { m_xml.SetNodeValue(root, "\x1B[0m"); });
    refuses([&](const XMLNode& root) { m_xml.SetNodeValue(root, "\xEF\xBF\xBF"); }); // U+FFFF
}

TEST_F(XercesSaveTest, BadInstructionsAreRefusedAtOnce) {
    ASSERT_TRUE(m_xml.Create("root"));
    for (const auto& [target, data] :
         {std::pair{"xml", "version='1.0'"}, std::pair{"XmL", "x"}, std::pair{"p", "a?>b"},
          std::pair{"", "x"}, std::pair{"bad name", "x"}, std::pair{"1st", "x"},
          std::pair{"p", "\x01"}, std::pair{"p", "\xEF\xBF\xBF"}})
        EXPECT_FALSE(m_xml.AddProcessingInstruction(target, data)) << target << data;
    EXPECT_TRUE(m_xml.AddProcessingInstruction("p", "x\t\xF0\x9F\x98\x80?"));
    EXPECT_TRUE(m_xml.AddProcessingInstruction("xml-stylesheet", ""));
    EXPECT_TRUE(Save(false));
    EXPECT_NE(Saved().find("<?p x\t\xF0\x9F\x98\x80?"
                           "?>"),
              std::string::npos)
        << Saved();
}

TEST_F(XercesSaveTest, AFailureLeavesTheFileAsItWas) {
    ASSERT_TRUE(m_xml.Create("root"));
    for (int i = 0; i < 20000; ++i)
        m_xml.SetAttribute(Child(Root(), "row"), "number", i);
    EXPECT_FALSE(m_xml.Save(nullptr, false));
    EXPECT_FALSE(m_xml.Save("/nowhere/out.xml", false));
    m_files.Write("out.xml", "before");
    m_system.Inject(Fault{.call = Call::Write, .fromThenOn = true, .error = ENOSPC});
    EXPECT_FALSE(Save(false)); // the other calls are with the other saves in tests/durability
    EXPECT_EQ(Saved(), "before");
    m_system.Inject(Fault{.call = Call::Write, .fromThenOn = true, .kind = Fault::Kind::Shorten});
    EXPECT_TRUE(Save(false)); // short writes are finished
    m_system.Inject(std::nullopt);
    const std::string text = Text();
    EXPECT_EQ(Saved(), kDeclaration + text);
}

TEST_F(XercesSaveTest, DeepDocumentsAreMadeAndFreedButNotWritten) {
    ASSERT_TRUE(m_xml.Create("d"));
    XMLNode node = Root();
    for (int depth = 1; depth < 1000; ++depth)
        node = Child(node, "d");
    EXPECT_TRUE(m_xml.SetNodeValue(node, "bottom"));
    EXPECT_TRUE(Save(false));
    EXPECT_TRUE(m_xml.LoadFile(m_files.File("out.xml").c_str()));

    ASSERT_TRUE(m_xml.Create("d"));
    node = Root();
    for (int depth = 1; depth < 1001; ++depth)
        node = Child(node, "d");
    EXPECT_FALSE(Save(false));
    EXPECT_EQ(Text(), "");
    XMLNode inner;
    EXPECT_TRUE(m_xml.GetNode(Root(), "d", inner));
    CString text;
    EXPECT_TRUE(m_xml.GetXML(inner, text)); // a part that is not too deep
    EXPECT_EQ(text.GetLength(), 999 * 7 + 4);
    for (int depth = 0; depth < 150000; ++depth)
        m_xml.AppendChildElement(node, "d", node);
    EXPECT_FALSE(Save(true));
    m_xml.Free();
}

} // namespace
} // namespace vnbytstr::test
