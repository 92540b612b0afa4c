// The parser with what keeps hostile documents out.
#pragma once

#include <xercesc/parsers/DOMLSParserImpl.hpp>
#include <xercesc/util/SecurityManager.hpp>

namespace vnbytstr::detail {

/// Levels of elements that a document may have, the root being the first. Saving descends as deep.
inline constexpr int kMaxDepth = 1000;
/// Entity references that a document may have resolved.
inline constexpr XMLSize_t kMaxEntityExpansions = 1000;

/// A synchronous DOM parser without namespaces, validation and schemas. It reads nothing but what
/// it is given: external entities that a document uses are an error, an external document type is
/// passed over, and an entity that only it could declare is an error like every unknown one,
/// instead of being left out. Entity references are replaced by their text, since what is saved has
/// no document type that could declare them.
///
/// Depth is counted where elements begin and end: a parser filter does the same, but costs an
/// eighth of the time of a load, as it is asked about every node.
class DocumentParser final : public xercesc::DOMLSParserImpl {
public:
    explicit DocumentParser(xercesc::MemoryManager* memory);

    /// Reports what makes the document one that is not wanted, and ends the parse.
    [[noreturn]] void Refuse(const XMLCh* reason);

    void startDocument() override;
    void doctypeDecl(const xercesc::DTDElementDecl& root, const XMLCh* publicId,
                     const XMLCh* systemId, bool hasInternalSubset,
                     bool hasExternalSubset) override;
    void startElement(const xercesc::XMLElementDecl& declaration, unsigned int uri,
                      const XMLCh* prefix, const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
                      XMLSize_t count, bool isEmpty, bool isRoot) override;
    void endElement(const xercesc::XMLElementDecl& declaration, unsigned int uri, bool isRoot,
                    const XMLCh* prefix) override;

private:
    xercesc::SecurityManager m_security;
    int m_depth = 0;
};

} // namespace vnbytstr::detail
