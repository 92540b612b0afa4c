// Which nodes of a list are children of an element, remembered from one question to the next.
#pragma once

#include "src/xml/NodePointers.h"

#include <xercesc/dom/DOMDocument.hpp>

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace vnbytstr::detail {

/// The parser's lists by tag search all descendants again after each change and whenever they are
/// asked for their length. Here the children of one element are walked once; what has been found is
/// kept until the document is changed from outside. The wrapper's own changes only append children,
/// so what was found stays true.
class ChildLists {
public:
    /// The document has been freed.
    void Reset(const xercesc::DOMDocument* document);
    /// What a list was made of.
    void Remember(const xercesc::DOMNodeList* list, const xercesc::DOMElement* root,
                  const char16_t* tag);

    std::size_t Count(const xercesc::DOMElement* parent, const xercesc::DOMNodeList* list);
    /// Null when there is no such node.
    xercesc::DOMNode* Item(const xercesc::DOMElement* parent, const xercesc::DOMNodeList* list,
                           std::size_t index);

    /// Call around each change that the wrapper makes.
    void BeginChange() { Synchronize(); }
    void EndChange();
    /// Whether the document has been changed from outside since Reset.
    bool SawOthersChange() {
        Synchronize();
        return m_sawOthersChange;
    }

private:
    struct Origin {
        const xercesc::DOMElement* root;
        std::u16string tag;
    };
    struct Question {
        const xercesc::DOMElement* parent;
        const xercesc::DOMNodeList* list;
        bool operator==(const Question&) const = default;
    };
    struct QuestionHash {
        std::size_t operator()(const Question& question) const noexcept;
    };
    struct Found {
        std::vector<xercesc::DOMNode*> nodes;
        xercesc::DOMNode* last = nullptr; // child looked at; null: none yet
    };
    static constexpr std::size_t kMaxFound = 4096; // then it is cleared

    void Synchronize();
    bool IsKnown(const xercesc::DOMElement* parent, const xercesc::DOMNodeList* list,
                 const std::u16string*& tag) const;
    /// Looks on until there are `wanted` nodes or no more children.
    Found& Find(const xercesc::DOMElement* parent, const xercesc::DOMNodeList* list,
                const std::u16string* tag, std::size_t wanted);

    const xercesc::DOMDocument* m_document = nullptr;
    bool m_sawOthersChange = false;
    int m_changes = 0; // the document's count of changes up to which m_found is right
    std::unordered_map<const xercesc::DOMNodeList*, Origin> m_origins;
    std::unordered_map<Question, Found, QuestionHash> m_found;
};

} // namespace vnbytstr::detail
