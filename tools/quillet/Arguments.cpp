#include "Arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <map>
#include <memory>
#include <new>
#include <sstream>

#include "Failure.h"
#include "Quillet/base/Utf8.h"
#include "commands/Commands.h"
#include "input/CellText.h"
#include "input/CsvReader.h"
#include "output/PlainText.h"
#include "output/Sink.h"

namespace quillet::tool {

namespace {

const std::map<std::string, Format> Formats = {
    {"text", Format::Text}, {"csv", Format::Csv}, {"json", Format::Json}};

// The checks return an error message; empty if there is none.
std::string CheckFormat(const std::string& word) {
    return Formats.count(word) > 0 ? "" : Quoted(word) + " is not one of text, csv and json";
}

std::string CheckCount(const std::string& text) {
    std::size_t count = 0;
    const std::from_chars_result result = std::from_chars(text.data(), text.data() + text.size(), count);
    const bool isCount = result.ec == std::errc() && result.ptr == text.data() + text.size();
    return isCount ? "" : Quoted(text) + " is not a non-negative whole number";
}

std::string CheckNotEmpty(const std::string& text) {
    return text.empty() ? "must not be empty" : "";
}

std::string CheckKeyValue(const std::string& text) {
    const std::size_t equals = text.find('=');
    return equals == std::string::npos || equals == 0 ? Quoted(text) + " is not of the form KEY=VALUE" : "";
}

std::string CheckFieldType(const std::string& text) {
    const std::size_t equals = text.rfind('=');
    if (equals == std::string::npos || equals == 0) {
        return Quoted(text) + " is not of the form FIELD=WORD";
    }
    const std::string word = text.substr(equals + 1);
    return TypeOfWord(word) ? "" : Quoted(word) + " is not a type; the types are " + TypeWords();
}

// A word for the delimiter that is hard to type in a shell.
constexpr const char* TabWord = "tab";

std::string CheckDelimiter(const std::string& text) {
    const bool isLetter = text.size() == 1 && IsCsvDelimiter(text.front());
    return isLetter || text == TabWord
               ? ""
               : Quoted(text) + " is neither 'tab' nor a single ASCII character that can separate values";
}

constexpr const char* KeepNames = "keep";
constexpr const char* SafeNamesWord = "safe";

std::string CheckNames(const std::string& word) {
    return word == KeepNames || word == SafeNamesWord ? "" : Quoted(word) + " is neither keep nor safe";
}

std::string CheckSection(const std::string& word) {
    return word == "header" || word == "properties" ? "" : Quoted(word) + " is neither header nor properties";
}

std::vector<KeyValue> SplitAll(const std::vector<std::string>& texts,
                               std::size_t (*place)(const std::string&)) {
    std::vector<KeyValue> pairs;
    for (const std::string& text : texts) {
        const std::size_t equals = place(text);
        pairs.emplace_back(text.substr(0, equals), text.substr(equals + 1));
    }
    return pairs;
}

// A value may contain further equals signs.
std::vector<KeyValue> SplitValues(const std::vector<std::string>& texts) {
    return SplitAll(texts, [](const std::string& text) { return text.find('='); });
}

// A field's name may contain some, a type does not.
std::vector<KeyValue> SplitTypes(const std::vector<std::string>& texts) {
    return SplitAll(texts, [](const std::string& text) { return text.rfind('='); });
}

constexpr const char* Examples = R"(Examples:
  quillet info steel.xml                    what the catalog contains
  quillet show steel.xml IPE --limit 5      the first rows of a table
  quillet query steel.xml "select name, A from IPE where h >= 300"
  quillet find steel.xml IPE "h > 300"      the first matching row
  quillet export steel.xml IPE ipe.csv      a table as a CSV file
  quillet import steel.xml Mine mine.csv    a new table from a CSV file
  quillet check steel.xml                   whether anything is wrong
  quillet convert aisc.mdb aisc.xml         a catalog from an Access file

'quillet COMMAND --help' describes a command. Options may come before or after
the command. Table names are case-insensitive.

Exit status: 0 success, 1 failure, 2 invalid command line.)";

constexpr const char* QueryNotes =
    R"(Examples:
  quillet query steel.xml "select name, h, A from IPE where h >= 300"
  quillet query steel.xml "select * from HEA where h < 300 and G > 50 order by Iy desc"
  quillet query materials.xml "select name from [Bolt classes] where name != '8.8'"

Put the query in quotation marks, so that the shell does not change it. In the
query, put texts in apostrophes and names with blanks in square brackets. Each
condition is a field, an operator (< <= = >= > !=) and a value or a field.
Conditions are combined with and, or, not and brackets. None of these binds
tighter than another, so write the brackets. A text without the word select is
the name of a table, and shows the whole table. The file is never changed.

--explain shows how a query is read, even one that fails: its tokens and
conditions, how these are combined, the table that is searched, and whether the
answer is the table itself, rows of the table, or copied rows.

)";

constexpr const char* FindNotes =
    R"(Examples:
  quillet find steel.xml IPE "h > 300"                the first matching row
  quillet find steel.xml IPE "h > 300" --backward     the last matching row
  quillet find steel.xml HEA "h < 200 and G > 30" --all

Write the condition as after the word where in a query; 'quillet query --help'
describes it. Positions count from 0. Rows are shown in the order of the table,
or in reverse order with --backward. The command fails if no row matches.

)";

constexpr const char* ImportNotes =
    R"(The first line of the CSV file names the fields. A field becomes long if all its
values are whole numbers, double if all are numbers, boolean if all are true or
false, and text otherwise; --type overrides this. Numbers have a decimal point.
An empty value stays empty in the file, but an empty float or double is read as
0. If anything is wrong with the CSV file, nothing is changed.

With --names safe, a heading that can't be saved in a catalog or named in a
query is replaced, and the new name is reported: 'h [mm]' becomes h_mm, a second
h becomes h_2. With --names keep, headings are used unchanged, and one that can't
be saved is refused. --type and --key take headings or names.

Types: )";

constexpr const char* NewNotes =
    R"(Keys of the header: category, symbol, title, catalog_type, units_type, version.
Keys of the properties: units, unit_long, unit_sect, unit_weight, material.

)";

constexpr const char* ConvertNotes =
    R"(Examples:
  quillet convert aisc.mdb aisc.xml         a catalog from an Access file
  quillet convert steel.xml steel.mdb       the tables of a catalog into an Access file

An Access file is read and written through an ODBC driver, and not every driver
can write. OUT.mdb must exist; an empty Access file will do. Each table replaces
the one of the same name, other tables stay. The work is done on a copy, so the
file changes only if every table was written.

)";

constexpr const char* CommonNotes =
    "'quillet --help' describes the common options: --format, --sequential, --log.";

// The parser, and the requests that it fills.
class CommandLine {
public:
    CommandLine();

    void Parse(std::vector<std::string> arguments) {
        // The parser expects them in reverse order.
        std::reverse(arguments.begin(), arguments.end());
        m_app.parse(arguments);
    }

    CLI::App& App() { return m_app; }
    Command Chosen() const { return m_chosen; }

private:
    using Texts = std::shared_ptr<std::vector<std::string>>;

    CLI::App& Add(const char* name, const char* description);
    static CLI::Option& AddFile(CLI::App& command, std::string& file);
    static CLI::Option& AddTable(CLI::App& command, std::string& table);
    void AddNoWait(CLI::App& command);
    void AddLossy(CLI::App& command);
    static void AddRowRange(CLI::App& command, RowRange& rows);
    static CLI::Option& AddList(CLI::App& command, const char* option, std::vector<std::string>& list,
                                const char* form, const char* description);

    void AddOptions();
    void AddInfo();
    void AddFields();
    void AddShow();
    void AddQuery();
    void AddExport();
    void AddFind();
    void AddCheck();
    void AddNew();
    void AddSet();
    void AddImport();
    void AddDrop();
    void AddRename();
    void AddConvert();

    // Runs the function with the request after the parser has filled it.
    template <typename Request>
    void Choose(CLI::App& command, const std::shared_ptr<Request>& request,
                int (*function)(const Settings&, const Request&)) {
        command.callback([this, request, function] {
            m_chosen = [settings = m_settings, request, function] { return function(settings, *request); };
        });
    }

    CLI::App m_app{"Reads and changes catalogs of engineering tables.", "quillet"};
    std::string m_format = "text";
    Settings m_settings;
    Command m_chosen;
};

CommandLine::CommandLine() {
    m_app.allow_windows_style_options(false);
    m_app.require_subcommand(1);
    m_app.get_formatter()->column_width(30);
    m_app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    m_app.get_formatter()->label("Positionals", "Arguments");
    m_app.get_formatter()->label("REQUIRED", "");
    AddOptions();
    AddInfo();
    AddFields();
    AddShow();
    AddQuery();
    AddFind();
    AddCheck();
    AddExport();
    AddNew();
    AddSet();
    AddImport();
    AddDrop();
    AddRename();
    AddConvert();
    m_app.footer(Examples);
}

void CommandLine::AddOptions() {
    m_app.set_help_flag("-h,--help", "Show this help");
    m_app.set_version_flag("--version", "quillet " QUILLET_VERSION, "Show the version");
    m_app.add_option("--format", m_format, "Output format: text, csv or json (default: text)")
        ->check(CheckFormat)
        ->type_name("FORMAT")
        ->each([this](const std::string& word) { m_settings.m_format = Formats.at(word); });
    m_app.add_flag("--sequential", m_settings.m_sequential, "Read the file table by table, as far as needed");
    m_app.add_flag("--log", m_settings.m_log, "Show the log of the database on standard error");
}

CLI::App& CommandLine::Add(const char* name, const char* description) {
    CLI::App& command = *m_app.add_subcommand(name, description);
    command.group("Commands");
    command.footer(CommonNotes);
    command.fallthrough();
    return command;
}

CLI::Option& CommandLine::AddFile(CLI::App& command, std::string& file) {
    return *command.add_option("FILE", file, "Catalog file")->required()->check(CheckNotEmpty)->type_name("");
}

CLI::Option& CommandLine::AddTable(CLI::App& command, std::string& table) {
    return *command.add_option("TABLE", table, "Table name")->required()->check(CheckNotEmpty)->type_name("");
}

void CommandLine::AddNoWait(CLI::App& command) {
    command.add_flag_callback(
        "--no-wait", [this] { m_settings.m_waits = false; },
        "Fail at once if another program changes the file");
}

void CommandLine::AddLossy(CLI::App& command) {
    command.add_flag("--lossy", m_settings.m_lossy, "Save numbers even if they can't be read back");
}

void CommandLine::AddRowRange(CLI::App& command, RowRange& rows) {
    command.add_option("--limit", rows.m_limit, "Show at most N rows")->check(CheckCount)->type_name("N");
    command.add_option("--offset", rows.m_offset, "Skip the first N rows")->check(CheckCount)->type_name("N");
}

CLI::Option& CommandLine::AddList(CLI::App& command, const char* option, std::vector<std::string>& list,
                                  const char* form, const char* description) {
    // One value for each option, or the following arguments would be taken too.
    return *command.add_option(option, list, description)->allow_extra_args(false)->type_name(form);
}

void CommandLine::AddInfo() {
    const auto request = std::make_shared<InfoRequest>();
    CLI::App& command = Add("info", "Show what a catalog contains");
    AddFile(command, request->m_file);
    Choose(command, request, Info);
}

void CommandLine::AddFields() {
    const auto request = std::make_shared<FieldsRequest>();
    CLI::App& command = Add("fields", "Show the fields of a table");
    AddFile(command, request->m_file);
    AddTable(command, request->m_table);
    Choose(command, request, Fields);
}

void CommandLine::AddShow() {
    const auto request = std::make_shared<ShowRequest>();
    CLI::App& command = Add("show", "Show the rows of a table");
    AddFile(command, request->m_file);
    AddTable(command, request->m_table);
    AddRowRange(command, request->m_rows);
    Choose(command, request, Show);
}

void CommandLine::AddQuery() {
    const auto request = std::make_shared<QueryRequest>();
    CLI::App& command = Add("query", "Show the rows that a query selects");
    AddFile(command, request->m_file);
    command.add_option("QUERY", request->m_query, "Query, or the name of a table")
        ->required()
        ->check(CheckNotEmpty)
        ->type_name("");
    AddRowRange(command, request->m_rows);
    command.add_flag("--explain", request->m_explain, "Show how the query is read instead of its rows");
    command.footer(std::string(QueryNotes) + CommonNotes);
    command.parse_complete_callback([&command, request] {
        if (request->m_explain && command.count("--limit") + command.count("--offset") > 0) {
            throw CLI::ExcludesError("--explain", "--limit and --offset");
        }
    });
    Choose(command, request, Query);
}

void CommandLine::AddFind() {
    const auto request = std::make_shared<FindRequest>();
    CLI::App& command = Add("find", "Find rows by a condition");
    AddFile(command, request->m_file);
    AddTable(command, request->m_table);
    command.add_option("WHERE", request->m_where, "Condition")
        ->required()
        ->check(CheckNotEmpty)
        ->type_name("");
    command.add_flag("--all", request->m_all, "Find every matching row");
    command.add_flag("--backward", request->m_backward, "Search from the last row to the first");
    command.footer(std::string(FindNotes) + CommonNotes);
    Choose(command, request, Find);
}

void CommandLine::AddCheck() {
    const auto request = std::make_shared<CheckRequest>();
    CLI::App& command = Add("check", "Read everything and report what is wrong");
    AddFile(command, request->m_file);
    Choose(command, request, Check);
}

void CommandLine::AddExport() {
    const auto request = std::make_shared<ExportRequest>();
    CLI::App& command = Add("export", "Write a table to a CSV or JSON file");
    AddFile(command, request->m_file);
    AddTable(command, request->m_table);
    command
        .add_option("OUT", request->m_target, "OUT.csv, OUT.json, or - for standard output (see --format)")
        ->required()
        ->check(CheckNotEmpty)
        ->type_name("");
    command.add_flag("--replace", request->m_replace, "Overwrite OUT");
    Choose(command, request, Export);
}

void CommandLine::AddNew() {
    const auto request = std::make_shared<NewRequest>();
    const auto header = std::make_shared<std::vector<std::string>>();
    const auto properties = std::make_shared<std::vector<std::string>>();
    CLI::App& command = Add("new", "Create an empty catalog");
    AddFile(command, request->m_file);
    AddList(command, "--header", *header, "KEY=VALUE", "Set a value of the header; may be repeated")
        .check(CheckKeyValue);
    AddList(command, "--property", *properties, "KEY=VALUE", "Set a value of the properties; may be repeated")
        .check(CheckKeyValue);
    command.footer(std::string(NewNotes) + CommonNotes);
    command.parse_complete_callback([request, header, properties] {
        request->m_header = SplitValues(*header);
        request->m_properties = SplitValues(*properties);
    });
    Choose(command, request, New);
}

void CommandLine::AddSet() {
    const auto request = std::make_shared<SetRequest>();
    const auto values = std::make_shared<std::vector<std::string>>();
    CLI::App& command = Add("set", "Set values of the header or the properties");
    AddFile(command, request->m_file);
    command.add_option("SECTION", request->m_table, "header or properties")
        ->required()
        ->check(CheckSection)
        ->type_name("");
    command.add_option("KEY=VALUE", *values, "Value to set; 'quillet info' shows the keys")
        ->required()
        ->check(CheckKeyValue)
        ->type_name("");
    command.parse_complete_callback([request, values] { request->m_values = SplitValues(*values); });
    AddLossy(command);
    AddNoWait(command);
    Choose(command, request, Set);
}

void CommandLine::AddImport() {
    const auto request = std::make_shared<ImportRequest>();
    const auto types = std::make_shared<std::vector<std::string>>();
    const auto delimiter = std::make_shared<std::string>();
    const auto names = std::make_shared<std::string>();
    CLI::App& command = Add("import", "Create a table from a CSV file");
    AddFile(command, request->m_file);
    AddTable(command, request->m_table);
    command.add_option("IN", request->m_source, "CSV file")->required()->check(CheckNotEmpty)->type_name("");
    AddList(command, "--type", *types, "FIELD=WORD", "Type of a field; may be repeated")
        .check(CheckFieldType);
    AddList(command, "--key", request->m_keys, "FIELD", "Mark a field as a key; may be repeated");
    command.add_flag("--replace", request->m_replace, "Replace a table of this name, and keep its keys");
    command.add_option("--delimiter", *delimiter, "Separator: a character or tab (default: comma)")
        ->check(CheckDelimiter)
        ->type_name("CHAR");
    command.add_option("--names", *names, "Names from headings: safe or keep (default: safe)")
        ->check(CheckNames)
        ->type_name("RULE");
    command.footer(ImportNotes + TypeWords() + ".\n\n" + CommonNotes);
    command.parse_complete_callback([request, types, delimiter, names] {
        request->m_types = SplitTypes(*types);
        request->m_keepsNames = *names == KeepNames;
        if (!delimiter->empty()) {
            request->m_delimiter = *delimiter == TabWord ? '\t' : delimiter->front();
        }
    });
    AddLossy(command);
    AddNoWait(command);
    Choose(command, request, Import);
}

void CommandLine::AddDrop() {
    const auto request = std::make_shared<DropRequest>();
    CLI::App& command = Add("drop", "Delete a table");
    AddFile(command, request->m_file);
    AddTable(command, request->m_table);
    AddLossy(command);
    AddNoWait(command);
    Choose(command, request, Drop);
}

void CommandLine::AddRename() {
    const auto request = std::make_shared<RenameRequest>();
    CLI::App& command = Add("rename", "Rename a table");
    AddFile(command, request->m_file);
    command.add_option("OLD", request->m_table, "Table name")
        ->required()
        ->check(CheckNotEmpty)
        ->type_name("");
    command.add_option("NEW", request->m_newName, "New name")
        ->required()
        ->check(CheckNotEmpty)
        ->type_name("");
    AddLossy(command);
    AddNoWait(command);
    Choose(command, request, Rename);
}

void CommandLine::AddConvert() {
    const auto request = std::make_shared<ConvertRequest>();
    CLI::App& command = Add("convert", "Convert between Access files and XML catalogs");
    command.add_option("IN", request->m_source, "IN.mdb or IN.xml")
        ->required()
        ->check(CheckNotEmpty)
        ->type_name("");
    command.add_option("OUT", request->m_target, "OUT.xml or OUT.mdb")
        ->required()
        ->check(CheckNotEmpty)
        ->type_name("");
    command.add_flag("--replace", request->m_replace, "Overwrite OUT.xml");
    command.footer(std::string(ConvertNotes) + CommonNotes);
    AddLossy(command);
    AddNoWait(command);
    Choose(command, request, Convert);
}

// Records during its lifetime that memory ran out. The parser builds its output in streams, which ignore
// that.
class MemoryWatch {
public:
    MemoryWatch() {
        s_hasRunOut = false;
        s_before = std::set_new_handler(Mark);
    }
    MemoryWatch(const MemoryWatch&) = delete;
    MemoryWatch& operator=(const MemoryWatch&) = delete;
    ~MemoryWatch() { std::set_new_handler(s_before); }

    static bool HasRunOut() { return s_hasRunOut; }

private:
    static void Mark() {
        s_hasRunOut = true;
        if (s_before != nullptr) {
            s_before();
        }
        throw std::bad_alloc();
    }

    static inline bool s_hasRunOut = false;
    static inline std::new_handler s_before = nullptr;
};

// Prints the help or the version.
int Answer(CLI::App& app, const CLI::Success& question) {
    std::ostringstream text;
    int status = 0;
    {
        const MemoryWatch watch;
        status = app.exit(question, text, text);
        if (MemoryWatch::HasRunOut()) {
            throw std::bad_alloc();
        }
    }
    StandardOutput output;
    output.Write(text.str());
    output.Close();
    return status;
}

// This program's own messages where the parser's don't help.
std::string Explain(CLI::App& app, const CLI::ParseError& error) {
    const std::vector<CLI::App*> chosen = app.get_subcommands();
    const std::string hint =
        "; try 'quillet " + (chosen.empty() ? std::string() : chosen.front()->get_name() + " ") + "--help'";
    const std::vector<std::string> rest = app.remaining(true);
    const bool isCommandMissing =
        dynamic_cast<const CLI::RequiredError*>(&error) != nullptr && chosen.empty();
    if (!rest.empty() && (isCommandMissing || dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr)) {
        const char* const kind = rest.front().starts_with('-') ? "unknown option "
                                 : chosen.empty()              ? "unknown command "
                                                               : "too many arguments: ";
        return kind + Quoted(rest.front()) + hint;
    }
    if (isCommandMissing) {
        return "a command is missing" + hint;
    }
    return error.what() + hint;
}

}  // namespace

Command ParseArguments(const std::vector<std::string>& arguments) {
    for (const std::string& argument : arguments) {
        if (!IsValidUtf8(argument)) {
            throw UsageError("an argument is not valid UTF-8");
        }
    }
    const auto line = std::make_shared<CommandLine>();
    try {
        line->Parse(arguments);
    } catch (const CLI::Success& question) {
        return [line, question] { return Answer(line->App(), question); };
    } catch (const CLI::ParseError& error) {
        throw UsageError(Explain(line->App(), error));
    }
    return line->Chosen();
}

}  // namespace quillet::tool
