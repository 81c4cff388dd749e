// A table from comma-separated values.
#include "commands/Commands.h"
#include "commands/LostNumbers.h"
#include "input/Catalog.h"
#include "input/CellText.h"
#include "input/CsvTable.h"
#include "output/PlainText.h"
#include "output/Progress.h"
#include "output/Report.h"

namespace quillet::tool {

namespace {

// One bar covers both passes over the file. The catalog, which is read between them, shows its own.
void ReadStructure(const ImportRequest& request, CsvTable& csv) {
    RunningProgress bar(ScreenBesideFiles(), "Importing " + FileName(request.m_source), csv.Work());
    csv.ReadStructure(request.m_keepsNames, [&](std::uint64_t done) { bar.Set(done); });
}

void FillRows(const ImportRequest& request, const CsvTable& csv, DbTableData& data) {
    RunningProgress bar(ScreenBesideFiles(), "Importing " + FileName(request.m_source), csv.Work());
    bar.Set(csv.Work() / 2);
    csv.FillRows(data, [&](std::uint64_t done) { bar.Set(done); });
}

// The fields whose names differ from their headings; empty if none do.
std::string OtherNames(const ImportRequest& request, const CsvTable& csv) {
    std::string list;
    for (const auto& [heading, name] : csv.Renamed()) {
        list += (list.empty() ? "" : ", ") + Quoted(heading) + " to " + Quoted(name);
    }
    return list.empty() ? list : request.m_source + ": fields renamed: " + list;
}

void ApplyOptions(const ImportRequest& request, CsvTable& csv) {
    for (const auto& [name, word] : request.m_types) {
        csv.FieldFor("--type", name).SetDbType(*TypeOfWord(word));
    }
    for (const std::string& name : request.m_keys) {
        csv.FieldFor("--key", name).SetKey(true);
    }
}

// An empty table of that name, at the position of the one that it replaces. Fields that stay remain keys.
DbTableInfo& MakeRoom(Catalog& catalog, const ImportRequest& request, DbTableDescr& structure) {
    DbDatabase& database = catalog.Database();
    if (IsHeaderOrProperties(request.m_table)) {
        throw catalog.Failed("the table " + request.m_table +
                             " can't be imported: 'quillet set' sets its values");
    }
    if (!database.IsTable(request.m_table)) {
        return *database.CreateTable(request.m_table, DbTableInfo::Table);
    }
    if (!request.m_replace) {
        throw catalog.Failed("a table " + Quoted(request.m_table) +
                             " is already there: --replace replaces it");
    }
    DbTableInfo& info = *database.GetTableInfo(request.m_table);
    for (const DbFieldDescr* field : *info.GetDescr()) {
        DbFieldDescr* const stays = FindField(structure, field->GetName());
        if (field->IsKey() && stays != nullptr) {
            stays->SetKey(true);
        }
    }
    database.ClearTable(request.m_table);
    return info;
}

}  // namespace

int Import(const Settings& settings, const ImportRequest& request) {
    CsvTable csv(request.m_source, request.m_delimiter);
    ReadStructure(request, csv);
    ApplyOptions(request, csv);
    Catalog catalog = Catalog::OpenForEditing(request.m_file, settings);
    catalog.RefuseUncarriable("the table's name", request.m_table);
    DbTableInfo& info = MakeRoom(catalog, request, csv.Structure());
    for (const DbFieldDescr* field : csv.Structure()) {
        AppendField(*info.GetDescr()) = *field;
    }
    FillRows(request, csv, *info.GetData());
    RefuseLostNumbers(catalog, "not changed", settings);
    Report report(settings,
                  catalog.Path() + ": table '" + info.GetName().ToUtf8() + "' imported, " +
                      Counted(csv.Structure().size(), "field") + ", " + Counted(csv.CountRows(), "row"),
                  OtherNames(request, csv));
    catalog.Save();
    report.Print();
    return Done;
}

}  // namespace quillet::tool
