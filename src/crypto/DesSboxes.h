// Gate circuits of the S-boxes of DES (FIPS 46-3), found and written by
// src/crypto/tools/SboxSearch.cpp; do not edit. Each takes the six input bits, the most
// significant first, and xors the four output bits to y1 to y4. AndNot(a, b) is a & ~b;
// Ternary<f>(a, b, c) is bit 4a + 2b + c of f.
#pragma once

#include "src/crypto/DesGates.h"

namespace vnbytstr::detail {

// 62 gates
template <class V>
VNBYTSTR_INLINE void DesSbox(DesBoxTag<1, false>, const V& x1, const V& x2, const V& x3,
                             const V& x4, const V& x5, const V& x6, V& y1, V& y2, V& y3, V& y4) {
    const V g1 = x2 ^ x5;
    const V g2 = ~g1;
    const V g3 = AndNot(g2, x4);
    const V g4 = g3 ^ x5;
    const V g5 = g4 & x3;
    const V g6 = g2 ^ g5;
    const V g7 = x5 ^ x3;
    const V g8 = g7 & x4;
    const V g9 = x6 ^ g8;
    const V g10 = g9 & x6;
    const V g11 = g6 ^ g10;
    const V g12 = g5 ^ x4;
    const V g13 = AndNot(g12, x2);
    const V g14 = g9 | g1;
    const V g15 = g4 ^ x6;
    const V g16 = g15 | g11;
    const V g17 = AndNot(g16, x2);
    const V g18 = g14 ^ g17;
    const V g19 = AndNot(g18, x3);
    const V g20 = g13 ^ g19;
    const V g21 = g20 & x1;
    const V g22 = g11 ^ g21;
    const V g23 = g20 ^ g18;
    const V g24 = x6 & g7;
    const V g25 = g23 ^ g24;
    const V g26 = x3 ^ x2;
    const V g27 = g11 | x4;
    const V g28 = g26 ^ g27;
    const V g29 = g28 & x2;
    const V g30 = g25 ^ g29;
    const V g31 = AndNot(g14, x6);
    const V g32 = g31 | g22;
    const V g33 = g30 | g4;
    const V g34 = g33 ^ g11;
    const V g35 = g34 & x2;
    const V g36 = g32 ^ g35;
    const V g37 = g36 & x1;
    const V g38 = g30 ^ g37;
    const V g39 = AndNot(g34, x1);
    const V g40 = g39 ^ g20;
    const V g41 = g9 | g7;
    const V g42 = g41 & g22;
    const V g43 = g42 & x5;
    const V g44 = g40 ^ g43;
    const V g45 = g37 | g13;
    const V g46 = AndNot(g41, g45);
    const V g47 = AndNot(g25, g24);
    const V g48 = g47 | x1;
    const V g49 = AndNot(g48, x5);
    const V g50 = g46 ^ g49;
    const V g51 = g50 & x4;
    const V g52 = g44 ^ g51;
    const V g53 = g17 ^ g52;
    const V g54 = g22 ^ g38;
    const V g55 = g53 ^ g54;
    const V g56 = AndNot(g44, g50);
    const V g57 = g21 | g56;
    const V g58 = g57 ^ g4;
    const V g59 = g58 & x6;
    const V g60 = g56 ^ g59;
    const V g61 = g60 & x5;
    const V g62 = g55 ^ g61;
    y1 ^= g22;
    y2 ^= g52;
    y3 ^= g62;
    y4 ^= g38;
}

// 57 gates
template <class V>
VNBYTSTR_INLINE void DesSbox(DesBoxTag<2, false>, const V& x1, const V& x2, const V& x3,
                             const V& x4, const V& x5, const V& x6, V& y1, V& y2, V& y3, V& y4) {
    const V g1 = ~x1;
    const V g2 = AndNot(x6, x3);
    const V g3 = g1 ^ g2;
    const V g4 = g3 ^ x4;
    const V g5 = x4 & g2;
    const V g6 = g5 ^ x5;
    const V g7 = g6 & x5;
    const V g8 = g4 ^ g7;
    const V g9 = x3 ^ g4;
    const V g10 = x5 & g9;
    const V g11 = g10 ^ x2;
    const V g12 = g11 & x1;
    const V g13 = g9 ^ g12;
    const V g14 = AndNot(g13, x6);
    const V g15 = g2 ^ g14;
    const V g16 = g15 & x2;
    const V g17 = g8 ^ g16;
    const V g18 = g1 ^ x6;
    const V g19 = g18 ^ x3;
    const V g20 = g12 & x4;
    const V g21 = AndNot(g1, g9);
    const V g22 = g20 ^ g21;
    const V g23 = g22 & x2;
    const V g24 = g19 ^ g23;
    const V g25 = g11 ^ g24;
    const V g26 = g25 | g1;
    const V g27 = g26 ^ x4;
    const V g28 = AndNot(g8, g27);
    const V g29 = AndNot(g28, x2);
    const V g30 = g26 ^ g29;
    const V g31 = g30 & x5;
    const V g32 = g24 ^ g31;
    const V g33 = AndNot(x6, x2);
    const V g34 = g33 ^ g13;
    const V g35 = g29 | g33;
    const V g36 = g35 ^ g32;
    const V g37 = g36 & x5;
    const V g38 = g34 ^ g37;
    const V g39 = AndNot(g36, x5);
    const V g40 = g39 | g24;
    const V g41 = AndNot(g27, g10);
    const V g42 = g41 ^ g14;
    const V g43 = AndNot(g42, x6);
    const V g44 = g40 ^ g43;
    const V g45 = g44 & x1;
    const V g46 = g38 ^ g45;
    const V g47 = g42 | g8;
    const V g48 = g47 ^ g11;
    const V g49 = g21 & g40;
    const V g50 = AndNot(g17, g49);
    const V g51 = g50 & x6;
    const V g52 = g48 ^ g51;
    const V g53 = AndNot(g45, g17);
    const V g54 = AndNot(g46, g9);
    const V g55 = g53 ^ g54;
    const V g56 = g55 & x1;
    const V g57 = g52 ^ g56;
    y1 ^= g32;
    y2 ^= g17;
    y3 ^= g57;
    y4 ^= g46;
}

// 59 gates
template <class V>
VNBYTSTR_INLINE void DesSbox(DesBoxTag<3, false>, const V& x1, const V& x2, const V& x3,
                             const V& x4, const V& x5, const V& x6, V& y1, V& y2, V& y3, V& y4) {
    const V g1 = x3 ^ x1;
    const V g2 = x4 ^ x5;
    const V g3 = g1 ^ g2;
    const V g4 = g3 | x4;
    const V g5 = AndNot(g4, x1);
    const V g6 = ~g1;
    const V g7 = AndNot(g6, x5);
    const V g8 = g5 ^ g7;
    const V g9 = AndNot(g8, x2);
    const V g10 = g3 ^ g9;
    const V g11 = g8 & x5;
    const V g12 = x1 | g2;
    const V g13 = g11 ^ g12;
    const V g14 = g8 ^ x3;
    const V g15 = g14 & g13;
    const V g16 = AndNot(g15, x2);
    const V g17 = g13 ^ g16;
    const V g18 = g17 & x6;
    const V g19 = g10 ^ g18;
    const V g20 = x2 ^ x6;
    const V g21 = g20 ^ g4;
    const V g22 = AndNot(g20, g10);
    const V g23 = g22 | x5;
    const V g24 = AndNot(g23, x3);
    const V g25 = g21 ^ g24;
    const V g26 = AndNot(x6, g19);
    const V g27 = AndNot(g6, g22);
    const V g28 = g26 ^ g27;
    const V g29 = AndNot(g19, g15);
    const V g30 = AndNot(x2, g29);
    const V g31 = g30 & x1;
    const V g32 = g28 ^ g31;
    const V g33 = g32 & x4;
    const V g34 = g25 ^ g33;
    const V g35 = g20 ^ g15;
    const V g36 = g35 ^ x4;
    const V g37 = AndNot(g25, g28);
    const V g38 = AndNot(g37, g23);
    const V g39 = g36 ^ g28;
    const V g40 = g39 ^ g25;
    const V g41 = g40 & x6;
    const V g42 = g38 ^ g41;
    const V g43 = g42 & x1;
    const V g44 = g36 ^ g43;
    const V g45 = g6 & g25;
    const V g46 = AndNot(x5, g10);
    const V g47 = g45 ^ g46;
    const V g48 = g32 | g34;
    const V g49 = AndNot(g48, x1);
    const V g50 = g47 ^ g49;
    const V g51 = g6 | g49;
    const V g52 = AndNot(x4, g40);
    const V g53 = g51 ^ g52;
    const V g54 = AndNot(g19, g44);
    const V g55 = g54 ^ g40;
    const V g56 = AndNot(g55, x6);
    const V g57 = g53 ^ g56;
    const V g58 = g57 & x2;
    const V g59 = g50 ^ g58;
    y1 ^= g19;
    y2 ^= g34;
    y3 ^= g59;
    y4 ^= g44;
}

// 44 gates
template <class V>
VNBYTSTR_INLINE void DesSbox(DesBoxTag<4, false>, const V& x1, const V& x2, const V& x3,
                             const V& x4, const V& x5, const V& x6, V& y1, V& y2, V& y3, V& y4) {
    const V g1 = ~x4;
    const V g2 = AndNot(x3, x2);
    const V g3 = g1 ^ g2;
    const V g4 = x4 | x2;
    const V g5 = g4 & x5;
    const V g6 = g3 ^ g5;
    const V g7 = g6 & g1;
    const V g8 = g7 ^ g4;
    const V g9 = x5 ^ x4;
    const V g10 = g9 & x3;
    const V g11 = g8 ^ g10;
    const V g12 = g11 & x1;
    const V g13 = g6 ^ g12;
    const V g14 = g2 ^ x1;
    const V g15 = g14 & g6;
    const V g16 = x2 ^ g9;
    const V g17 = AndNot(g16, x3);
    const V g18 = g15 ^ g17;
    const V g19 = g13 | g10;
    const V g20 = AndNot(g19, x1);
    const V g21 = g8 ^ g20;
    const V g22 = g21 & x5;
    const V g23 = g18 ^ g22;
    const V g24 = g23 & x6;
    const V g25 = g13 ^ g24;
    const V g26 = g25 ^ x6;
    const V g27 = g26 ^ g23;
    const V g28 = g19 & g4;
    const V g29 = g17 ^ x1;
    const V g30 = g28 ^ g29;
    const V g31 = AndNot(x2, g12);
    const V g32 = g31 ^ g5;
    const V g33 = g32 & x4;
    const V g34 = g30 ^ g33;
    const V g35 = x5 ^ g28;
    const V g36 = x2 | g22;
    const V g37 = AndNot(g3, g31);
    const V g38 = g36 ^ g37;
    const V g39 = AndNot(g38, x3);
    const V g40 = g35 ^ g39;
    const V g41 = g40 & x6;
    const V g42 = g34 ^ g41;
    const V g43 = x6 ^ g42;
    const V g44 = g43 ^ g40;
    y1 ^= g42;
    y2 ^= g44;
    y3 ^= g27;
    y4 ^= g25;
}

// 63 gates
template <class V>
VNBYTSTR_INLINE void DesSbox(DesBoxTag<5, false>, const V& x1, const V& x2, const V& x3,
                             const V& x4, const V& x5, const V& x6, V& y1, V& y2, V& y3, V& y4) {
    const V g1 = x5 ^ x1;
    const V g2 = g1 | x3;
    const V g3 = AndNot(g2, x6);
    const V g4 = g1 ^ g3;
    const V g5 = g1 | g3;
    const V g6 = g5 ^ x3;
    const V g7 = AndNot(g6, x1);
    const V g8 = x1 ^ g7;
    const V g9 = g8 & x4;
    const V g10 = g4 ^ g9;
    const V g11 = ~g9;
    const V g12 = x5 ^ x4;
    const V g13 = g12 & x3;
    const V g14 = g11 ^ g13;
    const V g15 = AndNot(g14, g6);
    const V g16 = g15 ^ x4;
    const V g17 = g16 & x5;
    const V g18 = g16 ^ g17;
    const V g19 = AndNot(g18, x6);
    const V g20 = g14 ^ g19;
    const V g21 = g20 & x2;
    const V g22 = g10 ^ g21;
    const V g23 = x2 & g8;
    const V g24 = g22 ^ g6;
    const V g25 = g23 ^ g24;
    const V g26 = g7 ^ g24;
    const V g27 = g26 & x2;
    const V g28 = g18 ^ g27;
    const V g29 = g28 & x6;
    const V g30 = g25 ^ g29;
    const V g31 = x2 ^ g15;
    const V g32 = x6 ^ g30;
    const V g33 = g31 ^ g32;
    const V g34 = g33 & x4;
    const V g35 = g30 ^ g34;
    const V g36 = g29 | g31;
    const V g37 = g36 ^ g10;
    const V g38 = g10 | g32;
    const V g39 = g12 ^ g21;
    const V g40 = g38 ^ g39;
    const V g41 = AndNot(g40, x6);
    const V g42 = g37 ^ g41;
    const V g43 = x3 ^ g35;
    const V g44 = g43 ^ g37;
    const V g45 = g4 ^ g13;
    const V g46 = AndNot(g45, x2);
    const V g47 = g44 ^ g46;
    const V g48 = g47 & x1;
    const V g49 = g42 ^ g48;
    const V g50 = AndNot(g21, x5);
    const V g51 = g36 ^ g11;
    const V g52 = g50 ^ g51;
    const V g53 = AndNot(g33, g39);
    const V g54 = g53 ^ g46;
    const V g55 = g54 & x1;
    const V g56 = g52 ^ g55;
    const V g57 = g6 ^ x5;
    const V g58 = g9 | g53;
    const V g59 = g58 ^ g55;
    const V g60 = AndNot(g59, x2);
    const V g61 = g57 ^ g60;
    const V g62 = g61 & x6;
    const V g63 = g56 ^ g62;
    y1 ^= g63;
    y2 ^= g35;
    y3 ^= g49;
    y4 ^= g22;
}

// 61 gates
template <class V>
VNBYTSTR_INLINE void DesSbox(DesBoxTag<6, false>, const V& x1, const V& x2, const V& x3,
                             const V& x4, const V& x5, const V& x6, V& y1, V& y2, V& y3, V& y4) {
    const V g1 = x1 | x5;
    const V g2 = g1 ^ x2;
    const V g3 = x5 ^ x1;
    const V g4 = g3 & x3;
    const V g5 = g2 ^ g4;
    const V g6 = x3 | g5;
    const V g7 = g6 ^ g3;
    const V g8 = AndNot(g7, x4);
    const V g9 = g5 ^ g8;
    const V g10 = x1 | x4;
    const V g11 = AndNot(g10, g1);
    const V g12 = g11 & x2;
    const V g13 = g10 ^ g12;
    const V g14 = x1 ^ x4;
    const V g15 = AndNot(g14, g6);
    const V g16 = g13 ^ g15;
    const V g17 = g16 & x6;
    const V g18 = g9 ^ g17;
    const V g19 = g7 & g13;
    const V g20 = g19 ^ x4;
    const V g21 = g4 ^ g13;
    const V g22 = g21 | g2;
    const V g23 = g22 & x3;
    const V g24 = g20 ^ g23;
    const V g25 = x6 ^ g5;
    const V g26 = g25 ^ x2;
    const V g27 = AndNot(g22, g6);
    const V g28 = AndNot(g18, g8);
    const V g29 = g27 ^ g28;
    const V g30 = g29 & x5;
    const V g31 = g26 ^ g30;
    const V g32 = g31 & x6;
    const V g33 = g24 ^ g32;
    const V g34 = g33 ^ g31;
    const V g35 = g34 ^ x1;
    const V g36 = g27 ^ x6;
    const V g37 = ~g9;
    const V g38 = AndNot(g37, x4);
    const V g39 = g36 ^ g38;
    const V g40 = AndNot(g39, x1);
    const V g41 = g35 ^ g40;
    const V g42 = x4 | g36;
    const V g43 = g42 ^ g4;
    const V g44 = AndNot(g39, g14);
    const V g45 = g44 ^ g19;
    const V g46 = AndNot(g45, x6);
    const V g47 = g43 ^ g46;
    const V g48 = g47 & x2;
    const V g49 = g41 ^ g48;
    const V g50 = g7 ^ x4;
    const V g51 = g29 ^ g47;
    const V g52 = AndNot(g51, x3);
    const V g53 = AndNot(g52, x5);
    const V g54 = g50 ^ g53;
    const V g55 = g9 ^ x3;
    const V g56 = g55 | g21;
    const V g57 = AndNot(g44, x5);
    const V g58 = AndNot(g57, x2);
    const V g59 = g56 ^ g58;
    const V g60 = g59 & x6;
    const V g61 = g54 ^ g60;
    y1 ^= g61;
    y2 ^= g49;
    y3 ^= g33;
    y4 ^= g18;
}

// 58 gates
template <class V>
VNBYTSTR_INLINE void DesSbox(DesBoxTag<7, false>, const V& x1, const V& x2, const V& x3,
                             const V& x4, const V& x5, const V& x6, V& y1, V& y2, V& y3, V& y4) {
    const V g1 = x4 ^ x3;
    const V g2 = x1 ^ x5;
    const V g3 = g1 ^ g2;
    const V g4 = AndNot(x4, x5);
    const V g5 = g4 ^ x2;
    const V g6 = AndNot(g5, x3);
    const V g7 = g3 ^ g6;
    const V g8 = AndNot(x1, g3);
    const V g9 = AndNot(g5, g8);
    const V g10 = ~g4;
    const V g11 = AndNot(g10, x2);
    const V g12 = g9 ^ g11;
    const V g13 = g12 & x6;
    const V g14 = g7 ^ g13;
    const V g15 = g5 | x4;
    const V g16 = g15 ^ g3;
    const V g17 = g10 & x1;
    const V g18 = g4 ^ g8;
    const V g19 = AndNot(g18, x2);
    const V g20 = g17 ^ g19;
    const V g21 = AndNot(g20, x5);
    const V g22 = g16 ^ g21;
    const V g23 = g2 | x3;
    const V g24 = AndNot(g23, g19);
    const V g25 = AndNot(g23, g1);
    const V g26 = AndNot(g14, g25);
    const V g27 = g26 & x5;
    const V g28 = g24 ^ g27;
    const V g29 = g28 & x6;
    const V g30 = g22 ^ g29;
    const V g31 = x2 ^ g16;
    const V g32 = g31 ^ x6;
    const V g33 = g18 | x6;
    const V g34 = g33 ^ g11;
    const V g35 = g34 & x1;
    const V g36 = g32 ^ g35;
    const V g37 = AndNot(g15, g33);
    const V g38 = AndNot(g22, g35);
    const V g39 = g38 ^ g33;
    const V g40 = g39 & x1;
    const V g41 = g37 ^ g40;
    const V g42 = g41 & x3;
    const V g43 = g36 ^ g42;
    const V g44 = x2 ^ g41;
    const V g45 = AndNot(g44, g32);
    const V g46 = g17 | g45;
    const V g47 = g11 | g36;
    const V g48 = g46 ^ g47;
    const V g49 = AndNot(g48, x4);
    const V g50 = g45 ^ g49;
    const V g51 = x6 & g35;
    const V g52 = g51 ^ g22;
    const V g53 = g38 ^ g17;
    const V g54 = g53 | g49;
    const V g55 = g54 & x3;
    const V g56 = g52 ^ g55;
    const V g57 = g56 & x5;
    const V g58 = g50 ^ g57;
    y1 ^= g43;
    y2 ^= g58;
    y3 ^= g30;
    y4 ^= g14;
}

// 58 gates
template <class V>
VNBYTSTR_INLINE void DesSbox(DesBoxTag<8, false>, const V& x1, const V& x2, const V& x3,
                             const V& x4, const V& x5, const V& x6, V& y1, V& y2, V& y3, V& y4) {
    const V g1 = x3 ^ x1;
    const V g2 = ~g1;
    const V g3 = AndNot(x3, g2);
    const V g4 = g3 | x2;
    const V g5 = g4 & x4;
    const V g6 = g2 ^ g5;
    const V g7 = x3 | g2;
    const V g8 = x2 ^ x1;
    const V g9 = AndNot(g8, x4);
    const V g10 = g7 ^ g9;
    const V g11 = g10 & x5;
    const V g12 = g6 ^ g11;
    const V g13 = g5 | x2;
    const V g14 = g13 ^ g11;
    const V g15 = x4 ^ g7;
    const V g16 = x2 & g10;
    const V g17 = g15 ^ g16;
    const V g18 = AndNot(g17, x5);
    const V g19 = g14 ^ g18;
    const V g20 = g19 & x6;
    const V g21 = g12 ^ g20;
    const V g22 = x1 | g9;
    const V g23 = g22 ^ g17;
    const V g24 = AndNot(g15, x2);
    const V g25 = g9 ^ g1;
    const V g26 = g24 ^ g25;
    const V g27 = AndNot(g26, x5);
    const V g28 = g23 ^ g27;
    const V g29 = g26 | x4;
    const V g30 = g29 & g22;
    const V g31 = AndNot(g4, g26);
    const V g32 = g31 ^ g12;
    const V g33 = g32 & x5;
    const V g34 = g30 ^ g33;
    const V g35 = g34 & x6;
    const V g36 = g28 ^ g35;
    const V g37 = g1 | g34;
    const V g38 = x5 ^ g26;
    const V g39 = g37 ^ g38;
    const V g40 = g23 | x2;
    const V g41 = g34 | g39;
    const V g42 = g40 ^ g41;
    const V g43 = g42 & x3;
    const V g44 = g39 ^ g43;
    const V g45 = g7 | g44;
    const V g46 = AndNot(g30, g6);
    const V g47 = g45 ^ g46;
    const V g48 = g47 & x6;
    const V g49 = g44 ^ g48;
    const V g50 = g21 ^ g19;
    const V g51 = ~g50;
    const V g52 = g9 & x5;
    const V g53 = g52 ^ g44;
    const V g54 = x1 ^ g49;
    const V g55 = g54 & x4;
    const V g56 = g53 ^ g55;
    const V g57 = g56 & x6;
    const V g58 = g51 ^ g57;
    y1 ^= g21;
    y2 ^= g49;
    y3 ^= g36;
    y4 ^= g58;
}

// 33 gates
template <class V>
VNBYTSTR_INLINE void DesSbox(DesBoxTag<1, true>, const V& x1, const V& x2, const V& x3, const V& x4,
                             const V& x5, const V& x6, V& y1, V& y2, V& y3, V& y4) {
    const V g1 = Ternary<0x06>(x5, x6, x3);
    const V g2 = Ternary<0x69>(x6, x3, x5);
    const V g3 = Ternary<0xCA>(x2, g2, g1);
    const V g4 = Ternary<0x3E>(x3, x2, g2);
    const V g5 = Ternary<0xCA>(x4, g3, g4);
    const V g6 = Ternary<0x47>(g5, x5, x6);
    const V g7 = Ternary<0xCA>(x3, g6, g3);
    const V g8 = Ternary<0x8D>(g7, g4, x5);
    const V g9 = Ternary<0xCA>(x4, g8, g7);
    const V g10 = Ternary<0xCA>(x1, g9, g5);
    const V g11 = Ternary<0x07>(g1, x4, x5);
    const V g12 = Ternary<0x47>(g9, x5, x3);
    const V g13 = Ternary<0xCA>(x6, g12, g11);
    const V g14 = Ternary<0x69>(g3, g8, x4);
    const V g15 = Ternary<0xCA>(x2, g14, g13);
    const V g16 = Ternary<0x6D>(g12, g13, g14);
    const V g17 = Ternary<0x61>(g8, g14, g2);
    const V g18 = Ternary<0xCA>(x3, g17, g16);
    const V g19 = Ternary<0xCA>(x1, g18, g15);
    const V g20 = Ternary<0x3A>(g9, x6, g2);
    const V g21 = Ternary<0xB9>(g8, g11, g6);
    const V g22 = Ternary<0xCA>(x2, g21, g20);
    const V g23 = Ternary<0x96>(x4, g19, g22);
    const V g24 = Ternary<0x39>(g23, g14, g7);
    const V g25 = Ternary<0xCA>(x5, g24, g23);
    const V g26 = Ternary<0xCA>(x1, g25, g22);
    const V g27 = Ternary<0x2C>(g20, x1, x5);
    const V g28 = Ternary<0x69>(g10, g26, g19);
    const V g29 = Ternary<0xCA>(x4, g28, g27);
    const V g30 = Ternary<0x2F>(g28, g13, g10);
    const V g31 = Ternary<0x69>(g5, g17, g27);
    const V g32 = Ternary<0xCA>(x6, g31, g30);
    const V g33 = Ternary<0xCA>(x2, g32, g29);
    y1 ^= g26;
    y2 ^= g19;
    y3 ^= g10;
    y4 ^= g33;
}

// 33 gates
template <class V>
VNBYTSTR_INLINE void DesSbox(DesBoxTag<2, true>, const V& x1, const V& x2, const V& x3, const V& x4,
                             const V& x5, const V& x6, V& y1, V& y2, V& y3, V& y4) {
    const V g1 = Ternary<0x39>(x3, x2, x4);
    const V g2 = Ternary<0x2D>(g1, x4, x3);
    const V g3 = Ternary<0xCA>(x5, g2, g1);
    const V g4 = Ternary<0x71>(x3, x2, x5);
    const V g5 = Ternary<0x9A>(x2, g1, x5);
    const V g6 = Ternary<0xCA>(x4, g5, g4);
    const V g7 = Ternary<0xCA>(x6, g6, g3);
    const V g8 = Ternary<0xD8>(x6, g2, g4);
    const V g9 = Ternary<0x96>(x3, g5, x6);
    const V g10 = Ternary<0xCA>(x5, g9, g8);
    const V g11 = Ternary<0xCA>(x1, g10, g7);
    const V g12 = Ternary<0x95>(g5, x4, g9);
    const V g13 = Ternary<0x65>(x3, g12, g3);
    const V g14 = Ternary<0xCA>(x2, g13, g12);
    const V g15 = Ternary<0x69>(g14, g8, x3);
    const V g16 = Ternary<0x60>(x6, g4, g15);
    const V g17 = Ternary<0xCA>(x6, g16, g3);
    const V g18 = Ternary<0xCA>(x4, g17, g15);
    const V g19 = Ternary<0xCA>(x1, g18, g14);
    const V g20 = Ternary<0x69>(g18, g2, x1);
    const V g21 = Ternary<0x72>(g12, g3, x4);
    const V g22 = Ternary<0x6A>(g20, g12, g13);
    const V g23 = Ternary<0xCA>(x1, g22, g21);
    const V g24 = Ternary<0xCA>(x2, g23, g20);
    const V g25 = Ternary<0x69>(g7, g20, g2);
    const V g26 = Ternary<0xCA>(x6, g25, g24);
    const V g27 = Ternary<0xA3>(g19, g17, g25);
    const V g28 = Ternary<0x26>(g7, x4, g22);
    const V g29 = Ternary<0xCA>(x2, g28, g27);
    const V g30 = Ternary<0x56>(g14, g13, g15);
    const V g31 = Ternary<0x91>(g28, x6, g8);
    const V g32 = Ternary<0xCA>(x1, g31, g30);
    const V g33 = Ternary<0xCA>(x3, g32, g29);
    y1 ^= g19;
    y2 ^= g26;
    y3 ^= g11;
    y4 ^= g33;
}

// 32 gates
template <class V>
VNBYTSTR_INLINE void DesSbox(DesBoxTag<3, true>, const V& x1, const V& x2, const V& x3, const V& x4,
                             const V& x5, const V& x6, V& y1, V& y2, V& y3, V& y4) {
    const V g1 = Ternary<0x96>(x2, x6, x4);
    const V g2 = Ternary<0x96>(x6, x2, x3);
    const V g3 = Ternary<0xCA>(x5, g2, g1);
    const V g4 = Ternary<0xD1>(g2, g3, x3);
    const V g5 = Ternary<0x2E>(g3, x4, x3);
    const V g6 = Ternary<0xCA>(x5, g5, g4);
    const V g7 = Ternary<0x39>(g2, x4, g6);
    const V g8 = Ternary<0xCA>(x2, g7, g6);
    const V g9 = Ternary<0xCA>(x1, g8, g3);
    const V g10 = Ternary<0x69>(g4, g3, x1);
    const V g11 = Ternary<0x62>(g7, x1, g1);
    const V g12 = Ternary<0xCA>(x5, g11, g10);
    const V g13 = Ternary<0x90>(x4, g11, g6);
    const V g14 = Ternary<0xCA>(x4, g13, g12);
    const V g15 = Ternary<0xE2>(g2, g5, x4);
    const V g16 = Ternary<0xCA>(x5, g14, g15);
    const V g17 = Ternary<0xCA>(x1, g14, g16);
    const V g18 = Ternary<0xCA>(x2, g17, g12);
    const V g19 = Ternary<0xA9>(g11, g4, g8);
    const V g20 = Ternary<0x62>(g6, g19, g10);
    const V g21 = Ternary<0xCA>(x3, g19, g20);
    const V g22 = Ternary<0x1E>(g6, x1, g11);
    const V g23 = Ternary<0x89>(g17, g14, g12);
    const V g24 = Ternary<0xCA>(x4, g23, g22);
    const V g25 = Ternary<0xCA>(x6, g24, g21);
    const V g26 = Ternary<0x96>(g22, x2, g10);
    const V g27 = Ternary<0x97>(x6, g10, g15);
    const V g28 = Ternary<0xCA>(x4, g27, g26);
    const V g29 = Ternary<0x91>(g25, g12, g4);
    const V g30 = Ternary<0x3D>(g18, g21, g3);
    const V g31 = Ternary<0xCA>(x6, g30, g29);
    const V g32 = Ternary<0xCA>(x3, g31, g28);
    y1 ^= g32;
    y2 ^= g18;
    y3 ^= g25;
    y4 ^= g9;
}

// 23 gates
template <class V>
VNBYTSTR_INLINE void DesSbox(DesBoxTag<4, true>, const V& x1, const V& x2, const V& x3, const V& x4,
                             const V& x5, const V& x6, V& y1, V& y2, V& y3, V& y4) {
    const V g1 = Ternary<0xAD>(x3, x1, x5);
    const V g2 = Ternary<0x1E>(x1, x5, g1);
    const V g3 = Ternary<0xCA>(x4, g2, g1);
    const V g4 = Ternary<0x91>(x3, g3, x4);
    const V g5 = Ternary<0x59>(x4, x5, x3);
    const V g6 = Ternary<0xCA>(x1, g5, g4);
    const V g7 = Ternary<0xCA>(x2, g6, g3);
    const V g8 = Ternary<0x69>(g5, x4, x5);
    const V g9 = Ternary<0x25>(g2, x4, g8);
    const V g10 = Ternary<0xCA>(x1, g9, g8);
    const V g11 = Ternary<0x84>(g3, x2, g8);
    const V g12 = Ternary<0x95>(g5, g2, g10);
    const V g13 = Ternary<0xCA>(x3, g12, g11);
    const V g14 = Ternary<0xCA>(x2, g13, g10);
    const V g15 = Ternary<0xCA>(x6, g14, g7);
    const V g16 = Ternary<0xD8>(g2, g9, x2);
    const V g17 = Ternary<0x96>(g16, g5, g1);
    const V g18 = Ternary<0xA7>(g6, g2, g12);
    const V g19 = Ternary<0x29>(g18, g13, g3);
    const V g20 = Ternary<0xCA>(x2, g18, g19);
    const V g21 = Ternary<0xCA>(x6, g20, g17);
    const V g22 = Ternary<0x8B>(g14, x6, g7);
    const V g23 = Ternary<0x8D>(g20, g17, x6);
    y1 ^= g23;
    y2 ^= g21;
    y3 ^= g15;
    y4 ^= g22;
}

// 35 gates
template <class V>
VNBYTSTR_INLINE void DesSbox(DesBoxTag<5, true>, const V& x1, const V& x2, const V& x3, const V& x4,
                             const V& x5, const V& x6, V& y1, V& y2, V& y3, V& y4) {
    const V g1 = Ternary<0x4D>(x3, x2, x6);
    const V g2 = Ternary<0x96>(x6, x3, x2);
    const V g3 = Ternary<0xCA>(x4, g2, g1);
    const V g4 = Ternary<0x1D>(g2, x2, g3);
    const V g5 = Ternary<0xCA>(x1, g3, g4);
    const V g6 = Ternary<0xB4>(g2, x1, x4);
    const V g7 = Ternary<0x06>(g5, g3, x1);
    const V g8 = Ternary<0xCA>(x3, g7, g6);
    const V g9 = Ternary<0x4B>(g5, x6, g8);
    const V g10 = Ternary<0xCA>(x4, g8, g9);
    const V g11 = Ternary<0xCA>(x2, g8, g10);
    const V g12 = Ternary<0xCA>(x5, g11, g5);
    const V g13 = Ternary<0x67>(x1, g10, x6);
    const V g14 = Ternary<0x4A>(g5, g6, g10);
    const V g15 = Ternary<0xCA>(x4, g14, g13);
    const V g16 = Ternary<0x91>(g6, g15, g13);
    const V g17 = Ternary<0xCA>(x5, g16, g15);
    const V g18 = Ternary<0x63>(g1, x4, x1);
    const V g19 = Ternary<0xC2>(g9, x4, g14);
    const V g20 = Ternary<0xCA>(x5, g19, g18);
    const V g21 = Ternary<0xCA>(x2, g20, g17);
    const V g22 = Ternary<0x66>(g12, g11, g21);
    const V g23 = Ternary<0xA4>(g8, g13, g2);
    const V g24 = Ternary<0xCA>(x3, g23, g22);
    const V g25 = Ternary<0x97>(g13, g5, g17);
    const V g26 = Ternary<0x72>(g18, g22, x1);
    const V g27 = Ternary<0xCA>(x2, g26, g25);
    const V g28 = Ternary<0xCA>(x5, g27, g24);
    const V g29 = Ternary<0x8D>(g11, g9, g26);
    const V g30 = Ternary<0xB9>(x2, g29, g7);
    const V g31 = Ternary<0xCA>(x5, g30, g29);
    const V g32 = Ternary<0x29>(g11, g26, g16);
    const V g33 = Ternary<0x63>(g15, g25, g30);
    const V g34 = Ternary<0xCA>(x5, g33, g32);
    const V g35 = Ternary<0xCA>(x3, g34, g31);
    y1 ^= g28;
    y2 ^= g12;
    y3 ^= g21;
    y4 ^= g35;
}

// 32 gates
template <class V>
VNBYTSTR_INLINE void DesSbox(DesBoxTag<6, true>, const V& x1, const V& x2, const V& x3, const V& x4,
                             const V& x5, const V& x6, V& y1, V& y2, V& y3, V& y4) {
    const V g1 = Ternary<0x66>(x2, x5, x1);
    const V g2 = Ternary<0x36>(g1, x2, x1);
    const V g3 = Ternary<0xCA>(x4, g2, g1);
    const V g4 = Ternary<0x4B>(g2, x4, g1);
    const V g5 = Ternary<0xCA>(x3, g4, g3);
    const V g6 = Ternary<0x29>(x4, g4, x3);
    const V g7 = Ternary<0xCA>(x2, g3, g6);
    const V g8 = Ternary<0x1E>(g4, x5, x3);
    const V g9 = Ternary<0xCA>(x1, g8, g7);
    const V g10 = Ternary<0xCA>(x6, g9, g5);
    const V g11 = Ternary<0x1E>(g1, x3, g8);
    const V g12 = Ternary<0xA9>(g5, x3, g1);
    const V g13 = Ternary<0xCA>(x4, g12, g11);
    const V g14 = Ternary<0x72>(g8, g13, x5);
    const V g15 = Ternary<0x86>(g11, x4, g14);
    const V g16 = Ternary<0xCA>(x2, g15, g14);
    const V g17 = Ternary<0xCA>(x6, g16, g13);
    const V g18 = Ternary<0x1A>(g15, g1, g6);
    const V g19 = Ternary<0x29>(g5, g18, g3);
    const V g20 = Ternary<0xCA>(x6, g18, g19);
    const V g21 = Ternary<0x85>(g8, g19, g9);
    const V g22 = Ternary<0xCA>(x3, g8, g21);
    const V g23 = Ternary<0x93>(x4, g22, g16);
    const V g24 = Ternary<0xCA>(x6, g22, g23);
    const V g25 = Ternary<0xCA>(x5, g24, g20);
    const V g26 = Ternary<0x9D>(g4, g25, g6);
    const V g27 = Ternary<0x94>(g15, g26, x3);
    const V g28 = Ternary<0xCA>(x1, g27, g26);
    const V g29 = Ternary<0x9C>(g28, g20, x3);
    const V g30 = Ternary<0x8B>(g13, g8, g12);
    const V g31 = Ternary<0xCA>(x2, g30, g29);
    const V g32 = Ternary<0xCA>(x6, g31, g28);
    y1 ^= g17;
    y2 ^= g25;
    y3 ^= g32;
    y4 ^= g10;
}

// 33 gates
template <class V>
VNBYTSTR_INLINE void DesSbox(DesBoxTag<7, true>, const V& x1, const V& x2, const V& x3, const V& x4,
                             const V& x5, const V& x6, V& y1, V& y2, V& y3, V& y4) {
    const V g1 = Ternary<0x96>(x5, x3, x6);
    const V g2 = Ternary<0xB4>(x5, x6, x3);
    const V g3 = Ternary<0xCA>(x2, g2, g1);
    const V g4 = Ternary<0x1E>(x2, g2, g1);
    const V g5 = Ternary<0xCA>(x4, g4, g3);
    const V g6 = Ternary<0x96>(g4, g2, x4);
    const V g7 = Ternary<0xED>(g2, x4, x2);
    const V g8 = Ternary<0x48>(g6, x4, g1);
    const V g9 = Ternary<0xCA>(x3, g8, g7);
    const V g10 = Ternary<0xCA>(x5, g9, g6);
    const V g11 = Ternary<0xCA>(x1, g10, g5);
    const V g12 = Ternary<0xD1>(g5, x1, x5);
    const V g13 = Ternary<0x98>(g10, x1, g12);
    const V g14 = Ternary<0xCA>(x4, g13, g12);
    const V g15 = Ternary<0xEA>(g9, x6, g1);
    const V g16 = Ternary<0x2B>(g2, g12, g10);
    const V g17 = Ternary<0xCA>(x6, g16, g5);
    const V g18 = Ternary<0xCA>(x1, g17, g15);
    const V g19 = Ternary<0xCA>(x2, g18, g14);
    const V g20 = Ternary<0x8B>(g7, x3, g18);
    const V g21 = Ternary<0x19>(x3, g15, g10);
    const V g22 = Ternary<0xCA>(x1, g21, g20);
    const V g23 = Ternary<0x96>(g5, g19, x3);
    const V g24 = Ternary<0xB6>(g14, g9, g15);
    const V g25 = Ternary<0xCA>(x1, g24, g23);
    const V g26 = Ternary<0xCA>(x4, g25, g22);
    const V g27 = Ternary<0xB4>(x4, g17, g21);
    const V g28 = Ternary<0x24>(g8, g6, g13);
    const V g29 = Ternary<0xCA>(x2, g28, g27);
    const V g30 = Ternary<0x25>(g22, g1, x2);
    const V g31 = Ternary<0x16>(g29, x5, g30);
    const V g32 = Ternary<0xCA>(x4, g30, g31);
    const V g33 = Ternary<0xCA>(x1, g32, g29);
    y1 ^= g11;
    y2 ^= g19;
    y3 ^= g33;
    y4 ^= g26;
}

// 34 gates
template <class V>
VNBYTSTR_INLINE void DesSbox(DesBoxTag<8, true>, const V& x1, const V& x2, const V& x3, const V& x4,
                             const V& x5, const V& x6, V& y1, V& y2, V& y3, V& y4) {
    const V g1 = Ternary<0x59>(x4, x3, x5);
    const V g2 = Ternary<0x8D>(x4, x3, g1);
    const V g3 = Ternary<0xCA>(x1, g2, g1);
    const V g4 = Ternary<0x46>(g1, g3, x5);
    const V g5 = Ternary<0x2D>(g3, x1, x3);
    const V g6 = Ternary<0xCA>(x4, g5, g4);
    const V g7 = Ternary<0xCA>(x2, g6, g3);
    const V g8 = Ternary<0xC9>(x1, x2, g1);
    const V g9 = Ternary<0x9D>(x2, g1, x1);
    const V g10 = Ternary<0xCA>(x4, g9, g8);
    const V g11 = Ternary<0xC9>(x5, x1, x4);
    const V g12 = Ternary<0xCA>(x2, g5, g11);
    const V g13 = Ternary<0xCA>(x3, g12, g10);
    const V g14 = Ternary<0xCA>(x6, g13, g7);
    const V g15 = Ternary<0x94>(g1, x5, x6);
    const V g16 = Ternary<0xCA>(x1, g15, g2);
    const V g17 = Ternary<0x65>(g11, g16, x4);
    const V g18 = Ternary<0xCA>(x3, g16, g17);
    const V g19 = Ternary<0x92>(g3, g15, g13);
    const V g20 = Ternary<0x41>(g14, g13, g18);
    const V g21 = Ternary<0xCA>(x4, g20, g19);
    const V g22 = Ternary<0xCA>(x2, g21, g18);
    const V g23 = Ternary<0x96>(g2, x6, g6);
    const V g24 = Ternary<0x96>(g6, g23, x5);
    const V g25 = Ternary<0xCA>(x2, g24, g23);
    const V g26 = Ternary<0xB8>(g9, x6, g6);
    const V g27 = Ternary<0x65>(g18, g17, g26);
    const V g28 = Ternary<0xCA>(x2, g27, g26);
    const V g29 = Ternary<0xCA>(x1, g28, g25);
    const V g30 = Ternary<0x55>(g8, g26, g13);
    const V g31 = Ternary<0x96>(g21, g29, g13);
    const V g32 = Ternary<0x6D>(x2, g31, g21);
    const V g33 = Ternary<0xCA>(x5, g32, g31);
    const V g34 = Ternary<0xCA>(x6, g33, g30);
    y1 ^= g14;
    y2 ^= g29;
    y3 ^= g22;
    y4 ^= g34;
}

// Together 462 gates with two inputs, 255 with three.

} // namespace vnbytstr::detail
