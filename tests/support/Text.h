// Strings of the framework and of the standard library, and tables of words.
#pragma once

#include "vnbytstr/framework/Exception.h"
#include "vnbytstr/framework/File.h"

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace vnbytstr::test {

inline CString StringOf(const std::string& bytes) {
    return {bytes.data(), static_cast<int>(bytes.size())};
}
inline std::string BytesOf(const CString& text) {
    return {text, static_cast<std::size_t>(text.GetLength())};
}

/// What a file holds from its beginning to its end.
inline std::string Content(CFile& file) {
    std::string bytes(file.GetLength(), '\0');
    file.SeekToBegin();
    bytes.resize(file.Read(bytes.data(), static_cast<UINT>(bytes.size())));
    return bytes;
}
inline void Fill(CFile& file, std::string_view bytes) {
    file.Write(bytes.data(), static_cast<UINT>(bytes.size()));
    file.SeekToBegin();
}

/// The m_cause of the exception that `action` throws, -1 when it throws none of that class.
template <class Exception, class Action>
int CauseOf(Action action) {
    try {
        action();
    } catch (Exception* error) {
        const int cause = error->m_cause;
        error->Delete();
        return cause;
    }
    return -1;
}

/// The parts of a text between its separators.
inline std::vector<std::string> Split(const std::string& text, char separator = ' ') {
    std::istringstream stream(text);
    std::vector<std::string> parts;
    for (std::string part; std::getline(stream, part, separator);)
        parts.push_back(part);
    return parts;
}

} // namespace vnbytstr::test
