#include "vnquery/console/QueryOutput.h"

#include "vnquery/console/KeptValues.h"
#include "vnquery/console/Process.h"
#include "vnquery/console/StandardOutput.h"
#include "vnquery/console/Statistics.h"
#include "vnquery/console/TerminalProgress.h"
#include "vnquery/files/FileExport.h"
#include "vnquery/files/ValueSaver.h"
#include "vnquery/messages/Messages.h"
#include "vnquery/sources/OneTableQuery.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Interruption.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>

namespace vnquery {

namespace {

/// What is done with the rows of a query, one after the other, while they are read.
class QueryOutput {
public:
    QueryOutput(const Options& options, const std::string& sql,
                const std::vector<std::string>& columns)
        : m_options(options), m_columns(columns.size()), m_kept(options.saves, nullptr),
          m_output(!options.exportFile.empty() || !options.saves.empty()),
          m_progress(Text(options.exportFile.empty() ? IDS_VQ_READING : IDS_VQ_EXPORTING),
                     options.quiet || !IsOutputTerminal()),
          m_all(&m_progress) {
        if (!options.exportFile.empty())
            m_export.emplace(options.exportFile, WithTable(options.exportFormat, sql), columns);
        if (!options.quiet) {
            m_display = MakeWriter(m_output, WithTable(options.display, sql), columns);
            m_display->Begin();
        }
        if (m_export)
            m_all.Add(m_export->GetWriter());
        if (m_display)
            m_all.Add(*m_display);
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
            if (m_display) {
                m_display->Abandon();
                m_output.Flush();
            }
            throw;
        }
        m_progress.Hide();
    }

    void Finish() {
        if (m_display) {
            m_display->Finish();
            m_output.Flush();
            ReportLosses(Text(IDS_VQ_STANDARD_OUTPUT), m_display->GetLosses());
        }
        if (m_options.statistics)
            m_statistics.Print(m_kept);
        if (m_export)
            FinishExport();
        m_kept.Save(m_options.saves, m_options.saveFormat, m_rows, m_columns);
    }

private:
    /// An INSERT names the table of the query unless the options name one.
    static ExportFormat WithTable(ExportFormat format, const std::string& sql) {
        if (const auto query = ParseOneTableQuery(sql); query && format.table.empty())
            format.table = query->table;
        return format;
    }

    void FinishExport() {
        const std::string& name = m_options.exportFile;
        const ExportSummary summary = m_export->Commit();
        ReportLosses(name, summary.losses);
        std::fprintf(stderr, "%s\n", DescribeExport(summary, name).c_str());
    }

    const Options& m_options;
    const std::size_t m_columns;
    std::size_t m_rows = 0;
    std::optional<FileExport> m_export;
    Statistics m_statistics;
    KeptValues m_kept;
    StandardOutput m_output;
    std::unique_ptr<ResultWriter> m_display;
    TerminalProgress m_progress;
    RowTee m_all;
};

} // namespace

void RunStatement(const Options& options, const std::string& sql) {
    const std::unique_ptr<RowSource> source =
        OpenSource(options.connection, sql, SourceUse::ReadOnly);
    QueryOutput output(options, sql, source->GetColumns());
    output.Take(*source);
    output.Finish();
}

void RunScript(const Options& options) {
    const std::string& sql = options.sql;
    // One statement goes to the database as it is, without a connection to find out its dialect.
    std::vector<SqlStatement> statements = {{sql, false}};
    const std::size_t end = std::min(sql.find(';'), sql.size());
    if (sql.find_first_not_of("; \t\r\n", end) != std::string::npos)
        statements = SplitStatements(sql, FindServer(options.connection));
    if (statements.empty())
        throw Failure(kQueryFailed, Text(IDS_VQ_NO_QUERY));
    if (statements.size() > 1 && (!options.exportFile.empty() || !options.saves.empty()))
        throw Failure(kBadUsage,
                      Text(IDS_VQ_CL_ONE_STATEMENT, {options.saves.empty() ? "--export" : "--save",
                                                     std::to_string(statements.size())}));
    for (std::size_t i = 0; i < statements.size(); ++i) {
        try {
            RunStatement(options, statements[i].text);
        } catch (const Failure& failure) {
            if (statements.size() == 1)
                throw;
            throw Failure(failure.Code(),
                          Text(IDS_VQ_IN_STATEMENT, {std::to_string(i + 1), failure.what()}));
        }
    }
}

} // namespace vnquery
