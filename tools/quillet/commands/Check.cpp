// Reads all of a catalog and reports what is wrong with it.
#include <charconv>
#include <set>

#include "Quillet/values/FieldNames.h"
#include "Quillet/xml/Document.h"
#include "commands/Commands.h"
#include "input/Catalog.h"
#include "input/CellText.h"
#include "output/Listing.h"
#include "output/PlainText.h"
#include "output/Progress.h"
#include "output/Writer.h"

namespace quillet::tool {

namespace {

constexpr int Sound = 0;
constexpr int Faulty = 1;

// A problem and, as far as it is known, its place: lines and rows count from 1, 0 means none.
struct Finding {
    std::string m_message;
    std::size_t m_line = 0;
    std::string m_table = {};
    std::size_t m_row = 0;
    std::string m_field = {};
    // Whether the message says where.
    bool m_isPlaceInMessage = false;
};

using Findings = std::vector<Finding>;

// The attribute of an element; empty if it has none of that name.
std::string Attribute(const xml::Node& element, std::string_view name) {
    xml::AttributeReader attributes(element);
    while (attributes.Next()) {
        if (attributes.Name() == name) {
            return std::string(attributes.Value());
        }
    }
    return {};
}

// A field with an invalid type has no type.
bool IsUnknownType(const std::string& type) {
    unsigned short number = 0;
    std::from_chars(type.data(), type.data() + type.size(), number);
    DbFieldDescr field;
    field.SetType(number);
    return field.GetType() == VT_EMPTY && type != "0";
}

// The next change drops all attributes that are not in the list.
void CheckAttributes(const xml::Node& element, const std::set<std::string_view>& known, Findings& findings) {
    xml::AttributeReader attributes(element);
    while (attributes.Next()) {
        if (known.count(attributes.Name()) == 0) {
            findings.push_back({"an attribute " + Quoted(std::string(attributes.Name())) + " of <" +
                                element.Name() + "> that no catalog has there"});
        }
    }
}

// A table has its name, in the first attribute.
void CheckTableAttributes(const xml::Node& table, Findings& findings) {
    xml::AttributeReader attributes(table);
    if (attributes.Next()) {
        CheckAttributes(table, {attributes.Name()}, findings);
    }
}

void CheckFieldTypes(const xml::Node& table, Findings& findings) {
    for (xml::Node field = table.FirstChild(); !field.IsNull(); field = field.NextSibling()) {
        const std::string type = Attribute(field, "type");
        const std::string name = Attribute(field, "name");
        if (!field.FirstChild().IsNull()) {
            findings.push_back({"the field holds elements or text, which no catalog has there", 0,
                                Attribute(table, "name"), 0, name});
        }
        CheckAttributes(field, {"name", "key", "type", "required"}, findings);
        if (IsUnknownType(type)) {
            findings.push_back({"there is no type " + Quoted(type) + ", its values are read as text", 0,
                                Attribute(table, "name"), 0, name});
        }
    }
}

// The tables that a structure describes, in lower case; their fields' types are checked.
std::set<CString> CheckTables(const xml::Node& structure, Findings& findings) {
    std::set<CString> names;
    for (xml::Node table = structure.FirstChild(); !table.IsNull(); table = table.NextSibling()) {
        names.insert(Lowered(table.FirstAttributeValue().value_or("")));
        CheckTableAttributes(table, findings);
        CheckFieldTypes(table, findings);
    }
    return names;
}

// Whether the database itself reports that it left the element out.
bool IsLoggedAsSurplus(const xml::Node& element, const Settings& settings) {
    const CString name(element.Name());
    return !settings.m_sequential &&
           (name.CompareNoCase("header") == 0 || name.CompareNoCase("body") == 0 ||
            name.CompareNoCase("structure") == 0 || name.CompareNoCase("data") == 0);
}

// The children of an element after the two that a catalog has there.
void CheckSurplus(const xml::Node& parent, const Settings& settings, Findings& findings) {
    constexpr std::size_t Known = 2;
    std::size_t position = 0;
    for (xml::Node child = parent.FirstChild(); !child.IsNull(); child = child.NextSibling()) {
        if (position++ < Known || IsLoggedAsSurplus(child, settings)) {
            continue;
        }
        const std::string what = child.IsElement() ? "an element <" + child.Name() + ">" : "text";
        findings.push_back({what + " in <" + parent.Name() + "> that no catalog has there"});
    }
}

// A row holds nothing but attributes.
void CheckRows(const xml::Node& data, Findings& findings) {
    for (xml::Node table = data.FirstChild(); !table.IsNull(); table = table.NextSibling()) {
        CheckTableAttributes(table, findings);
        std::size_t number = 0;
        for (xml::Node row = table.FirstChild(); !row.IsNull(); row = row.NextSibling()) {
            ++number;
            if (!row.FirstChild().IsNull()) {
                findings.push_back({"the row holds elements or text, which no catalog has there", 0,
                                    table.FirstAttributeValue().value_or(""), number});
            }
        }
    }
}

// One of the two halves of a catalog. Returns the names of its tables in lower case.
std::set<CString> CheckHalf(const xml::Node& half, const Settings& settings, Findings& findings) {
    const xml::Node structure = half.FirstChild();
    for (const xml::Node& element : {half, structure, structure.NextSibling()}) {
        CheckAttributes(element, {}, findings);
    }
    CheckRows(structure.NextSibling(), findings);
    CheckSurplus(half, settings, findings);
    return CheckTables(structure, findings);
}

// The file as XML, before it is read as a catalog. False if it is not XML.
bool CheckXml(const std::string& path, const Settings& settings, Findings& findings) {
    const RunningProgress progress(ScreenBesideFiles(), "Checking " + path);
    xml::Document document;
    if (!document.LoadFile(path)) {
        findings.push_back({document.Error().m_message, document.Error().m_line});
        return false;
    }
    std::size_t roots = 0;
    xml::Node database;
    for (xml::Node root = document.Root().FirstChild(); !root.IsNull(); root = root.NextSibling()) {
        ++roots;
        if (CString(root.Name()).CompareNoCase("database") == 0) {
            database = root;
        }
    }
    if (database.IsNull()) {
        findings.push_back({"no catalog: there is no <database> element"});
        return false;
    }
    if (roots > 1) {
        findings.push_back({"there is more than one element at the top, and the last <database> is read"});
    }
    CheckAttributes(database, {}, findings);
    const xml::Node header = database.FirstChild();
    const std::set<CString> names = CheckHalf(header, settings, findings);
    for (const char* name : {HeaderName, PropertiesName}) {
        if (names.count(Lowered(name)) == 0) {
            findings.push_back({"the header has no table " + std::string(name)});
        }
    }
    CheckHalf(header.NextSibling(), settings, findings);
    CheckSurplus(database, settings, findings);
    return true;
}

void CheckFieldNames(const Table& table, Findings& findings) {
    std::set<CString> seen;
    for (const DbFieldDescr* field : *table.m_descr) {
        if (!seen.insert(field->GetName()).second) {
            findings.push_back({"two fields have this name", 0, table.m_name, 0, field->GetName().ToUtf8()});
        }
    }
    // Duplicate field names were reported above.
    const auto name = [&](std::size_t field) {
        return table.m_descr->GetField(static_cast<int>(field)).GetName();
    };
    for (const UnsavableField& field : UnsavableFields(*table.m_descr)) {
        if (!field.m_same || name(*field.m_same) != name(field.m_field)) {
            findings.push_back(
                {"rows can't be saved: " + field.m_why, 0, table.m_name, 0, name(field.m_field).ToUtf8()});
        }
    }
}

// A cell without a value is valid in every column, and every value is valid in a column without a type.
bool Fits(const DbFieldDescr& field, const CellView& cell) {
    const VARTYPE type = cell.Type();
    return type == field.GetType() || field.GetType() == VT_EMPTY || type == VT_EMPTY || type == VT_NULL ||
           (type == VT_BSTR && CellText(cell).empty());
}

void CheckCells(const Table& table, Findings& findings) {
    const std::size_t rows = table.m_data->size();
    RunningProgress progress(ScreenBesideFiles(), "Checking " + table.m_name, rows);
    const RowsView view(*table.m_data->GetRows());
    for (std::size_t row = 0; row < rows; ++row) {
        const std::size_t cells = view.HasRow(row) ? view.Width(row) : 0;
        for (std::size_t i = 0; i < cells; ++i) {
            const DbFieldDescr& field = table.m_descr->GetField(static_cast<int>(i));
            const CellView cell = view.Cell(row, i);
            if (!Fits(field, cell)) {
                findings.push_back(
                    {Quoted(CellText(cell)) + " is no value of the type " + field.GetTypeString().ToUtf8(), 0,
                     table.m_name, row + 1, field.GetName().ToUtf8()});
            } else if (!IsReadBack(cell)) {
                findings.push_back({LostNumber(cell), 0, table.m_name, row + 1, field.GetName().ToUtf8()});
            }
        }
        progress.Set(row + 1);
    }
}

void CheckCatalog(Catalog& catalog, Findings& findings) {
    for (const DbLogEntry& fault : catalog.Faults()) {
        findings.push_back({fault.m_text.ToUtf8(), 0, fault.m_table.ToUtf8(),
                            static_cast<std::size_t>(fault.m_row), fault.m_field.ToUtf8(), true});
    }
    DbDatabase& database = catalog.Database();
    for (std::size_t i = 0; i < static_cast<std::size_t>(database.GetTablesCount()); ++i) {
        const Table table = {database.GetTableName(i).ToUtf8(), database.GetTableDescr(i),
                             database.GetTableData(i)};
        if (catalog.IsXml() && !table.m_data->IsInitialized() && !IsHeaderOrProperties(table.m_name)) {
            findings.push_back({"its rows are missing from the file", 0, table.m_name});
        }
        CheckFieldNames(table, findings);
        CheckCells(table, findings);
    }
}

bool IsRead(Catalog& catalog, const std::string& table) {
    DbTableData* const data = catalog.Database().GetTableData(table);
    return data != nullptr && data->IsInitialized();
}

// Whether sequential reading is at fault, not the file.
bool MissesWhatIsThere(Catalog& sequential, Catalog& whole) {
    bool isAllThere = !whole.IsIncomplete();
    for (const std::string& table : whole.TableNames()) {
        const bool isThere = IsRead(whole, table);
        if (isThere && !IsRead(sequential, table)) {
            return true;
        }
        isAllThere = isAllThere && (isThere || IsHeaderOrProperties(table));
    }
    return isAllThere;
}

void CheckDatabase(const std::string& path, const Settings& settings, Findings& findings) {
    Catalog catalog(path, settings);
    catalog.ReadAll();
    if (settings.m_sequential && catalog.IsXml() && catalog.IsIncomplete()) {
        // Errors of the file itself appear when it is read as a whole.
        Settings asAWhole = settings;
        asAWhole.m_sequential = false;
        Catalog whole(path, asAWhole);
        whole.ReadAll();
        if (MissesWhatIsThere(catalog, whole)) {
            findings.push_back({catalog.WhyIncomplete()});
        }
        CheckCatalog(whole, findings);
        return;
    }
    if (settings.m_sequential && catalog.IsXml() && catalog.Faults().empty() &&
        !catalog.Database().LoadWhole()) {
        findings.push_back({catalog.Database().LastReadError().ToUtf8()});
    }
    CheckCatalog(catalog, findings);
}

// "FILE:LINE: table 'T', row 3, field 'f': message", without the unknown parts.
std::string Describe(const std::string& path, const Finding& finding) {
    std::string text = path + (finding.m_line == 0 ? "" : ":" + std::to_string(finding.m_line)) + ": ";
    if (!finding.m_table.empty() && !finding.m_isPlaceInMessage) {
        text += "table '" + finding.m_table + "'";
        text += finding.m_row == 0 ? "" : ", row " + std::to_string(finding.m_row);
        text += finding.m_field.empty() ? "" : ", field '" + finding.m_field + "'";
        text += ": ";
    }
    return text + finding.m_message;
}

void PrintFindings(const std::string& path, const Findings& findings) {
    StandardOutput output;
    for (const Finding& finding : findings) {
        output.Write(Visible(Describe(path, finding)) + "\n");
    }
    if (findings.empty()) {
        output.Write(Visible(path) + ": ok\n");
    }
    output.Close();
}

Value TextOrNull(const std::string& text) {
    return text.empty() ? Value() : Value::OfText(text);
}

Value CountOrNull(std::size_t count) {
    return count == 0 ? Value() : Value::OfCount(count);
}

void ListFindings(const std::string& path, const Findings& findings, const Writer& writer) {
    RecordListing listing({{"file"}, {"line", true}, {"table"}, {"row", true}, {"field"}, {"message"}});
    for (const Finding& finding : findings) {
        listing.Add({Value::OfText(path), CountOrNull(finding.m_line), TextOrNull(finding.m_table),
                     CountOrNull(finding.m_row), TextOrNull(finding.m_field),
                     Value::OfText(finding.m_message)});
    }
    StandardOutput output;
    writer.Write(listing, output);
    output.Close();
}

}  // namespace

int Check(const Settings& settings, const CheckRequest& request) {
    const std::string& path = request.m_file;
    Findings findings;
    const bool isXml = Catalog(path, settings).IsXml();
    if (!isXml || CheckXml(path, settings, findings)) {
        CheckDatabase(path, settings, findings);
    }
    if (settings.m_format == Format::Text) {
        PrintFindings(path, findings);
    } else {
        ListFindings(path, findings, *MakeWriter(settings.m_format));
    }
    if (!findings.empty()) {
        Complain(path + ": " + Counted(findings.size(), "fault"));
    }
    return findings.empty() ? Sound : Faulty;
}

}  // namespace quillet::tool
