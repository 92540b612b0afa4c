#include "xml/DocumentParserInternal.h"

#include <xercesc/framework/XMLErrorCodes.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/util/XMLUni.hpp>

#include <initializer_list>

namespace vnbytstr::detail {

using namespace xercesc;

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

void DocumentParser::startDocument() {
    m_depth = 0;
    DOMLSParserImpl::startDocument();
}

void DocumentParser::doctypeDecl(const DTDElementDecl& root, const XMLCh* publicId,
                                 const XMLCh* systemId, bool hasInternalSubset,
                                 bool hasExternalSubset) {
    DOMLSParserImpl::doctypeDecl(root, publicId, systemId, hasInternalSubset, hasExternalSubset);
    getScanner()->setHasNoDTD(true);
}

void DocumentParser::startElement(const XMLElementDecl& declaration, unsigned int uri,
                                  const XMLCh* prefix, const RefVectorOf<XMLAttr>& attributes,
                                  XMLSize_t count, bool isEmpty, bool isRoot) {
    if (m_depth >= kMaxDepth)
        Refuse(u"elements are nested more than 1000 deep");
    if (m_depth == 0)
        getScanner()->setHasNoDTD(true);
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
    throw static_cast<XMLErrs::Codes>(kCode); // when no error handler did
}

} // namespace vnbytstr::detail
