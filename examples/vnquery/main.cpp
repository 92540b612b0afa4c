// vnquery: runs a query, displays the result, saves and exports it. Run calls the steps one after
// the other; each step is in its own file.

#include "vnquery/console/Options.h"
#include "vnquery/console/Process.h"
#include "vnquery/console/ResultPrinter.h"
#include "vnquery/console/Statistics.h"
#include "vnquery/console/TerminalProgress.h"
#include "vnquery/files/Exporter.h"
#include "vnquery/files/FileCipher.h"
#include "vnquery/files/FileTranslation.h"
#include "vnquery/files/ValueSaver.h"
#include "vnquery/messages/HelpPages.h"
#include "vnquery/messages/Messages.h"
#include "vnquery/sources/Connection.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Interruption.h"

#ifdef VNQUERY_WINDOW
#include "vnquery/window/WindowProgram.h"
#endif

#include <algorithm>
#include <cstdio>
#include <new>

namespace vnquery {

namespace {

ResultSet RunQuery(const Options& options) {
    const std::unique_ptr<RowSource> source =
        OpenSource({options.database, options.connection}, options.sql, SourceUse::ReadOnly);
    ResultSet result(source->GetColumns());
    TerminalProgress progress(Text(IDS_VQ_READING));
    result.Fetch(*source, progress);
    return result;
}

void Export(const ResultSet& result, const Options& options) {
    const std::string& name = options.exportFile;
    ExportSummary summary;
    {
        TerminalProgress progress(Text(IDS_VQ_EXPORTING));
        summary = ExportToFile(result, name, options.exportFormat, progress);
    }
    ReportLosses(name, summary.losses);
    std::fprintf(stderr, "%s\n", DescribeExport(result.GetRowCount(), summary.bytes, name).c_str());
}

void SaveValues(ResultSet& result, const std::vector<SaveRequest>& saves,
                const ExportFormat& format) {
    for (auto save = saves.begin(); save != saves.end(); ++save) {
        CheckInterrupted();
        const bool isLastUse = std::none_of(save + 1, saves.end(), [&](const SaveRequest& later) {
            return later.row == save->row && later.column == save->column;
        });
        SaveValue(result, save->row, save->column, save->file, format, isLastUse);
    }
}

#ifdef VNQUERY_WINDOW
int OpenWindow(const Options& options, int argc, char** argv) {
    return RunWindow(argc, argv, {{options.database, options.connection}, options.sql});
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
    ResultSet result = RunQuery(options);
    if (!options.quiet)
        PrintResult(result, options.cells);
    if (options.statistics)
        PrintStatistics(result);
    if (!options.exportFile.empty())
        Export(result, options);
    SaveValues(result, options.saves, options.saveFormat); // last, since saving may empty a value
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
