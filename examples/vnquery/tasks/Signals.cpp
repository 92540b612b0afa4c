#include "vnquery/tasks/Interruption.h"

#include <csignal>

namespace vnquery {

void AwaitSignals() {
    struct sigaction action = {};
    action.sa_handler = RememberSignal;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigemptyset(&action.sa_mask);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaction(number, &action, nullptr);
}

} // namespace vnquery
