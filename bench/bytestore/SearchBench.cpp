// Substring search against memmem of the C library, and the searcher that takes the data in pages.
#include "bench/Rounds.h"
#include "src/bytestore/ByteSearch.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>

using namespace vnbytstr;
using namespace vnbytstr::detail;
using vnbytstr::bench::Contest;
using vnbytstr::bench::Contests;

namespace {

using Bytes = std::vector<BYTE>;

using Haystack = std::shared_ptr<const Bytes>;

constexpr std::size_t kPage = 32768;

struct Goal {
    double ratio, rate; // to memmem, and GB/s; 0: none
};

Bytes Of(const std::string& text) { return {text.begin(), text.end()}; }

Bytes Fill(const Bytes& unit, std::size_t size) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = unit[i % unit.size()];
    return bytes;
}

Bytes RandomText(std::size_t size, unsigned seed) {
    static const char* const kWords[] = {
        "the",     "of",    "and",   "in",    "customer", "order",  "invoice", "is",
        "to",      "total", "date",  "value", "address",  "street", "account", "with",
        "from",    "that",  "this",  "were",  "not",      "there",  "number",  "name",
        "shipped", "which", "price", "a",     "for",      "item"};
    std::mt19937 random{seed};
    std::string text;
    while (text.size() < size) {
        text += kWords[random() % std::size(kWords)];
        text += random() % 12 == 0 ? ".\n" : " ";
    }
    text.resize(size);
    return Of(text);
}

bool FindInPages(const Bytes& haystack, const Bytes& pattern) {
    ByteSearcher searcher(pattern);
    for (std::size_t at = 0; at < haystack.size(); at += kPage) {
        if (searcher.Feed(std::span(haystack).subspan(at, kPage)))
            return true;
    }
    return false;
}

/// The cases for haystacks of one size.
class Cases {
public:
    Cases(Contests& contests, std::size_t size) : m_contests(contests), m_size(size) {}

    void AddOrdinary() {
        const Goal onNoise{2.5, 0}, onText{4, 0};
        Bytes bytes(m_size);
        std::mt19937 random{1};
        for (BYTE& byte : bytes)
            byte = static_cast<BYTE>(random());
        const Haystack noise = Share(bytes);
        Add("random/4", noise, {0x7E, 0x11, 0xC3, 0x5A}, onNoise);
        Add("random/16", noise, Of("0123456789abcdef"), onNoise);
        Add("random/1024", noise, Fill(Of("0123456789abcdef!"), 1024), onNoise);
        const Haystack text = Share(RandomText(m_size, 3));
        Add("text/8", text, Of("shipping"), onText);
        Add("text/16", text, Of("order of totals "), onText);
        Add("text/17", text, Of("address of totals"), onText);
        Add("text/64", text,
            Of("the customer and the order and the invoice and the total and then"), onText);
        Add("text/1024", text, RandomText(1024, 5), onText);
    }
    // Patterns and data in which every stretch begins, or ends, like the pattern.
    void AddBad(std::size_t size) {
        const std::string suffix = "/" + std::to_string(size);
        const Bytes as = Fill(Of("a"), size);
        const auto ending = [](Bytes bytes, BYTE last) {
            bytes.pop_back();
            bytes.push_back(last);
            return bytes;
        };
        const Bytes end = ending(as, 'b');
        Bytes begin = as;
        begin.front() = 'b';
        Bytes middle = as;
        middle[size / 2] = 'b';
        const Haystack all = Share(Fill(Of("a"), m_size));
        const Goal goal{0, 1.5};
        Add("a..ab in a..a" + suffix, all, end, goal);
        Add("ba..a in a..a" + suffix, all, begin, goal);
        Add("a..aba..a in a..a" + suffix, all, middle, goal);
        Add("a..a in a..ab" + suffix, Share(Fill(end, m_size)), as, goal);
        Add("a..ab in (a..b)" + suffix, Share(Fill(Bytes(end.begin() + 1, end.end()), m_size)), end,
            goal);
        Add("a..aba..a in near ones" + suffix, Share(Fill(ending(middle, 'c'), m_size)), middle,
            goal);
        Add("a..aba..a in shorter" + suffix,
            Share(Fill(ending(Fill(Of("a"), size / 2), 'b'), m_size)), middle, goal);
    }

private:
    static Haystack Share(Bytes bytes) { return std::make_shared<const Bytes>(std::move(bytes)); }

    void Add(const std::string& name, const Haystack& haystack, const Bytes& pattern, Goal goal) {
        const std::size_t turns = std::max<std::size_t>(1, (std::size_t{4} << 20) / m_size);
        const auto contender = [&](const char* who, auto search) {
            return bench::Contender{who, bench::Repeat(turns, [=] {
                                        if (search())
                                            std::abort(); // no pattern occurs in its data
                                    })};
        };
        const bench::Contender memmemOne = contender("memmem", [=] {
            return memmem(haystack->data(), haystack->size(), pattern.data(), pattern.size()) !=
                   nullptr;
        });
        const auto add = [&](const std::string& how, const bench::Contender& ours) {
            Contest contest{name + " " + std::to_string(m_size >> 20) + "M" + how,
                            static_cast<double>(m_size * turns),
                            Contest::GigabytesPerSecond,
                            {ours, memmemOne},
                            goal.ratio};
            contest.leastRate = goal.rate;
            m_contests.Add(contest);
        };
        add("", contender("ours", [=] { return FindBytes(*haystack, pattern).has_value(); }));
        add(" in pages", contender("ours", [=] { return FindInPages(*haystack, pattern); }));
    }

    Contests& m_contests;
    std::size_t m_size;
};

} // namespace

int main(int argc, char** argv) {
    Contests contests;
    for (const std::size_t size : {std::size_t{1} << 20, std::size_t{16} << 20}) {
        Cases cases(contests, size);
        cases.AddOrdinary();
        cases.AddBad(16);
        cases.AddBad(1024);
    }
    return contests.Run(argc, argv);
}
