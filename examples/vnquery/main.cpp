// vnquery: runs a query, displays the result, saves and exports it. The rows go
// one by one through what the options ask for; each part is in its own file.

#include "vnquery/console/KeptValues.h"
#include "vnquery/console/Options.h"
#include "vnquery/console/Process.h"
#include "vnquery/console/Statistics.h"
#include "vnquery/console/TablePrinter.h"
#include "vnquery/console/TerminalProgress.h"
#include "vnquery/files/FileCipher.h"
#include "vnquery/files/FileExport.h"
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

#include <cstdio>
#include <memory>
#include <new>
#include <optional>

namespace vnquery {

namespace {

/// What is done with the rows of a query, one after the other, while they are read.
class QueryOutput {
public:
    QueryOutput(const Options& options, const std::vector<std::string>& columns)
        : m_options(options), m_columns(columns.size()), m_kept(options.saves, nullptr),
          m_progress(Text(options.exportFile.empty() ? IDS_VQ_READING : IDS_VQ_EXPORTING),
                     options.quiet || !IsOutputTerminal()),
          m_all(&m_progress) {
        if (!options.exportFile.empty())
            m_export = FileExport::Begin(options.exportFile, options.exportFormat, columns);
        if (!options.quiet)
            m_printer.emplace(columns, options.cells, options.widths);
        if (m_export)
            m_all.Add(*m_export);
        if (m_printer)
            m_all.Add(*m_printer);
        if (options.statistics)
            m_all.Add(m_statistics);
        if (!options.saves.empty())
            m_all.Add(m_kept);
    }

    void Take(RowSource& source) {
        try {
            m_rows = ReadRows(source, m_all, m_progress);
        } catch (const Interrupted&) {
            throw;
        } catch (...) {
            m_progress.Hide();
            if (m_printer)
                m_printer->Abandon();
            throw;
        }
        m_progress.Hide();
    }

    void Finish() {
        if (m_printer)
            m_printer->Finish();
        if (m_options.statistics)
            m_statistics.Print(m_kept);
        if (m_export)
            FinishExport();
        m_kept.Save(m_options.saves, m_options.saveFormat, m_rows, m_columns);
    }

private:
    void FinishExport() {
        const std::string& name = m_options.exportFile;
        const ExportSummary summary = m_export->Commit();
        ReportLosses(name, summary.losses);
        std::fprintf(stderr, "%s\n", DescribeExport(summary, name).c_str());
    }

    const Options& m_options;
    const std::size_t m_columns;
    std::size_t m_rows = 0;
    std::optional<TablePrinter> m_printer;
    std::unique_ptr<FileExport> m_export;
    Statistics m_statistics;
    KeptValues m_kept;
    TerminalProgress m_progress;
    RowTee m_all;
};

void RunQuery(const Options& options) {
    const std::unique_ptr<RowSource> source =
        OpenSource({options.database, options.connection}, options.sql, SourceUse::ReadOnly);
    QueryOutput output(options, source->GetColumns());
    output.Take(*source);
    output.Finish();
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
    RunQuery(options);
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
