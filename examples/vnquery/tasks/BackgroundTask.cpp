#include "vnquery/tasks/BackgroundTask.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Interruption.h"

#include <new>
#include <utility>

namespace vnquery {

void TaskProgress::AddRow() {
    CheckInterrupted();
    ++m_rows;
}

void TaskProgress::AddBytes(std::uint64_t count) {
    CheckInterrupted();
    m_bytes += count;
}

BackgroundTask::BackgroundTask(Work work)
    : m_work(std::move(work)), m_thread([this](const std::stop_token& stop) { Run(stop); }) {}

BackgroundTask::~BackgroundTask() = default;

bool& HasLeft() {
    static bool hasLeft = false;
    return hasLeft;
}

void BackgroundTask::Run(const std::stop_token& stop) {
    const StopScope scope(stop);
    TaskState end = TaskState::Failed;
    try {
        m_work(m_progress);
        end = TaskState::Done;
    } catch (const Interrupted&) {
        end = TaskState::Stopped;
    } catch (CException* error) {
        m_message = TakeMessage(error);
    } catch (const std::bad_alloc&) {
        m_message = Text(IDS_VQ_NO_MEMORY);
    } catch (const std::exception& error) {
        m_message = error.what();
    }
    m_state = end;
    m_state.notify_all();
}

} // namespace vnquery
