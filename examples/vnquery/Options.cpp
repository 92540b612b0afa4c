#include "Options.h"

#include "Failure.h"

#include <charconv>
#include <iostream>
#include <limits>
#include <map>

#include <CLI/CLI.hpp>

namespace vnquery {

namespace {

constexpr char kFooter[] = R"(
Exit codes:
  0    done
  1    the database or the query failed
  2    the command line is wrong, or names a row, column or CCSID that there is not
  3    a file could not be written or read, the disk is full, or memory ran out
  130  ended by Ctrl-C (128 and the signal's number for other signals)

Examples:
  vnquery --db films.sqlite --sql "select title, poster from film" --save 1:2 poster.png
  vnquery --db films.sqlite --sql "select * from film" --quiet \
          --export film.txt --ccsid 37 --record-length 80
  vnquery --connect "Driver=PostgreSQL Unicode;Server=db1;Database=films" --sql "..."

Large values go to temporary files in TMPDIR (else /var/tmp), which are removed at the end.)";

template <class Number>
std::optional<Number> ParseNumber(std::string_view text) {
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        return {};
    return number;
}

/// "3:2" as two numbers.
template <class Number>
std::pair<Number, Number> ParsePair(const char* option, const char* form, const std::string& text) {
    const std::size_t colon = std::min(text.find(':'), text.size());
    const auto first = ParseNumber<Number>(std::string_view(text).substr(0, colon));
    const auto second =
        ParseNumber<Number>(std::string_view(text).substr(std::min(colon + 1, text.size())));
    if (!first || !second || *first == 0 || *second == 0)
        throw Failure(kBadUsage, std::string(option) + " needs " + form +
                                     ", two numbers from 1 on, not " + text + ".");
    return {*first, *second};
}

/// What CLI11 fills before it is checked and turned into Options.
struct RawOptions {
    std::vector<std::string> saves;     ///< pairs
    std::vector<std::string> translate; ///< three
    std::vector<std::string> des;       ///< three
    std::string desKey;
    std::string desVector = "0000000000000000";
    std::string desMode = "ecb";
    bool desPad = false;
    std::string nullText;
    std::string separator = "\t";
    std::string lineBreak = "crlf";
    std::string lineEnds = "escape";
    std::string blobs = "placeholder";
};

void AddQueryOptions(CLI::App& app, Options& options) {
    app.add_option("--db", options.database, "SQLite database file, opened for reading only")
        ->type_name("FILE");
    app.add_option("--connect", options.connection, "Connection string of an ODBC data source")
        ->type_name("STRING")
        ->excludes("--db");
    app.add_option("--sql", options.sql, "The query to run")->type_name("TEXT");
}

void AddDisplayOptions(CLI::App& app, Options& options, RawOptions& raw) {
    app.add_option("--null", raw.nullText,
                   "Text for NULL (default: \"-\"; in an export with escapes: \\N)")
        ->type_name("TEXT");
    app.add_option("--text-limit", options.cells.textLimit,
                   "Characters up to which a text is displayed in full (default: 128)")
        ->type_name("N")
        ->check(CLI::Range(0u, 1u << 28));
    app.add_flag("--quiet", options.quiet, "Do not display the result");
    app.add_flag("--stats", options.statistics,
                 "Print what the result takes up in memory and on disk (to standard error)");
}

void AddFileOptions(CLI::App& app, Options& options, RawOptions& raw) {
    const std::string group = "Files";
    ExportFormat& format = options.exportFormat;
    app.add_option("--save", raw.saves, "Save a value (repeatable; rows and columns from 1)")
        ->type_name("ROW:COL FILE")
        ->type_size(2)
        ->expected(1, std::numeric_limits<int>::max() / 4)
        ->allow_extra_args(false)
        ->group(group);
    app.add_option("--export", options.exportFile, "Write the whole result, one line per row")
        ->type_name("FILE")
        ->group(group);
    app.add_option("--ccsid", format.ccsid,
                   "Coded character set of texts in files (default: UTF-8, as they are)")
        ->type_name("N")
        ->group(group);
    app.add_option("--record-length", format.recordLength,
                   "Fill lines with blanks to a multiple of N (default: 0, do not)")
        ->type_name("N")
        ->check(CLI::Range(0, 1 << 24))
        ->group(group);
    app.add_option("--line-break", raw.lineBreak, "End of a line: crlf (default), cr or none")
        ->type_name("KIND")
        ->check(CLI::IsMember({"crlf", "cr", "none"}))
        ->group(group);
    app.add_option(
           "--line-ends", raw.lineEnds,
           "Line breaks within a text: escape (default: \\n, \\r, \\t, \\0, \\\\), records (they "
           "end the line), space (a blank) or keep. --save: keep, or records with a record length")
        ->type_name("RULE")
        ->check(CLI::IsMember({"escape", "records", "space", "keep"}))
        ->group(group);
    app.add_flag("--entities", format.entities, "Write < > & \" as entity references")
        ->group(group);
    app.add_option("--separator", raw.separator, "Text between columns (default: a tab)")
        ->type_name("TEXT")
        ->group(group);
    app.add_option("--blobs", raw.blobs,
                   "BLOBs in an export: placeholder (default) or hex, in full")
        ->type_name("KIND")
        ->check(CLI::IsMember({"placeholder", "hex"}))
        ->group(group);
    app.add_flag("--headings", format.headings, "Begin an export with the columns' names")
        ->group(group);
    app.add_flag(
           "--strict", format.strict,
           "Refuse texts with characters that the coded character set lacks, instead of replacing "
           "them")
        ->group(group);
    app.add_option("--translate", raw.translate,
                   "No query: translate a file from one CCSID to another")
        ->type_name("FROM:TO IN OUT")
        ->type_size(3)
        ->expected(1)
        ->group(group);
}

void AddDesOptions(CLI::App& app, RawOptions& raw) {
    const std::string group = "Single DES, for existing peers only: it protects nothing today";
    app.add_option("--des", raw.des, "No query: encipher or decipher a file")
        ->type_name("encrypt|decrypt IN OUT")
        ->type_size(3)
        ->expected(1)
        ->group(group);
    app.add_option("--des-key", raw.desKey, "Key of 8 bytes")->type_name("HEX")->group(group);
    app.add_option("--des-mode", raw.desMode,
                   "ecb (default), or cbc, which begins anew every 32768 bytes")
        ->type_name("MODE")
        ->check(CLI::IsMember({"ecb", "cbc"}))
        ->group(group);
    app.add_option("--des-iv", raw.desVector, "Initialization vector of 8 bytes (default: zeros)")
        ->type_name("HEX")
        ->group(group);
    app.add_flag("--des-pad", raw.desPad, "Pad to whole blocks (files below 32768 bytes)")
        ->group(group);
}

void SetFormats(const CLI::App& app, Options& options, const RawOptions& raw) {
    const std::map<std::string, LineEnds> lineEnds = {{"escape", LineEnds::Escape},
                                                      {"records", LineEnds::Records},
                                                      {"space", LineEnds::Space},
                                                      {"keep", LineEnds::Keep}};
    const std::map<std::string, COutputStreamWriter::ELineBreak> lineBreaks = {
        {"cr", COutputStreamWriter::eCR},
        {"crlf", COutputStreamWriter::eCRLF},
        {"none", COutputStreamWriter::eNone}};
    ExportFormat& format = options.exportFormat;
    format.lineBreak = lineBreaks.at(raw.lineBreak);
    format.lineEnds = lineEnds.at(raw.lineEnds);
    format.separator = raw.separator;
    format.hexBlobs = raw.blobs == "hex";
    if (app.count("--null") > 0)
        format.nullText = options.cells.nullText = raw.nullText;
    options.saveFormat = format;
    if (app.count("--line-ends") == 0)
        options.saveFormat.lineEnds = format.recordLength > 0 ? LineEnds::Records : LineEnds::Keep;
    if (format.ccsid != 0 && !CanTranslateCCSID(GetNativeCCSID(), format.ccsid))
        throw Failure(kBadUsage,
                      "CCSID " + std::to_string(format.ccsid) +
                          " is not known. Some that are: 37, 500, 1047 and 1140 (EBCDIC), 819 "
                          "(ISO 8859-1), 1252 (Windows), 1200 (UTF-16), 1208 (UTF-8).");
}

void SetRequests(Options& options, const RawOptions& raw) {
    for (std::size_t i = 0; i + 1 < raw.saves.size(); i += 2) {
        const auto [row, column] = ParsePair<std::size_t>("--save", "ROW:COL", raw.saves[i]);
        options.saves.push_back({row - 1, column - 1, raw.saves[i + 1]});
    }
    if (!raw.des.empty()) {
        if (raw.des[0] != "encrypt" && raw.des[0] != "decrypt")
            throw Failure(kBadUsage, "--des needs encrypt or decrypt, then two file names, not " +
                                         raw.des[0] + ".");
        options.des = DesRequest{raw.des[0] == "encrypt",
                                 raw.des[1],
                                 raw.des[2],
                                 raw.desKey,
                                 raw.desVector,
                                 raw.desMode == "cbc" ? CDES::eCBC : CDES::eECB,
                                 raw.desPad};
    }
    if (raw.translate.empty())
        return;
    const auto [from, to] = ParsePair<WORD>("--translate", "FROM:TO", raw.translate[0]);
    options.translate = TranslateRequest{from, to, raw.translate[1], raw.translate[2]};
}

void CheckComplete(const Options& options) {
    if (options.helpTopic)
        return;
    const bool hasSource = !options.database.empty() || !options.connection.empty();
    if (options.translate || options.des) {
        if (hasSource || !options.sql.empty() || (options.translate && options.des))
            throw Failure(kBadUsage, "--translate and --des work on a file, one at a time, without "
                                     "--db, --connect and --sql.");
        return;
    }
    if (!hasSource)
        throw Failure(kBadUsage, "no database is given. Add --db FILE, or --connect with an ODBC "
                                 "connection string; --help tells more.");
    if (options.sql.empty())
        throw Failure(kBadUsage, "no query is given. Add --sql \"select ...\".");
}

} // namespace

std::optional<Options> ParseOptions(int argc, char** argv) {
    CLI::App app("Runs a query, displays the result, and saves or exports it.\n"
                 "Large objects of any length are read in pieces and kept in temporary files.",
                 "vnquery");
    app.footer(kFooter);
    app.set_version_flag("--version", "vnquery " VNQUERY_VERSION);
    Options options;
    app.add_option("--help-topic", options.helpTopic,
                   "Open a help page by its number (1: queries ... 7: settings; 100000: contents)")
        ->type_name("ID");
    RawOptions raw;
    AddQueryOptions(app, options);
    AddDisplayOptions(app, options, raw);
    AddFileOptions(app, options, raw);
    AddDesOptions(app, raw);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0)
            throw Failure(kBadUsage, std::string(error.what()) + ". --help lists the options.");
        app.exit(error);
        std::cout.flush();
        return {};
    }
    SetFormats(app, options, raw);
    SetRequests(options, raw);
    CheckComplete(options);
    return options;
}

} // namespace vnquery
