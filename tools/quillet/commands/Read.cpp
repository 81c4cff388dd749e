// Commands that only read a catalog.
#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>

#include "Failure.h"
#include "Quillet/document/CountRows.h"
#include "Quillet/document/DocumentReader.h"
#include "Quillet/platform/File.h"
#include "commands/Commands.h"
#include "commands/Printing.h"
#include "input/Catalog.h"
#include "output/PlainText.h"
#include "output/TextWriter.h"

namespace quillet::tool {

namespace {

// The output of info, in order.
struct Overview {
    std::vector<std::pair<std::string, Value>> m_file;
    std::vector<std::pair<std::string, Value>> m_header;
    std::vector<std::pair<std::string, Value>> m_properties;

    struct TableLine {
        std::string m_name;
        std::string m_kind;
        std::size_t m_fields;
        std::size_t m_rows;
    };
    std::vector<TableLine> m_tables;
};

// The values of a table with one row, by field names.
std::vector<std::pair<std::string, Value>> ReadOnlyRow(const Table& table, NumberStyle style) {
    const TableListing listing(*table.m_descr, *table.m_data, 0, 1);
    std::vector<Value> values(listing.Columns().size());
    if (listing.CountRows() > 0) {
        listing.ReadRow(0, style, values);
    }
    std::vector<std::pair<std::string, Value>> named;
    for (std::size_t i = 0; i < values.size(); ++i) {
        named.emplace_back(listing.Columns()[i].m_name, values[i]);
    }
    return named;
}

using RowCounts = std::map<CString, std::uint64_t>;

// The number of rows of the tables that need not be read for that; null if all have to be read.
Overview ReadOverview(Catalog& catalog, const RowCounts* counts, NumberStyle style) {
    Overview overview;
    overview.m_file = {{"path", Value::OfText(catalog.Path())},
                       {"kind", Value::OfText(catalog.IsXml() ? "XML" : "Access")},
                       {"read-only", Value::OfBoolean(!catalog.Database().CanUpdate())}};
    const std::vector<std::string> names = catalog.TableNames();
    for (std::size_t i = 0; i < names.size(); ++i) {
        const bool isQuery = catalog.Database().GetTableInfo(names[i])->GetType() == DbTableInfo::Query;
        if (counts != nullptr && counts->count(Lowered(CString(names[i]))) > 0) {
            overview.m_tables.push_back({names[i], "table", catalog.Database().GetTableDescr(i)->size(),
                                         counts->at(Lowered(CString(names[i])))});
            continue;
        }
        const Table table = catalog.TableAt(i);
        overview.m_tables.push_back(
            {table.m_name, isQuery ? "query" : "table", table.m_descr->size(), table.m_data->size()});
        if (CString(table.m_name).CompareNoCase(HeaderName) == 0) {
            overview.m_header = ReadOnlyRow(table, style);
        } else if (CString(table.m_name).CompareNoCase(PropertiesName) == 0) {
            overview.m_properties = ReadOnlyRow(table, style);
        }
    }
    return overview;
}

// A block of names and values under a heading.
void PrintSection(const char* headline, const std::vector<std::pair<std::string, Value>>& values,
                  Sink& sink) {
    std::size_t width = 0;
    for (const auto& [name, value] : values) {
        width = std::max(width, CountCodePoints(Visible(name)));
    }
    sink.Write(std::string(headline) + "\n");
    for (const auto& [name, value] : values) {
        std::string line = "  " + Visible(name);
        if (!value.m_text.empty()) {
            line.append(width - CountCodePoints(Visible(name)) + 2, ' ');
            AppendVisible(value.m_text, line);
        }
        sink.Write(line + "\n");
    }
    sink.Write("\n");
}

void PrintOverview(const Overview& overview, Sink& sink) {
    PrintSection("File", overview.m_file, sink);
    PrintSection("Header", overview.m_header, sink);
    PrintSection("Properties", overview.m_properties, sink);
    RecordListing tables({{"name"}, {"kind"}, {"fields", true}, {"rows", true}});
    for (const Overview::TableLine& table : overview.m_tables) {
        tables.Add({Value::OfText(table.m_name), Value::OfText(table.m_kind), Value::OfCount(table.m_fields),
                    Value::OfCount(table.m_rows)});
    }
    sink.Write("Tables\n");
    TextWriter("  ").Write(tables, sink);
}

// The same for programs, in one listing: a record for each fact and for each table.
void ListOverview(const Overview& overview, const Writer& writer, Sink& sink) {
    RecordListing facts({{"section"}, {"name"}, {"value"}, {"fields", true}, {"rows", true}});
    const auto add = [&](const char* section, const std::vector<std::pair<std::string, Value>>& values) {
        for (const auto& [name, value] : values) {
            facts.Add({Value::OfText(section), Value::OfText(name), value, {}, {}});
        }
    };
    add("file", overview.m_file);
    add("header", overview.m_header);
    add("properties", overview.m_properties);
    for (const Overview::TableLine& table : overview.m_tables) {
        facts.Add({Value::OfText("table"), Value::OfText(table.m_name), Value::OfText(table.m_kind),
                   Value::OfCount(table.m_fields), Value::OfCount(table.m_rows)});
    }
    writer.Write(facts, sink);
}

bool EndsWith(const std::string& path, const char* ending) {
    const CString wide(path);
    return wide.Right(CString(ending).GetLength()).CompareNoCase(ending) == 0;
}

Format FormatOfTarget(const Settings& settings, const std::string& target) {
    if (EndsWith(target, ".csv")) {
        return Format::Csv;
    }
    if (EndsWith(target, ".json")) {
        return Format::Json;
    }
    if (target == "-") {
        return settings.m_format == Format::Text ? Format::Csv : settings.m_format;
    }
    throw UsageError(target +
                     ": the name of an export must end in .csv or .json, or be - for standard output");
}

// Keeps no more rows than are shown. False, and nothing was shown, where the table has to be read.
bool ShowFirstRows(const Settings& settings, const ShowRequest& request) {
    constexpr std::size_t MostRows = 1'000'000;
    const RowRange& range = request.m_rows;
    if (range.m_limit > MostRows || range.m_offset > MostRows || settings.m_log || settings.m_sequential ||
        !HasXmlEnding(request.m_file)) {
        return false;
    }
    const DocumentReader::Table table =
        DocumentReader::ReadFirstRows(request.m_file, request.m_table, range.m_offset + range.m_limit);
    if (table.m_data != nullptr) {
        PrintRows(settings, {request.m_table, table.m_descr.get(), table.m_data.get()}, range);
    }
    return table.m_data != nullptr;
}

}  // namespace

int Info(const Settings& settings, const InfoRequest& request) {
    // Rows that are only counted leave no trace in the log.
    const std::optional<RowCounts> counts =
        settings.m_log || !HasXmlEnding(request.m_file) ? std::nullopt : CountRows(request.m_file);
    Settings reading = settings;
    reading.m_sequential = settings.m_sequential || counts;
    Catalog catalog(request.m_file, reading);
    catalog.ReadStructure();
    const bool isForPeople = settings.m_format == Format::Text;
    const Overview overview = ReadOverview(catalog, counts ? &*counts : nullptr,
                                           isForPeople ? NumberStyle::Locale : NumberStyle::Point);
    StandardOutput output;
    if (isForPeople) {
        PrintOverview(overview, output);
    } else {
        ListOverview(overview, *MakeWriter(settings.m_format), output);
    }
    output.Close();
    catalog.WarnOfFaults();
    return Done;
}

int Fields(const Settings& settings, const FieldsRequest& request) {
    Catalog catalog(request.m_file, settings);
    catalog.ReadStructure();
    const DbTableDescr& descr = *catalog.Database().GetTableDescr(catalog.FindIndex(request.m_table));
    const NumberStyle style = settings.m_format == Format::Text ? NumberStyle::Locale : NumberStyle::Point;
    RecordListing fields({{"name"}, {"type"}, {"key"}, {"default"}});
    for (const DbFieldDescr* field : descr) {
        Value standard;
        ReadValue(field->GetVariant(), true, style, standard);
        fields.Add({Value::OfText(field->GetName().ToUtf8()), Value::OfText(field->GetTypeString().ToUtf8()),
                    Value::OfBoolean(field->IsKey()), std::move(standard)});
    }
    Print(settings, fields);
    catalog.WarnOfFaults();
    return Done;
}

int Show(const Settings& settings, const ShowRequest& request) {
    if (ShowFirstRows(settings, request)) {
        return Done;
    }
    Catalog catalog(request.m_file, settings);
    catalog.ReadStructure();
    PrintRows(settings, catalog.FindTable(request.m_table), request.m_rows);
    catalog.WarnOfFaults();
    return Done;
}

int Export(const Settings& settings, const ExportRequest& request) {
    const std::unique_ptr<Writer> writer = MakeWriter(FormatOfTarget(settings, request.m_target));
    if (request.m_target != "-" && !request.m_replace) {
        RefuseExisting(request.m_target);
    }
    const auto target = platform::FileIdentity::Of(request.m_target);
    if (target && target == platform::FileIdentity::Of(request.m_file)) {
        throw Failure(request.m_target + ": the catalog itself, which is not overwritten");
    }
    Catalog catalog(request.m_file, settings);
    catalog.ReadStructure();
    const Table table = catalog.FindTable(request.m_table);
    const TableListing listing(*table.m_descr, *table.m_data, 0, table.m_data->size());
    const std::string label = "Exporting " + table.m_name;
    if (request.m_target == "-") {
        StandardOutput output;
        WriteWithProgress(*writer, listing, output, ScreenBesideStandardOutput(), label);
    } else {
        FileOutput output(request.m_target);
        WriteWithProgress(*writer, listing, output, ScreenBesideFiles(), label);
    }
    catalog.WarnOfFaults();
    return Done;
}

}  // namespace quillet::tool
