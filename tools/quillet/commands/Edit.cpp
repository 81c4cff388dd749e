// Commands that change a catalog.
#include "Failure.h"
#include "Quillet/platform/File.h"
#include "commands/Commands.h"
#include "commands/LostNumbers.h"
#include "input/Catalog.h"
#include "input/CellText.h"
#include "output/NameSuggestions.h"
#include "output/PlainText.h"
#include "output/Report.h"

namespace quillet::tool {

namespace {

// Sets values of the one row of Header or Properties.
void SetValues(Catalog& catalog, const std::string& tableName, const std::vector<KeyValue>& values) {
    const Table table = catalog.FindTable(tableName);
    for (const auto& [key, value] : values) {
        const int index = table.m_descr->GetFieldIndex(key);
        if (index < 0) {
            throw catalog.Failed("no field " + Quoted(key) + " in " + table.m_name + ": " +
                                 SuggestNames(key, FieldNames(*table.m_descr)));
        }
        catalog.RefuseUncarriable("the value of " + key, value);
        if (table.m_data->size() == 0) {
            table.m_data->AddRow();
        }
        const DbFieldDescr& field = table.m_descr->GetField(index);
        if (!FillCell(field, value, (*table.m_data)[0].GetField(static_cast<uint64>(index)).GetVariant())) {
            throw catalog.Failed(key + ": " + Quoted(value) + " is no value of the type " +
                                 field.GetTypeString().ToUtf8());
        }
    }
}

}  // namespace

int New(const Settings& settings, const NewRequest& request) {
    const std::string& file = request.m_file;
    if (!HasXmlEnding(file)) {
        throw Failure(file + ": the name of a new catalog must end in .xml");
    }
    Catalog catalog = Catalog::Create(file, settings);
    if (platform::PathExists(file)) {
        throw Failure(file + ": already there, and not overwritten");
    }
    SetValues(catalog, HeaderName, request.m_header);
    SetValues(catalog, PropertiesName, request.m_properties);
    Report report(settings, file + ": created");
    catalog.Save();
    report.Print();
    return Done;
}

int Set(const Settings& settings, const SetRequest& request) {
    Catalog catalog = Catalog::OpenForEditing(request.m_file, settings);
    SetValues(catalog, request.m_table, request.m_values);
    RefuseLostNumbers(catalog, "not changed", settings);
    Report report(settings, catalog.Path() + ": " + Counted(request.m_values.size(), "value") + " set in " +
                                request.m_table);
    catalog.Save();
    report.Print();
    return Done;
}

int Drop(const Settings& settings, const DropRequest& request) {
    Catalog catalog = Catalog::OpenForEditing(request.m_file, settings);
    const Table table = catalog.FindTable(request.m_table);
    if (IsHeaderOrProperties(table.m_name)) {
        throw catalog.Failed("the table " + table.m_name + " can't be dropped, every catalog has it");
    }
    catalog.Database().DeleteTable(table.m_name);
    RefuseLostNumbers(catalog, "not changed", settings);
    Report report(settings, catalog.Path() + ": table '" + table.m_name + "' dropped");
    catalog.Save();
    report.Print();
    return Done;
}

int Rename(const Settings& settings, const RenameRequest& request) {
    Catalog catalog = Catalog::OpenForEditing(request.m_file, settings);
    const Table table = catalog.FindTable(request.m_table);
    const std::string& newName = request.m_newName;
    if (IsHeaderOrProperties(table.m_name)) {
        throw catalog.Failed("the table " + table.m_name + " can't be renamed, every catalog has it");
    }
    catalog.RefuseUncarriable("the new name", newName);
    // The same name in different case is the same table.
    const bool isOwnName = CString(newName).CompareNoCase(table.m_name) == 0;
    if (!isOwnName && catalog.Database().IsTable(newName)) {
        throw catalog.Failed("a table " + Quoted(newName) + " is already there");
    }
    // With the names as they are in the file.
    RefuseLostNumbers(catalog, "not changed", settings);
    catalog.Database().RenameTable(table.m_name, newName);
    Report report(settings, catalog.Path() + ": table '" + table.m_name + "' renamed to '" + newName + "'");
    catalog.Save();
    report.Print();
    return Done;
}

}  // namespace quillet::tool
