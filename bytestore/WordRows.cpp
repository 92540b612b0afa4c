#include "bytestore/WordRows.h"

#include "platform/system/CpuKernel.h"

namespace vnbytstr::detail {

namespace {

__extension__ using Word128 = unsigned __int128;

Word64 AddMultiplePlain(Word64* r, const Word64* a, std::size_t n, Word64 b) noexcept {
    Word64 carry = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const Word128 sum = Word128{a[i]} * b + r[i] + carry;
        r[i] = static_cast<Word64>(sum);
        carry = static_cast<Word64>(sum >> 64);
    }
    return carry;
}

Word64 SubMultiplePlain(Word64* r, const Word64* a, std::size_t n, Word64 b) noexcept {
    Word64 borrow = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const Word128 product = Word128{a[i]} * b + borrow;
        const auto low = static_cast<Word64>(product);
        borrow = static_cast<Word64>(product >> 64) + (r[i] < low ? 1 : 0);
        r[i] -= low;
    }
    return borrow;
}

#if defined(__x86_64__)

// Two carry chains run side by side: CF takes the high word of each product into the next place, OF
// takes the row that is there already. Loop control must leave both flags alone, hence lea and
// jrcxz. The words beyond a multiple of eight come first, in straight code chosen by their number.

// clang-format off
#define VNBYTSTR_ADD_STEP(at, in, out)                 \
    "mulx " #at "(%[a]), %%r8, %%" out "\n\t"          \
    "adcx %%" in ", %%r8\n\t"                          \
    "adox " #at "(%[r]), %%r8\n\t"                     \
    "movq %%r8, " #at "(%[r])\n\t"

// r - p is the complement of (complement of r) + p, and not changes no flag.
#define VNBYTSTR_SUB_STEP(at, in, out)                 \
    "mulx " #at "(%[a]), %%r8, %%" out "\n\t"          \
    "movq " #at "(%[r]), %%r9\n\t"                     \
    "notq %%r9\n\t"                                    \
    "adcx %%" in ", %%r8\n\t"                          \
    "adox %%r8, %%r9\n\t"                              \
    "notq %%r9\n\t"                                    \
    "movq %%r9, " #at "(%[r])\n\t"

#define VNBYTSTR_HEAD_0(STEP)
#define VNBYTSTR_HEAD_1(STEP) STEP(0, "r10", "r11") "movq %%r11, %%r10\n\t"
#define VNBYTSTR_HEAD_2(STEP) STEP(0, "r10", "r11") STEP(8, "r11", "r10")
#define VNBYTSTR_HEAD_3(STEP) VNBYTSTR_HEAD_2(STEP) STEP(16, "r10", "r11") "movq %%r11, %%r10\n\t"
#define VNBYTSTR_HEAD_4(STEP) VNBYTSTR_HEAD_2(STEP) STEP(16, "r10", "r11") STEP(24, "r11", "r10")
#define VNBYTSTR_HEAD_5(STEP) VNBYTSTR_HEAD_4(STEP) STEP(32, "r10", "r11") "movq %%r11, %%r10\n\t"
#define VNBYTSTR_HEAD_6(STEP) VNBYTSTR_HEAD_4(STEP) STEP(32, "r10", "r11") STEP(40, "r11", "r10")
#define VNBYTSTR_HEAD_7(STEP) VNBYTSTR_HEAD_6(STEP) STEP(48, "r10", "r11") "movq %%r11, %%r10\n\t"
#define VNBYTSTR_EIGHT(STEP) VNBYTSTR_HEAD_6(STEP) STEP(48, "r10", "r11") STEP(56, "r11", "r10")

#define VNBYTSTR_ROW(STEP, COUNT)                      \
    asm volatile(                                      \
        "xorl %%r10d, %%r10d\n\t"                      \
        VNBYTSTR_HEAD_##COUNT(STEP)                    \
        "leaq 8*" #COUNT "(%[a]), %[a]\n\t"            \
        "leaq 8*" #COUNT "(%[r]), %[r]\n\t"            \
        "jrcxz 3f\n\t" /* reaches 127 bytes */         \
        "jmp 1f\n"                                     \
        "3:\n\t"                                       \
        "jmp 2f\n\t"                                   \
        ".p2align 5\n"                                 \
        "1:\n\t"                                       \
        VNBYTSTR_EIGHT(STEP)                           \
        "leaq 64(%[a]), %[a]\n\t"                      \
        "leaq 64(%[r]), %[r]\n\t"                      \
        "leaq -1(%%rcx), %%rcx\n\t"                    \
        "jrcxz 2f\n\t"                                 \
        "jmp 1b\n"                                     \
        "2:\n\t"                                       \
        "movl $0, %%r8d\n\t"                           \
        "adcx %%r8, %%r10\n\t"                         \
        "adox %%r8, %%r10\n\t"                         \
        "movq %%r10, %[carry]"                         \
        : [a] "+r"(a), [r] "+r"(r), "+c"(eights), [carry] "=r"(carry) \
        : "d"(b)                                       \
        : "r8", "r9", "r10", "r11", "cc", "memory")
// clang-format on

#define VNBYTSTR_ROW_FUNCTION(name, STEP)                                                          \
    Word64 name(Word64* r, const Word64* a, std::size_t n, Word64 b) noexcept {                    \
        std::size_t eights = n / 8;                                                                \
        Word64 carry;                                                                              \
        switch (n % 8) {                                                                           \
        case 0:                                                                                    \
            VNBYTSTR_ROW(STEP, 0);                                                                 \
            break;                                                                                 \
        case 1:                                                                                    \
            VNBYTSTR_ROW(STEP, 1);                                                                 \
            break;                                                                                 \
        case 2:                                                                                    \
            VNBYTSTR_ROW(STEP, 2);                                                                 \
            break;                                                                                 \
        case 3:                                                                                    \
            VNBYTSTR_ROW(STEP, 3);                                                                 \
            break;                                                                                 \
        case 4:                                                                                    \
            VNBYTSTR_ROW(STEP, 4);                                                                 \
            break;                                                                                 \
        case 5:                                                                                    \
            VNBYTSTR_ROW(STEP, 5);                                                                 \
            break;                                                                                 \
        case 6:                                                                                    \
            VNBYTSTR_ROW(STEP, 6);                                                                 \
            break;                                                                                 \
        default:                                                                                   \
            VNBYTSTR_ROW(STEP, 7);                                                                 \
        }                                                                                          \
        return carry;                                                                              \
    }

VNBYTSTR_ROW_FUNCTION(AddMultipleAdx, VNBYTSTR_ADD_STEP)
VNBYTSTR_ROW_FUNCTION(SubMultipleAdx, VNBYTSTR_SUB_STEP)

bool HasAdx() noexcept {
    unsigned a = 7, b = 0, c = 0, d = 0;
    asm("cpuid" : "+a"(a), "=b"(b), "+c"(c), "=d"(d));
    return (b >> 19 & 1) != 0;
}

constexpr WordRows kAdxRows = {AddMultipleAdx, SubMultipleAdx};
#endif

constexpr WordRows kPlainRows = {AddMultiplePlain, SubMultiplePlain};

} // namespace

const WordRows& ActiveWordRows() noexcept {
#if defined(__x86_64__)
    static const bool hasAdx = HasAdx();
    if (hasAdx && ActiveKernel() >= Kernel::Avx2)
        return kAdxRows;
#endif
    return kPlainRows;
}

} // namespace vnbytstr::detail
