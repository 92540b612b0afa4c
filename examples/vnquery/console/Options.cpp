#include "vnquery/console/Options.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/tasks/Failure.h"

#include <charconv>
#include <iostream>
#include <limits>
#include <map>

#include <CLI/CLI.hpp>

namespace vnquery {

namespace {

constexpr char kExamples[] = R"(
  vnquery --db films.sqlite --sql "select title, poster from film" --save 1:2 poster.png
  vnquery --db films.sqlite --sql "select * from film" --quiet \
          --export film.txt --ccsid 37 --record-length 80
  vnquery --connect "Driver=PostgreSQL Unicode;Server=db1;Database=films" --sql "..."
)";

std::string Footer() {
    return "\n" + Text(IDS_VQ_CL_EXIT_CODES) + "\n\n" + Text(IDS_VQ_CL_EXAMPLES) + kExamples +
           "\n" + Text(IDS_VQ_CL_TEMPORARY);
}

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
        throw Failure(kBadUsage, Text(IDS_VQ_CL_NEEDS_PAIR, {option, form, text}));
    return {*first, *second};
}

/// What CLI11 fills, to be checked and turned into Options.
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
    std::string widths = "first";
};

void AddQueryOptions(CLI::App& app, Options& options) {
    app.add_option("--db", options.database, Text(IDS_VQ_CL_DB))->type_name("FILE");
    app.add_option("--connect", options.connection, Text(IDS_VQ_CL_CONNECT))
        ->type_name("STRING")
        ->excludes("--db");
    app.add_option("--sql", options.sql, Text(IDS_VQ_CL_SQL))->type_name("TEXT");
    app.add_flag("--window", options.window, Text(IDS_VQ_CL_WINDOW));
}

void AddDisplayOptions(CLI::App& app, Options& options, RawOptions& raw) {
    app.add_option("--null", raw.nullText, Text(IDS_VQ_CL_NULL))->type_name("TEXT");
    app.add_option("--text-limit", options.cells.textLimit, Text(IDS_VQ_CL_TEXT_LIMIT))
        ->type_name("N")
        ->check(CLI::Range(0u, 1u << 28));
    app.add_option("--widths", raw.widths, Text(IDS_VQ_CL_WIDTHS))
        ->type_name("ROWS")
        ->check(CLI::IsMember({"first", "all"}));
    app.add_flag("--quiet", options.quiet, Text(IDS_VQ_CL_QUIET));
    app.add_flag("--stats", options.statistics, Text(IDS_VQ_CL_STATS));
}

void AddFileOptions(CLI::App& app, Options& options, RawOptions& raw) {
    const std::string group = Text(IDS_VQ_CL_FILES);
    ExportFormat& format = options.exportFormat;
    app.add_option("--save", raw.saves, Text(IDS_VQ_CL_SAVE))
        ->type_name("ROW:COL FILE")
        ->type_size(2)
        ->expected(1, std::numeric_limits<int>::max() / 4)
        ->allow_extra_args(false)
        ->group(group);
    app.add_option("--export", options.exportFile, Text(IDS_VQ_CL_EXPORT))
        ->type_name("FILE")
        ->group(group);
    app.add_option("--ccsid", format.ccsid, Text(IDS_VQ_CL_CCSID))->type_name("N")->group(group);
    app.add_option("--record-length", format.recordLength, Text(IDS_VQ_CL_RECORD_LENGTH))
        ->type_name("N")
        ->check(CLI::Range(0, 1 << 24))
        ->group(group);
    app.add_option("--line-break", raw.lineBreak, Text(IDS_VQ_CL_LINE_BREAK))
        ->type_name("KIND")
        ->check(CLI::IsMember({"crlf", "cr", "none"}))
        ->group(group);
    app.add_option("--line-ends", raw.lineEnds, Text(IDS_VQ_CL_LINE_ENDS))
        ->type_name("RULE")
        ->check(CLI::IsMember({"escape", "records", "space", "keep"}))
        ->group(group);
    app.add_flag("--entities", format.entities, Text(IDS_VQ_CL_ENTITIES))->group(group);
    app.add_option("--separator", raw.separator, Text(IDS_VQ_CL_SEPARATOR))
        ->type_name("TEXT")
        ->group(group);
    app.add_option("--blobs", raw.blobs, Text(IDS_VQ_CL_BLOBS))
        ->type_name("KIND")
        ->check(CLI::IsMember({"placeholder", "hex"}))
        ->group(group);
    app.add_flag("--headings", format.headings, Text(IDS_VQ_CL_HEADINGS))->group(group);
    app.add_flag("--strict", format.strict, Text(IDS_VQ_CL_STRICT))->group(group);
    app.add_option("--translate", raw.translate, Text(IDS_VQ_CL_TRANSLATE))
        ->type_name("FROM:TO IN OUT")
        ->type_size(3)
        ->expected(1)
        ->group(group);
}

void AddDesOptions(CLI::App& app, RawOptions& raw) {
    const std::string group = Text(IDS_VQ_CL_DES_GROUP);
    app.add_option("--des", raw.des, Text(IDS_VQ_CL_DES))
        ->type_name("encrypt|decrypt IN OUT")
        ->type_size(3)
        ->expected(1)
        ->group(group);
    app.add_option("--des-key", raw.desKey, Text(IDS_VQ_CL_DES_KEY))
        ->type_name("HEX")
        ->group(group);
    app.add_option("--des-mode", raw.desMode, Text(IDS_VQ_CL_DES_MODE))
        ->type_name("MODE")
        ->check(CLI::IsMember({"ecb", "cbc"}))
        ->group(group);
    app.add_option("--des-iv", raw.desVector, Text(IDS_VQ_CL_DES_IV))
        ->type_name("HEX")
        ->group(group);
    app.add_flag("--des-pad", raw.desPad, Text(IDS_VQ_CL_DES_PAD))->group(group);
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
    options.widths = raw.widths == "all" ? WidthSource::All : WidthSource::First;
    options.saveFormat = format;
    if (app.count("--line-ends") == 0)
        options.saveFormat.lineEnds = format.recordLength > 0 ? LineEnds::Records : LineEnds::Keep;
    if (format.ccsid != 0 && !CanTranslateCCSID(GetNativeCCSID(), format.ccsid))
        throw Failure(kBadUsage, Text(IDS_VQ_CL_UNKNOWN_CCSID, {std::to_string(format.ccsid)}));
}

void SetRequests(Options& options, const RawOptions& raw) {
    for (std::size_t i = 0; i + 1 < raw.saves.size(); i += 2) {
        const auto [row, column] = ParsePair<std::size_t>("--save", "ROW:COL", raw.saves[i]);
        options.saves.push_back({row - 1, column - 1, raw.saves[i + 1]});
    }
    if (!raw.des.empty()) {
        if (raw.des[0] != "encrypt" && raw.des[0] != "decrypt")
            throw Failure(kBadUsage, Text(IDS_VQ_CL_DES_NEEDS, {raw.des[0]}));
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

/// With --window the menus do what the other options do.
void CheckWindow(const CLI::App& app) {
    for (const CLI::Option* option : app.get_options()) {
        const std::string name = option->get_name();
        if (option->count() > 0 && name != "--window" && name != "--db" && name != "--connect" &&
            name != "--sql")
            throw Failure(kBadUsage, Text(IDS_VQ_CL_WINDOW_ALONE, {name}));
    }
}

void CheckComplete(const Options& options) {
    if (options.window || options.helpTopic)
        return;
    const bool hasSource = !options.database.empty() || !options.connection.empty();
    if (options.translate || options.des) {
        if (hasSource || !options.sql.empty() || (options.translate && options.des))
            throw Failure(kBadUsage, Text(IDS_VQ_CL_FILE_WORK));
        return;
    }
    if (!hasSource)
        throw Failure(kBadUsage, Text(IDS_VQ_CL_NO_DATABASE));
    if (options.sql.empty())
        throw Failure(kBadUsage, Text(IDS_VQ_CL_NO_SQL));
}

} // namespace

std::optional<Options> ParseOptions(int argc, char** argv) {
    CLI::App app(Text(IDS_VQ_CL_ABOUT), "vnquery");
    app.footer(Footer());
    app.set_version_flag("--version", "vnquery " VNQUERY_VERSION);
    Options options;
    app.add_option("--help-topic", options.helpTopic, Text(IDS_VQ_CL_HELP_TOPIC))->type_name("ID");
    RawOptions raw;
    AddQueryOptions(app, options);
    AddDisplayOptions(app, options, raw);
    AddFileOptions(app, options, raw);
    AddDesOptions(app, raw);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0)
            throw Failure(kBadUsage, Text(IDS_VQ_CL_HELP_HINT, {error.what()}));
        app.exit(error);
        std::cout.flush();
        return {};
    }
    SetFormats(app, options, raw);
    SetRequests(options, raw);
    if (options.window)
        CheckWindow(app);
    CheckComplete(options);
    return options;
}

} // namespace vnquery
