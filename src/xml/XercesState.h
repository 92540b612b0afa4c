// What a wrapper keeps beside its document, and what its operations share.
#pragma once

#include "src/xml/ChildLists.h"
#include "src/xml/ParserMemory.h"
#include "src/xml/XercesText.h"

#include "vnbytstr/XercesWrapper.h"
#include "vnbytstr/framework/Exception.h"

#include <xercesc/dom/DOMDocument.hpp>

#include <string_view>

namespace vnbytstr::detail {

class XercesState {
public:
    /// Another document is open, or no document.
    void Reset(const xercesc::DOMDocument* document) {
        lists.Reset(document);
        isDoubtful = false;
    }

    NameCache names;
    ChildLists lists;
    /// Whether something that the wrapper put into the document since Reset may be unreadable when
    /// written: too deep, or a comment that XML does not allow.
    bool isDoubtful = false;
    ParseBudget budget; // the builder's memory: it outlives the builder
};

/// Whether XML allows a comment with that text.
inline bool IsCommentText(std::u16string_view text) noexcept {
    return text.find(u"--") == std::u16string_view::npos && !text.ends_with(u'-');
}

inline xercesc::DOMDocument* DocumentOf(void* document) noexcept {
    return static_cast<xercesc::DOMDocument*>(document);
}

/// What `operation` returns; false when it throws anything.
template <class Operation>
bool Attempt(Operation&& operation) noexcept {
    try {
        return operation();
    } catch (CException* error) {
        error->Delete();
        return false;
    } catch (...) { // the parser throws objects of several families
        return false;
    }
}

} // namespace vnbytstr::detail

/// Put around each change of the document that the wrapper makes.
class CXercesWrapper::Mutation {
public:
    explicit Mutation(CXercesWrapper& wrapper) : m_lists(wrapper.m_state->lists) {
        m_lists.BeginChange();
    }
    ~Mutation() { m_lists.EndChange(); }
    Mutation(const Mutation&) = delete;
    Mutation& operator=(const Mutation&) = delete;

private:
    vnbytstr::detail::ChildLists& m_lists;
};
