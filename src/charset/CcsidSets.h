// Which CCSIDs there are, their converters, and what a pair of them needs for translation.
#pragma once

#include "src/charset/CcsidKernels.h"
#include "src/charset/IcuConverter.h"

#include <memory>

namespace vnbytstr::detail {

/// All that is shared by the translations of one pair; lives as long as the process.
struct CcsidPair {
    ConverterPool* from = nullptr;
    ConverterPool* to = nullptr;
    WORD fromCcsid = 0;
    std::unique_ptr<CcsidKernel> kernel; ///< null when ICU does it all
};

/// The pair, null when one of the two is unknown. `swapNewLine` exchanges the EBCDIC controls LF
/// (25) and NL (15) in every EBCDIC set of the pair. Safe from every thread.
const CcsidPair* FindCcsidPair(WORD from, WORD to, bool swapNewLine);

} // namespace vnbytstr::detail
