// Searches for small gate circuits of the eight S-boxes of DES (FIPS 46-3) and writes them as a C++
// header. Not part of the library; run it to make src/crypto/DesSboxes.h anew:
//
//     sbox_search SECONDS SEED > src/crypto/DesSboxes.h        (SECONDS for each S-box and kind of
//     gate)
//
// A function of six bits is a truth table of 64 bits, one per input. A circuit for an output bit
// grows from the gates there are already, those of the other output bits included: when the wanted
// function, looked at only where it matters, is a gate or one to three gates away, these are taken;
// else an input bit splits the question into two with half the places that matter, and a
// multiplexer joins the answers (Shannon's expansion, with the cells that do not matter left open).
// Which bit splits, and in which order the outputs come, is tried at random; the smallest circuit
// that was found stays.
//
// Two kinds of circuits: of the gates and, or, xor, and-not with two inputs, and of gates with
// three inputs that compute any function (vpternlogq of AVX-512).
#include "src/crypto/DesTables.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

using Table = std::uint64_t;

using vnbytstr::detail::kDesSboxes;

// The inputs x1 (the most significant of the six) to x6, as functions of themselves.
Table InputTable(unsigned input) {
    Table table = 0;
    for (unsigned i = 0; i < 64; ++i)
        table |= Table{i >> (5 - input) & 1u} << i;
    return table;
}

// Output bit y1 (the most significant of the four) to y4.
Table OutputTable(unsigned box, unsigned output) {
    Table table = 0;
    for (unsigned i = 0; i < 64; ++i) {
        const unsigned row = (i >> 4 & 2) | (i & 1);
        const unsigned column = i >> 1 & 15;
        table |= Table{kDesSboxes[box][row * 16 + column] >> (3 - output) & 1u} << i;
    }
    return table;
}

enum class Op { Input, And, Or, Xor, AndNot, Not, Ternary }; // AndNot: a & ~b

struct Gate {
    Op op;
    int a, b, c;
    unsigned function; // of a ternary gate: bit 4a + 2b + c
    Table table;
};

Table Apply(Op op, Table a, Table b) {
    switch (op) {
    case Op::And:
        return a & b;
    case Op::Or:
        return a | b;
    case Op::Xor:
        return a ^ b;
    default:
        return a & ~b;
    }
}

using Circuit = std::vector<Gate>; // begins with the six inputs

int Append(Circuit& circuit, Op op, int a, int b) {
    const Table at = circuit[static_cast<std::size_t>(a)].table;
    const Table table =
        op == Op::Not ? ~at : Apply(op, at, circuit[static_cast<std::size_t>(b)].table);
    for (std::size_t i = 0; i < circuit.size(); ++i) {
        if (circuit[i].table == table)
            return static_cast<int>(i);
    }
    circuit.push_back({op, a, b, -1, 0, table});
    return static_cast<int>(circuit.size()) - 1;
}

class Search {
public:
    Search(bool ternary, unsigned seed) : m_ternary(ternary), m_random(seed) {}

    // Adds gates to `circuit` until one of them is `target` wherever `mask` is set; its index.
    // Gives up
    // (-1) when that takes the circuit to `limit` gates.
    int Build(Circuit& circuit, Table target, Table mask, unsigned freeInputs, std::size_t limit,
              unsigned depth) {
        int found =
            m_ternary ? FindTernary(circuit, target, mask) : FindBinary(circuit, target, mask);
        if (found >= 0)
            return circuit.size() <= limit ? found : -1;
        if (circuit.size() + (m_ternary ? 1 : 2) > limit)
            return -1;
        std::vector<unsigned> inputs;
        for (unsigned i = 0; i < 6; ++i) {
            if (freeInputs >> i & 1)
                inputs.push_back(i);
        }
        std::shuffle(inputs.begin(), inputs.end(), m_random);
        static constexpr std::size_t kTried[] = {1, 2, 3, 4, 4, 4};
        inputs.resize(std::min(inputs.size(), kTried[depth]));
        std::optional<Circuit> best;
        for (unsigned input : inputs) {
            for (int side = 0; side < 2; ++side) {
                Circuit attempt = circuit;
                found = Split(attempt, target, mask, freeInputs, limit, depth, input, side != 0);
                if (found >= 0) {
                    limit = attempt.size() - 1;
                    best = std::move(attempt);
                    m_indexOfBest[depth] = found;
                }
                if (depth == 0)
                    break;
            }
        }
        if (!best)
            return -1;
        circuit = std::move(*best);
        return m_indexOfBest[depth];
    }

private:
    int Split(Circuit& circuit, Table target, Table mask, unsigned freeInputs, std::size_t limit,
              unsigned depth, unsigned input, bool oneFirst) {
        const Table selector = circuit[input].table;
        const Table firstMask = mask & (oneFirst ? selector : ~selector);
        const unsigned rest = freeInputs & ~(1u << input);
        const std::size_t cost = m_ternary ? 1 : 2;
        const int first = Build(circuit, target, firstMask, rest, limit - cost, depth + 1);
        if (first < 0)
            return -1;
        const Table known = circuit[static_cast<std::size_t>(first)].table;
        const Table otherMask = mask & ~firstMask;
        if (m_ternary) {
            const int second = Build(circuit, target, otherMask, rest, limit - 1, depth + 1);
            if (second < 0)
                return -1;
            const int zero = oneFirst ? second : first;
            const int one = oneFirst ? first : second;
            return AppendTernary(circuit, static_cast<int>(input), one, zero, 0xCA);
        }
        const int change = Build(circuit, target ^ known, otherMask, rest, limit - 2, depth + 1);
        if (change < 0)
            return -1;
        const int part = oneFirst ? Append(circuit, Op::AndNot, change, static_cast<int>(input))
                                  : Append(circuit, Op::And, change, static_cast<int>(input));
        return Append(circuit, Op::Xor, first, part);
    }

    static int AppendTernary(Circuit& circuit, int a, int b, int c, unsigned function) {
        const Table x = circuit[static_cast<std::size_t>(a)].table;
        const Table y = circuit[static_cast<std::size_t>(b)].table;
        const Table z = circuit[static_cast<std::size_t>(c)].table;
        Table table = 0;
        for (unsigned i = 0; i < 8; ++i) {
            if (function >> i & 1)
                table |= (i & 4 ? x : ~x) & (i & 2 ? y : ~y) & (i & 1 ? z : ~z);
        }
        for (std::size_t i = 0; i < circuit.size(); ++i) {
            if (circuit[i].table == table)
                return static_cast<int>(i);
        }
        circuit.push_back({Op::Ternary, a, b, c, function, table});
        return static_cast<int>(circuit.size()) - 1;
    }

    // One gate for each function that can be told apart under the mask.
    std::vector<int> Distinct(const Circuit& circuit, Table mask) {
        std::vector<int> kept;
        std::unordered_map<Table, int> seen;
        std::vector<int> order(circuit.size());
        for (std::size_t i = 0; i < order.size(); ++i)
            order[i] = static_cast<int>(i);
        std::shuffle(order.begin(), order.end(), m_random);
        for (int i : order) {
            const Table value = circuit[static_cast<std::size_t>(i)].table & mask;
            if (seen.emplace(value, i).second)
                kept.push_back(i);
        }
        return kept;
    }

    int FindTernary(Circuit& circuit, Table target, Table mask) {
        for (std::size_t i = 0; i < circuit.size(); ++i) {
            if (((circuit[i].table ^ target) & mask) == 0)
                return static_cast<int>(i);
        }
        const std::vector<int> gates = Distinct(circuit, mask);
        const auto table = [&](int gate) { return circuit[static_cast<std::size_t>(gate)].table; };
        for (std::size_t i = 0; i < gates.size(); ++i) {
            for (std::size_t j = i + 1; j < gates.size(); ++j) {
                const Table x = table(gates[i]);
                const Table y = table(gates[j]);
                const Table cells[4] = {mask & ~x & ~y, mask & ~x & y, mask & x & ~y, mask & x & y};
                // The cells that the pair leaves undecided, for the third to decide.
                bool split[4];
                for (int q = 0; q < 4; ++q)
                    split[q] = (cells[q] & target) != 0 && (cells[q] & ~target) != 0;
                for (std::size_t k = j + 1; k <= gates.size(); ++k) {
                    if (k == gates.size() && (split[0] || split[1] || split[2] || split[3]))
                        break;
                    const Table z = k == gates.size() ? x : table(gates[k]);
                    unsigned function = 0;
                    bool fits = true;
                    for (unsigned q = 0; q < 4 && fits; ++q) {
                        for (unsigned side = 0; side < 2; ++side) {
                            const Table cell = cells[q] & (side ? z : ~z);
                            const bool on = (cell & target) != 0;
                            fits = fits && !(on && (cell & ~target) != 0);
                            function |= unsigned{on} << (q * 2 + side);
                        }
                    }
                    if (fits)
                        return AppendTernary(circuit, gates[i], gates[j],
                                             k == gates.size() ? gates[i] : gates[k], function);
                }
            }
        }
        return -1;
    }

    struct Pair {
        Op op;
        int a, b;
        Table table;
    };

    int FindBinary(Circuit& circuit, Table target, Table mask) {
        const Table wanted = target & mask;
        for (std::size_t i = 0; i < circuit.size(); ++i) {
            if ((circuit[i].table & mask) == wanted)
                return static_cast<int>(i);
        }
        for (std::size_t i = 0; i < circuit.size(); ++i) {
            if ((~circuit[i].table & mask) == wanted)
                return Append(circuit, Op::Not, static_cast<int>(i), -1);
        }
        const std::vector<int> gates = Distinct(circuit, mask);
        std::vector<Pair> pairs;
        for (std::size_t i = 0; i < gates.size(); ++i) {
            for (std::size_t j = i + 1; j < gates.size(); ++j) {
                const Table x = circuit[static_cast<std::size_t>(gates[i])].table;
                const Table y = circuit[static_cast<std::size_t>(gates[j])].table;
                for (Op op : {Op::And, Op::Or, Op::Xor, Op::AndNot})
                    pairs.push_back({op, gates[i], gates[j], Apply(op, x, y)});
                pairs.push_back({Op::AndNot, gates[j], gates[i], y & ~x});
            }
        }
        for (const Pair& pair : pairs) {
            if ((pair.table & mask) == wanted)
                return Append(circuit, pair.op, pair.a, pair.b);
        }
        return FindTwoAway(circuit, wanted, mask, gates, pairs);
    }

    // target = pair op gate, or pair xor pair.
    int FindTwoAway(Circuit& circuit, Table wanted, Table mask, const std::vector<int>& gates,
                    const std::vector<Pair>& pairs) {
        std::unordered_map<Table, const Pair*> byTable;
        byTable.reserve(pairs.size() * 2);
        for (const Pair& pair : pairs)
            byTable.emplace(pair.table & mask, &pair);
        const auto add = [&](const Pair& pair) { return Append(circuit, pair.op, pair.a, pair.b); };
        const auto lookUp = [&](Table table) -> const Pair* {
            const auto hit = byTable.find(table & mask);
            return hit == byTable.end() ? nullptr : hit->second;
        };
        for (int gate : gates) {
            const Table k = circuit[static_cast<std::size_t>(gate)].table;
            if (const Pair* pair = lookUp(wanted ^ k))
                return Append(circuit, Op::Xor, add(*pair), gate);
            const auto scan = [&](Table value, Table where) -> const Pair* {
                for (const Pair& pair : pairs) {
                    if (((pair.table ^ value) & where) == 0)
                        return &pair;
                }
                return nullptr;
            };
            if ((wanted & ~k) == 0) {
                if (const Pair* pair = scan(wanted, mask & k))
                    return Append(circuit, Op::And, add(*pair), gate);
                if (const Pair* pair = scan(~wanted, mask & k))
                    return Append(circuit, Op::AndNot, gate, add(*pair));
            }
            if ((wanted & k) == 0) {
                if (const Pair* pair = scan(wanted, mask & ~k))
                    return Append(circuit, Op::AndNot, add(*pair), gate);
            }
            if ((k & ~wanted & mask) == 0) {
                if (const Pair* pair = scan(wanted, mask & ~k))
                    return Append(circuit, Op::Or, add(*pair), gate);
            }
        }
        if (const Pair* pair = lookUp(~wanted))
            return Append(circuit, Op::Not, add(*pair), -1);
        for (const Pair& pair : pairs) {
            if (const Pair* other = lookUp(wanted ^ pair.table)) {
                const int one = add(pair);
                return Append(circuit, Op::Xor, one, add(*other));
            }
        }
        return -1;
    }

    bool m_ternary;
    std::mt19937 m_random;
    std::array<int, 8> m_indexOfBest{};
};

struct Result {
    Circuit circuit;
    std::array<int, 4> outputs{};
};

std::size_t GatesOf(const Result& result) { return result.circuit.size() - 6; }

// Drops gates that no output needs.
Result Pruned(const Result& result) {
    std::vector<bool> used(result.circuit.size(), false);
    for (int output : result.outputs)
        used[static_cast<std::size_t>(output)] = true;
    for (std::size_t i = result.circuit.size(); i-- > 0;) {
        if (!used[i])
            continue;
        for (int input : {result.circuit[i].a, result.circuit[i].b, result.circuit[i].c}) {
            if (input >= 0)
                used[static_cast<std::size_t>(input)] = true;
        }
    }
    Result pruned;
    std::vector<int> moved(result.circuit.size(), -1);
    for (std::size_t i = 0; i < result.circuit.size(); ++i) {
        if (i >= 6 && !used[i])
            continue;
        Gate gate = result.circuit[i];
        for (int* input : {&gate.a, &gate.b, &gate.c}) {
            if (*input >= 0)
                *input = moved[static_cast<std::size_t>(*input)];
        }
        moved[i] = static_cast<int>(pruned.circuit.size());
        pruned.circuit.push_back(gate);
    }
    for (std::size_t i = 0; i < 4; ++i)
        pruned.outputs[i] = moved[static_cast<std::size_t>(result.outputs[i])];
    return pruned;
}

Result FindCircuit(unsigned box, bool ternary, double seconds, unsigned seed) {
    Circuit inputs;
    for (unsigned i = 0; i < 6; ++i)
        inputs.push_back({Op::Input, -1, -1, -1, 0, InputTable(i)});
    Search search(ternary, seed);
    std::mt19937 random(seed + 1);
    Result best;
    best.circuit.resize(6 + 200, Gate{});
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (std::chrono::steady_clock::now() < end) {
        Result attempt{inputs, {}};
        std::array<unsigned, 4> order = {0, 1, 2, 3};
        std::shuffle(order.begin(), order.end(), random);
        bool complete = true;
        for (unsigned output : order) {
            attempt.outputs[output] = search.Build(attempt.circuit, OutputTable(box, output),
                                                   ~Table{0}, 0x3F, best.circuit.size() - 1, 0);
            complete = complete && attempt.outputs[output] >= 0;
            if (!complete)
                break;
        }
        if (complete) {
            attempt = Pruned(attempt);
            if (attempt.circuit.size() < best.circuit.size()) {
                best = attempt;
                std::fprintf(stderr, "S%u %s %zu\n", box + 1, ternary ? "ternary" : "binary",
                             GatesOf(best));
            }
        }
    }
    return best;
}

std::string Name(int gate) {
    return gate < 6 ? "x" + std::to_string(gate + 1) : "g" + std::to_string(gate - 5);
}

void Print(const Result& result, unsigned box, bool ternary) {
    std::printf("// %zu gates\ntemplate <class V>\nVNBYTSTR_INLINE void DesSbox(DesBoxTag<%u, %s>, "
                "const V& x1, "
                "const V& x2, const V& x3,\n                             const V& x4, const V& x5, "
                "const V& x6, "
                "V& y1, V& y2, V& y3, V& y4) {\n",
                GatesOf(result), box + 1, ternary ? "true" : "false");
    for (std::size_t i = 6; i < result.circuit.size(); ++i) {
        const Gate& gate = result.circuit[i];
        const std::string a = Name(gate.a);
        const std::string b = gate.b >= 0 ? Name(gate.b) : "";
        std::printf("    const V %s = ", Name(static_cast<int>(i)).c_str());
        switch (gate.op) {
        case Op::And:
            std::printf("%s & %s;\n", a.c_str(), b.c_str());
            break;
        case Op::Or:
            std::printf("%s | %s;\n", a.c_str(), b.c_str());
            break;
        case Op::Xor:
            std::printf("%s ^ %s;\n", a.c_str(), b.c_str());
            break;
        case Op::AndNot:
            std::printf("AndNot(%s, %s);\n", a.c_str(), b.c_str());
            break;
        case Op::Not:
            std::printf("~%s;\n", a.c_str());
            break;
        default:
            std::printf("Ternary<0x%02X>(%s, %s, %s);\n", gate.function, a.c_str(), b.c_str(),
                        Name(gate.c).c_str());
        }
    }
    for (std::size_t i = 0; i < 4; ++i)
        std::printf("    y%zu ^= %s;\n", i + 1, Name(result.outputs[i]).c_str());
    std::printf("}\n\n");
}

} // namespace

int main(int argc, char** argv) {
    const double seconds = argc > 1 ? std::strtod(argv[1], nullptr) : 10;
    const unsigned seed = argc > 2 ? static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10)) : 1;
    const bool kinds[] = {false, true};
    std::printf(
        "// Gate circuits of the S-boxes of DES (FIPS 46-3), found and written by\n"
        "// src/crypto/tools/SboxSearch.cpp; do not edit. Each takes the six input bits, the most\n"
        "// significant first, and xors the four output bits to y1 to y4. AndNot(a, b) is a & ~b;\n"
        "// Ternary<f>(a, b, c) is bit 4a + 2b + c of f.\n"
        "#pragma once\n\n#include \"crypto/DesGates.h\"\n\nnamespace vnbytstr::detail {\n\n");
    std::size_t totals[2] = {};
    for (const bool ternary : kinds) {
        for (unsigned box = 0; box < 8; ++box) {
            const Result result = FindCircuit(box, ternary, seconds, seed + box * 100);
            Print(result, box, ternary);
            totals[ternary] += GatesOf(result);
        }
    }
    std::printf("// Together %zu gates with two inputs, %zu with three.\n\n} // namespace "
                "vnbytstr::detail\n",
                totals[0], totals[1]);
}
