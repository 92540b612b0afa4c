// Another process for a test: this test program once more, told to run one test, which is to be skipped
// where it is not a child.
#pragma once

#include "src/os/System.h"
#include "tests/support/windows/Substitute.h"
#include "vnbytstr/framework/Types.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>

namespace vnbytstr::test {

class ChildProgram {
public:
    /// Runs the test of that name, such as "Child.Saves", which finds `task` by Task.
    ChildProgram(const std::string& test, const std::string& task) {
        ::SetEnvironmentVariableA(kVariable, task.c_str());
        std::string line = "\"" + System::Current().GetModuleFileName() +
                           "\" --gtest_brief=1 --gtest_filter=" + test;
        STARTUPINFOA startup{};
        startup.cb = sizeof startup;
        const auto start = [&] {
            return ::CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                    nullptr, &startup, &m_process);
        };
        BOOL isStarted = start();
        // Seen once, of the first child that a program started.
        for (int i = 0; !isStarted && IsSubstitute() && i < 3; ++i) {
            std::cerr << "The child was not started, error " << ::GetLastError() << ": again\n";
            std::this_thread::sleep_for(std::chrono::seconds(1));
            isStarted = start();
        }
        EXPECT_TRUE(isStarted) << ::GetLastError() << " " << line;
        ::SetEnvironmentVariableA(kVariable, nullptr);
    }
    ~ChildProgram() {
        Kill();
        ::CloseHandle(m_process.hThread);
        ::CloseHandle(m_process.hProcess);
    }
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;

    void Kill() {
        ::TerminateProcess(m_process.hProcess, 99);
        Wait();
    }
    /// Its exit status: 0 when the test passed.
    DWORD Wait() {
        ::WaitForSingleObject(m_process.hProcess, INFINITE);
        DWORD status = 0;
        ::GetExitCodeProcess(m_process.hProcess, &status);
        return status;
    }
    bool IsRunning() const { return ::WaitForSingleObject(m_process.hProcess, 0) == WAIT_TIMEOUT; }

    /// In a child: what it is to do; empty elsewhere.
    static std::string Task() { return System::Current().GetEnvironment(kVariable); }

private:
    static constexpr const char* kVariable = "VNBYTSTR_TEST_TASK";
    PROCESS_INFORMATION m_process{};
};

/// Waits until `condition` holds or half a minute is over; whether it holds.
template <class Condition>
bool WaitFor(Condition condition) {
    for (int i = 0; i < 3000; ++i) {
        if (condition())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

} // namespace vnbytstr::test
