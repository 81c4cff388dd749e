#include "Quillet/records/AccessImporter.h"

#include <algorithm>

#include "Quillet/Db_Source.h"
#include "Quillet/Db_TableData.h"
#include "Quillet/dbaccess/ColumnConversion.h"
#include "Quillet/dbaccess/DBACCESS.h"
#include "Quillet/dbaccess/LangMappings.h"
#include "Quillet/records/AccessTables.h"
#include "Quillet/registry/HeaderTables.h"
#include "Quillet/registry/Log.h"
#include "Quillet/registry/Registry.h"

namespace quillet {

namespace {

// While it lives, tables without rows still deliver the definition of their columns.
class ForcedDefinitions {
public:
    ForcedDefinitions() { DBACCESS::m_forceExtractTableDefiniton = true; }
    ForcedDefinitions(const ForcedDefinitions&) = delete;
    ForcedDefinitions& operator=(const ForcedDefinitions&) = delete;
    ~ForcedDefinitions() { DBACCESS::m_forceExtractTableDefiniton = false; }
};

VARTYPE FieldTypeOf(const DBACCESS_COLUMN& column) {
    switch (column.m_type) {
        case DBACCESS_COLUMN::Boolean:
            return VT_BOOL;
        case DBACCESS_COLUMN::Integer:
        case DBACCESS_COLUMN::Long:
            return VT_I4;
        case DBACCESS_COLUMN::Float:
            return VT_R4;
        case DBACCESS_COLUMN::Double:
            return VT_R8;
        case DBACCESS_COLUMN::Binary:
            return VT_ARRAY | VT_UI1;
        case DBACCESS_COLUMN::Text:
            return VT_BSTR;
        default:
            return VT_EMPTY;
    }
}

void AppendFields(const DBACCESS_RECORD& record, DbTableDescr& descr) {
    for (const DBACCESS_COLUMN& column : record) {
        DbFieldDescr field;
        field.SetName(column.m_name);
        field.SetType(FieldTypeOf(column));
        descr.AppendField(field);
    }
}

// The language that each field's name reveals; null for none.
std::vector<const LanguageMapping*> LanguagesOf(const DbTableDescr& descr) {
    std::vector<const LanguageMapping*> languages;
    languages.reserve(descr.size());
    for (const DbFieldDescr* const field : descr) {
        languages.push_back(LangMappings::Instance().Find(field->GetName()));
    }
    return languages;
}

}  // namespace

bool AccessImporter::Import() {
    m_log.Print(Log::Kind::Report, "Importing mdb file '%s'", m_source.GetFile().ToUtf8().c_str());
    DBACCESS_ALL all;
    bool loaded = false;
    {
        const ForcedDefinitions forced;
        loaded = ReadAccessTables(m_source.GetFile(), all);
    }
    if (loaded) {
        CopyFrom(all);
    }
    return loaded;
}

void AccessImporter::CopyFrom(const DBACCESS_ALL& all) {
    const auto find = [&all](const char* name) {
        return std::find_if(all.begin(), all.end(), [wanted = Lowered(name)](const auto& table) {
            return Lowered(table.first) == wanted;
        });
    };
    const auto header = find(HeaderTable);
    const auto properties = find(PropertiesTable);
    if (header == all.end()) {
        CreateHeaderTable(m_registry);
    } else {
        CopyTable(header->first, header->second);
    }
    if (properties == all.end()) {
        CreatePropertiesTable(m_registry);
    } else {
        CopyTable(properties->first, properties->second);
    }
    for (auto table = all.begin(); table != all.end(); ++table) {
        if (table != header && table != properties) {
            CopyTable(table->first, table->second);
        }
    }
}

void AccessImporter::CopyTable(const CString& name, const DBACCESS_VECTOR& records) {
    DbTableInfo* info = m_registry.Find(name);
    if (info != nullptr) {
        info->GetData()->Clear();
    } else {
        info = m_registry.Create(name, DbTableInfo::Table, "", nullptr);
        if (!records.empty()) {
            AppendFields(records.front(), *info->GetDescr());
        }
    }
    if (records.m_noRows) {
        ReportNoRows(name, records);
    }
    // Records may have been added since the table was read without rows.
    if (!records.m_noRows || records.size() > 1) {
        CopyRows(name, records, *info->GetDescr(), *info->GetData());
    }
}

void AccessImporter::ReportNoRows(const CString& name, const DBACCESS_VECTOR& records) {
    CString line;
    line.Format("table '%s' found in '%s'", name.ToUtf8().c_str(), m_source.GetFile().ToUtf8().c_str());
    m_report.push_back(line);
    if (records.m_remarks.empty()) {
        return;
    }
    m_report.emplace_back("{");
    for (const CString& remark : records.m_remarks) {
        m_report.push_back("   " + remark);
    }
    m_report.emplace_back("}");
}

// The language follows from the table's name, then from the name of each field in turn, row after row. A
// field whose name reveals none keeps the language of the field before it; the first field of a row keeps
// that of the row before.
void AccessImporter::CopyRows(const CString& name, const DBACCESS_VECTOR& records, DbTableDescr& descr,
                              DbTableData& data) {
    const std::vector<const LanguageMapping*> languages = LanguagesOf(descr);
    LangMappings& mappings = LangMappings::Instance();
    mappings.Select(name);
    ColumnConversion conversion(mappings);
    DbRows& rows = *data.GetRows();
    const uint64 first = rows.AddRows(records.size(), false);
    std::size_t surplus = 0;
    std::size_t firstSurplus = 0;
    for (std::size_t i = 0; i < records.size(); ++i) {
        DbTableRow* const row = rows.GetRow(static_cast<int>(first + i));
        if (row == nullptr) {
            break;
        }
        row->SetDescr(&descr);
        const DBACCESS_RECORD& record = records[i];
        const std::size_t fields = std::min(row->size(), languages.size());
        for (std::size_t field = 0; field < fields; ++field) {
            DbFieldValue& cell = (*row)[field];
            if (field < record.size()) {
                mappings.SelectFound(languages[field]);
                conversion.Convert(record[field], cell.GetVariant());
            } else {
                cell.GetVariant() = descr[field].GetVariant();
            }
            cell.SetChanged();
        }
        if (record.size() > fields && surplus++ == 0) {
            firstSurplus = i + 1;
        }
    }
    mappings.Reset();
    if (surplus > 0) {
        m_log.Print(
            Log::Kind::ReadFault, Log::Place(name, firstSurplus),
            "Table '%s' has records with more columns than its %d fields: %d, the first is record %d; the "
            "surplus is left out",
            name.ToUtf8().c_str(), static_cast<int>(languages.size()), static_cast<int>(surplus),
            static_cast<int>(firstSurplus));
    }
}

}  // namespace quillet
