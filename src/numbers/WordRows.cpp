#include "src/numbers/WordRows.h"

#include "src/numbers/DigitProduct.h"
#include "src/os/CpuKernel.h"
#include "src/os/Word128.h"

namespace vnbytstr::detail {

namespace {

Word64 AddMultiplePlain(Word64* r, const Word64* a, std::size_t n, Word64 b) noexcept {
    Word64 carry = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const Word128 sum = Word128{a[i]} * b + r[i] + carry;
        r[i] = static_cast<Word64>(sum);
        carry = static_cast<Word64>(sum >> 64);
    }
    return carry;
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

// One multiplier in rdx against eight words: the sum of nine words is c0 to c7 and a new c0, whose
// old word has been stored by then.
// clang-format off
#define VNBYTSTR_COLUMN(at, low, high)                 \
    "mulx " #at "(%[a]), %%rax, %%rbx\n\t"             \
    "adcx %%rax, %%" low "\n\t"                       \
    "adox %%rbx, %%" high "\n\t"
#define VNBYTSTR_COLUMNS(c0, c1, c2, c3, c4, c5, c6, c7) \
    VNBYTSTR_COLUMN(8, c1, c2)                         \
    VNBYTSTR_COLUMN(16, c2, c3)                        \
    VNBYTSTR_COLUMN(24, c3, c4)                        \
    VNBYTSTR_COLUMN(32, c4, c5)                        \
    VNBYTSTR_COLUMN(40, c5, c6)                        \
    VNBYTSTR_COLUMN(48, c6, c7)                        \
    "mulx 56(%[a]), %%rax, %%" c0 "\n\t"              \
    "adcx %%rax, %%" c7 "\n\t"                        \
    "movl $0, %%eax\n\t"                              \
    "adox %%rax, %%" c0 "\n\t"                        \
    "adcx %%rax, %%" c0 "\n\t"

#define VNBYTSTR_ADD_COLUMNS(at, c0, c1, c2, c3, c4, c5, c6, c7) \
    "movq " #at "(%[b]), %%rdx\n\t"                   \
    "xorl %%eax, %%eax\n\t"                           \
    "mulx (%[a]), %%rax, %%rbx\n\t"                   \
    "adcx %%rax, %%" c0 "\n\t"                        \
    "adox " #at "(%[r]), %%" c0 "\n\t"                \
    "movq %%" c0 ", " #at "(%[r])\n\t"                \
    "adox %%rbx, %%" c1 "\n\t"                        \
    VNBYTSTR_COLUMNS(c0, c1, c2, c3, c4, c5, c6, c7)

#define VNBYTSTR_REDUCE_COLUMNS(at, c0, c1, c2, c3, c4, c5, c6, c7) \
    "movq %[inverse], %%rdx\n\t"                      \
    "imulq %%" c0 ", %%rdx\n\t"                       \
    "movq %%rdx, " #at "(%[u])\n\t"                   \
    "xorl %%eax, %%eax\n\t"                           \
    "mulx (%[a]), %%rax, %%rbx\n\t"                   \
    "adcx %%rax, %%" c0 "\n\t"                        \
    "adox %%rbx, %%" c1 "\n\t"                        \
    VNBYTSTR_COLUMNS(c0, c1, c2, c3, c4, c5, c6, c7)

#define VNBYTSTR_EIGHT_ROWS(ROW)                       \
    ROW(0, "r8", "r9", "r10", "r11", "r12", "r13", "r14", "r15")  \
    ROW(8, "r9", "r10", "r11", "r12", "r13", "r14", "r15", "r8")  \
    ROW(16, "r10", "r11", "r12", "r13", "r14", "r15", "r8", "r9") \
    ROW(24, "r11", "r12", "r13", "r14", "r15", "r8", "r9", "r10") \
    ROW(32, "r12", "r13", "r14", "r15", "r8", "r9", "r10", "r11") \
    ROW(40, "r13", "r14", "r15", "r8", "r9", "r10", "r11", "r12") \
    ROW(48, "r14", "r15", "r8", "r9", "r10", "r11", "r12", "r13") \
    ROW(56, "r15", "r8", "r9", "r10", "r11", "r12", "r13", "r14")

#define VNBYTSTR_LOAD_WINDOW                           \
    "movq %[window], %%rax\n\t"                       \
    "movq (%%rax), %%r8\n\t"                          \
    "movq 8(%%rax), %%r9\n\t"                         \
    "movq 16(%%rax), %%r10\n\t"                       \
    "movq 24(%%rax), %%r11\n\t"                       \
    "movq 32(%%rax), %%r12\n\t"                       \
    "movq 40(%%rax), %%r13\n\t"                       \
    "movq 48(%%rax), %%r14\n\t"                       \
    "movq 56(%%rax), %%r15\n\t"
#define VNBYTSTR_STORE_WINDOW                          \
    "movq %[window], %%rax\n\t"                       \
    "movq %%r8, (%%rax)\n\t"                          \
    "movq %%r9, 8(%%rax)\n\t"                         \
    "movq %%r10, 16(%%rax)\n\t"                       \
    "movq %%r11, 24(%%rax)\n\t"                       \
    "movq %%r12, 32(%%rax)\n\t"                       \
    "movq %%r13, 40(%%rax)\n\t"                       \
    "movq %%r14, 48(%%rax)\n\t"                       \
    "movq %%r15, 56(%%rax)"

void AddEightColumnsAdx(Word64* r, const Word64* a, const Word64* b, std::size_t eights,
                        Word64* window) noexcept {
    const Word64* const end = b + 8 * eights;
    asm volatile(
        VNBYTSTR_LOAD_WINDOW
        ".p2align 5\n"
        "1:\n\t"
        VNBYTSTR_EIGHT_ROWS(VNBYTSTR_ADD_COLUMNS)
        "addq $64, %[b]\n\t"
        "addq $64, %[r]\n\t"
        "cmpq %[end], %[b]\n\t"
        "jne 1b\n\t"
        VNBYTSTR_STORE_WINDOW
        : [r] "+D"(r), [b] "+c"(b)
        : [a] "S"(a), [end] "m"(end), [window] "m"(window)
        : "rax", "rbx", "rdx", "r8", "r9", "r10", "r11", "r12", "r13", "r14", "r15", "cc", "memory");
}

void ReduceEightColumnsAdx(Word64* window, const Word64* m, Word64* u, Word64 inverse) noexcept {
    asm volatile(
        VNBYTSTR_LOAD_WINDOW
        VNBYTSTR_EIGHT_ROWS(VNBYTSTR_REDUCE_COLUMNS)
        VNBYTSTR_STORE_WINDOW
        :
        : [a] "S"(m), [u] "D"(u), [inverse] "m"(inverse), [window] "m"(window)
        : "rax", "rbx", "rdx", "r8", "r9", "r10", "r11", "r12", "r13", "r14", "r15", "cc", "memory");
}

#define VNBYTSTR_LAST_COLUMN(low, high)                \
    "mulx 56(%[a]), %%rax, %%" high "\n\t"            \
    "adcx %%rax, %%" low "\n\t"                       \
    "movl $0, %%eax\n\t"                              \
    "adox %%rax, %%" high "\n\t"                      \
    "adcx %%rax, %%" high "\n\t"
#define VNBYTSTR_SQUARE(at, low, high)                 \
    "movq " #at "(%[a]), %%rdx\n\t"                   \
    "mulx %%rdx, %%rax, %%rbx\n\t"                    \
    "movq " #low "(%[r]), %%r8\n\t"                   \
    "adcx %%r8, %%r8\n\t"                             \
    "adox %%rax, %%r8\n\t"                            \
    "movq %%r8, " #low "(%[r])\n\t"                   \
    "movq " #high "(%[r]), %%r9\n\t"                  \
    "adcx %%r9, %%r9\n\t"                             \
    "adox %%rbx, %%r9\n\t"                            \
    "movq %%r9, " #high "(%[r])\n\t"

/// The products of unlike words first, row by row; then these doubled, and the squares.
void SquareEightAdx(Word64* r, const Word64* a) noexcept {
    asm volatile(
        "movq (%[a]), %%rdx\n\t"
        "mulx 8(%[a]), %%r8, %%r9\n\t"
        "mulx 16(%[a]), %%rax, %%r10\n\t"
        "addq %%rax, %%r9\n\t"
        "mulx 24(%[a]), %%rax, %%r11\n\t"
        "adcq %%rax, %%r10\n\t"
        "mulx 32(%[a]), %%rax, %%r12\n\t"
        "adcq %%rax, %%r11\n\t"
        "mulx 40(%[a]), %%rax, %%r13\n\t"
        "adcq %%rax, %%r12\n\t"
        "mulx 48(%[a]), %%rax, %%r14\n\t"
        "adcq %%rax, %%r13\n\t"
        "mulx 56(%[a]), %%rax, %%r15\n\t"
        "adcq %%rax, %%r14\n\t"
        "adcq $0, %%r15\n\t"
        "movq %%r8, 8(%[r])\n\t"
        "movq %%r9, 16(%[r])\n\t"
        "movq 8(%[a]), %%rdx\n\t"
        "xorl %%eax, %%eax\n\t"
        VNBYTSTR_COLUMN(16, "r10", "r11")
        VNBYTSTR_COLUMN(24, "r11", "r12")
        VNBYTSTR_COLUMN(32, "r12", "r13")
        VNBYTSTR_COLUMN(40, "r13", "r14")
        VNBYTSTR_COLUMN(48, "r14", "r15")
        VNBYTSTR_LAST_COLUMN("r15", "r8")
        "movq %%r10, 24(%[r])\n\t"
        "movq %%r11, 32(%[r])\n\t"
        "movq 16(%[a]), %%rdx\n\t"
        "xorl %%eax, %%eax\n\t"
        VNBYTSTR_COLUMN(24, "r12", "r13")
        VNBYTSTR_COLUMN(32, "r13", "r14")
        VNBYTSTR_COLUMN(40, "r14", "r15")
        VNBYTSTR_COLUMN(48, "r15", "r8")
        VNBYTSTR_LAST_COLUMN("r8", "r9")
        "movq %%r12, 40(%[r])\n\t"
        "movq %%r13, 48(%[r])\n\t"
        "movq 24(%[a]), %%rdx\n\t"
        "xorl %%eax, %%eax\n\t"
        VNBYTSTR_COLUMN(32, "r14", "r15")
        VNBYTSTR_COLUMN(40, "r15", "r8")
        VNBYTSTR_COLUMN(48, "r8", "r9")
        VNBYTSTR_LAST_COLUMN("r9", "r10")
        "movq %%r14, 56(%[r])\n\t"
        "movq %%r15, 64(%[r])\n\t"
        "movq 32(%[a]), %%rdx\n\t"
        "xorl %%eax, %%eax\n\t"
        VNBYTSTR_COLUMN(40, "r8", "r9")
        VNBYTSTR_COLUMN(48, "r9", "r10")
        VNBYTSTR_LAST_COLUMN("r10", "r11")
        "movq %%r8, 72(%[r])\n\t"
        "movq %%r9, 80(%[r])\n\t"
        "movq 40(%[a]), %%rdx\n\t"
        "xorl %%eax, %%eax\n\t"
        VNBYTSTR_COLUMN(48, "r10", "r11")
        VNBYTSTR_LAST_COLUMN("r11", "r12")
        "movq %%r10, 88(%[r])\n\t"
        "movq %%r11, 96(%[r])\n\t"
        "movq 48(%[a]), %%rdx\n\t"
        "xorl %%eax, %%eax\n\t"
        VNBYTSTR_LAST_COLUMN("r12", "r13")
        "movq %%r12, 104(%[r])\n\t"
        "movq %%r13, 112(%[r])\n\t"
        "xorl %%eax, %%eax\n\t"
        "movq %%rax, (%[r])\n\t"
        "movq %%rax, 120(%[r])\n\t"
        VNBYTSTR_SQUARE(0, 0, 8)
        VNBYTSTR_SQUARE(8, 16, 24)
        VNBYTSTR_SQUARE(16, 32, 40)
        VNBYTSTR_SQUARE(24, 48, 56)
        VNBYTSTR_SQUARE(32, 64, 72)
        VNBYTSTR_SQUARE(40, 80, 88)
        VNBYTSTR_SQUARE(48, 96, 104)
        VNBYTSTR_SQUARE(56, 112, 120)
        :
        : [r] "D"(r), [a] "S"(a)
        : "rax", "rbx", "rdx", "r8", "r9", "r10", "r11", "r12", "r13", "r14", "r15", "cc", "memory");
}

#define VNBYTSTR_DOUBLE_STEP(at)                       \
    "movq " #at "(%[r]), %%rax\n\t"                   \
    "adcx %%rax, %%rax\n\t"                           \
    "adox " #at "(%[a]), %%rax\n\t"                   \
    "movq %%rax, " #at "(%[r])\n\t"

void DoubleAndAddAdx(Word64* r, const Word64* a, std::size_t eights) noexcept {
    asm volatile(
        "xorl %%eax, %%eax\n"
        "1:\n\t"
        VNBYTSTR_DOUBLE_STEP(0)
        VNBYTSTR_DOUBLE_STEP(8)
        VNBYTSTR_DOUBLE_STEP(16)
        VNBYTSTR_DOUBLE_STEP(24)
        VNBYTSTR_DOUBLE_STEP(32)
        VNBYTSTR_DOUBLE_STEP(40)
        VNBYTSTR_DOUBLE_STEP(48)
        VNBYTSTR_DOUBLE_STEP(56)
        "leaq 64(%[a]), %[a]\n\t"
        "leaq 64(%[r]), %[r]\n\t"
        "leaq -1(%%rcx), %%rcx\n\t"
        "jrcxz 2f\n\t"
        "jmp 1b\n"
        "2:"
        : [r] "+r"(r), [a] "+r"(a), "+c"(eights)
        :
        : "rax", "cc", "memory");
}
// clang-format on

bool HasAdx() noexcept {
    unsigned a = 7, b = 0, c = 0, d = 0;
    asm("cpuid" : "+a"(a), "=b"(b), "+c"(c), "=d"(d));
    return (b >> 19 & 1) != 0;
}

constexpr WordRows kAdxRows = {AddMultipleAdx, AddEightColumnsAdx, ReduceEightColumnsAdx,
                               SquareEightAdx, DoubleAndAddAdx,    nullptr};
constexpr WordRows kAvx512Rows = {AddMultipleAdx, AddEightColumnsAdx, ReduceEightColumnsAdx,
                                  SquareEightAdx, DoubleAndAddAdx,    MultiplyDigitsAvx512};
#endif

constexpr WordRows kPlainRows = {AddMultiplePlain, nullptr, nullptr, nullptr, nullptr, nullptr};

} // namespace

const WordRows& ActiveWordRows() noexcept {
#if defined(__x86_64__)
    static const bool hasAdx = HasAdx();
    if (hasAdx && ActiveKernel() >= Kernel::Avx512)
        return kAvx512Rows;
    if (hasAdx && ActiveKernel() >= Kernel::Avx2)
        return kAdxRows;
#endif
    return kPlainRows;
}

} // namespace vnbytstr::detail
