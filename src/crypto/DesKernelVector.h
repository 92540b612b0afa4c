// The bitsliced DES for vector registers. Each version is in a separate source file, compiled for
// its instruction set; call it only where the machine has that. Arguments as for DesRun.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vnbytstr::detail {

void DesRunAvx2(const std::uint8_t* in, std::uint8_t* out, std::size_t groups,
                const std::uint64_t (&masks)[16 * 48], std::uint8_t* previous);
void DesRunAvx512(const std::uint8_t* in, std::uint8_t* out, std::size_t groups,
                  const std::uint64_t (&masks)[16 * 48], std::uint8_t* previous);

} // namespace vnbytstr::detail
