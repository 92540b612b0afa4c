// vnquery: runs queries, displays their results, saves and exports them. The rows go one by one
// through what the options ask for; see console/QueryOutput.cpp.

#include "vnquery/console/Options.h"
#include "vnquery/console/Process.h"
#include "vnquery/console/QueryOutput.h"
#include "vnquery/console/Shell.h"
#include "vnquery/files/FileCipher.h"
#include "vnquery/files/FileTranslation.h"
#include "vnquery/messages/HelpPages.h"
#include "vnquery/messages/Messages.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Interruption.h"

#ifdef VNQUERY_WINDOW
#include "vnquery/window/WindowProgram.h"
#endif

#include <cstdio>
#include <new>
#include <optional>

namespace vnquery {

namespace {

#ifdef VNQUERY_WINDOW
int OpenWindow(const Options& options, int argc, char** argv) {
    return RunWindow(argc, argv, {options.connection, options.sql});
}
#else
int OpenWindow(const Options&, int, char**) {
    throw Failure(kBadUsage, Text(IDS_VQ_CL_NO_WINDOWS));
}
#endif

ExitCode OpenHelp(unsigned topic) { return OpenHelpPage(topic) ? kOk : kFileFailed; }

void Run(const Options& options) {
    if (options.translate) {
        const TranslateRequest& request = *options.translate;
        TranslateFile(request.from, request.to, request.input, request.output);
        return;
    }
    if (options.des) {
        CipherFile(*options.des);
        return;
    }
    if (options.isInteractive)
        RunShell(options);
    else
        RunScript(options);
}

int Complain(ExitCode code, const std::string& message) {
    std::fprintf(stderr, "vnquery: %s\n", message.c_str());
    return code;
}

} // namespace

} // namespace vnquery

int main(int argc, char** argv) {
    using namespace vnquery;
    PrepareProcess();
    TakeArguments(argc, argv);
    try {
        const std::optional<Options> options = ParseOptions(argc, argv);
        if (options && options->window)
            return OpenWindow(*options, argc, argv);
        if (options && options->helpTopic)
            return OpenHelp(*options->helpTopic);
        if (options)
            Run(*options);
        return kOk;
    } catch (const Interrupted&) {
        return Complain(kInterrupted, Text(IDS_VQ_STOPPED)), 128 + InterruptingSignal();
    } catch (const OutputClosed&) {
        return 128 + 13; // and silent, like a program that SIGPIPE ends
    } catch (const Failure& failure) {
        return Complain(failure.Code(), failure.what());
    } catch (CException* error) {
        return Complain(kFileFailed, TakeMessage(error));
    } catch (const std::bad_alloc&) {
        return Complain(kFileFailed, Text(IDS_VQ_NO_MEMORY));
    } catch (const std::exception& error) {
        return Complain(kFileFailed, error.what());
    }
}
