#include "src/charset/CcsidSets.h"

#include <map>
#include <mutex>
#include <string>
#include <tuple>
#include <utility>

namespace vnbytstr::detail {

namespace {

/// The converter's name. Windows pages go by their own names (by number ICU gives older variants:
/// 1252 without the euro sign, 932 and 949 with another backslash; 936 it does not know).
std::string ConverterName(WORD ccsid) {
    switch (ccsid) {
    case 874:
    case 932:
    case 936:
    case 949:
    case 950:
    case 1250:
    case 1251:
    case 1252:
    case 1253:
    case 1254:
    case 1255:
    case 1256:
    case 1257:
    case 1258:
        return "windows-" + std::to_string(ccsid);
    case 1200:
        return "UTF-16BE";
    case 1202:
        return "UTF-16LE";
    case 1208:
        return "UTF-8";
    default:
        return "ibm-" + std::to_string(ccsid);
    }
}

bool IsEbcdic(UConverter* converter) {
    const char controls[] = {0x25, 0x15};
    char16_t wide[4];
    UErrorCode error = U_ZERO_ERROR;
    const int32_t units = ucnv_toUChars(converter, wide, 4, controls, 2, &error);
    return U_SUCCESS(error) && units == 2 && wide[0] == 0x0A && wide[1] == 0x85;
}

class Sets {
public:
    static Sets& Get() {
        // Never destroyed: objects with static lifetime may still translate at exit.
        static Sets* const sets = new Sets;
        return *sets;
    }

    const CcsidPair* Find(WORD from, WORD to, bool swapNewLine) {
        const std::lock_guard lock(m_mutex);
        const std::tuple key(from, to, swapNewLine);
        const auto known = m_pairs.find(key);
        if (known != m_pairs.end())
            return known->second.get();
        // Only known pairs are kept: memory may come back, and unknown sets are unlimited in
        // number.
        std::unique_ptr<CcsidPair> pair = Make(from, to, swapNewLine);
        return pair ? m_pairs.emplace(key, std::move(pair)).first->second.get() : nullptr;
    }

private:
    std::unique_ptr<CcsidPair> Make(WORD from, WORD to, bool swapNewLine) {
        auto pair = std::make_unique<CcsidPair>();
        pair->from = Pool(from, swapNewLine);
        pair->to = Pool(to, swapNewLine);
        pair->fromCcsid = from;
        if (!pair->from || !pair->to)
            return nullptr;
        if (from == to) {
            pair->kernel = MakeCopyKernel();
        } else {
            const auto source = pair->from->Borrow(), target = pair->to->Borrow();
            if (!source.get() || !target.get())
                return nullptr;
            pair->kernel = MakeCcsidKernel(source.get(), target.get());
        }
        return pair;
    }

    ConverterPool* Pool(WORD ccsid, bool swapNewLine) {
        const std::pair key(ccsid, swapNewLine);
        const auto known = m_pools.find(key);
        if (known != m_pools.end())
            return known->second.get();
        std::string name = ConverterName(ccsid);
        const ConverterPtr converter = OpenConverter(name.c_str());
        if (!converter)
            return nullptr;
        if (swapNewLine && IsEbcdic(converter.get()))
            name += ",swaplfnl";
        auto pool = std::make_unique<ConverterPool>(std::move(name));
        return m_pools.emplace(key, std::move(pool)).first->second.get();
    }

    std::mutex m_mutex;
    std::map<std::pair<WORD, bool>, std::unique_ptr<ConverterPool>> m_pools;
    std::map<std::tuple<WORD, WORD, bool>, std::unique_ptr<CcsidPair>> m_pairs;
};

} // namespace

const CcsidPair* FindCcsidPair(WORD from, WORD to, bool swapNewLine) {
    return Sets::Get().Find(from, to, swapNewLine);
}

} // namespace vnbytstr::detail
