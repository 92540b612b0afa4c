// Documents saved and read by another parser, which is libxml2's. Where there is none, they are the same
// documents as where there is one.
#include "src/os/Crc32c.h"
#include "tests/xml/Canonical.h"
#include "tests/xml/XmlFixture.h"

#include <random>
#include <vector>

namespace vnbytstr::test {
namespace {

using XercesRoundTripTest = XmlTest;

TEST_F(XercesRoundTripTest, MadeDocumentsAreReadAlikeByBoth) {
    std::mt19937 random(3);
    const char* const names[] = {"a", "list-item", "x_1", "ns:b", "名前"};
    const char* const texts[] = {"plain",        "<&>\"'", " blank ", "日本語",
                                 "\u20AC\u00E4", "]]>",    "a\tb",    "𝄞"};
    const auto pick = [&](const auto& from) { return from[random() % std::size(from)]; };
    DWORD checksum = 0;
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
            case 1: {
                const char* const name = pick(names); // first, with every compiler
                EXPECT_TRUE(m_xml.SetAttribute(at, name, pick(texts)));
                break;
            }
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
        checksum = Crc32c({reinterpret_cast<const BYTE*>(text.data()), text.size()}, checksum);
        const std::string canonical = Canonical(first);
        EXPECT_FALSE(canonical.empty());
        EXPECT_EQ(canonical, Canonical(m_files.File("text.xml")));
    }
    EXPECT_EQ(checksum, 0x18E8E3A0u);
}

} // namespace
} // namespace vnbytstr::test
