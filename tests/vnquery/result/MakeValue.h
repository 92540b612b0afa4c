// Values for tests.
#pragma once

#include "examples/vnquery/result/Value.h"

namespace vnquery::test {

inline Value MakeValue(Value::Type type, std::string_view bytes) {
    Value value;
    value.Begin(type);
    value.Append({reinterpret_cast<const BYTE*>(bytes.data()), bytes.size()});
    value.Complete();
    return value;
}

} // namespace vnquery::test
