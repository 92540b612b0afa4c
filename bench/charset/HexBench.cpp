// Hexadecimal text against a loop with a table, in cache and in memory.
#include "bench/Rounds.h"
#include "src/charset/HexText.h"

#include <array>
#include <memory>
#include <random>

using namespace vnbytstr;
using namespace vnbytstr::detail;
using vnbytstr::bench::Contest;
using vnbytstr::bench::Contests;
using vnbytstr::bench::Repeat;

namespace {

void TableEncode(const std::vector<BYTE>& bytes, char* out) {
    static const char kDigits[] = "0123456789ABCDEF";
    for (BYTE byte : bytes) {
        *out++ = kDigits[byte >> 4];
        *out++ = kDigits[byte & 15];
    }
}

std::size_t TableDecode(const std::string& text, BYTE* out) {
    static const std::array<signed char, 256> kValues = [] {
        std::array<signed char, 256> values{};
        values.fill(-1);
        for (int i = 0; i < 10; ++i)
            values[static_cast<BYTE>('0' + i)] = static_cast<signed char>(i);
        for (int i = 0; i < 6; ++i)
            values[static_cast<BYTE>('a' + i)] = values[static_cast<BYTE>('A' + i)] =
                static_cast<signed char>(10 + i);
        return values;
    }();
    std::size_t produced = 0;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
        const int high = kValues[static_cast<BYTE>(text[i])];
        const int low = kValues[static_cast<BYTE>(text[i + 1])];
        if ((high | low) < 0)
            break;
        out[produced++] = static_cast<BYTE>(high << 4 | low);
    }
    return produced;
}

/// Bytes, their text, and room for what comes back.
struct Data {
    explicit Data(std::size_t size) : bytes(size), text(2 * size, '0'), back(size) {
        std::mt19937 random{1};
        for (BYTE& byte : bytes)
            byte = static_cast<BYTE>(random());
        EncodeHex(bytes, text.data());
    }
    std::vector<BYTE> bytes;
    std::string text;
    std::vector<BYTE> back;
};

void Add(Contests& contests, const char* where, std::size_t size, double goal) {
    const auto data = std::make_shared<Data>(size);
    const std::size_t turns = std::max<std::size_t>(1, (std::size_t{1} << 23) / size);
    const auto amount = static_cast<double>(size * turns);
    contests.Add({std::string("encode, ") + where,
                  amount,
                  Contest::GigabytesPerSecond,
                  {{"ours", Repeat(turns, [=] { EncodeHex(data->bytes, data->text.data()); })},
                   {"table", Repeat(turns, [=] { TableEncode(data->bytes, data->text.data()); })}},
                  goal});
    contests.Add({std::string("decode, ") + where,
                  amount,
                  Contest::GigabytesPerSecond,
                  {{"ours", Repeat(turns,
                                   [=] {
                                       DecodeHex(data->text.data(), data->text.size(),
                                                 data->back.data(), data->back.size());
                                   })},
                   {"table", Repeat(turns, [=] { TableDecode(data->text, data->back.data()); })}},
                  goal});
}

} // namespace

int main(int argc, char** argv) {
    Contests contests;
    Add(contests, "cache", 8192, 10);
    Add(contests, "memory", std::size_t{64} << 20, 3);
    return contests.Run(argc, argv);
}
