// The ways in which this library saves a file, for tests that cut the power, fail system calls and
// kill processes while it does.
#pragma once

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace vnbytstr::test {

/// Folders of one test. Both names end with a slash.
struct Place {
    std::string home;      ///< where the files are saved
    std::string temporary; ///< where the swap files are
};

/// One save that is about to be done, and what does it.
struct Saving {
    /// Throws what the library throws, and SaveRefused where it returns a refusal.
    std::function<void()> save;
    /// What is to be saved, as the object that saves holds it; null when there is no object.
    std::function<std::string()> content = nullptr;
};
struct SaveRefused {};

/// Saves Text(1) over Text(0), or where nothing was.
struct SaveScenario {
    enum Keeps {
        PowerCut, ///< old or new whatever happens
        Kill      ///< old or new when the process ends at any moment, but not without power
    };
    std::string name;
    std::string target; ///< the file in `home` that is to hold the text
    /// What the target holds at the beginning; none: it does not exist.
    std::optional<std::string> before;
    /// The text of a version, 1 or 2.
    std::function<std::string(unsigned version)> text;
    std::function<Saving(const Place& place, unsigned version)> begin;
    /// Makes what must be there besides the target, such as links.
    std::function<void(const Place& place)> prepare = nullptr;
    Keeps keeps = PowerCut;
    bool isWrittenOver = false; ///< in place: a sweep comes first after a failure
    bool isClosed = false;      ///< the home folder takes no new names
    bool isOtherDevice = false; ///< the home folder is on a device of its own
};

const std::vector<SaveScenario>& SaveScenarios();
inline void PrintTo(const SaveScenario& scenario, std::ostream* out) { *out << scenario.name; }

/// Writes the target as it is before the save, in one step, and prepares the rest.
void Prepare(const SaveScenario& scenario, const Place& place);

/// Runs `action`; what it threw, by name, or empty. What the library does not promise passes on.
std::string ErrorOf(const std::function<void()>& action);

} // namespace vnbytstr::test
