#include "src/xml/DocumentParser.h"

#include <xercesc/framework/XMLErrorCodes.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/util/XMLUni.hpp>

#include <algorithm>
#include <initializer_list>
#include <random>

namespace vnbytstr::detail {

using namespace xercesc;

void NameCounter::Clear() noexcept {
    if (m_count > 0)
        std::fill(m_seen.begin(), m_seen.end(), 0);
    m_count = 0;
}

XMLSize_t NameCounter::Add(const XMLCh* name) noexcept {
    static const std::uint64_t seed = std::random_device()() | std::uint64_t{1} << 40;
    std::uint64_t hash = seed;
    for (; *name != 0; ++name)
        hash = (hash ^ *name) * 0x9E3779B97F4A7C15u;
    hash ^= hash >> 29;
    hash *= seed | 1;
    std::uint64_t& word = m_seen[static_cast<std::size_t>(hash >> 44) / 64];
    const std::uint64_t bit = std::uint64_t{1} << (hash >> 44) % 64;
    m_count += (word & bit) == 0;
    word |= bit;
    return m_count;
}

DocumentParser::DocumentParser(MemoryManager* memory) : DOMLSParserImpl(nullptr, memory) {
    for (const XMLCh* feature :
         {XMLUni::fgDOMNamespaces, XMLUni::fgXercesSchema, XMLUni::fgXercesSchemaFullChecking,
          XMLUni::fgDOMValidateIfSchema, XMLUni::fgDOMValidate, XMLUni::fgDOMDatatypeNormalization})
        setParameter(feature, false);
    m_security.setEntityExpansionLimit(kMaxEntityExpansions);
    setParameter(XMLUni::fgXercesSecurityManager, static_cast<const void*>(&m_security));
    setParameter(XMLUni::fgXercesLoadExternalDTD, false);
    setParameter(XMLUni::fgXercesDisableDefaultEntityResolution, true);
    setParameter(XMLUni::fgDOMEntities, false);
}

bool DocumentParser::IsSetToVersion11() const {
    return getScanner()->getXMLVersion() == XMLReader::XMLV1_1;
}

void DocumentParser::startDocument() {
    m_depth = m_declarations = m_attributeWork = 0;
    m_elements = m_defaults = 0;
    m_declaredAttributes.clear();
    m_attributes.Clear();
    DOMLSParserImpl::startDocument();
}

void DocumentParser::doctypeDecl(const DTDElementDecl& root, const XMLCh* publicId,
                                 const XMLCh* systemId, bool hasInternalSubset,
                                 bool hasExternalSubset) {
    DOMLSParserImpl::doctypeDecl(root, publicId, systemId, hasInternalSubset, hasExternalSubset);
    getScanner()->setHasNoDTD(true);
}

void DocumentParser::CountDeclaration() {
    if (++m_declarations > kMaxDeclarations)
        Refuse(u"the document type has more than 10000 declarations");
}

void DocumentParser::attDef(const DTDElementDecl& element, const DTDAttDef& attribute,
                            bool isIgnored) {
    m_attributeWork += ++m_declaredAttributes[element.getId()];
    if (m_attributeWork > kMaxAttributeWork)
        Refuse(u"the document type declares too many attributes");
    CountDeclaration();
    DOMLSParserImpl::attDef(element, attribute, isIgnored);
}

void DocumentParser::elementDecl(const DTDElementDecl& element, bool isIgnored) {
    CountDeclaration();
    DOMLSParserImpl::elementDecl(element, isIgnored);
}

void DocumentParser::entityDecl(const DTDEntityDecl& entity, bool isParameter, bool isIgnored) {
    CountDeclaration();
    DOMLSParserImpl::entityDecl(entity, isParameter, isIgnored);
}

void DocumentParser::notationDecl(const XMLNotationDecl& notation, bool isIgnored) {
    CountDeclaration();
    DOMLSParserImpl::notationDecl(notation, isIgnored);
}

void DocumentParser::startElement(const XMLElementDecl& declaration, unsigned int uri,
                                  const XMLCh* prefix, const RefVectorOf<XMLAttr>& attributes,
                                  XMLSize_t count, bool isEmpty, bool isRoot) {
    if (m_depth >= kMaxDepth)
        Refuse(u"elements are nested more than 1000 deep");
    if (m_depth == 0)
        getScanner()->setHasNoDTD(true);
    if (declaration.getId() > kMaxNames)
        Refuse(u"the document has more than 32768 different names of elements");
    if (count > kMaxNames)
        Refuse(u"an element has more than 32768 attributes");
    ++m_elements;
    for (XMLSize_t i = 0; i < count; ++i) {
        const XMLAttr& attribute = *attributes.elementAt(i);
        m_defaults += attribute.getSpecified() ? 0 : 1;
        if (m_attributes.Add(attribute.getName()) > kMaxNames)
            Refuse(u"the document has more than 32768 different names of attributes");
    }
    if (m_defaults > kMaxDefaults + kMaxDefaultsPerElement * m_elements)
        Refuse(u"the document type gives far more attributes than the document has");
    // The parser ends an empty element itself, within the call.
    ++m_depth;
    DOMLSParserImpl::startElement(declaration, uri, prefix, attributes, count, isEmpty, isRoot);
}

void DocumentParser::endElement(const XMLElementDecl& declaration, unsigned int uri, bool isRoot,
                                const XMLCh* prefix) {
    DOMLSParserImpl::endElement(declaration, uri, isRoot, prefix);
    --m_depth;
}

void DocumentParser::Refuse(const XMLCh* reason) {
    const Locator* const place = getScanner()->getLocator();
    constexpr auto kCode = XMLErrs::ExpectedEndOfTagX; // the parser has none for this
    error(kCode, XMLUni::fgXMLErrDomain, XMLErrorReporter::ErrType_Fatal, reason,
          place->getSystemId(), place->getPublicId(), place->getLineNumber(),
          place->getColumnNumber());
    throw static_cast<XMLErrs::Codes>(kCode); // when no error handler has thrown
}

} // namespace vnbytstr::detail
