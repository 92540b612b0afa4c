// An XML document: made, loaded, walked, read, changed and saved.
#pragma once

#include "vnbytstr/XMLNode.h"
#include "vnbytstr/XMLParseError.h"
#include "vnbytstr/XMLParserWrapper.h"
#include "vnbytstr/XMLVariant.h"

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"

#include <cstddef>
#include <map>
#include <memory>

// The parser is Xerces-C 3.2. Its headers are needed only by those who use these classes
// themselves.
namespace xercesc_3_2 {
class DOMImplementation;
class DOMLSParser;
} // namespace xercesc_3_2

namespace vnbytstr::detail {
class XercesState;
}

/// One entry of a table of names for numbers.
struct SEnumString {
    int m_iValue;          ///< the number
    const char* m_pszName; ///< its name
};

/// An XML document object over Xerces-C.
///
/// Narrow text, in and out, is in the process's ANSI code page (see docs/text.md) and
/// ends at its first NUL; what the page does not hold reads as '?'. Files are UTF-8. Colours are
/// 0x00BBGGRR.
///
/// Every operation returns whether it was done, throws nothing, and calls the others through their
/// virtual functions: overriding GetAttribute changes all getters of attributes. An empty handle or
/// a null name gives false. So does a name that XML does not allow ("1st", "a b", "").
///
/// Handles are valid until the document they came from is freed: by Free, Create, a load, or the
/// wrapper's destructor. One wrapper is used from one thread at a time.
///
/// Documents may be hostile. Loading reads nothing but the file or text it is given: an external
/// document type is passed over, an external entity in use fails the load. More than 1,000 resolved
/// entities or 1,000 levels of elements fail it, too, and so does a document that takes far more
/// memory than its size is worth (256 MiB and 512 times its bytes), or that refers to an entity it
/// does not declare. So do more than 32,768 different names of elements, or of attributes, or
/// attributes of one element; 10,000 declarations in the document type; more declared attributes
/// than 346 of one element or as much work for several; and far more attributes from such
/// declarations than the document has elements. Deeper documents can be made, but neither saved nor
/// turned into text. Namespaces, schemas and validation are off; internal entities are replaced by
/// their text. Of the memory that a document took, 64 MiB at most are kept for the next one.
class VNBYTSTR_API CXercesWrapper : public CXMLParserWrapper {
public:
    /// The first living wrapper initialises the parser platform, the last one terminates it. An
    /// application may have initialised it before, or may do so while wrappers live. When memory is
    /// too short for that, Create and the loads try it again.
    CXercesWrapper();
    ~CXercesWrapper() override;

    // --- document --------------------------------------------------------------------------------
    /// Frees the open document, and makes one whose root element has that name. With null no
    /// document is open afterwards, and the result is true.
    virtual bool Create(const char* rootName);
    /// Closes the document. The memory of a loaded one is freed by the next load or the destructor.
    virtual void Free();
    /// False when no document is open or it has no root element.
    virtual bool GetRootElement(XMLElement& root);
    /// The same node through another handle.
    virtual bool GetElementNode(const XMLNode& node, XMLElement& element);
    virtual bool GetNodeElement(const XMLElement& element, XMLNode& node);
    /// Frees the open document and parses the file. `path` is a file name in the file system's
    /// encoding, or a "file:" URI; nothing is ever fetched from a network. The result is false, no
    /// document is open, and GetLastParseError tells why, when the parser reports anything: a
    /// warning, too.
    virtual bool LoadFile(const char* path);
    /// The same with a text, up to its first NUL. Its bytes are what its XML declaration or
    /// byte-order mark says. Without either they are UTF-8; a text that is not valid in that is in
    /// the ANSI code page, and one that is not valid in that either is refused.
    virtual bool LoadXML(const CString& text);
    /// The node and all below it as text in the ANSI code page, without a declaration and without
    /// added line breaks. LoadXML makes the same elements of it. Where the text's bytes could be
    /// taken for UTF-8, characters beyond ASCII are written as references; where that is not enough
    /// (they stand in a name or a comment), a comment with a blank that is not UTF-8 ends the text.
    virtual bool GetXML(const XMLNode& node, CString& text) const;
    /// The same for the root element; false, and `text` untouched, when no document is open.
    virtual bool GetXML(CString& text) const;
    /// Writes the XML declaration, the stored processing instructions in the order of their targets
    /// and the root element, in UTF-8. `prettyPrint` indents, with "\r\n" before each line but the
    /// first. The file is replaced when all is on the disk; after a failure it is unchanged.
    virtual bool Save(const char* path, bool prettyPrint);

    // --- building --------------------------------------------------------------------------------
    /// Appends a new element as the last child of a node of the open document.
    virtual bool AppendChildElement(const XMLNode& parent, const char* name, XMLNode& child);
    /// Stores an instruction for Save. False when there is one with that target (the first one
    /// stays), for the target "version=\"1.0\" encoding=\"%s\"", and for what could not be written:
    /// a target that is not a name in XML, or "xml" in any case, and data with "?>" or a character
    /// that XML does not have. It outlives the document.
    virtual bool AddProcessingInstruction(const CString& target, const CString& data);
    /// Appends a comment.
    virtual bool AddCommentNode(const XMLNode& parent, const char* text);
    /// Sets or replaces an attribute. `encode` writes carriage returns, line feeds and tabs as
    /// "&r;", "&n;" and "&t;", since a parser makes blanks of them.
    virtual bool SetAttribute(const XMLNode& node, const char* name, const CXMLVariant& value,
                              bool encode = false);
    /// Writes the name of a colour that has one, else the decimal number.
    virtual bool SetColorAttribute(const XMLNode& node, const char* name, DWORD color);
    /// Writes the name of the first entry of `table` with that value; false when there is none, or
    /// it is null.
    virtual bool SetEnumAttribute(const XMLNode& node, const char* name, const SEnumString* table,
                                  int count, int value);

    // --- reading attributes ----------------------------------------------------------------------
    /// The attribute's text as a string, empty when there is no such attribute. `decode` turns
    /// "&r;", "&n;" and "&t;" back.
    virtual bool GetAttribute(const XMLNode& node, const char* name, CXMLVariant& value,
                              bool decode = false);
    virtual bool GetStringAttribute(const XMLNode& node, const char* name, CString& value,
                                    bool decode = false);
    /// These convert as CXMLVariant does. False, and `value` untouched, when the attribute is empty
    /// or absent.
    virtual bool GetIntAttribute(const XMLNode& node, const char* name, int& value);
    virtual bool GetDWORDAttribute(const XMLNode& node, const char* name, DWORD& value);
    virtual bool GetDoubleAttribute(const XMLNode& node, const char* name, double& value);
    virtual bool GetBoolAttribute(const XMLNode& node, const char* name, bool& value);
    /// A colour's name in any case, or decimal digits: their number, of which the lowest 32 bits
    /// count when it has more. Anything else, an empty or absent attribute too, gives false, with
    /// `value` set to the number the text begins with, or 0.
    virtual bool GetColorAttribute(const XMLNode& node, const char* name, DWORD& value);
    /// The value of the first entry of `table` with that name; case counts.
    virtual bool GetEnumAttribute(const XMLNode& node, const char* name, const SEnumString* table,
                                  int count, int& value);

    // --- the text of a node ----------------------------------------------------------------------
    /// Appends the value's text to an element; the text that it has stays before it.
    virtual bool SetNodeValue(const XMLNode& node, const CXMLVariant& value, bool encode = false);
    /// The value of the first child (the text of an element). True, and `value` untouched, when
    /// there is no child.
    virtual bool GetNodeValue(const XMLNode& node, CXMLVariant& value, bool decode = false);
    /// The node's type: 1 element, 3 text, 4 CDATA section, 7 processing instruction, 8 comment, 9
    /// document ...
    virtual bool GetNodeType(const XMLNode& node, short& type);
    virtual bool GetStringNodeValue(const XMLNode& node, CString& value, bool decode = false);
    virtual bool GetIntNodeValue(const XMLNode& node, int& value);
    virtual bool GetDWORDNodeValue(const XMLNode& node, DWORD& value);
    virtual bool GetDoubleNodeValue(const XMLNode& node, double& value);
    virtual bool GetBoolNodeValue(const XMLNode& node, bool& value);

    // --- walking ---------------------------------------------------------------------------------
    /// The first child element with that tag.
    virtual bool GetNode(const XMLElement& parent, const char* tag, XMLNode& node);
    /// All elements with that tag below the parent, in document order; "*" is every tag.
    virtual bool GetList(const XMLElement& parent, const char* tag, XMLNodeList& list);
    /// How many of the list's nodes are children of `parent` itself.
    virtual bool GetListCount(const XMLElement& parent, const XMLNodeList& list, LONG& count);
    /// The index-th, from 0, of the list's nodes that are children of `parent` itself. Going
    /// through all of a list takes linear time, in any order.
    virtual bool GetListItem(const XMLElement& parent, const XMLNodeList& list, LONG index,
                             XMLNode& node);
    /// All child nodes of every type.
    bool GetChilds(const XMLElement& parent, XMLNodeList& list);
    /// An element's tag, an instruction's target, "#text", "#comment" ...
    bool GetNodeName(const XMLNode& node, CString& name);

    /// What ended the last LoadFile or LoadXML; kNone when it succeeded or there was none.
    const SXMLParseError& GetLastParseError() const noexcept { return m_lastError; }

    /// The living wrappers whose platform was initialised.
    static int m_iInstanceCounter;

protected:
    /// The parser, made on first use; null when it cannot be. It belongs to the wrapper.
    xercesc_3_2::DOMLSParser* GetDOMBuilder();

private:
    bool Begin() noexcept;
    enum Origin : int { kCreated = 0, kLoaded = 1, kNone = 2 };

    class Mutation;
    template <class Source>
    bool Parse(Source& source);
    bool FindImplementation();
    bool CanBeWritten(const XMLNode& node) const;
    void DropBuilder() noexcept;
    void Fail(const char* place, const CString& message);
    void Check() const noexcept;

    std::map<CString, CString> m_instructions; // data by target
    int m_origin = kNone;
    xercesc_3_2::DOMImplementation* m_implementation = nullptr;
    xercesc_3_2::DOMLSParser* m_builder = nullptr;
    std::unique_ptr<vnbytstr::detail::XercesState> m_state;
    SXMLParseError m_lastError;
};

/// Initialises the parser platform with `folder` as the place of its message catalogues. For an
/// application that wants the parser's messages from there, before it makes the first wrapper; the
/// platform then stays for the life of the process. False when the platform cannot be initialised.
VNBYTSTR_API bool XMLMessagesInitialize(const CString& folder);
