// Walking: lists by tag, children, and what is remembered between two questions.
#include "tests/xml/XmlFixture.h"

#include "src/xml/NodePointers.h"

#include <random>
#include <vector>

namespace vnbytstr::test {
namespace {

using detail::NodeOf;

class ChildListsTest : public XmlTest {
protected:
    LONG Count(const XMLElement& parent, const XMLNodeList& list) {
        LONG count = -1;
        EXPECT_TRUE(m_xml.GetListCount(parent, list, count));
        return count;
    }
    XMLNodeList List(const XMLElement& parent, const char* tag) {
        XMLNodeList list;
        EXPECT_TRUE(m_xml.GetList(parent, tag, list));
        return list;
    }
    XMLNode Item(const XMLElement& parent, const XMLNodeList& list, LONG index) {
        XMLNode node;
        const bool isThere = m_xml.GetListItem(parent, list, index, node);
        EXPECT_EQ(isThere, !node.IsEmpty());
        return node;
    }
    /// What the parser's own list says, without any shortcut.
    static std::vector<void*> Naive(const XMLElement& parent, const XMLNodeList& list) {
        std::vector<void*> children;
        xercesc::DOMNodeList* const nodes = detail::ListOf(list);
        for (XMLSize_t i = 0; i < nodes->getLength(); ++i) {
            if (nodes->item(i)->getParentNode() == detail::ElementOf(parent))
                children.push_back(nodes->item(i));
        }
        return children;
    }
    void ExpectSame(const XMLElement& parent, const XMLNodeList& list) {
        const std::vector<void*> expected = Naive(parent, list);
        ASSERT_EQ(static_cast<std::size_t>(Count(parent, list)), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i)
            ASSERT_EQ(Item(parent, list, static_cast<LONG>(i)).GetData(), expected[i]);
        EXPECT_TRUE(Item(parent, list, static_cast<LONG>(expected.size())).IsEmpty());
    }
};

TEST_F(ChildListsTest, CountsOnlyTheChildrenOfTheParentAsked) {
    ASSERT_TRUE(Load("<r><x n='0'><x n='in'/></x>text<y/><x n='1'/><!--c--><y><x/></y></r>"));
    const XMLElement root = Root();
    const XMLNodeList list = List(root, "x");
    EXPECT_EQ(Count(root, list), 2);
    EXPECT_EQ(Attribute(Item(root, list, 1), "n"), "1");
    EXPECT_TRUE(Item(root, list, 2).IsEmpty());
    EXPECT_TRUE(Item(root, list, -1).IsEmpty());
    const XMLElement inner = Item(root, list, 0);
    EXPECT_EQ(Count(inner, list), 1); // the root's list, another parent
    EXPECT_EQ(Attribute(Item(inner, list, 0), "n"), "in");
    EXPECT_EQ(Count(root, List(inner, "x")), 0); // the root is not below that element
    EXPECT_EQ(Count(root, List(root, "*")), 4);
    EXPECT_EQ(Count(root, List(root, "z")), 0);

    XMLNode node;
    EXPECT_TRUE(m_xml.GetNode(root, "y", node));
    EXPECT_FALSE(m_xml.GetNode(root, "z", node));
    XMLNodeList children;
    EXPECT_TRUE(m_xml.GetChilds(root, children));
    EXPECT_EQ(Count(root, children), 6);
    EXPECT_EQ(Count(inner, children), 0);
    short type = 0;
    CString name;
    const char* const names[] = {"x", "#text", "y", "x", "#comment", "y"};
    const short types[] = {1, 3, 1, 1, 8, 1};
    for (LONG i = 0; i < 6; ++i) {
        EXPECT_TRUE(m_xml.GetNodeType(Item(root, children, i), type));
        EXPECT_TRUE(m_xml.GetNodeName(Item(root, children, i), name));
        EXPECT_EQ(type, types[i]);
        EXPECT_EQ(name, names[i]);
    }
    XMLElement element;
    EXPECT_FALSE(m_xml.GetElementNode(Item(root, children, 1), element)); // a text
    EXPECT_TRUE(XMLElement(Item(root, children, 1)).IsEmpty());
    EXPECT_TRUE(m_xml.GetElementNode(Item(root, children, 0), element));
    EXPECT_TRUE(m_xml.GetNodeElement(element, node));
    EXPECT_TRUE(node == element && node == Item(root, list, 0) && node != XMLNode(root));
}

TEST_F(ChildListsTest, StaysRightWhileTheDocumentChanges) {
    std::mt19937 random(5);
    ASSERT_TRUE(m_xml.Create("r"));
    const XMLElement root = Root();
    std::vector<XMLNode> nodes{XMLNode(root)};
    const char* const tags[] = {"a", "b"};
    std::vector<std::pair<XMLElement, XMLNodeList>> asked;
    for (int step = 0; step < 1500; ++step) {
        const XMLNode at = nodes[random() % nodes.size()];
        switch (random() % 8) {
        case 0:
        case 1:
        case 2:
            nodes.push_back(Child(at, tags[random() % 2]));
            break;
        case 3:
            EXPECT_TRUE(m_xml.SetNodeValue(at, "t"));
            break;
        case 4:
            EXPECT_TRUE(m_xml.SetAttribute(at, "n", step));
            break;
        case 5: { // moved by other code
            const XMLNode to = nodes[random() % nodes.size()];
            bool isBelow = false;
            for (auto* up = NodeOf(to); up != nullptr; up = up->getParentNode())
                isBelow |= up == NodeOf(at);
            if (!isBelow)
                NodeOf(to)->insertBefore(NodeOf(at), NodeOf(to)->getFirstChild());
            break;
        }
        case 6: {
            const XMLElement parent(at);
            XMLNodeList children;
            EXPECT_TRUE(m_xml.GetChilds(parent, children));
            asked.emplace_back(parent,
                               random() % 3 == 0 ? children : List(parent, tags[random() % 2]));
            break;
        }
        default:
            if (!asked.empty()) {
                const auto& [parent, list] = asked[random() % asked.size()];
                ASSERT_NO_FATAL_FAILURE(ExpectSame(parent, list)) << step;
                ASSERT_NO_FATAL_FAILURE(ExpectSame(root, list)) << step;
            }
            break;
        }
    }
}

TEST_F(ChildListsTest, RemembersMoreQuestionsThanItKeeps) {
    constexpr int kParents = 5000;
    ASSERT_TRUE(m_xml.Create("r"));
    const XMLElement root = Root();
    for (int i = 0; i < kParents; ++i)
        m_xml.SetAttribute(Child(Child(root, "p"), "c"), "i", i);
    const XMLNodeList parents = List(root, "p");
    ASSERT_EQ(Count(root, parents), kParents);
    for (LONG i = kParents - 1; i >= 0; --i) { // backwards, questions about others in between
        const XMLElement parent = Item(root, parents, i);
        XMLNode child;
        ASSERT_TRUE(m_xml.GetNode(parent, "c", child));
        int number = -1;
        EXPECT_TRUE(m_xml.GetIntAttribute(child, "i", number));
        EXPECT_EQ(number, i);
    }
}

TEST_F(ChildListsTest, ListsOfOtherDocumentsAreNotConfused) {
    CXercesWrapper other;
    ASSERT_TRUE(other.LoadXML("<r><x/><x/><x/></r>"));
    ASSERT_TRUE(Load("<r><x/></r>"));
    XMLElement otherRoot;
    ASSERT_TRUE(other.GetRootElement(otherRoot));
    XMLNodeList list;
    ASSERT_TRUE(m_xml.GetList(otherRoot, "x", list)); // through the wrong wrapper
    EXPECT_EQ(Count(otherRoot, list), 3);
    EXPECT_EQ(Count(Root(), list), 0);
    XMLNode node;
    EXPECT_FALSE(m_xml.AppendChildElement(otherRoot, "x", node)); // that document's nodes only
    EXPECT_EQ(Count(otherRoot, list), 3);
}

} // namespace
} // namespace vnbytstr::test
