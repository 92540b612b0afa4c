// Which nodes of a list are children of an element, remembered from one question to the next.
#pragma once

#include "src/xml/NodePointers.h"

#include <xercesc/dom/DOMDocument.hpp>

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace vnbytstr::detail {

/// The parser's lists by tag look through all descendants anew after each change and whenever they
/// are asked for their length. Here the children of one element are walked, once: what has been
/// found is kept until somebody else changes the document. Changes that the wrapper makes itself
/// only append children, so all that was found stays true.
class ChildLists {
public:
    /// The document is gone.
    void Reset(const xercesc::DOMDocument* document);
    /// What a list was made of.
    void Remember(const xercesc::DOMNodeList* list, const xercesc::DOMElement* root,
                  const char16_t* tag);

    std::size_t Count(const xercesc::DOMElement* parent, const xercesc::DOMNodeList* list);
    /// Null when there is no such one.
    xercesc::DOMNode* Item(const xercesc::DOMElement* parent, const xercesc::DOMNodeList* list,
                           std::size_t index);

    /// Around each change that the wrapper makes.
    void BeginChange() { Synchronize(); }
    void EndChange();
    /// Whether somebody else changed the document since Reset.
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
    static constexpr std::size_t kMostFound = 4096; // then it begins anew

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
