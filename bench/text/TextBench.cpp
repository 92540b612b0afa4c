// Renderings against loops with a table, conversion to UTF-8 against iconv, and counting characters
// against a walk.
#include "bench/Rounds.h"

#include "src/charset/CodePage.h"
#include "src/text/AnsiToUtf8.h"
#include "vnbytstr/MultibyteText.h"
#include "vnbytstr/TextEncoding.h"

#include <iconv.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>

namespace vnbytstr::bench {
namespace {

constexpr char kDigits[] = "0123456789ABCDEF";

void TableHex(const BYTE* bytes, std::size_t size, char* out, bool spaced) {
    for (std::size_t i = 0; i < size; ++i) {
        if (spaced && i > 0)
            *out++ = ' ';
        *out++ = kDigits[bytes[i] >> 4];
        *out++ = kDigits[bytes[i] & 0x0F];
    }
}

/// FormatStringAsHex with a table loop.
void PeerFormatStringAsHex(CString& text, bool spaced) {
    const int size = text.GetLength();
    CString hex;
    char* out = hex.GetBufferSetLength(spaced ? 3 * size - 1 : 2 * size);
    TableHex(reinterpret_cast<const BYTE*>(static_cast<const char*>(text)),
             static_cast<std::size_t>(size), out, spaced);
    text = std::move(hex);
}

/// FormatBufferAsHex with a table loop.
void PeerFormatBufferAsHex(char*& buffer, DWORD size, DWORD& length) {
    auto* out = static_cast<char*>(::operator new (2 * std::size_t{size} + 1));
    TableHex(reinterpret_cast<const BYTE*>(buffer), size, out, false);
    out[2 * std::size_t{size}] = '\0';
    ::operator delete(buffer);
    buffer = out;
    length = 2 * size;
}

CString SomeString(std::size_t size, const std::string& pattern) {
    CString text;
    char* out = text.GetBufferSetLength(static_cast<int>(size));
    for (std::size_t i = 0; i < size; ++i)
        out[i] = pattern[i % pattern.size()];
    return text;
}

std::string AllBytes() {
    std::string bytes;
    for (int i = 0; i < 257; ++i)
        bytes += static_cast<char>(i * 37);
    return bytes;
}

template <class Work>
Contender Repeat(const char* name, std::size_t times, Work work) {
    return {name, [=] {
                for (std::size_t i = 0; i < times; ++i) {
                    work();
                    benchmark::ClobberMemory();
                }
            }};
}

std::string Label(const char* name, std::size_t size) {
    return size < (1u << 20) ? std::string(name) + " " + std::to_string(size >> 10) + "K"
                             : std::string(name) + " " + std::to_string(size >> 20) + "M";
}

std::size_t TimesFor(std::size_t size) { return std::max<std::size_t>((16u << 20) / size, 1); }

void AddHex(Contests& contests, std::size_t size) {
    const CString text = SomeString(size, AllBytes());
    const std::size_t times = TimesFor(size);
    const auto amount = static_cast<double>(size * times);
    for (const bool spaced : {false, true}) {
        const auto format = [=](auto function) {
            return [=] {
                CString copy = text;
                function(copy, spaced);
                benchmark::DoNotOptimize(static_cast<const char*>(copy));
            };
        };
        contests.Add(
            {Label(spaced ? "FormatStringAsHex spaced" : "FormatStringAsHex", size),
             amount,
             Contest::GigabytesPerSecond,
             {Repeat("ours", times, format([](CString& s, bool b) { FormatStringAsHex(s, b); })),
              Repeat("table", times, format(PeerFormatStringAsHex))},
             10});
    }
    // The block that goes in is made in either case, and left as operator new gives it.
    const auto format = [=](auto function) {
        return [=] {
            auto* buffer = static_cast<char*>(::operator new(size));
            buffer[0] = 'x';
            DWORD length = 0;
            function(buffer, static_cast<DWORD>(size), length);
            benchmark::DoNotOptimize(buffer[length / 2]);
            ::operator delete(buffer);
        };
    };
    contests.Add({Label("FormatBufferAsHex", size),
                  amount,
                  Contest::GigabytesPerSecond,
                  {Repeat("ours", times, format(FormatBufferAsHex)),
                   Repeat("table", times, format(PeerFormatBufferAsHex))},
                  10});
}

void AddRates(Contests& contests, std::size_t size) {
    const std::size_t times = TimesFor(size);
    const auto amount = static_cast<double>(size * times);
    const CString bytes = SomeString(size, AllBytes());
    for (const bool spaced : {false, true})
        contests.Add({Label(spaced ? "FormatStringAsBin spaced" : "FormatStringAsBin", size),
                      amount,
                      Contest::GigabytesPerSecond,
                      {Repeat("ours", times, [=] {
                          CString copy = bytes;
                          FormatStringAsBin(copy, spaced);
                          benchmark::DoNotOptimize(static_cast<const char*>(copy));
                      })}});
    const CString query = SomeString(size, "SELECT name, price FROM goods WHERE price > 12.50; ");
    contests.Add({Label("URLEncodeStr", size),
                  amount,
                  Contest::GigabytesPerSecond,
                  {Repeat("ours", times, [=] {
                      char* result = nullptr;
                      URLEncodeStr(query, result, false);
                      benchmark::DoNotOptimize(result);
                      ::operator delete(result);
                  })}});
}

/// The conversion of ConvertToUTF8 without its file: in slices, as there.
void AddUtf8(Contests& contests, UINT page, const char* charset, const std::u16string& piece) {
    constexpr std::size_t kSize = std::size_t{256} << 20, kSlice = 256 * 1024;
    const ScopedCodePage scope(page);
    const std::string pattern = CodePage::Ansi().FromWide(piece);
    const auto text = std::make_shared<std::string>();
    while (text->size() < kSize)
        *text += pattern;
    const auto ours = [=] {
        const ScopedCodePage inScope(page);
        detail::AnsiToUtf8 converter;
        for (std::size_t at = 0; at < text->size(); at += kSlice) {
            const std::size_t size = std::min(kSlice, text->size() - at);
            const auto out =
                converter.Convert({reinterpret_cast<const BYTE*>(text->data()) + at, size},
                                  at + size == text->size());
            benchmark::DoNotOptimize(out.data());
        }
    };
    const auto peer = [=] {
        const iconv_t converter = iconv_open("UTF-8", charset);
        const auto out = std::make_unique_for_overwrite<char[]>(3 * kSlice + 64);
        std::size_t left = 0;
        for (std::size_t at = 0; at < text->size();) {
            const std::size_t size = std::min(kSlice, text->size() - at);
            char *in = text->data() + at, *to = out.get();
            std::size_t inLeft = size, room = 3 * kSlice + 64;
            // A character cut by the slice's end is left over, and begins the next slice.
            iconv(converter, &in, &inLeft, &to, &room);
            if (inLeft > 3)
                std::abort();
            left = inLeft;
            at += size - left;
        }
        iconv_close(converter);
    };
    contests.Add({std::string("ConvertToUTF8 from ") + charset + " 256M",
                  static_cast<double>(text->size()),
                  Contest::GigabytesPerSecond,
                  {{"ours", ours}, {"iconv", peer}},
                  page == 1252 ? 5.0 : 0.0,
                  5});
}

void AddLength(Contests& contests, UINT page, const std::u16string& piece, const char* name) {
    constexpr std::size_t kSize = std::size_t{64} << 20;
    const ScopedCodePage scope(page);
    const std::string pattern = CodePage::Ansi().FromWide(piece);
    std::string bytes;
    while (bytes.size() < kSize)
        bytes += pattern;
    const CString text(bytes.data(), static_cast<int>(bytes.size()));
    const auto ours = [=] {
        const ScopedCodePage inScope(page);
        benchmark::DoNotOptimize(VariousByteLength(text));
    };
    const auto peer = [=] {
        const CodePage& codePage = *CodePage::Find(page);
        const char* p = text;
        const char* const end = p + text.GetLength();
        int count = 0;
        for (; p < end; p += codePage.CharLength(p, end))
            ++count;
        benchmark::DoNotOptimize(count);
    };
    contests.Add({std::string("VariousByteLength ") + name + " 64M",
                  static_cast<double>(bytes.size()),
                  Contest::GigabytesPerSecond,
                  {{"ours", ours}, {"walk", peer}}});
}

} // namespace
} // namespace vnbytstr::bench

int main(int argc, char** argv) {
    using namespace vnbytstr::bench;
    const std::u16string western = u"Zw\u00F6lf Boxk\u00E4mpfer jagen V\u00EDktor quer \u00FCber "
                                   u"den gro\u00DFen Sylter Deich. \u20AC 12,50.\r\n";
    const std::u16string japanese =
        u"\u3044\u308D\u306F\u306B\u307B\u3078\u3068\u3001\u65E5\u672C\u8A9E\u306E\u6587\u5B57"
        u"\u5217\u3092\u8868\u793A\u3059\u308B DB2 \u306E\u8868\u540D\u306F\u300CORDERS\u300D"
        u"\u3067\u3059\u3002\r\n";
    Contests contests;
    for (const std::size_t size :
         {std::size_t{8} << 10, std::size_t{64} << 10, std::size_t{16} << 20}) {
        AddHex(contests, size);
        AddRates(contests, size);
    }
    AddUtf8(contests, 1252, "CP1252", western);
    AddUtf8(contests, 932, "CP932", japanese);
    AddLength(contests, 932, japanese, "932");
    AddLength(contests, 949, u"\uD55C\uAD6D\uC5B4 abc \uBB38\uC790\uC5F4", "949");
    AddLength(contests, 65001, japanese, "UTF-8");
    return contests.Run(argc, argv);
}
