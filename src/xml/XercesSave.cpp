// A document as a file and as text.
#include "vnbytstr/XercesWrapper.h"

#include "src/xml/DocumentParser.h"
#include "src/xml/FileTarget.h"
#include "src/xml/ParserMemory.h"
#include "src/xml/XercesState.h"

#include <xercesc/dom/DOMConfiguration.hpp>
#include <xercesc/dom/DOMImplementation.hpp>
#include <xercesc/dom/DOMImplementationLS.hpp>
#include <xercesc/dom/DOMImplementationRegistry.hpp>
#include <xercesc/dom/DOMLSOutput.hpp>
#include <xercesc/dom/DOMLSSerializer.hpp>
#include <xercesc/dom/DOMProcessingInstruction.hpp>
#include <xercesc/util/XMLChar.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include <memory>
#include <string>
#include <string_view>

using namespace vnbytstr::detail;
using xercesc::DOMNode;

namespace {

constexpr char kDeclarationFormat[] = "version=\"1.0\" encoding=\"%s\"";
constexpr char16_t kNewLine[] = u"\r\n";

/// For objects of the parser that are freed by release(). That allocates memory itself; what cannot
/// be released so is freed with the document.
struct Releaser {
    template <class Object>
    void operator()(Object* object) const noexcept {
        try {
            object->release();
        } catch (...) {
        }
    }
};
template <class Object>
using Released = std::unique_ptr<Object, Releaser>;

std::u16string_view ValueOf(const DOMNode* node) {
    const char16_t* const value = node->getNodeValue();
    return value != nullptr ? value : u"";
}

/// Whether a parser would take the node's own text for what it is. (The serializer looks for
/// characters that XML does not have, and no further.)
bool CanBeWritten(const DOMNode* node) {
    switch (node->getNodeType()) {
    case DOMNode::COMMENT_NODE:
        return IsCommentText(ValueOf(node));
    case DOMNode::PROCESSING_INSTRUCTION_NODE:
        return ValueOf(node).find(u"?>") == std::u16string_view::npos &&
               xercesc::XMLString::compareIStringASCII(node->getNodeName(), u"xml") != 0;
    default:
        return true;
    }
}

/// Whether a node and all below it can be written, and read again. In one walk without recursion:
/// the serializer is recursive. It takes a fifth of the time of writing, and is done only for
/// documents that may not be readable.
bool CanAllBeWritten(const DOMNode* top) {
    int depth = 1;
    for (const DOMNode* node = top;;) {
        if (depth > kMaxDepth + 1 ||
            !CanBeWritten(node)) // texts lie a level below the deepest element
            return false;
        if (const DOMNode* child = node->getFirstChild()) {
            if (depth == kMaxDepth && node->getNodeType() == DOMNode::ELEMENT_NODE &&
                child->getNodeType() == DOMNode::ELEMENT_NODE)
                return false;
            node = child;
            ++depth;
            continue;
        }
        while (node != top && node->getNextSibling() == nullptr) {
            node = node->getParentNode();
            --depth;
        }
        if (node == top)
            return true;
        node = node->getNextSibling();
    }
}

/// Whether an instruction can be written.
bool IsInstruction(const CString& target, const CString& data) {
    using Characters = xercesc::XMLChar1_0;
    const WideText name(ViewOf(target)), text(ViewOf(data));
    const std::u16string_view value(text.c_str(), text.size());
    for (std::size_t i = 0; i < value.size(); ++i) {
        const bool isPair = i + 1 < value.size() && Characters::isXMLChar(value[i], value[i + 1]);
        if (!isPair && !Characters::isXMLChar(value[i]))
            return false;
        i += isPair ? 1 : 0;
    }
    return name.size() > 0 && Characters::isValidName(name.c_str(), name.size()) &&
           xercesc::XMLString::compareIStringASCII(name.c_str(), u"xml") != 0 &&
           value.find(u"?>") == std::u16string_view::npos;
}

xercesc::DOMImplementationLS* Implementation() {
    return xercesc::DOMImplementationRegistry::getDOMImplementation(u"LS");
}

Released<xercesc::DOMLSSerializer> MakeSerializer(xercesc::DOMImplementationLS* implementation) {
    Released<xercesc::DOMLSSerializer> serializer(
        implementation->createLSSerializer(&ParserMemory::Process()));
    // Defaults come from a document type, which is not written.
    serializer->getDomConfig()->setParameter(xercesc::XMLUni::fgDOMWRTDiscardDefaultContent, false);
    return serializer;
}

/// Writes a processing instruction.
bool WriteInstruction(xercesc::DOMDocument& document, xercesc::DOMLSSerializer& serializer,
                      xercesc::DOMLSOutput& output, const char16_t* target, const char16_t* data,
                      bool isDeclaration) {
    const Released<xercesc::DOMProcessingInstruction> node(
        document.createProcessingInstruction(target, data));
    return (isDeclaration || CanBeWritten(node.get())) && serializer.write(node.get(), &output);
}

} // namespace

bool CXercesWrapper::AddProcessingInstruction(const CString& target, const CString& data) {
    return Attempt([&] {
        return target != kDeclarationFormat && IsInstruction(target, data) &&
               m_instructions.try_emplace(target, data).second;
    });
}

bool CXercesWrapper::Save(const char* path, bool prettyPrint) {
    return Attempt([&] {
        XMLElement root;
        XMLNode rootNode;
        if (!CheckInstance() || path == nullptr || !GetRootElement(root) ||
            !GetNodeElement(root, rootNode) || !FindImplementation() || !CanBeWritten(rootNode))
            return false;
        const Mutation mutation(*this);
        FileTarget target;
        if (!target.Open(path))
            return false;
        const auto serializer = MakeSerializer(m_implementation);
        const Released<xercesc::DOMLSOutput> output(
            m_implementation->createLSOutput(&ParserMemory::Process()));
        output->setByteStream(&target);
        output->setEncoding(xercesc::XMLUni::fgUTF8EncodingString);
        xercesc::DOMDocument& document = *DocumentOf(m_document);
        document.setXmlVersion(xercesc::XMLUni::fgVersion1_0); // as the declaration says

        CString declaration;
        declaration.Format(kDeclarationFormat, "utf-8");
        if (!WriteInstruction(document, *serializer, *output, u"xml",
                              WideText(ViewOf(declaration)).c_str(), true))
            return false;
        xercesc::DOMConfiguration* const settings = serializer->getDomConfig();
        if (prettyPrint &&
            settings->canSetParameter(xercesc::XMLUni::fgDOMWRTFormatPrettyPrint, true))
            settings->setParameter(xercesc::XMLUni::fgDOMWRTFormatPrettyPrint, true);
        serializer->setNewLine(kNewLine);
        for (const auto& [instruction, data] : m_instructions) {
            if (!WriteInstruction(document, *serializer, *output,
                                  WideText(ViewOf(instruction)).c_str(),
                                  WideText(ViewOf(data)).c_str(), false))
                return false;
        }
        return serializer->write(NodeOf(rootNode), output.get()) && target.Commit();
    });
}

/// Whether the node and all below it can be written, and read again.
bool CXercesWrapper::CanBeWritten(const XMLNode& node) const {
    const DOMNode* const top = NodeOf(node);
    const bool isKnown = CheckInstance() && top->getOwnerDocument() == DocumentOf(m_document) &&
                         !m_state->isDoubtful && !m_state->lists.SawOthersChange();
    return isKnown || CanAllBeWritten(top);
}

bool CXercesWrapper::GetXML(const XMLNode& node, CString& text) const {
    return Attempt([&] {
        const DOMNode* const top = NodeOf(node);
        if (top == nullptr || !CanBeWritten(node))
            return false;
        const auto serializer = MakeSerializer(Implementation());
        serializer->getDomConfig()->setParameter(xercesc::XMLUni::fgDOMXMLDeclaration, false);
        const auto release = [](char16_t* wide) {
            xercesc::MemoryManager& memory = ParserMemory::Process();
            xercesc::XMLString::release(&wide, &memory);
        };
        const std::unique_ptr<char16_t, decltype(release)> wide(
            serializer->writeToString(top, &ParserMemory::Process()), release);
        if (wide == nullptr)
            return false;
        const NarrowText narrow(wide.get());
        if (top->getNodeType() != DOMNode::ELEMENT_NODE)
            text = narrow.String();
        else {
            const std::string plain = Unmistakable(narrow.View());
            text = CString(plain.data(), static_cast<int>(plain.size()));
        }
        return true;
    });
}

bool CXercesWrapper::GetXML(CString& text) const {
    return Attempt([&] {
        if (!CheckInstance())
            return false;
        return GetXML(XMLNode(static_cast<DOMNode*>(DocumentOf(m_document)->getDocumentElement())),
                      text);
    });
}
