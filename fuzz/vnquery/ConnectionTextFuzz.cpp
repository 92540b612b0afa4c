// Connection strings as they are shown: no password in them, whatever stands around it.
#include "examples/vnquery/sources/ConnectionText.h"
#include "fuzz/FuzzInput.h"

using namespace vnbytstr;
using fuzz::Require;

namespace {

constexpr char kSecret[] = "S3CR3T"; // of which no key and no separator has a part

/// A string by ODBC's grammar, made of the input, with the secret in each of its passwords.
std::string Made(fuzz::Input& input) {
    std::string text;
    while (input.Left() > 0) {
        const std::uint8_t choice = input.Byte();
        const std::string blanks(choice >> 6, ' ');
        const bool isPassword = (choice & 1) != 0;
        constexpr const char* kKeys[] = {"PWD", "Password", "pwd", "SslPassword"};
        constexpr const char* kOthers[] = {"DSN", "Server", "UID", ""};
        text += blanks + (isPassword ? kKeys : kOthers)[choice >> 1 & 3] + blanks;
        if (!isPassword && (choice & 8) != 0) {
            text += ';'; // a key without a value
            continue;
        }
        text += '=' + blanks;
        std::string value = input.Text() + (isPassword ? kSecret : "") + input.Text();
        if ((choice & 16) != 0) {
            for (std::size_t at = 0; (at = value.find('}', at)) != std::string::npos; at += 2)
                value.insert(at, 1, '}');
            text +=
                '{' + (isPassword || value.find(kSecret) == std::string::npos ? value : "") + '}';
        } else {
            std::erase(value, ';');
            const std::size_t first = value.find_first_not_of(" \t\r\n\v\f");
            if (first != std::string::npos && value[first] == '{')
                value[first] = '(';
            if (!isPassword && value.find(kSecret) != std::string::npos)
                value.clear(); // there it may be seen
            text += value;
        }
        text += ';';
    }
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string any(data, data + size);
    const std::string shown = vnquery::HidePasswords(any);
    Require(vnquery::HidePasswords(shown) == shown);
    const vnquery::ConnectionKeys keys = vnquery::ParseConnection(any);
    Require(vnquery::ParseConnection(vnquery::MakeConnection(keys)) == keys);
    fuzz::Input input(data, size);
    const std::string made = Made(input);
    Require(vnquery::HidePasswords(made).find(kSecret) == std::string::npos);
    Require(vnquery::RemovePasswords(made).find(kSecret) == std::string::npos);
    return 0;
}
