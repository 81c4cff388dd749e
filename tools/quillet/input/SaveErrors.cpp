#include "input/SaveErrors.h"

#include <algorithm>
#include <set>

#include "input/CellText.h"
#include "output/PlainText.h"

namespace quillet::tool {

namespace {

using Kind = DbLogEntry::Kind;

// "table 'T', row 3, field 'f': the text holds U+0001, which a catalog can't carry", as far as it is known.
std::string WhatIsWrong(DbDatabase& database, const DbLogEntry& trace) {
    const std::string place =
        "table " + Quoted(trace.m_table.ToUtf8()) + ", row " + std::to_string(trace.m_row);
    const DbTableRow* const row =
        database.GetTableData(trace.m_table)->GetRow(static_cast<int>(trace.m_row) - 1);
    const int field = database.GetTableDescr(trace.m_table)->GetFieldIndex(trace.m_field);
    if (row == nullptr || field < 0) {
        return place + ": more values than the table has fields";
    }
    const CComVariant& cell = row->GetField(static_cast<uint64>(field)).GetVariant();
    const std::string character =
        cell.vt == VT_BSTR ? UncarriableCharacter(CString(cell.Text()).ToUtf8()) : std::string();
    return place + ", field " + Quoted(trace.m_field.ToUtf8()) +
           (character.empty() ? ": it can't be written"
                              : ": the text holds " + character + ", which a catalog can't carry");
}

}  // namespace

std::vector<std::string> ExplainSaveErrors(DbDatabase& database, const std::vector<DbLogEntry>& entries) {
    std::vector<std::string> reasons;
    // The tables that failed.
    std::set<CString> explained;
    const auto add = [&](const std::string& reason) {
        if (std::find(reasons.begin(), reasons.end(), reason) == reasons.end()) {
            reasons.push_back(reason);
        }
    };
    for (const DbLogEntry& entry : entries) {
        const bool isTable = database.IsTable(entry.m_table);
        if (entry.m_kind == Kind::SaveTrace) {
            if (entry.m_row > 0 && isTable && explained.insert(entry.m_table).second) {
                add(WhatIsWrong(database, entry));
            }
        } else if (entry.m_kind != Kind::SaveFault) {
            add(entry.m_text.ToUtf8());
        } else if (isTable && !entry.m_field.IsEmpty()) {
            explained.insert(entry.m_table);
            add(entry.m_text.ToUtf8());
        } else if (isTable && explained.insert(entry.m_table).second) {
            add("table " + Quoted(entry.m_table.ToUtf8()) + ": it can't be written");
        }
    }
    if (explained.empty()) {
        // No table failed, but the save as a whole, for a reason that may repeat an entry.
        return {database.LastSaveError().ToUtf8()};
    }
    return reasons;
}

}  // namespace quillet::tool
