// Changes cells of a query's result and writes them back.
#pragma once

#include "examples/vnquery/result/PendingEdits.h"
#include "examples/vnquery/sources/Connection.h"

#include "tests/vnquery/ProgramRun.h"
#include "tests/vnquery/SilentProgress.h"
#include "tests/vnquery/result/MakeValue.h"

namespace vnquery::test {

class EditTest : public ProgramTest {
protected:
    void Query(const std::string& sql) {
        m_edits.Clear();
        const auto source = OpenSource(m_connection, sql, SourceUse::Editing);
        m_result = ResultSet(*source);
        m_plan = source->GetEditPlan();
        m_kinds = source->GetKinds();
        m_result.Fetch(*source, m_progress);
    }
    void Set(std::size_t row, std::size_t column, std::string_view bytes,
             Value::Type type = Value::Type::Text) {
        m_edits.Set({row, column}, {false, MakeValue(type, bytes)}, m_result);
    }
    WriteReport Write(bool commit = true) {
        const auto writer = OpenWriter(m_connection, m_plan);
        WriteReport report = WriteEdits(*writer, m_plan, m_result, m_edits, m_progress);
        if (commit)
            writer->Commit();
        return report;
    }

    Connection m_connection{Database(), ""};
    SilentProgress m_progress;
    EditPlan m_plan;
    std::vector<ColumnKind> m_kinds;
    ResultSet m_result;
    PendingEdits m_edits;
};

} // namespace vnquery::test
