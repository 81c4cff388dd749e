#include "input/SaveErrors.h"

#include <algorithm>
#include <string_view>

#include "Quillet/values/FieldNames.h"
#include "input/CellText.h"
#include "output/PlainText.h"

namespace quillet::tool {

namespace {

// "Error on DbTableRow::Save(IDispatch* doc, IDispatch* element), field, 3" and its like.
bool NamesAFunction(std::string_view line) {
    return line.starts_with("Error on Db") && line.find("::Save(") != std::string_view::npos;
}

// The table of a line such as 'Error on table "T" - body data saving'; empty for any other line.
std::string TableOf(std::string_view line) {
    constexpr std::string_view Beginning = "Error on table \"";
    constexpr std::string_view Ending = " saving";
    const std::size_t end = line.rfind("\" - ");
    if (!line.starts_with(Beginning) || !line.ends_with(Ending) || end == std::string_view::npos ||
        end < Beginning.size()) {
        return {};
    }
    return std::string(line.substr(Beginning.size(), end - Beginning.size()));
}

std::string NameOf(const DbFieldDescr& field) {
    return Quoted(field.GetName().ToUtf8());
}

std::string WrongValue(const DbTableDescr& descr, const DbTableRow& row) {
    for (std::size_t i = 0; i < row.size(); ++i) {
        const CComVariant& cell = row.GetField(i).GetVariant();
        if (i >= descr.size()) {
            return ": more values than the table has fields";
        }
        const std::string character =
            cell.vt == VT_BSTR ? UncarriableCharacter(CString(cell.Text()).ToUtf8()) : std::string();
        if (!character.empty()) {
            return ", field " + NameOf(descr.GetField(static_cast<int>(i))) + ": the text holds " +
                   character + ", which a catalog can't carry";
        }
    }
    return {};
}

// The first value of a table that can't be written.
std::string WhatIsWrong(const DbTableDescr& descr, DbTableData& data) {
    std::string wrong;
    for (uint64 i = 0; wrong.empty() && i < data.size(); ++i) {
        const DbTableRow* const row = data.GetRow(static_cast<int>(i));
        const std::string value = row == nullptr ? std::string() : WrongValue(descr, *row);
        wrong = value.empty() ? value : "row " + std::to_string(i + 1) + value;
    }
    return wrong;
}

}  // namespace

std::vector<std::string> ExplainSaveErrors(DbDatabase& database, const std::vector<std::string>& lines) {
    std::vector<std::string> reasons;
    const auto add = [&](const std::string& reason) {
        if (std::find(reasons.begin(), reasons.end(), reason) == reasons.end()) {
            reasons.push_back(reason);
        }
    };
    for (const std::string& line : lines) {
        const std::string name = TableOf(line);
        if (!name.empty() && database.IsTable(name)) {
            const DbTableDescr& descr = *database.GetTableDescr(name);
            if (!UnsavableFields(descr).empty()) {
                // A line of its own names them.
                continue;
            }
            const std::string wrong = WhatIsWrong(descr, *database.GetTableData(name));
            add("table " + Quoted(name) + (wrong.empty() ? ": it can't be written" : ", " + wrong));
        } else if (!NamesAFunction(line)) {
            add(line);
        }
    }
    return reasons;
}

}  // namespace quillet::tool
