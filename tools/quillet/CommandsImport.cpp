// A table from comma-separated values.
#include <map>
#include <memory>
#include <optional>

#include "Catalog.h"
#include "CellText.h"
#include "Commands.h"
#include "CsvReader.h"
#include "Failure.h"
#include "Names.h"
#include "Output.h"
#include "PlainText.h"
#include "Progress.h"
#include "platform/File.h"
#include "xml/Document.h"

namespace quillet::tool {

namespace {

constexpr int Done = 0;

// Appends a field to a table without rows. Files may hold fields that differ in case only, as I and i, though
// only the first one is found by name; CreateField would refuse the second.
DbFieldDescr& AppendField(DbTableDescr& descr) {
    auto field = std::make_unique<DbFieldDescr>(&descr, static_cast<int>(descr.size()));
    descr.push_back(field.get());
    return *field.release();
}

// The field of exactly this name, otherwise the first that has it in other case; null where there is none.
DbFieldDescr* FindField(const DbTableDescr& descr, const CString& name) {
    DbFieldDescr* found = nullptr;
    for (DbFieldDescr* field : descr) {
        if (field->GetName() == name) {
            return field;
        }
        if (found == nullptr && field->GetName().CompareNoCase(name) == 0) {
            found = field;
        }
    }
    return found;
}

// The text of a CSV file, read twice: once for names and types, once for the values.
class CsvTable {
public:
    explicit CsvTable(const std::string& path) : m_path(path) {
        std::string why;
        std::optional<std::string> text = platform::ReadWholeFile(path, &why);
        if (!text) {
            throw Failure(path + ": " + why);
        }
        m_text = std::move(*text);
    }

    // Reads everything but the values; refuses what is no table.
    void ReadStructure() {
        const RunningProgress progress(ScreenBesideFiles(), "Reading " + m_path);
        CsvReader reader(m_text, m_path);
        ReadNames(reader);
        std::vector<TypeGuess> guesses(m_structure.size());
        while (reader.Next()) {
            CheckRow(reader);
            for (std::size_t i = 0; i < guesses.size(); ++i) {
                guesses[i].See(reader.Values()[i]);
            }
            ++m_rows;
        }
        for (std::size_t i = 0; i < guesses.size(); ++i) {
            m_structure[i].SetDbType(guesses[i].Type());
        }
    }

    DbFieldDescr& FieldFor(const std::string& option, const std::string& name) {
        DbFieldDescr* const field = FindField(m_structure, name);
        if (field == nullptr) {
            throw Failure(m_path + ": no field " + Quoted(name) + " for " + option + ": " +
                          SuggestNames(name, FieldNames(m_structure)));
        }
        return *field;
    }

    DbTableDescr& Structure() { return m_structure; }
    std::size_t CountRows() const { return m_rows; }

    // Appends the rows to a table that has these fields.
    void FillRows(DbTableData& data) {
        RunningProgress progress(ScreenBesideFiles(), "Importing " + m_path, m_rows);
        CsvReader reader(m_text, m_path);
        reader.Next();
        DbRows& rows = *data.GetRows();
        rows.AddRows(m_rows, false);
        for (std::size_t i = 0; reader.Next(); ++i) {
            FillRow(reader, *rows.GetRow(static_cast<int>(i)));
            progress.Set(i + 1);
        }
    }

private:
    void ReadNames(CsvReader& reader) {
        if (!reader.Next()) {
            throw Failure(m_path + ": empty: the first line must name the fields");
        }
        for (const std::string& name : reader.Values()) {
            if (name.empty()) {
                throw Failure(
                    reader.Message("field " + std::to_string(m_structure.size() + 1) + " has no name"));
            }
            AppendField(m_structure).SetName(name);
        }
        CheckNames(reader);
    }

    // Every row is written as an element whose attributes bear the names of the fields.
    void CheckNames(const CsvReader& reader) const {
        const xml::Document document;
        const xml::Node rows = document.Root().CreateElement("rows");
        std::map<std::string, std::string> written;
        for (const DbFieldDescr* field : m_structure) {
            const std::string name = Quoted(field->GetName().ToUtf8());
            try {
                xml::LeafElement row(document.Root(), rows, "row");
                row.Attribute(field->SafeNameUtf8(), std::string_view());
            } catch (const xml::DomError& error) {
                throw Failure(
                    reader.Message("a catalog can't have a field " + name + ": " + error.m_message));
            }
            const auto [place, isNew] = written.emplace(field->SafeNameUtf8(), name);
            if (!isNew && place->second == name) {
                throw Failure(reader.Message("two fields are called " + name));
            }
            if (!isNew) {
                throw Failure(reader.Message("a catalog can't tell the fields " + place->second + " and " +
                                             name + " apart, it writes both as '" + place->first + "'"));
            }
        }
    }

    void CheckRow(const CsvReader& reader) const {
        const std::vector<std::string>& values = reader.Values();
        if (values.size() != m_structure.size()) {
            throw Failure(reader.Message(Counted(values.size(), "value") + ", but the first line names " +
                                         Counted(m_structure.size(), "field")));
        }
        for (std::size_t i = 0; i < values.size(); ++i) {
            const std::string uncarriable = UncarriableCharacter(values[i]);
            if (!uncarriable.empty()) {
                throw Failure(
                    reader.Message(Field(i) + " holds " + uncarriable + ", which a catalog can't carry"));
            }
        }
    }

    void FillRow(const CsvReader& reader, DbTableRow& row) const {
        for (std::size_t i = 0; i < m_structure.size(); ++i) {
            const DbFieldDescr& field = m_structure.GetField(static_cast<int>(i));
            const std::string& text = reader.Values()[i];
            if (!FillCell(field, text, row.GetField(i).GetVariant())) {
                throw Failure(reader.Message(Field(i) + ": " + Quoted(text) + " is no value of the type " +
                                             field.GetTypeString().ToUtf8()));
            }
        }
    }

    std::string Field(std::size_t index) const {
        return "field " + Quoted(m_structure.GetField(static_cast<int>(index)).GetName().ToUtf8());
    }

    std::string m_path;
    std::string m_text;
    DbTableDescr m_structure{nullptr};
    std::size_t m_rows = 0;
};

void ApplyOptions(const ImportRequest& request, CsvTable& csv) {
    for (const auto& [name, word] : request.m_types) {
        csv.FieldFor("--type", name).SetDbType(*TypeOfWord(word));
    }
    for (const std::string& name : request.m_keys) {
        csv.FieldFor("--key", name).SetKey(true);
    }
}

// An empty table of the name, in the place of the one that it replaces. Fields that stay remain keys.
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
    CsvTable csv(request.m_source);
    csv.ReadStructure();
    ApplyOptions(request, csv);
    Catalog catalog = Catalog::OpenForEditing(request.m_file, settings);
    catalog.RefuseUncarriable("the table's name", request.m_table);
    DbTableInfo& info = MakeRoom(catalog, request, csv.Structure());
    for (const DbFieldDescr* field : csv.Structure()) {
        AppendField(*info.GetDescr()) = *field;
    }
    csv.FillRows(*info.GetData());
    catalog.Save();
    Say(settings, catalog.Path() + ": table '" + info.GetName().ToUtf8() + "' imported, " +
                      Counted(csv.Structure().size(), "field") + ", " + Counted(csv.CountRows(), "row"));
    return Done;
}

}  // namespace quillet::tool
