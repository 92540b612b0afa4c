// Which values a global variable takes, judging by its validation.
#pragma once

#include <string>

namespace vnquery {

struct VariableKind {
    enum class Form { Text, Switch, Number, ReadOnly };
    Form form = Form::Text;
    long minimum = 0; ///< of a number
    long maximum = 0;
};

/// Tries out what CGlobalVars accepts, so that only CGlobalVars knows the rules. `value` is the
/// variable's present one.
VariableKind FindVariableKind(const std::string& name, const std::string& value);

} // namespace vnquery
