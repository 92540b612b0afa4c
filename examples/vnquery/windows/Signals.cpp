// As tasks/Signals.cpp, on Windows: the second signal finds no handler there either.
#include "vnquery/tasks/Interruption.h"

#include <csignal>

namespace vnquery {

void AwaitSignals() {
    for (const int number : {SIGINT, SIGTERM, SIGBREAK})
        std::signal(number, RememberSignal);
}

} // namespace vnquery
