// An Interaction for tests: notes what was shown and started, and answers as it is told.
#pragma once

#include "vnbytstr/Interaction.h"

#include <functional>
#include <string>
#include <vector>

namespace vnbytstr::test {

class TestInteraction final : public Interaction {
public:
    struct Box {
        std::string text, caption;
        UINT type, helpContext;
        bool operator==(const Box&) const = default;
    };
    struct Start {
        std::string verb, file, parameters, folder;
        int show;
        bool operator==(const Start&) const = default;
    };

    int MessageBox(const char* text, const char* caption, UINT type, UINT helpContext) override {
        boxes.push_back({text, caption, type, helpContext});
        if (duringBox)
            duringBox();
        return answer;
    }
    int ShellExecute(const char* verb, const char* file, const char* parameters, const char* folder,
                     int show) override {
        starts.push_back({Text(verb), Text(file), Text(parameters), Text(folder), show});
        if (duringStart)
            duringStart();
        return startResult;
    }

    std::vector<Box> boxes;
    std::vector<Start> starts;
    int answer = IDOK, startResult = kShellStarted;
    std::function<void()> duringBox, duringStart;

private:
    static std::string Text(const char* text) { return text != nullptr ? text : "(null)"; }
};

} // namespace vnbytstr::test
