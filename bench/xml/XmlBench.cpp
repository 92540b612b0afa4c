// Documents against the bare parser and serializer with their defaults.
#include "bench/Rounds.h"

#include "vnbytstr/XercesWrapper.h"

#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/LocalFileFormatTarget.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

namespace vnbytstr::bench {
namespace {

using namespace xercesc;

constexpr std::size_t kDocument = 30'000'000;
constexpr int kChildren = 100'000;

void Require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "bench_xml: %s failed\n", what);
        std::exit(1);
    }
}

/// A query's result as a report file has it.
std::string MakeFile(const std::string& name) {
    std::string text = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<rows>\n";
    for (int i = 0; text.size() < kDocument; ++i) {
        const std::string number = std::to_string(i);
        text += "  <row id=\"" + number + "\" name=\"customer " +
                std::to_string(i * 7919LL % 100003) + "\" kind=\"ordinary\"><address>Street " +
                std::to_string(i % 977) + "</address><amount>" + std::to_string(i * 3.25) +
                "</amount><note>some text that goes on for a while, &amp; on</note></row>\n";
    }
    text += "</rows>\n";
    std::ofstream(name, std::ios::binary) << text;
    return name;
}

DOMImplementationLS* Implementation() {
    return DOMImplementationRegistry::getDOMImplementation(u"LS");
}

/// The parser and serializer by themselves, in the memory that they would take by themselves.
class Bare {
public:
    explicit Bare(MemoryManager* memory) : m_memory(memory) {}
    ~Bare() { Release(); }
    Bare(const Bare&) = delete;
    Bare& operator=(const Bare&) = delete;

    void Load(const std::string& name) {
        m_parser = Implementation()->createLSParser(DOMImplementationLS::MODE_SYNCHRONOUS, nullptr,
                                                    m_memory);
        m_document = m_parser->parseURI(name.c_str());
        Require(m_document && m_document->getDocumentElement(), "the bare load");
    }
    void Save(const std::string& name) {
        DOMLSSerializer* const serializer = Implementation()->createLSSerializer(m_memory);
        DOMLSOutput* const output = Implementation()->createLSOutput(m_memory);
        LocalFileFormatTarget target(name.c_str());
        output->setByteStream(&target);
        Require(serializer->write(m_document->getDocumentElement(), output), "the bare save");
        target.flush();
        output->release();
        serializer->release();
    }
    void Release() {
        if (m_parser)
            m_parser->release();
        m_parser = nullptr;
    }

private:
    MemoryManager* m_memory;
    DOMLSParser* m_parser = nullptr;
    DOMDocument* m_document = nullptr;
};

/// Rows under one root.
std::unique_ptr<CXercesWrapper> MakeWide(int children) {
    auto xml = std::make_unique<CXercesWrapper>();
    XMLElement root;
    Require(xml->Create("rows") && xml->GetRootElement(root), "Create");
    for (int i = 0; i < children; ++i) {
        XMLNode row;
        Require(xml->AppendChildElement(root, "row", row) && xml->SetAttribute(row, "id", i),
                "building");
    }
    return xml;
}

/// As a program does it: the count asked for each time, each item by its number.
void Walk(CXercesWrapper& xml, bool changing) {
    XMLElement root;
    XMLNodeList list;
    LONG count = 0;
    xml.GetRootElement(root);
    Require(xml.GetList(root, "row", list), "GetList");
    LONG i = 0;
    for (; xml.GetListCount(root, list, count), i < count; ++i) {
        XMLNode row;
        Require(xml.GetListItem(root, list, i, row), "GetListItem");
        if (changing)
            xml.SetAttribute(row, "seen", true);
        benchmark::DoNotOptimize(row);
    }
}

void AddWalks(Contests& contests) {
    static const auto tenth = MakeWide(kChildren / 10), whole = MakeWide(kChildren);
    contests.Add({.name = "walk 10,000 children",
                  .amount = kChildren / 10,
                  .unit = Contest::Nanoseconds,
                  .contenders = {{"ours", [] { Walk(*tenth, false); }}}});
    contests.Add({.name = "walk 100,000 children",
                  .amount = kChildren,
                  .unit = Contest::Nanoseconds,
                  .contenders = {{"ours", [] { Walk(*whole, false); }}}});
    contests.Add({.name = "walk 100,000 children, changing each",
                  .amount = kChildren,
                  .unit = Contest::Nanoseconds,
                  .contenders = {{"ours", [] { Walk(*whole, true); }}}});
}

void AddAttributes(Contests& contests) {
    static CXercesWrapper xml;
    static XMLElement root;
    static XMLNode node;
    static DOMElement* element;
    Require(xml.Create("root") && xml.GetRootElement(root) &&
                xml.AppendChildElement(root, "row", node),
            "Create");
    for (const char* name : {"id", "name", "width", "height", "color", "visible"})
        xml.SetAttribute(node, name, "some value");
    element = static_cast<DOMElement*>(static_cast<DOMNode*>(node.GetData()));
    constexpr std::size_t kTurns = 100'000;
    static CXMLVariant value;
    contests.Add(
        {.name = "get an attribute",
         .amount = kTurns,
         .unit = Contest::Nanoseconds,
         .contenders = {{"ours", Repeat(kTurns, [] { xml.GetAttribute(node, "width", value); })},
                        {"DOM", Repeat(kTurns, [] {
                             benchmark::DoNotOptimize(element->getAttribute(u"width"));
                         })}}});
    static int number = 0;
    static CString text;
    xml.SetAttribute(node, "x", 1234);
    contests.Add(
        {.name = "get a number",
         .amount = kTurns,
         .unit = Contest::Nanoseconds,
         .contenders = {{"ours", Repeat(kTurns, [] { xml.GetIntAttribute(node, "x", number); })}}});
    contests.Add({.name = "get a string",
                  .amount = kTurns,
                  .unit = Contest::Nanoseconds,
                  .contenders = {{"ours", Repeat(kTurns, [] {
                                      xml.GetStringAttribute(node, "width", text);
                                  })}}});
    static const CXMLVariant changed("other value");
    contests.Add(
        {.name = "set an attribute",
         .amount = kTurns,
         .unit = Contest::Nanoseconds,
         .contenders = {{"ours", Repeat(kTurns, [] { xml.SetAttribute(node, "width", changed); })},
                        {"DOM",
                         Repeat(kTurns, [] { element->setAttribute(u"width", u"other value"); })}},
         .goal = 1 / 1.3});
}

int Main(int argc, char** argv) {
    namespace fs = std::filesystem;
    std::string folder = (fs::temp_directory_path() / "vnbytstr-bench-XXXXXX").string();
    Require(::mkdtemp(folder.data()) != nullptr, "making a folder");
    const std::string source = MakeFile(folder + "/in.xml"), target = folder + "/out.xml";
    // The platform begins as an application's would, so that the peer has its default memory.
    XMLPlatformUtils::Initialize();
    int result = 0;
    {
        Bare bare(XMLPlatformUtils::fgMemoryManager);
        CXercesWrapper other; // keeps what is kept between documents
        std::unique_ptr<CXercesWrapper> ours;
        const auto fresh = [&] {
            ours.reset();
            bare.Release();
            ours = std::make_unique<CXercesWrapper>();
        };
        const auto loaded = [&] {
            fresh();
            Require(ours->LoadFile(source.c_str()), "LoadFile");
            bare.Load(source);
        };
        Contests contests;
        contests.Add(
            {.name = "load 30 MB",
             .amount = double(fs::file_size(source)),
             .contenders = {{"ours", [&] { Require(ours->LoadFile(source.c_str()), "LoadFile"); },
                             fresh},
                            {"Xerces", [&] { bare.Load(source); }, fresh}},
             .goal = 1.3,
             .rounds = 5});
        contests.Add({.name = "release it",
                      .unit = Contest::Nanoseconds,
                      .contenders = {{"ours", [&] { ours.reset(); }, loaded},
                                     {"Xerces", [&] { bare.Release(); }}},
                      .goal = 50,
                      .rounds = 5});
        contests.Add(
            {.name = "save it",
             .amount = double(fs::file_size(source)),
             .contenders = {{"ours", [&] { Require(ours->Save(target.c_str(), false), "Save"); },
                             loaded},
                            {"Xerces", [&] { bare.Save(target); }}},
             .goal = 1,
             .rounds = 5});
        AddAttributes(contests);
        AddWalks(contests);
        result = contests.Run(argc, argv);
    }
    fs::remove_all(folder);
    return result;
}

} // namespace
} // namespace vnbytstr::bench

int main(int argc, char** argv) { return vnbytstr::bench::Main(argc, argv); }
