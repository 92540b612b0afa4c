// What values a global variable takes, as far as its validation shows.
#pragma once

#include <string>

namespace vnquery {

struct VariableKind {
    enum class Form { Text, Switch, Number, ReadOnly };
    Form form = Form::Text;
    long minimum = 0; ///< of a number
    long maximum = 0;
};

/// Finds out by asking CGlobalVars what it accepts, so that there is one place that knows. `value`
/// is the variable's present one.
VariableKind FindVariableKind(const std::string& name, const std::string& value);

} // namespace vnquery
