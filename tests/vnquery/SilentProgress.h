// A progress that is not shown.
#pragma once

#include "examples/vnquery/tasks/Progress.h"

namespace vnquery::test {

class SilentProgress : public Progress {
    void AddRow() override {}
    void AddBytes(std::uint64_t) override {}
};

} // namespace vnquery::test
