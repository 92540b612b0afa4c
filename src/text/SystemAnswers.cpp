#include "src/text/SystemAnswers.h"

#include "src/charset/SystemText.h"

#include <atomic>

namespace vnbytstr::detail {

namespace {

enum class Answer : unsigned char { None, No, Yes };
std::atomic<Answer> g_dbcs{Answer::None};
std::atomic<Answer> g_middleEast{Answer::None};

bool Once(std::atomic<Answer>& kept, bool (*question)()) {
    Answer answer = kept.load(std::memory_order_relaxed);
    if (answer == Answer::None) {
        answer = question() ? Answer::Yes : Answer::No;
        kept.store(answer, std::memory_order_relaxed);
    }
    return answer == Answer::Yes;
}

} // namespace

bool IsDbcsEnabledOnce() { return Once(g_dbcs, IsDbcsEnabled); }
bool IsMiddleEastEnabledOnce() { return Once(g_middleEast, IsMiddleEastEnabled); }

void ForgetSystemAnswers() noexcept { g_dbcs = g_middleEast = Answer::None; }

} // namespace vnbytstr::detail
