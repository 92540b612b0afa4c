// Work on another thread, so that the window stays responsive.
#pragma once

#include "vnquery/tasks/Progress.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace vnquery {

/// Counts what has been done; read from another thread.
class TaskProgress : public Progress {
public:
    void AddRow() override;
    void AddBytes(std::uint64_t count) override;
    std::uint64_t GetRows() const { return m_rows; }
    std::uint64_t GetBytes() const { return m_bytes; }

private:
    std::atomic<std::uint64_t> m_rows = 0;
    std::atomic<std::uint64_t> m_bytes = 0;
};

/// How a task ended.
enum class TaskState { Running, Done, Stopped, Failed };

/// Runs a function on a new thread. Until the task has ended, nobody else may touch what the
/// function uses. The thread that made the task polls its state, for instance in a timer.
///
/// (A thread rather than slices of work between two events, since a database may take long to find
/// the first row.)
class BackgroundTask {
public:
    using Work = std::function<void(Progress&)>;

    /// Starts at once.
    explicit BackgroundTask(Work work);
    /// Cancels and waits.
    ~BackgroundTask();
    BackgroundTask(const BackgroundTask&) = delete;
    BackgroundTask& operator=(const BackgroundTask&) = delete;

    TaskState GetState() const { return m_state; }
    const TaskProgress& GetProgress() const { return m_progress; }
    /// What went wrong, once the state is Failed.
    const std::string& GetMessage() const { return m_message; }
    /// Asks the work to stop, which it does at its next CheckInterrupted.
    void Cancel() { m_thread.request_stop(); }
    /// Returns when the task has ended.
    void Wait() const { m_state.wait(TaskState::Running); }

private:
    void Run(const std::stop_token& stop);

    Work m_work;
    TaskProgress m_progress;
    std::string m_message; ///< written before m_state
    std::atomic<TaskState> m_state = TaskState::Running;
    std::jthread m_thread; ///< last, so that it ends before what it uses
};

/// Whether LetEnd was called. The process must then end without waiting: std::_Exit.
bool& HasLeft();
/// Keeps an object with tasks until the process ends, instead of waiting for them: an attempt to
/// connect may take minutes. What they use must be its own.
template <class Owner>
void LetEnd(std::unique_ptr<Owner> owner) {
    HasLeft() = true;
    static auto& left = *new std::vector<std::unique_ptr<Owner>>; // never destroyed
    left.push_back(std::move(owner));
}

} // namespace vnquery
