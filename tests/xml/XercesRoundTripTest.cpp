// Documents saved and read by another parser, which is libxml2's.
#include "tests/xml/XmlFixture.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
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

/// The root element alone: what stands around it is not kept.
std::string RootOnly(std::string text) {
    for (bool again = true; again;) {
        again = false;
        for (const auto& [opening, closing] :
             {std::pair<std::string, std::string>{"<!--", "-->"}, {"<?", "?>"}, {"\n", ""}}) {
            if (text.starts_with(opening)) {
                text.erase(0, closing.empty() ? 1 : text.find(closing) + closing.size());
                again = true;
            }
            if (!closing.empty() && text.ends_with(closing))
                text.erase(text.rfind(opening)), again = true;
            if (closing.empty() && text.ends_with(opening))
                text.pop_back(), again = true;
        }
    }
    return text;
}

using XercesRoundTripTest = XmlTest;

TEST_F(XercesRoundTripTest, RealDocumentsComeOutAsTheyWentIn) {
    namespace fs = std::filesystem;
    std::vector<fs::path> sources;
    for (const char* folder :
         {"/usr/share/mime/packages", "/usr/share/fontconfig", "/usr/share/xml",
          "/usr/share/mime/text", "/usr/share/doc", "/usr/share/metainfo", "/usr/share/X11/xkb"}) {
        std::error_code ignored;
        std::vector<fs::path> found;
        for (const auto& entry : fs::recursive_directory_iterator(
                 folder, fs::directory_options::skip_permission_denied, ignored)) {
            const std::string kind = entry.path().extension();
            if ((kind == ".xml" || kind == ".conf") && entry.is_regular_file(ignored) &&
                entry.file_size() < (4u << 20) &&
                entry.path().string().find('\'') == std::string::npos)
                found.push_back(entry.path());
        }
        std::sort(found.begin(), found.end());
        found.resize(std::min<std::size_t>(found.size(), 40));
        sources.insert(sources.end(), found.begin(), found.end());
    }
    // A copy has no document type beside it: the other parser would read that.
    const std::string copy = m_files.File("copy.xml"), saved = m_files.File("saved.xml");
    int compared = 0;
    for (const fs::path& source : sources) {
        fs::copy_file(source, copy, fs::copy_options::overwrite_existing);
        const std::string expected = Canonical(copy);
        if (expected.empty())
            continue; // no XML, for all its name
        ASSERT_TRUE(m_xml.LoadFile(copy.c_str())) << source << m_system.Diagnostics();
        ASSERT_TRUE(m_xml.Save(saved.c_str(), false)) << source;
        EXPECT_EQ(RootOnly(Canonical(saved)), RootOnly(expected)) << source;
        ++compared;
    }
    RecordProperty("documents", compared);
    EXPECT_GE(compared, 10) << "too few XML documents on this machine";
}

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
        EXPECT_EQ(RootOnly(canonical), RootOnly(Canonical(m_files.File("text.xml"))));
    }
}

} // namespace
} // namespace vnbytstr::test
