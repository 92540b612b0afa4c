#include "vnquery/window/IndentedText.h"

#include "vnquery/result/CellText.h"
#include "vnquery/window/Label.h"

#include "vnbytstr/XercesWrapper.h"

#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QXmlStreamReader>

namespace vnquery {

namespace {

constexpr ULONGLONG kMaxIndented = 64 << 20;
constexpr std::size_t kIndent = 2;

IndentFault TooLarge(DWORD length) {
    return Label(IDS_VQ_P_TOO_LARGE, {FormatSize(kMaxToIndent), FormatSize(length)});
}

IndentFault NotValid(const char* kind, const QString& why) {
    return Label(IDS_VQ_P_NOT_VALID, {kind, why.toStdString()});
}

void Append(Value& value, std::string_view bytes) {
    value.Append({reinterpret_cast<const BYTE*>(bytes.data()), bytes.size()});
}

/// Of valid JSON. False when it becomes too long.
bool WriteJson(std::string_view json, Value& out) {
    std::string piece;
    std::size_t depth = 0;
    const auto newLine = [&] { piece.append("\n").append(depth * kIndent, ' '); };
    bool isInText = false;
    for (std::size_t i = 0; i < json.size(); ++i) {
        const char ch = json[i];
        const bool isBlank = ch == ' ' || ch == '\t' || ch == '\r' || ch == '\n';
        if (!isInText && isBlank)
            continue;
        if (!isInText && (ch == '}' || ch == ']')) {
            --depth;
            if (!piece.ends_with('{') && !piece.ends_with('['))
                newLine();
        } else if (!isInText && !piece.empty() && (piece.ends_with('{') || piece.ends_with('['))) {
            newLine();
        }
        piece += ch;
        if (isInText && ch == '\\')
            piece += json[++i];
        else if (ch == '"')
            isInText = !isInText;
        if (isInText)
            continue;
        if (ch == '{' || ch == '[')
            ++depth;
        else if (ch == ',')
            newLine();
        else if (ch == ':')
            piece += ' ';
        if (piece.size() < kPieceSize || ch == '{' || ch == '[')
            continue; // those brackets are looked at again
        if (out.GetLength() + piece.size() > kMaxIndented)
            return false;
        Append(out, piece);
        piece.clear();
    }
    Append(out, piece);
    return true;
}

/// What is wrong with the XML, or that its indentation would be too long.
IndentFault CheckXml(const QString& xml, DWORD length) {
    QXmlStreamReader reader(xml);
    ULONGLONG size = length;
    ULONGLONG depth = 0;
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        depth += token == QXmlStreamReader::StartElement;
        size += depth * kIndent;
        depth -= token == QXmlStreamReader::EndElement;
    }
    if (reader.hasError())
        return NotValid("XML", QStringLiteral("%1 (%2:%3)")
                                   .arg(reader.errorString())
                                   .arg(reader.lineNumber())
                                   .arg(reader.columnNumber()));
    return size > kMaxIndented ? TooLarge(length) : IndentFault();
}

} // namespace

IndentFault IndentJson(const Value& value, Value& indented) {
    if (value.GetLength() > kMaxToIndent)
        return TooLarge(value.GetLength());
    const std::string json = value.GetBytes();
    QJsonParseError error;
    QJsonDocument::fromJson(QByteArray::fromRawData(json.data(), static_cast<int>(json.size())),
                            &error);
    if (error.error != QJsonParseError::NoError)
        return NotValid("JSON",
                        QStringLiteral("%1 (%2)").arg(error.errorString()).arg(error.offset));
    indented.Begin(Value::Type::Text);
    if (WriteJson(json, indented)) {
        indented.Complete();
        return {};
    }
    indented = Value();
    return TooLarge(value.GetLength());
}

IndentFault IndentXml(const Value& value, Value& indented) {
    if (value.GetLength() > kMaxToIndent)
        return TooLarge(value.GetLength());
    // A declaration tells the encoding of some file. Here it is UTF-8, as all texts are.
    std::string xml = value.GetBytes();
    if (xml.starts_with("\xEF\xBB\xBF"))
        xml.erase(0, 3);
    if (xml.starts_with("<?xml "))
        xml.erase(0, std::min(xml.find("?>"), xml.size() - 2) + 2);
    if (IndentFault fault = CheckXml(QString::fromStdString(xml), value.GetLength());
        !fault.isEmpty())
        return fault;
    const QTemporaryDir folder;
    const std::string file = folder.filePath(QStringLiteral("value.xml")).toStdString();
    CXercesWrapper document;
    if (!document.LoadXML(CString(xml.data(), static_cast<int>(xml.size()))) ||
        !document.Save(file.c_str(), true))
        return NotValid("XML", QString::fromUtf8(static_cast<const char*>(
                                   document.GetLastParseError().m_strMessage)));
    indented.Begin(Value::Type::Text);
    QFile saved(QString::fromStdString(file));
    if (saved.open(QIODevice::ReadOnly))
        Append(indented, saved.readAll().toStdString());
    indented.Complete();
    return {};
}

} // namespace vnquery
