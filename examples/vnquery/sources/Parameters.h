// Names in a statement that stand for values: :name for one that is bound, &NAME for a text.
#pragma once

#include "vnquery/sources/SqlLexer.h"
#include "vnquery/tasks/Failure.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vnquery {

/// What stands for the names in a statement. Names without an entry stay as they are.
struct Parameters {
    /// Of :name; nothing is NULL. The value is passed beside the statement, so no quotes are
    /// needed. On SQLite one that looks like a number as JSON has it (5, -0.5, but not 007) is
    /// passed as a number.
    std::map<std::string, std::optional<std::string>> values;
    /// Of &NAME, by names in upper case. The text takes the name's place before the statement runs.
    std::map<std::string, std::string> variables;

    /// Adds the global variables (vnbytstr/GlobalVars.h) that have no entry yet.
    void AddGlobalVariables();
};

/// A name in a statement, with its colon or ampersand.
struct SqlName {
    std::size_t begin = 0;
    std::size_t end = 0;
    bool isVariable = false; ///< &NAME
    std::string name;        ///< a variable's in upper case
};

/// The names, outside of quotes and comments, as the server reads these. A name begins with a
/// letter or underscore and goes on with letters, digits, underscores and $. Where a word, a number
/// or a closing parenthesis stands directly before the colon or ampersand it is an operator, and so
/// are :: and [:.
std::vector<SqlName> FindNames(std::string_view sql, SqlServer server);

/// The names without an entry, each once: to be asked for before the statement runs.
std::vector<SqlName> FindMissing(std::string_view sql, SqlServer server,
                                 const Parameters& parameters);

/// A statement as the database gets it.
class SqlText {
public:
    /// Puts in the variables' texts and, if `marks` is set, a question mark for each :name that has
    /// an entry (otherwise :name stays, for SQLite, which knows it).
    SqlText(std::string_view sql, SqlServer server, const Parameters& parameters, bool marks);

    const std::string& Get() const { return m_text; }
    /// The values of the question marks, in their order.
    const std::vector<std::optional<std::string>>& GetValues() const { return m_values; }
    /// Where a byte of the text comes from in the statement that was given.
    std::size_t ToOriginal(std::size_t offset) const;
    /// Calls `action`; the place in a Failure becomes one in the statement that was given.
    template <class Action>
    void Locate(Action&& action) const {
        try {
            action();
        } catch (const Failure& failure) {
            if (!failure.GetPlace())
                throw;
            throw Failure(failure.Code(), failure.what(), ToOriginal(*failure.GetPlace()));
        }
    }

private:
    struct Piece {
        std::size_t begin;    ///< in m_text
        std::size_t original; ///< in the statement given
        bool isReplaced;
    };
    std::string m_text;
    std::vector<Piece> m_pieces;
    std::vector<std::optional<std::string>> m_values;
};

} // namespace vnquery
