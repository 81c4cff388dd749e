#include "input/CsvTable.h"

#include <algorithm>
#include <limits>
#include <map>
#include <memory>
#include <new>

#include "Quillet/platform/File.h"
#include "Quillet/xml/Tree.h"
#include "input/Catalog.h"
#include "input/CellText.h"
#include "input/Headings.h"
#include "output/NameSuggestions.h"
#include "output/PlainText.h"

namespace quillet::tool {

namespace {

struct OtherDelimiter {
    char m_letter;
    const char* m_plural;
    const char* m_option;
};

constexpr OtherDelimiter OtherDelimiters[] = {
    {';', "semicolons", "';'"}, {'\t', "tabs", "tab"}, {'|', "bars", "'|'"}};

// Whether the first rows of a text, more than one, all have the same number of values with this delimiter, at
// least two.
bool IsCutEvenly(std::string_view text, char delimiter) {
    constexpr std::size_t RowsLookedAt = 20;
    try {
        CsvReader reader(text, "", delimiter);
        std::size_t rows = 0;
        std::size_t columns = 0;
        for (; rows < RowsLookedAt && reader.Next(); ++rows) {
            columns = rows == 0 ? reader.Values().size() : columns;
            if (reader.Values().size() != columns) {
                return false;
            }
        }
        return rows > 1 && columns > 1;
    } catch (const Failure&) {
        return false;
    }
}

// The values of the first row of a text with this delimiter; none if it can't be read.
std::size_t CountHeadings(std::string_view text, char delimiter) {
    try {
        CsvReader reader(text, "", delimiter);
        return reader.Next() ? reader.Values().size() : 0;
    } catch (const Failure&) {
        return 0;
    }
}

// By the byte-order mark, or by the zero byte of the first letter.
bool LooksLikeUtf16(std::string_view text) {
    const bool hasMark = text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF");
    return hasMark || (text.size() > 1 && (text[0] == '\0') != (text[1] == '\0'));
}

bool IsEqualNoCase(const std::string& left, const std::string& right) {
    return CString(left).CompareNoCase(right) == 0;
}

}  // namespace

DbFieldDescr& AppendField(DbTableDescr& descr) {
    auto field = std::make_unique<DbFieldDescr>(&descr, static_cast<int>(descr.size()));
    descr.push_back(field.get());
    return *field.release();
}

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

void CsvValues::Add(const CsvReader& row) {
    for (const std::string& value : row.Values()) {
        if (value.size() > std::numeric_limits<std::uint32_t>::max()) {
            throw std::bad_alloc();
        }
        m_bytes.append(value.c_str(), value.size() + 1);
        m_sizes.push_back(static_cast<std::uint32_t>(value.size()));
    }
    m_lines.push_back(static_cast<std::uint32_t>(row.Line()));
}

CsvTable::CsvTable(const std::string& path, std::optional<char> delimiter)
    : m_path(path), m_delimiter(delimiter) {
    std::string why;
    std::optional<std::string> text = platform::ReadWholeFile(path, &why);
    if (!text) {
        throw Failure(path + ": " + why);
    }
    m_text = std::move(*text);
    m_size = m_text.size();
    if (LooksLikeUtf16(m_text)) {
        throw Failure(path + ": UTF-16, not UTF-8: save it as UTF-8 and import that");
    }
}

void CsvTable::ReadStructure(bool keepsNames, const Progress& progress) {
    CsvReader reader = Reader();
    ReadHeadings(reader);
    ReadNames(reader, keepsNames);
    std::vector<TypeGuess> guesses(m_structure.size());
    while (reader.Next()) {
        CheckRow(reader);
        for (std::size_t i = 0; i < guesses.size(); ++i) {
            guesses[i].See(reader.Values()[i]);
        }
        m_values.Add(reader);
        progress(reader.Position());
    }
    m_text = std::string();
    for (std::size_t i = 0; i < guesses.size(); ++i) {
        m_structure[i].SetDbType(guesses[i].Type());
    }
}

void CsvTable::ReadHeadings(CsvReader& reader) const {
    try {
        if (!reader.Next()) {
            throw Failure(m_path + ": empty: the first line must name the fields");
        }
    } catch (const Failure&) {
        // If commas are expected, quoted values between other delimiters are misplaced quotation marks.
        if (!m_delimiter) {
            RefuseOtherDelimiter(reader, 0);
        }
        throw;
    }
    if (!m_delimiter) {
        RefuseOtherDelimiter(reader, reader.Values().size());
    }
}

void CsvTable::RefuseOtherDelimiter(const CsvReader& reader, std::size_t headings) const {
    for (const OtherDelimiter& other : OtherDelimiters) {
        const bool isOnlyHope = headings <= 1 && other.m_letter != '|';
        if (CountHeadings(m_text, other.m_letter) > 1 &&
            (isOnlyHope || IsCutEvenly(m_text, other.m_letter))) {
            throw Failure(reader.Message(std::string("the values seem to be separated by ") + other.m_plural +
                                         ": --delimiter " + other.m_option + " reads them" +
                                         (headings == 0 ? "" : ", --delimiter , takes commas all the same")));
        }
    }
}

void CsvTable::ReadNames(const CsvReader& reader, bool keepsNames) {
    m_headings = reader.Values();
    const std::vector<std::string> names = keepsNames ? m_headings : SafeNames(m_headings);
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (names[i].empty()) {
            throw Failure(reader.Message("field " + std::to_string(i + 1) + " has no name"));
        }
        if (names[i] != m_headings[i]) {
            m_renamed.emplace_back(m_headings[i], names[i]);
        }
        AppendField(m_structure).SetName(names[i]);
    }
    CheckNames(reader);
}

// Every row is written as an element whose attributes have the names of the fields.
void CsvTable::CheckNames(const CsvReader& reader) const {
    std::map<std::string, std::string> written;
    for (const DbFieldDescr* field : m_structure) {
        const std::string name = Quoted(field->GetName().ToUtf8());
        if (!xml::IsXmlName(field->SafeNameUtf8())) {
            throw Failure(reader.Message("a catalog can't have a field " + name +
                                         ": it would be written as '" + field->SafeNameUtf8() +
                                         "', which is no XML name"));
        }
        const auto [place, isNew] = written.emplace(field->SafeNameUtf8(), name);
        if (!isNew && place->second == name) {
            throw Failure(reader.Message("two fields are called " + name));
        }
        if (!isNew) {
            throw Failure(reader.Message("a catalog can't tell the fields " + place->second + " and " + name +
                                         " apart, it writes both as '" + place->first + "'"));
        }
    }
}

DbFieldDescr& CsvTable::FieldFor(const std::string& option, const std::string& name) {
    const std::vector<std::string> names = FieldNames(m_structure);
    const auto isName = [&](const std::string& known) { return known == name; };
    const auto isNearlyName = [&](const std::string& known) { return IsEqualNoCase(known, name); };
    const std::vector<std::string>& headings = m_headings;
    for (const std::vector<std::string>* list : {&names, &headings}) {
        auto found = std::find_if(list->begin(), list->end(), isName);
        found = found == list->end() ? std::find_if(list->begin(), list->end(), isNearlyName) : found;
        if (found != list->end()) {
            return m_structure[static_cast<std::size_t>(found - list->begin())];
        }
    }
    throw Failure(m_path + ": no field " + Quoted(name) + " for " + option + ": " +
                  SuggestNames(name, names));
}

void CsvTable::FillRows(DbTableData& data, const Progress& progress) const {
    const std::size_t count = CountRows();
    data.GetRows()->AddRows(count, false);
    RowsView rows(*data.GetRows());
    CsvValues::Cursor values(m_values);
    for (std::size_t i = 0; i < count; ++i) {
        FillRow(values, rows, i);
        progress(m_size + m_size * (i + 1) / count);
    }
}

void CsvTable::CheckRow(const CsvReader& reader) const {
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

void CsvTable::FillRow(CsvValues::Cursor& values, RowsView& rows, std::size_t row) const {
    CComVariant scratch;
    for (std::size_t i = 0; i < m_structure.size(); ++i) {
        const DbFieldDescr& field = *m_structure.at(i);
        const std::string_view text = values.Next();
        const std::optional<CellView> value = ReadCell(field, text, scratch);
        if (!value) {
            throw Failure(m_path + ":" + std::to_string(m_values.LineOf(row)) + ": " + Field(i) + ": " +
                          Quoted(std::string(text)) + " is no value of the type " +
                          field.GetTypeString().ToUtf8());
        }
        rows.SetCell(row, i, *value);
    }
}

std::string CsvTable::Field(std::size_t index) const {
    return "field " + Quoted(m_structure.GetField(static_cast<int>(index)).GetName().ToUtf8());
}

}  // namespace quillet::tool
