// The parser, with the limits that refuse hostile documents.
#pragma once

#include <xercesc/parsers/DOMLSParserImpl.hpp>
#include <xercesc/util/SecurityManager.hpp>

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace vnbytstr::detail {

/// Levels of elements that a document may have, the root being the first. Saving descends as deep.
inline constexpr int kMaxDepth = 1000;
/// Entity references that a document may have resolved.
inline constexpr XMLSize_t kMaxEntityExpansions = 1000;

/// Different names of elements, and of attributes, that a document may have; and attributes of one
/// element. The parser keeps names in tables of a fixed size, so that each takes time in proportion
/// to how many there are.
inline constexpr XMLSize_t kMaxNames = 32768;
/// Declarations in a document type. The parser goes through an element's attributes for each that
/// is declared: that work is limited, too, to 346 of one element.
inline constexpr int kMaxDeclarations = 10000;
inline constexpr int kMaxAttributeWork = 346 * 347 / 2;
/// Attributes that only the document type gives: so many, and as many more for each element.
inline constexpr XMLSize_t kMaxDefaults = 100000, kMaxDefaultsPerElement = 16;

/// Counts different names, closely enough for a limit: of names with the same place in its table it
/// counts only the first. Which names those are differs from process to process, so a document
/// cannot be built from them.
class NameCounter {
public:
    NameCounter() : m_seen(kPlaces / 64) {}
    void Clear() noexcept;
    /// The number of different names so far, with this one.
    XMLSize_t Add(const XMLCh* name) noexcept;

private:
    static constexpr std::size_t kPlaces = std::size_t{1} << 20;
    std::vector<std::uint64_t> m_seen; // a bit for each place
    XMLSize_t m_count = 0;
};

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

    /// Reports why the document is refused, and ends the parse.
    [[noreturn]] void Refuse(const XMLCh* reason);
    /// Whether the last document with an XML declaration was one of XML 1.1.
    bool IsSetToVersion11() const;

    void startDocument() override;
    void doctypeDecl(const xercesc::DTDElementDecl& root, const XMLCh* publicId,
                     const XMLCh* systemId, bool hasInternalSubset,
                     bool hasExternalSubset) override;
    void attDef(const xercesc::DTDElementDecl& element, const xercesc::DTDAttDef& attribute,
                bool isIgnored) override;
    void elementDecl(const xercesc::DTDElementDecl& element, bool isIgnored) override;
    void entityDecl(const xercesc::DTDEntityDecl& entity, bool isParameter,
                    bool isIgnored) override;
    void notationDecl(const xercesc::XMLNotationDecl& notation, bool isIgnored) override;
    void startElement(const xercesc::XMLElementDecl& declaration, unsigned int uri,
                      const XMLCh* prefix, const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
                      XMLSize_t count, bool isEmpty, bool isRoot) override;
    void endElement(const xercesc::XMLElementDecl& declaration, unsigned int uri, bool isRoot,
                    const XMLCh* prefix) override;

private:
    xercesc::SecurityManager m_security;
    void CountDeclaration();

    int m_depth = 0;
    int m_declarations = 0, m_attributeWork = 0;
    std::unordered_map<XMLSize_t, int> m_declaredAttributes; // by the element's number
    XMLSize_t m_elements = 0, m_defaults = 0;
    NameCounter m_attributes; // their names
};

} // namespace vnbytstr::detail
