#include "vnquery/window/VariableKind.h"

#include "vnbytstr/GlobalVars.h"

#include <charconv>

namespace vnquery {

namespace {

constexpr long kLimit = 2147483647;

bool Accepts(const std::string& name, const std::string& value) {
    const CString variable(name.c_str());
    const CString text(value.c_str());
    return GetGlobals().Validate(&variable, &text, nullptr) == CGlobalVars::Success;
}

bool Accepts(const std::string& name, long value) { return Accepts(name, std::to_string(value)); }

/// The last accepted number from `inside`, which is accepted, towards `limit`. Accepted numbers
/// have no gaps.
long FindEdge(const std::string& name, long inside, long limit) {
    if (Accepts(name, limit))
        return limit;
    long outside = limit;
    while (inside - outside > 1 || outside - inside > 1) {
        const long middle = inside + (outside - inside) / 2;
        (Accepts(name, middle) ? inside : outside) = middle;
    }
    return inside;
}

} // namespace

VariableKind FindVariableKind(const std::string& name, const std::string& value) {
    const CString variable(name.c_str());
    const CString text(value.c_str());
    constexpr int kCheckOnly = 1;
    constexpr int kByUser = 1;
    if (GetGlobals().SetGlobalVarValue(&variable, &text, nullptr, nullptr, kCheckOnly, kByUser) ==
        CGlobalVars::ProgramOnly)
        return {VariableKind::Form::ReadOnly, 0, 0};
    if (Accepts(name, "x"))
        return {};
    if (Accepts(name, "0") && Accepts(name, "1") && !Accepts(name, "2") && !Accepts(name, "-1"))
        return {VariableKind::Form::Switch, 0, 1};
    long inside = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), inside);
    if (error != std::errc() || end != value.data() + value.size() || !Accepts(name, inside))
        return {};
    return {VariableKind::Form::Number, FindEdge(name, inside, -kLimit),
            FindEdge(name, inside, kLimit)};
}

} // namespace vnquery
