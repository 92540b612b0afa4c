#include "vnquery/console/Options.h"

#include "vnquery/console/Process.h"
#include "vnquery/messages/Messages.h"
#include "vnquery/tasks/Failure.h"

#include "vnbytstr/Ccsid.h"

#include <algorithm>
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
  vnquery --db films.sqlite --format csv <queries.sql >films.csv
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
    std::string file; ///< of the SQL
    std::string format = "table";
    std::string lineBreak = "lf";
    std::string lineEnds;
    std::string blobs;
    std::string widths = "first";
    bool headings = true;
};

void AddQueryOptions(CLI::App& app, Options& options, RawOptions& raw) {
    app.add_option("--db", options.connection.file, Text(IDS_VQ_CL_DB))->type_name("FILE");
    app.add_option("--connect", options.connection.dataSource, Text(IDS_VQ_CL_CONNECT))
        ->excludes("--db");
    app.add_option("--sql", options.sql, Text(IDS_VQ_CL_SQL));
    app.add_option("--file", raw.file, Text(IDS_VQ_CL_FILE_SQL))
        ->type_name("FILE")
        ->excludes("--sql");
    app.add_flag("--window", options.window, Text(IDS_VQ_CL_WINDOW));
}

void AddDisplayOptions(CLI::App& app, Options& options, RawOptions& raw) {
    app.add_option("--format", raw.format, Text(IDS_VQ_CL_FORMAT))
        ->check(CLI::IsMember(std::vector<std::string>(kFormatNames.begin(), kFormatNames.end())));
    app.add_option("--null", options.exportFormat.nullText, Text(IDS_VQ_CL_NULL));
    app.add_option("--text-limit", options.display.textLimit, Text(IDS_VQ_CL_TEXT_LIMIT))
        ->type_name("N")
        ->check(CLI::Range(0u, 1u << 28));
    app.add_option("--widths", raw.widths, Text(IDS_VQ_CL_WIDTHS))
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
        ->check(CLI::IsMember({"lf", "crlf", "cr", "none"}))
        ->group(group);
    app.add_option("--line-ends", raw.lineEnds, Text(IDS_VQ_CL_LINE_ENDS))
        ->check(CLI::IsMember({"escape", "records", "space", "keep"}))
        ->group(group);
    app.add_flag("--entities", format.entities, Text(IDS_VQ_CL_ENTITIES))->group(group);
    app.add_option("--separator", format.separator, Text(IDS_VQ_CL_SEPARATOR))->group(group);
    app.add_option("--blobs", raw.blobs, Text(IDS_VQ_CL_BLOBS))
        ->check(CLI::IsMember({"placeholder", "hex"}))
        ->group(group);
    app.add_flag("--headings,!--no-headings", raw.headings, Text(IDS_VQ_CL_HEADINGS))->group(group);
    app.add_option("--table", format.table, Text(IDS_VQ_CL_TABLE))->group(group);
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
        ->check(CLI::IsMember({"ecb", "cbc"}))
        ->group(group);
    app.add_option("--des-iv", raw.desVector, Text(IDS_VQ_CL_DES_IV))
        ->type_name("HEX")
        ->group(group);
    app.add_flag("--des-pad", raw.desPad, Text(IDS_VQ_CL_DES_PAD))->group(group);
}

bool IsStandardOutput(const std::string& file) {
    return file == "-" || file == "/dev/stdout" || file == "/dev/fd/1" || file == "/proc/self/fd/1";
}

/// What the export and the display have in common with one another is in the former.
void SetFormats(const CLI::App& app, Options& options, const RawOptions& raw) {
    const std::map<std::string, LineEnds> lineEnds = {{"escape", LineEnds::Escape},
                                                      {"records", LineEnds::Records},
                                                      {"space", LineEnds::Space},
                                                      {"keep", LineEnds::Keep}};
    const std::map<std::string, LineBreak> lineBreaks = {{"lf", LineBreak::Lf},
                                                         {"crlf", LineBreak::CrLf},
                                                         {"cr", LineBreak::Cr},
                                                         {"none", LineBreak::None}};
    ExportFormat& format = options.exportFormat;
    format.lineBreak = lineBreaks.at(raw.lineBreak);
    if (app.count("--line-ends") > 0)
        format.lineEnds = lineEnds.at(raw.lineEnds);
    if (app.count("--blobs") > 0)
        format.hexBlobs = raw.blobs == "hex";
    if (app.count("--headings") > 0)
        format.headings = raw.headings;
    format.textLimit = options.display.textLimit;
    format.widths = raw.widths == "all" ? WidthSource::All : WidthSource::First;
    options.saveFormat = options.display = format;
    if (app.count("--line-ends") == 0)
        options.saveFormat.lineEnds = format.recordLength > 0 ? LineEnds::Records : LineEnds::Keep;

    if (app.count("--format") > 0 || options.exportFile.empty())
        format.format = *FormatOf(raw.format);
    const bool isDisplay = options.exportFile.empty() || IsStandardOutput(options.exportFile);
    options.display.format = isDisplay ? format.format : Format::Table;
    if (isDisplay && !options.exportFile.empty()) {
        options.exportFile.clear();
        options.quiet = false;
    }
    if (format.ccsid != 0 && !CanTranslateCCSID(GetNativeCCSID(), format.ccsid))
        throw Failure(kBadUsage, Text(IDS_VQ_CL_UNKNOWN_CCSID, {std::to_string(format.ccsid)}));
}

// --- options that would be ignored ---------------------------------------------------------------

struct FormatOption {
    const char* name;
    const char* needs; ///< one of these
    bool isForSaving = false;
};

constexpr FormatOption kFormatOptions[] = {{"--ccsid", "--export, --save", true},
                                           {"--record-length", "--export, --save --ccsid", true},
                                           {"--line-break", "--export, --save --ccsid", true},
                                           {"--line-ends", "--export, --save --ccsid", true},
                                           {"--entities", "--export, --save --ccsid", true},
                                           {"--strict", "--export, --save --ccsid", true},
                                           {"--separator", "--export, --format"},
                                           {"--blobs", "--export, --format"},
                                           {"--headings", "--export, --format"},
                                           {"--table", "--format insert"},
                                           {"--null", "--export, --format"},
                                           {"--text-limit", "--format table"},
                                           {"--widths", "--format table"}};

[[noreturn]] void RefuseWithout(const std::string& option, const std::string& needed) {
    throw Failure(kBadUsage, Text(IDS_VQ_CL_NEEDS, {option, needed}));
}

void CheckFormatOptions(const CLI::App& app, const Options& options) {
    const Format chosen = options.exportFormat.format;
    const WORD ccsid = options.exportFormat.ccsid;
    std::vector<Format> written;
    if (!options.exportFile.empty())
        written.push_back(chosen);
    if (!options.quiet)
        written.push_back(options.display.format);
    else if (options.exportFile.empty() && app.count("--format") > 0)
        RefuseWithout("--format", "--export");
    for (const FormatOption& option : kFormatOptions) {
        const auto takes = [&](Format format) { return HasOption(format, option.name); };
        const bool isSaved = option.isForSaving && !options.saves.empty() &&
                             (option.name == std::string("--ccsid") || ccsid != 0);
        if (app.count(option.name) == 0 || isSaved || std::ranges::any_of(written, takes))
            continue;
        if (app.count("--format") == 0)
            RefuseWithout(option.name, option.needs);
        if (option.name != std::string("--ccsid"))
            throw Failure(kBadUsage, Text(IDS_VQ_CL_NOT_IN_FORMAT, {option.name, NameOf(chosen)}));
    }
    constexpr WORD kUtf8 = 1208;
    const bool isUtf8 = ccsid == 0 || ccsid == kUtf8;
    if (app.count("--format") > 0 && IsUtf8Only(chosen) && !isUtf8)
        throw Failure(kBadUsage,
                      Text(IDS_VQ_CL_UTF8_ONLY, {NameOf(chosen), std::to_string(ccsid)}));
    const std::string separator = options.exportFormat.separator.value_or(",");
    if (!IsSeparator(chosen, separator))
        throw Failure(kBadUsage, Text(IDS_VQ_CL_BAD_SEPARATOR, {separator}));
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

std::vector<std::string> GivenOptions(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options())
        if (option->count() > 0)
            names.push_back(option->get_name());
    return names;
}

/// With --window the menus do what the other options do.
void CheckWindow(const CLI::App& app) {
    for (const std::string& name : GivenOptions(app))
        if (name != "--window" && name != "--db" && name != "--connect" && name != "--sql")
            throw Failure(kBadUsage, Text(IDS_VQ_CL_WINDOW_ALONE, {name}));
}

/// Of the rest, options either work on a file or belong to a query.
void CheckKinds(const CLI::App& app, const Options& options) {
    const bool isFileWork = options.translate || options.des || options.helpTopic;
    const bool hasSource = !options.connection.IsEmpty();
    if (isFileWork && (hasSource || app.count("--sql") > 0 || (options.translate && options.des)))
        throw Failure(kBadUsage, Text(IDS_VQ_CL_FILE_WORK));
    for (const std::string& name : GivenOptions(app)) {
        if (name.starts_with("--des-") && !options.des)
            RefuseWithout(name, "--des");
        if (isFileWork && !name.starts_with("--des") && name != "--translate" &&
            name != "--help-topic")
            RefuseWithout(name, "--db, --connect");
    }
    if (!isFileWork && !hasSource)
        throw Failure(kBadUsage, Text(IDS_VQ_CL_NO_DATABASE));
}

/// The SQL comes from the command line, a file, a pipe or the user.
void ReadSql(const CLI::App& app, Options& options, const RawOptions& raw) {
    const bool isGiven = app.count("--sql") + app.count("--file") > 0;
    if (!isGiven && IsInputTerminal() && options.exportFile.empty() && options.saves.empty()) {
        options.isInteractive = true;
        return;
    }
    if (app.count("--sql") == 0 && (isGiven || !IsInputTerminal()))
        options.sql = ReadInput(isGiven ? raw.file : "-");
    if (options.sql.find_first_not_of(" \t\r\n") == std::string::npos)
        throw Failure(kBadUsage, Text(IDS_VQ_CL_NO_SQL));
}

/// CLI11's own words, before the options are added.
void SetLabels(CLI::App& app) {
    app.set_help_flag("-h,--help", Text(IDS_VQ_CL_HELP));
    app.set_version_flag("--version", "vnquery " VNQUERY_VERSION, Text(IDS_VQ_CL_VERSION));
    app.option_defaults()->group(Text(IDS_VQ_CL_OPTIONS));
    for (CLI::Option* option : {app.get_help_ptr(), app.get_version_ptr()})
        option->group(Text(IDS_VQ_CL_OPTIONS));
    const auto formatter = std::make_shared<CLI::Formatter>();
    formatter->label("Usage", Text(IDS_VQ_CL_USAGE));
    formatter->label("OPTIONS", Text(IDS_VQ_CL_OPTIONS));
    formatter->label("Excludes", Text(IDS_VQ_CL_EXCLUDES));
    app.formatter(formatter);
}

/// What comes after the options' names.
void SetTypeLabels(CLI::App& app) {
    for (const CLI::Option* option : app.get_options()) {
        const std::string name = option->get_type_name();
        if (name == "TEXT")
            app.get_formatter()->label(name, Text(IDS_VQ_CL_WORD_TEXT));
        else if (name.ends_with("FILE"))
            app.get_formatter()->label(name,
                                       name.substr(0, name.size() - 4) + Text(IDS_VQ_CL_WORD_FILE));
        else if (name.starts_with("TEXT:")) // a choice
            app.get_formatter()->label(name, name.substr(5));
    }
}

} // namespace

std::optional<Options> ParseOptions(int argc, char** argv) {
    CLI::App app(Text(IDS_VQ_CL_ABOUT), "vnquery");
    app.footer(Footer());
    SetLabels(app);
    Options options;
    app.add_option("--help-topic", options.helpTopic, Text(IDS_VQ_CL_HELP_TOPIC))->type_name("ID");
    RawOptions raw;
    AddQueryOptions(app, options, raw);
    AddDisplayOptions(app, options, raw);
    AddFileOptions(app, options, raw);
    AddDesOptions(app, raw);
    SetTypeLabels(app);
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
    if (options.window) {
        CheckWindow(app);
        return options;
    }
    CheckKinds(app, options);
    if (options.translate || options.des || options.helpTopic)
        return options;
    CheckFormatOptions(app, options);
    ReadSql(app, options, raw);
    return options;
}

} // namespace vnquery
