// Runs vnquery as a user would, on small databases made for the test.
#pragma once

#include "tests/support/TemporaryFolder.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/types.h>

namespace vnquery::test {

struct RunResult {
    int code = -1; ///< exit code; 1000 and the signal's number when a signal ended it
    std::string out;
    std::string error;
};

/// A folder for files, another one for temporary files (TMPDIR), which must be empty after every
/// run.
class ProgramTest : public ::testing::Test {
protected:
    ProgramTest();

    /// Makes the database test.sqlite and runs the statements on it.
    void MakeDatabase(const std::string& statements);
    /// The same with one row (1, bytes) in the table t(id, v).
    void MakeDatabase(const std::string& type, const std::string& bytes, bool isText);

    RunResult Run(const std::vector<std::string>& arguments);
    /// On the database, with --sql and more arguments.
    RunResult Query(const std::string& sql, const std::vector<std::string>& arguments = {});
    /// Under a limit for the length of files, in bytes (a multiple of 512).
    RunResult RunWithFileLimit(std::size_t limit, const std::vector<std::string>& arguments);

    pid_t Start(const std::vector<std::string>& arguments);
    RunResult Wait(pid_t process);

    std::string File(const std::string& name) const { return m_files.File(name); }
    std::string Database() const { return File("test.sqlite"); }

    vnbytstr::test::TemporaryFolder m_files;
    vnbytstr::test::TemporaryFolder m_temporary;
};

/// Text in a glibc charset.
std::string Convert(const std::string& text, const char* from, const char* to);

/// `count` bytes without a pattern, from `seed`.
std::string SomeBytes(std::size_t count, unsigned seed);

} // namespace vnquery::test
