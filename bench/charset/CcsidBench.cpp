// CCSID translation against iconv, ICU's own conversion and, where the lengths stay, memcpy.
#include "bench/Rounds.h"
#include "vnbytstr/Ccsid.h"

#include <iconv.h>
#include <unicode/ucnv.h>

#include <cstdlib>
#include <cstring>
#include <memory>

using vnbytstr::bench::Contest;
using vnbytstr::bench::Contests;

namespace {

struct Case {
    const char* name;
    WORD from, to;
    const char *iconvFrom, *iconvTo, *icuFrom, *icuTo;
    std::u16string text;
    double iconvGoal, copyGoal;
};

std::string FromUnicode(const char* converter, const std::u16string& text) {
    UErrorCode error = U_ZERO_ERROR;
    UConverter* to = ucnv_open(converter, &error);
    std::string bytes(text.size() * 3 + 16, '\0');
    bytes.resize(static_cast<std::size_t>(
        ucnv_fromUChars(to, bytes.data(), static_cast<int32_t>(bytes.size()), text.data(),
                        static_cast<int32_t>(text.size()), &error)));
    ucnv_close(to);
    if (U_FAILURE(error))
        std::abort();
    return bytes;
}

/// Input, output and what each contender needs for one case and size.
struct Job {
    Job(const Case& job, std::size_t size) {
        const std::string unit = FromUnicode(job.icuFrom, job.text);
        while (input.size() + unit.size() <= size)
            input += unit;
        output.resize(input.size() * 3 + 64);
        iconvHandle = iconv_open(job.iconvTo, job.iconvFrom);
        UErrorCode error = U_ZERO_ERROR;
        icuFrom = ucnv_open(job.icuFrom, &error);
        icuTo = ucnv_open(job.icuTo, &error);
        ours = TranslateBeginEx(job.from, job.to);
        if (iconvHandle == reinterpret_cast<iconv_t>(-1) || U_FAILURE(error) || !ours)
            std::abort();
    }

    std::size_t Ours() {
        DWORD in = static_cast<DWORD>(input.size()), out = static_cast<DWORD>(output.size());
        if (TranslateCCSIDEx(ours, reinterpret_cast<const BYTE*>(input.data()), &in,
                             reinterpret_cast<BYTE*>(output.data()), &out, TRUE) != translationDone)
            std::abort();
        return out;
    }
    std::size_t Iconv() {
        char *in = input.data(), *out = output.data();
        std::size_t inLeft = input.size(), outLeft = output.size();
        if (iconv(iconvHandle, &in, &inLeft, &out, &outLeft) == static_cast<std::size_t>(-1))
            std::abort();
        return output.size() - outLeft;
    }
    std::size_t Icu() {
        const char* in = input.data();
        char* out = output.data();
        UErrorCode error = U_ZERO_ERROR;
        ucnv_convertEx(icuTo, icuFrom, &out, output.data() + output.size(), &in,
                       input.data() + input.size(), nullptr, nullptr, nullptr, nullptr, true, true,
                       &error);
        if (U_FAILURE(error))
            std::abort();
        return static_cast<std::size_t>(out - output.data());
    }
    void Copy() { std::memcpy(output.data(), input.data(), input.size()); }

    std::string input, output;
    iconv_t iconvHandle;
    UConverter *icuFrom, *icuTo;
    CCCSIDTranslation* ours;
};

void Add(Contests& contests, const Case& kind, std::size_t size) {
    const auto job = std::make_shared<Job>(kind, size);
    if (job->Ours() != job->Icu())
        std::abort();
    const std::size_t times = std::max<std::size_t>((4u << 20) / size, 1);
    const std::string label = std::string(kind.name) + " " + std::to_string(size >> 10) + "K";
    const auto repeat = [=](auto member) {
        return [=] {
            for (std::size_t i = 0; i < times; ++i) {
                (job.get()->*member)();
                benchmark::ClobberMemory();
            }
        };
    };
    const double amount = static_cast<double>(job->input.size() * times);
    contests.Add({label,
                  amount,
                  Contest::GigabytesPerSecond,
                  {{"ours", repeat(&Job::Ours)}, {"iconv", repeat(&Job::Iconv)}},
                  kind.iconvGoal});
    contests.Add({label + " ICU",
                  amount,
                  Contest::GigabytesPerSecond,
                  {{"ours", repeat(&Job::Ours)}, {"ICU", repeat(&Job::Icu)}},
                  0});
    if (kind.copyGoal > 0)
        contests.Add({label + " copy",
                      amount,
                      Contest::GigabytesPerSecond,
                      {{"ours", repeat(&Job::Ours)}, {"memcpy", repeat(&Job::Copy)}},
                      kind.copyGoal});
}

} // namespace

int main(int argc, char** argv) {
    const std::u16string plain =
        u"The price of the sample is 12.50 per piece, delivery within three weeks of order.\r\n";
    const std::u16string western = u"Zw\u00F6lf Boxk\u00E4mpfer jagen V\u00EDktor quer \u00FCber "
                                   u"den gro\u00DFen Sylter Deich. "
                                   u"Die Pr\u00FCfung der Lieferung erfolgt sp\u00E4testens am "
                                   u"n\u00E4chsten Tag nach dem Eingang.\n";
    const std::u16string japanese =
        u"\u3044\u308D\u306F\u306B\u307B\u3078\u3068\u3001\u65E5\u672C\u8A9E\u306E\u6587\u5B57"
        u"\u5217"
        u"\u3092\u8868\u793A\u3059\u308B DB2 \u306E\u8868\u540D\u306F\u300CORDERS\u300D\u3067\u3059"
        u"\u3002\r\n";
    const Case cases[] = {
        {"37 to 1252", 37, 1252, "CP037", "CP1252", "ibm-37", "windows-1252", plain, 15, 0.85},
        {"1252 to UTF-8 plain", 1252, 1208, "CP1252", "UTF-8", "windows-1252", "UTF-8", plain, 10,
         0},
        {"1252 to UTF-8 western", 1252, 1208, "CP1252", "UTF-8", "windows-1252", "UTF-8", western,
         10, 0},
        {"UTF-8 to 1252 plain", 1208, 1252, "UTF-8", "CP1252", "UTF-8", "windows-1252", plain, 8,
         0},
        {"UTF-8 to 1252 western", 1208, 1252, "UTF-8", "CP1252", "UTF-8", "windows-1252", western,
         8, 0},
        {"37 to UTF-8 western", 37, 1208, "CP037", "UTF-8", "ibm-37", "UTF-8", western, 0, 0},
        {"UTF-8 to 37 western", 1208, 37, "UTF-8", "CP037", "UTF-8", "ibm-37", western, 0, 0},
        {"932 to UTF-16", 932, 1202, "CP932", "UTF-16LE", "windows-932", "UTF-16LE", japanese, 2.5,
         0},
        {"932 to UTF-8", 932, 1208, "CP932", "UTF-8", "windows-932", "UTF-8", japanese, 0, 0},
    };
    Contests contests;
    for (const Case& kind : cases) {
        for (const std::size_t size : {std::size_t{64} << 10, std::size_t{16} << 20})
            Add(contests, kind, size);
    }
    return contests.Run(argc, argv);
}
