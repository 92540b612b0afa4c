// Errors with a message for the user, and how the library's exceptions become such errors.
#pragma once

#include "vnbytstr/CacheException.h"

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace vnquery {

/// The exit codes of the program.
enum ExitCode {
    kOk = 0,
    kQueryFailed = 1, ///< the database or the query
    kBadUsage = 2,    ///< the command line
    kFileFailed = 3,  ///< a file, a disk or memory
    kInterrupted = 130
};

/// An error with the message for the user: what happened, to what, what to do.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string& message, std::optional<std::size_t> place = {})
        : std::runtime_error(message), m_code(code), m_place(place) {}
    ExitCode Code() const { return m_code; }
    /// Of an error in a statement: the byte of its text where it is, if the database tells.
    std::optional<std::size_t> GetPlace() const { return m_place; }

private:
    ExitCode m_code;
    std::optional<std::size_t> m_place;
};

/// Nobody reads the pipe that is written to any more. Not an error: a program such as head has seen
/// enough.
struct OutputClosed {};

/// The exception's text. Deletes the exception.
std::string TakeMessage(CException* error);

/// Calls `action`; what the library throws becomes a Failure that begins with `what`, such as
/// "cannot write list.txt".
template <class Action>
void WithMessage(const std::string& what, Action&& action) {
    try {
        std::forward<Action>(action)();
    } catch (CException* error) {
        throw Failure(kFileFailed, what + ": " + TakeMessage(error));
    }
}

} // namespace vnquery
