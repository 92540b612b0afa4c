// Documents saved and read by another parser, which is libxml2's.
#include "tests/xml/XmlFixture.h"

#include <array>
#include <cstdio>
#include <random>
#include <vector>

namespace vnbytstr::test {
namespace {

/// The canonical form (W3C, Canonical XML 1.0) of a file; empty when it is not well-formed.
std::string Canonical(const std::string& file) {
    const std::string command =
        "XML_CATALOG_FILES= xmllint --nonet --c14n '" + file + "' 2>/dev/null";
    std::FILE* const pipe = ::popen(command.c_str(), "r");
    std::string text;
    std::array<char, 65536> buffer;
    while (const std::size_t size = std::fread(buffer.data(), 1, buffer.size(), pipe))
        text.append(buffer.data(), size);
    return ::pclose(pipe) == 0 ? text : "";
}

using XercesRoundTripTest = XmlTest;

TEST_F(XercesRoundTripTest, MadeDocumentsAreReadAlikeByBoth) {
    std::mt19937 random(3);
    const char* const names[] = {"a", "list-item", "x_1", "ns:b", "名前"};
    const char* const texts[] = {"plain",        "<&>\"'", " blank ", "日本語",
                                 "\u20AC\u00E4", "]]>",    "a\tb",    "𝄞"};
    const auto pick = [&](const auto& from) { return from[random() % std::size(from)]; };
    for (int round = 0; round < 20; ++round) {
        ASSERT_TRUE(m_xml.Create("root"));
        EXPECT_TRUE(m_xml.SetAttribute(Root(), "xmlns:ns", "urn:x"));
        std::vector<XMLNode> nodes{XMLNode(Root())};
        for (int step = 0; step < 200; ++step) {
            const XMLNode at = pick(nodes);
            switch (random() % 4) {
            case 0:
                nodes.push_back(Child(at, pick(names)));
                break;
            case 1:
                EXPECT_TRUE(m_xml.SetAttribute(at, pick(names), pick(texts)));
                break;
            case 2:
                EXPECT_TRUE(m_xml.SetNodeValue(at, pick(texts)));
                break;
            default:
                EXPECT_TRUE(m_xml.AddCommentNode(at, " note "));
                break;
            }
        }
        const std::string first = m_files.File("first.xml"), second = m_files.File("second.xml");
        const std::string text = Text();
        ASSERT_TRUE(m_xml.Save(first.c_str(), false));
        ASSERT_TRUE(m_xml.LoadFile(first.c_str()));
        EXPECT_EQ(Text(), text);
        ASSERT_TRUE(m_xml.Save(second.c_str(), false));
        EXPECT_EQ(m_files.Read("second.xml"), m_files.Read("first.xml"));
        m_files.Write("text.xml", text);
        const std::string canonical = Canonical(first);
        EXPECT_FALSE(canonical.empty());
        EXPECT_EQ(canonical, Canonical(m_files.File("text.xml")));
    }
}

} // namespace
} // namespace vnbytstr::test
