// Life, loading and freeing of a document.
//
// Invariants of CXercesWrapper:
//   1. m_initialized says whether this object is counted in m_iInstanceCounter.
//   2. Without m_initialized there is no document, implementation or builder.
//   3. A document of origin kCreated is the wrapper's own; one of origin kLoaded is the builder's,
//      which then exists; with origin kNone there is no document.
//   4. m_state's lists are those of the open document; there are none while no document is open.
#include "vnbytstr/XercesWrapper.h"

#include "src/xml/DocumentParser.h"
#include "src/xml/FileInput.h"
#include "src/xml/ParserMemory.h"
#include "src/xml/ParserPlatform.h"
#include "src/xml/TextInput.h"
#include "src/xml/XercesState.h"
#include "vnbytstr/XercesErrorHandler.h"

#include "src/charset/CodePage.h"

#include <xercesc/dom/DOMException.hpp>
#include <xercesc/dom/DOMImplementation.hpp>
#include <xercesc/dom/DOMImplementationRegistry.hpp>
#include <xercesc/framework/Wrapper4InputSource.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLUni.hpp>

#include <cassert>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

using namespace vnbytstr::detail;
using vnbytstr::CodePage;

int CXercesWrapper::m_iInstanceCounter = 0;

namespace {

/// How much memory a parser may hold after a failed load and still be used again: several times
/// that of a new one.
constexpr std::size_t kMaxKept = std::size_t{2} << 20;

std::mutex& CounterMutex() {
    static std::mutex mutex;
    return mutex;
}

/// Whether a text says itself what encoding it is in: by a mark, or in its XML declaration.
bool NamesEncoding(std::string_view text) {
    if (text.starts_with("\xEF\xBB\xBF") || text.starts_with("\xFE\xFF") ||
        text.starts_with("\xFF\xFE"))
        return true;
    if (!text.starts_with("<?xml"))
        return false;
    return text.substr(0, text.find("?>")).find("encoding") != std::string_view::npos;
}

/// The bytes of a text without a declared encoding in UTF-8. What is valid in that already stays;
/// false when the text is not valid in the ANSI code page either.
bool ToUtf8(std::string_view text, std::string& converted) {
    if (IsUtf8(text)) {
        converted = text;
        return true;
    }
    const CodePage& ansi = CodePage::Ansi();
    const std::u16string wide = ansi.ToWide(text);
    // Broken bytes read as U+FFFD; only a page of all Unicode has that for a character, too.
    if (wide.find(u'\xFFFD') != std::u16string::npos && ansi.FromWide(wide) != text)
        return false;
    converted = CodePage::Find(65001)->FromWide(wide);
    return true;
}

} // namespace

CXercesWrapper::CXercesWrapper() { Begin(); }

/// Counts this wrapper, if that has not been done. False when the parser cannot be initialised for
/// lack of memory; a later attempt may succeed.
bool CXercesWrapper::Begin() noexcept {
    if (m_initialized)
        return true;
    const std::lock_guard lock(CounterMutex());
    m_initialized = Attempt([&] {
        if (m_state == nullptr)
            m_state = std::make_unique<XercesState>();
        return m_iInstanceCounter > 0 || BeginParserPlatform();
    });
    if (m_initialized)
        ++m_iInstanceCounter;
    else
        Attempt([&] {
            Fail("", "The parser could not be made");
            return true;
        });
    return m_initialized;
}

CXercesWrapper::~CXercesWrapper() {
    if (!m_initialized)
        return;
    CXercesWrapper::Free();
    DropBuilder();
    const std::lock_guard lock(CounterMutex());
    if (--m_iInstanceCounter == 0)
        EndParserPlatform();
}

bool XMLMessagesInitialize(const CString& folder) {
    const std::lock_guard lock(CounterMutex());
    return BeginParserPlatform(folder);
}

bool CXercesWrapper::FindImplementation() {
    if (m_implementation == nullptr)
        m_implementation = xercesc::DOMImplementationRegistry::getDOMImplementation(u"LS");
    return m_implementation != nullptr;
}

xercesc::DOMLSParser* CXercesWrapper::GetDOMBuilder() {
    if (m_builder == nullptr && m_initialized)
        Attempt([&] {
            xercesc::MemoryManager* const memory = &m_state->budget;
            m_builder = new (memory) DocumentParser(memory);
            return true;
        });
    return m_builder;
}

void CXercesWrapper::DropBuilder() noexcept {
    if (m_builder == nullptr)
        return;
    Attempt([&] {
        std::exchange(m_builder, nullptr)->release();
        return true;
    });
    m_state->budget.FreeAll();
}

bool CXercesWrapper::Create(const char* rootName) {
    if (!Begin())
        return false;
    return Attempt([&] {
        Free();
        if (!FindImplementation())
            return false;
        if (rootName == nullptr)
            return true;
        xercesc::DOMDocument* document = m_implementation->createDocument(&ParserMemory::Process());
        const bool isMade = Attempt([&] {
            document->appendChild(document->createElement(m_state->names.Wide(rootName)));
            return true;
        });
        if (!isMade) {
            document->release();
            return false;
        }
        m_document = document;
        m_origin = kCreated;
        m_state->Reset(document);
        Check();
        return true;
    });
}

void CXercesWrapper::Free() {
    if (m_document == nullptr)
        return;
    m_state->Reset(nullptr);
    xercesc::DOMDocument* const document = DocumentOf(m_document);
    m_document = nullptr;
    // Not by release(): it visits every node to notify users of it, of which there are none here,
    // and recurses as deep as the document.
    if (m_origin == kCreated)
        delete document;
    Check();
}

bool CXercesWrapper::LoadFile(const char* path) {
    if (!Begin())
        return false;
    return Attempt([&] {
        FileInput source(path != nullptr ? FileNameOf(path) : std::string(), m_state->budget);
        const bool isLoaded = Parse(source);
        if (!isLoaded || !source.HasFailed())
            return isLoaded;
        Free();
        Fail(path, "The file could not be read to its end");
        return false;
    });
}

bool CXercesWrapper::LoadXML(const CString& text) {
    if (!Begin())
        return false;
    return Attempt([&] {
        std::string_view bytes(static_cast<const char*>(text)); // up to the first NUL
        std::string converted;
        if (!NamesEncoding(bytes)) {
            if (!ToUtf8(bytes, converted)) {
                Free();
                m_origin = kLoaded;
                Fail("prodInfo", "The text is valid neither in UTF-8 nor in the ANSI code page");
                return false;
            }
            bytes = converted;
        }
        TextInput source(bytes, "prodInfo", m_state->budget);
        return Parse(source);
    });
}

/// Parses `source` into the open document.
template <class Source>
bool CXercesWrapper::Parse(Source& source) {
    Free();
    // It would take the next document for one of XML 1.1, too, unless that says otherwise.
    if (m_builder != nullptr && static_cast<DocumentParser*>(m_builder)->IsSetToVersion11())
        DropBuilder();
    xercesc::DOMLSParser* const builder = GetDOMBuilder();
    m_origin = kLoaded;
    m_lastError = {};
    if (builder == nullptr) {
        Fail("", "The parser could not be made");
        return false;
    }
    CXercesErrorHandler handler;
    builder->getDomConfig()->setParameter(xercesc::XMLUni::fgDOMErrorHandler,
                                          static_cast<const void*>(&handler));
    builder->resetDocumentPool();
    xercesc::DOMDocument* document = nullptr;
    ParseBudget& budget = m_state->budget;
    const bool isParsed = Attempt([&] {
        budget.Begin(kBudgetBase, [parser = static_cast<DocumentParser*>(builder)] {
            parser->Refuse(u"the document asks for far more memory than its size is worth");
        });
        xercesc::Wrapper4InputSource input(&source, false, &ParserMemory::Process());
        document = builder->parse(&input);
        return true;
    });
    const bool isSound = !budget.End() && isParsed;
    if (isParsed)
        builder->getDomConfig()->setParameter(xercesc::XMLUni::fgDOMErrorHandler,
                                              static_cast<const void*>(nullptr));
    if (!isSound || handler.getSawErrors() || document == nullptr ||
        document->getDocumentElement() == nullptr) {
        m_lastError = handler.getLastError();
        if (!handler.getSawErrors())
            Fail("", "The parser gave no document; memory may be short");
        if (isSound)
            builder->resetDocumentPool();
        if (!isSound || budget.LiveBytes() > kMaxKept)
            DropBuilder(); // it may be in the middle of an operation, or have leaked memory
        return false;
    }
    m_document = document;
    m_state->Reset(document);
    Check();
    return true;
}

/// A failure that the parser did not report.
void CXercesWrapper::Fail(const char* place, const CString& message) {
    m_lastError = {SXMLParseError::kFatal, place, 0, 0, message};
}

void CXercesWrapper::Check() const noexcept {
    assert(m_initialized || (m_document == nullptr && m_builder == nullptr));
    assert(m_document == nullptr || m_origin != kNone);
    assert(m_document == nullptr || m_origin != kLoaded || m_builder != nullptr);
    assert(!m_initialized || m_state != nullptr);
}
