// Arithmetic on unsigned numbers as arrays of 64-bit words, the least significant first. The caller
// provides the room; results never overlap operands unless said so.
#pragma once

#include "src/numbers/WordRows.h"

#include <span>
#include <vector>

namespace vnbytstr::detail {

using Words = std::vector<Word64>;
using WordSpan = std::span<const Word64>;

/// `a` without its most significant zero words; of zero nothing is left.
WordSpan Trimmed(WordSpan a) noexcept;
void Trim(Words& a) noexcept;
/// Number of bits up to the highest one set; 0 for zero.
std::size_t BitLength(WordSpan a) noexcept;
/// Less than 0, 0 or greater than 0; leading zero words do not matter.
int CompareWords(WordSpan a, WordSpan b) noexcept;

/// r[0..n) = a + b, or a - b, of n words each; returns the carry or borrow, 0 or 1. r may be a or
/// b.
Word64 AddWords(Word64* r, const Word64* a, const Word64* b, std::size_t n) noexcept;
Word64 SubWords(Word64* r, const Word64* a, const Word64* b, std::size_t n) noexcept;
/// r[0..n) += or -= a single word; returns the carry or borrow.
Word64 AddWord(Word64* r, std::size_t n, Word64 b) noexcept;
Word64 SubWord(Word64* r, std::size_t n, Word64 b) noexcept;

/// r[0..n) = a shifted by `bits` (0 to 63); returns the bits shifted out, in the low bits for left
/// and in the high bits for right. r may be a.
Word64 ShiftLeftWords(Word64* r, const Word64* a, std::size_t n, unsigned bits) noexcept;
Word64 ShiftRightWords(Word64* r, const Word64* a, std::size_t n, unsigned bits) noexcept;

/// r[0..an + bn) = a * b; r has that many words. Schoolbook, and Karatsuba's method (A. Karatsuba,
/// Yu. Ofman, Soviet Physics Doklady 7, 1963) for long operands.
void MultiplyWords(Word64* r, WordSpan a, WordSpan b, const WordRows& rows = ActiveWordRows());
/// r[0..2n) = a * a.
void SquareWords(Word64* r, WordSpan a, const WordRows& rows = ActiveWordRows());
/// r[0..n) = the low n words of a * b, both of n words.
void MultiplyLowWords(Word64* r, const Word64* a, const Word64* b, std::size_t n) noexcept;

/// r[0..m's size) = a modulo m (m not zero, leading zero words allowed in both). When `quotient` is
/// not null it gets a / m, trimmed. D. Knuth, The Art of Computer Programming, volume 2, 4.3.1,
/// algorithm D; by halves for long quotients.
void RemainderWords(Word64* r, WordSpan a, WordSpan m, Words* quotient = nullptr);
/// The same, trimmed.
Words Remainder(WordSpan a, WordSpan m, Words* quotient = nullptr);

} // namespace vnbytstr::detail
