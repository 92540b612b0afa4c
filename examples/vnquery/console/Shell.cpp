#include "vnquery/console/Shell.h"

#include "vnquery/console/LineEditor.h"
#include "vnquery/console/QueryOutput.h"
#include "vnquery/messages/Messages.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Interruption.h"

#include <algorithm>
#include <csignal>
#include <cstdio>

namespace vnquery {

namespace {

constexpr char kSqliteTables[] =
    "select name, type from sqlite_schema where type in ('table', 'view')"
    " and name not like 'sqlite\\_%' escape '\\' order by name";
constexpr char kServerTables[] =
    "select table_schema, table_name, table_type from information_schema.tables where table_schema"
    " not in ('information_schema', 'pg_catalog', 'performance_schema', 'mysql', 'sys')"
    " order by table_schema, table_name";

class Shell {
public:
    explicit Shell(const Options& options)
        : m_options(options), m_server(FindServer(options.connection)) {}

    void Run() {
        Say(Text(IDS_VQ_I_WELCOME, {m_options.connection.GetDisplayName()}));
        while (!m_isDone) {
            try {
                Step();
            } catch (const Interrupted&) {
                if (InterruptingSignal() != SIGINT)
                    throw;
                TakeInterruptingSignal();
                AwaitSignals();
                m_pending.clear();
            }
        }
    }

private:
    static void Say(const std::string& text) { std::fprintf(stderr, "%s\n", text.c_str()); }

    /// One line.
    void Step() {
        const auto line = m_editor.Read(m_pending.empty() ? "vnquery> " : "    ...> ");
        if (!line) {
            Say("");
            m_isDone = true;
            return;
        }
        m_editor.Remember(*line);
        if (m_pending.empty() && line->starts_with('.')) {
            Command(*line);
            return;
        }
        const std::vector<SqlStatement> statements =
            SplitStatements(m_pending + *line + "\n", m_server);
        m_pending.clear();
        for (const SqlStatement& statement : statements) {
            if (statement.isEnded)
                RunOne(statement.text);
            else
                m_pending = statement.text;
        }
    }

    void RunOne(const std::string& sql) {
        try {
            RunStatement(m_options, sql);
        } catch (const Interrupted&) {
            Say(Text(IDS_VQ_STOPPED));
            throw;
        } catch (const Failure& failure) {
            Say(failure.what());
        } catch (CException* error) {
            Say(TakeMessage(error));
        }
    }

    void Command(const std::string& line) {
        const std::size_t end = std::min(line.find_first_of(" \t"), line.size());
        const std::string name = line.substr(0, end);
        const std::size_t begin = std::min(line.find_first_not_of(" \t", end), line.size());
        const std::string word = line.substr(begin, line.find_last_not_of(" \t") + 1 - begin);
        if (name == ".quit" || name == ".exit")
            m_isDone = true;
        else if (name == ".help")
            Say(Text(IDS_VQ_I_HELP));
        else if (name == ".format")
            SetFormat(word);
        else if (name == ".tables")
            RunOne(m_server == SqlServer::Sqlite ? kSqliteTables : kServerTables);
        else
            Say(Text(IDS_VQ_I_UNKNOWN, {name}));
    }

    void SetFormat(const std::string& name) {
        if (const std::optional<Format> format = FormatOf(name)) {
            m_options.display.format = *format;
            return;
        }
        std::string names;
        for (const char* each : kFormatNames)
            names.append(names.empty() ? "" : ", ").append(each);
        Say(Text(IDS_VQ_I_FORMAT, {NameOf(m_options.display.format), names}));
    }

    Options m_options;
    const SqlServer m_server;
    LineEditor m_editor;
    std::string m_pending; ///< the beginning of a statement
    bool m_isDone = false;
};

} // namespace

void RunShell(const Options& options) { Shell(options).Run(); }

} // namespace vnquery
