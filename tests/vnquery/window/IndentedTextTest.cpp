// JSON and XML with line breaks, also those of an enemy.
#include "examples/vnquery/window/IndentedText.h"

#include "tests/vnquery/result/MakeValue.h"

#include <QJsonDocument>

#include <gtest/gtest.h>

namespace vnquery::test {
namespace {

using Indent = IndentFault (*)(const Value&, Value&);

/// The indented text, or "!" and why there is none.
std::string Indented(Indent indent, const std::string& text) {
    Value out;
    const IndentFault fault = indent(MakeValue(Value::Type::Text, text), out);
    return fault.isEmpty() ? out.GetBytes() : "!" + fault.toStdString();
}

TEST(IndentedText, JsonKeepsItsTokens) {
    EXPECT_EQ(Indented(IndentJson, R"({ "b":[1, 12345678901234567890 ,{} ,[ ]],"a":"{\"[,:\\" })"),
              "{\n  \"b\": [\n    1,\n    12345678901234567890,\n    {},\n    []\n  ],\n"
              "  \"a\": \"{\\\"[,:\\\\\"\n}");
    // Pieces that end between any two tokens: the same document as before.
    std::string json = "[";
    for (int i = 0; i < 20000; ++i)
        json += R"({"key":[],"text":"a\"]"},[[1.50,null],{}],)";
    json += "0]";
    const std::string out = Indented(IndentJson, json);
    EXPECT_EQ(QJsonDocument::fromJson(QByteArray::fromStdString(out)),
              QJsonDocument::fromJson(QByteArray::fromStdString(json)));
    EXPECT_NE(out.find("1.50"), std::string::npos);
}

TEST(IndentedText, XmlIsIndentedWhateverItsDeclarationSays) {
    const std::string out =
        Indented(IndentXml, "<?xml version='1.0' encoding='utf-16'?><a><b c='\xC3\xA9'/>x</a>");
    EXPECT_NE(out.find("  <b c=\"\xC3\xA9\""), std::string::npos) << out;
}

TEST(IndentedText, HostileDocumentsAreRefused) {
    std::string bomb = "<!DOCTYPE a [<!ENTITY e0 'xxxxxxxxxx'>";
    for (int i = 1; i < 10; ++i) {
        bomb += "<!ENTITY e" + std::to_string(i) + " '";
        for (int k = 0; k < 10; ++k)
            bomb += "&e" + std::to_string(i - 1) + ";";
        bomb += "'>";
    }
    const auto nested = [](int depth, const std::string& open, const std::string& inside,
                           const std::string& close) {
        std::string text;
        for (int i = 0; i < depth; ++i)
            text += open;
        text += inside;
        for (int i = 0; i < depth; ++i)
            text += close;
        return text;
    };
    std::string ones = "1";
    std::string leaves;
    for (int i = 0; i < 200000; ++i) {
        ones += ",1";
        leaves += "<l/>";
    }
    const std::pair<Indent, std::string> documents[] = {
        {IndentXml, bomb + "]><a>&e9;</a>"},
        {IndentXml, "<!DOCTYPE a [<!ENTITY f SYSTEM 'file:///etc/passwd'>]><a>&f;</a>"},
        {IndentXml, nested(100000, "<a>", "", "</a>")},
        {IndentXml, nested(900, "<a>", leaves, "</a>")},
        {IndentXml, "<a>" + std::string("x\0y", 3) + "</a>"},
        {IndentXml, "<a><b></a>"},
        {IndentXml, "<?xml "},
        {IndentXml, "<a>" + std::string(kMaxToIndent, 'x') + "</a>"},
        {IndentJson, nested(100000, "[", "", "]")},
        {IndentJson, nested(1000, "[", ones, "]")},
        {IndentJson, "[1,]"},
        {IndentJson, "[\"\\"},
        {IndentJson, "[" + std::string(kMaxToIndent, ' ') + "]"}};
    for (const auto& [indent, text] : documents) {
        const std::string out = Indented(indent, text);
        EXPECT_EQ(out[0], '!') << text.substr(0, 60);
        EXPECT_EQ(out.find("root:"), std::string::npos);
    }
}

} // namespace
} // namespace vnquery::test
