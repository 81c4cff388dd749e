#include "SaveErrors.h"

#include <algorithm>
#include <map>
#include <string_view>

#include "CellText.h"
#include "PlainText.h"
#include "xml/Tree.h"

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

// Fields that no row can hold; empty where there are none.
std::string WrongField(const DbTableDescr& descr) {
    std::map<std::string, const DbFieldDescr*> written;
    for (const DbFieldDescr* field : descr) {
        if (!xml::IsXmlName(field->SafeNameUtf8())) {
            return "field " + NameOf(*field) + ": no catalog can hold a field of this name";
        }
        const auto [place, isNew] = written.emplace(field->SafeNameUtf8(), field);
        if (!isNew) {
            return "fields " + NameOf(*place->second) + " and " + NameOf(*field) +
                   ": a catalog writes both as " + Quoted(place->first);
        }
    }
    return {};
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

// The first thing about a table that can't be written.
std::string WhatIsWrong(const DbTableDescr& descr, DbTableData& data) {
    std::string wrong = WrongField(descr);
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
            const std::string wrong =
                WhatIsWrong(*database.GetTableDescr(name), *database.GetTableData(name));
            add("table " + Quoted(name) + (wrong.empty() ? ": it can't be written" : ", " + wrong));
        } else if (!NamesAFunction(line)) {
            add(line);
        }
    }
    return reasons;
}

}  // namespace quillet::tool
