#include "Objects.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <regex>

namespace memory_driver {
namespace {

// An offset at which nothing of a value is left, not even its end.
constexpr std::size_t AllGiven = static_cast<std::size_t>(-1);

// Weaker ones first.
int StrengthOf(SQLULEN cursorType) {
    switch (cursorType) {
        case SQL_CURSOR_FORWARD_ONLY:
            return 0;
        case SQL_CURSOR_STATIC:
            return 1;
        default:
            return 2;
    }
}

}  // namespace

// ---- Connection

void Connection::Connect(const std::string& connectString) {
    const bool isAscii =
        std::all_of(connectString.begin(), connectString.end(), [](char c) { return c >= 0 && c < 127; });
    if (!isAscii) {
        throw Failure{"HYC00", "this driver knows ASCII only"};
    }
    m_settings = ParseConnectString(connectString);
    m_database = OpenDatabase(m_settings);
}

SQLUINTEGER Connection::GetDataExtensions() const {
    const std::string names = Setting(m_settings, "getdata");
    SQLUINTEGER extensions = 0;
    for (const auto& [name, bit] :
         {std::pair("AnyColumn", SQL_GD_ANY_COLUMN), std::pair("AnyOrder", SQL_GD_ANY_ORDER),
          std::pair("Bound", SQL_GD_BOUND)}) {
        if (names.find(name) != std::string::npos) {
            extensions |= static_cast<SQLUINTEGER>(bit);
        }
    }
    return extensions;
}

SQLULEN Connection::CursorType() const {
    const std::string name = Setting(m_settings, "cursor");
    if (name == "forward") {
        return SQL_CURSOR_FORWARD_ONLY;
    }
    return name == "static" ? SQL_CURSOR_STATIC : SQL_CURSOR_KEYSET_DRIVEN;
}

SQLULEN Connection::Concurrency() const {
    return Setting(m_settings, "concurrency") == "lock" ? SQL_CONCUR_LOCK : SQL_CONCUR_ROWVER;
}

bool Connection::IsReadOnly() const {
    return Setting(m_settings, "writes") == "no";
}

bool Connection::Has(SQLUSMALLINT function) const {
    const std::string without = Setting(m_settings, "without");
    switch (function) {
        case SQL_API_SQLFETCHSCROLL:
            return without.find("SQLFetchScroll") == std::string::npos;
        case SQL_API_SQLSETPOS:
            return without.find("SQLSetPos") == std::string::npos;
        default:
            return true;
    }
}

// ---- Attributes

SQLRETURN Statement::SetAttribute(SQLINTEGER attribute, SQLPOINTER value) {
    const auto number = reinterpret_cast<SQLULEN>(value);
    switch (attribute) {
        case SQL_ATTR_CURSOR_TYPE: {
            // Of dynamic cursors and of those by keys it has the latter.
            const SQLULEN known = StrengthOf(number) == 2 ? SQL_CURSOR_KEYSET_DRIVEN : number;
            const SQLULEN most = m_connection.CursorType();
            m_cursorType = StrengthOf(known) > StrengthOf(most) ? most : known;
            return m_cursorType == number ? SQL_SUCCESS : Warn("01S02", "another type of cursor is taken");
        }
        case SQL_ATTR_CONCURRENCY: {
            const bool onlyReads = m_connection.IsReadOnly() || number == SQL_CONCUR_READ_ONLY;
            m_concurrency = onlyReads ? SQL_CONCUR_READ_ONLY : m_connection.Concurrency();
            return m_concurrency == number ? SQL_SUCCESS
                                           : Warn("01S02", onlyReads ? "the cursor will only read"
                                                                     : "another concurrency is taken");
        }
        case SQL_ATTR_ROW_STATUS_PTR:
            m_rowStatus = static_cast<SQLUSMALLINT*>(value);
            return SQL_SUCCESS;
        default:
            throw Failure{"HYC00", "unknown attribute of a statement"};
    }
}

SQLULEN Statement::Attribute(SQLINTEGER attribute) const {
    switch (attribute) {
        case SQL_ATTR_CURSOR_TYPE:
            return m_cursorType;
        case SQL_ATTR_CONCURRENCY:
            return m_concurrency;
        default:
            throw Failure{"HYC00", "unknown attribute of a statement"};
    }
}

// ---- Statements

void Statement::BindParameter(SQLUSMALLINT number, SQLSMALLINT cType, SQLPOINTER value, SQLLEN* length) {
    m_parameters.resize(std::max<std::size_t>(m_parameters.size(), number));
    m_parameters[number - 1U] = {cType, value, 0, length};
}

SQLRETURN Statement::Execute() {
    static const std::regex s_calls("select calls", std::regex::icase);
    static const std::regex s_select(R"(select \* from \[?(\w+)\]?)", std::regex::icase);
    static const std::regex s_delete(R"(delete from \[?(\w+)\]?)", std::regex::icase);
    static const std::regex s_insert(R"(insert into \[?(\w+)\]? \((.*)\) values \([?, ]*\))",
                                     std::regex::icase);
    CloseCursor();
    std::smatch match;
    m_isOfCalls = std::regex_match(m_text, s_calls);
    Log("Execute " + m_text);
    if (m_isOfCalls) {
        SelectCalls();
        return SQL_SUCCESS;
    }
    const bool isSelect = std::regex_match(m_text, match, s_select);
    const bool isDelete = !isSelect && std::regex_match(m_text, match, s_delete);
    if (!isSelect && !isDelete && !std::regex_match(m_text, match, s_insert)) {
        throw Failure{"HYC00", "unknown statement: " + m_text};
    }
    if (match[1].str() != Data().m_table) {
        throw Failure{"42S02", "no such table: " + match[1].str()};
    }
    if (isSelect) {
        SelectRows();
        return SQL_SUCCESS;
    }
    if (m_connection.IsReadOnly()) {
        throw Failure{"25000", "the database can only be read"};
    }
    if (!isDelete) {
        InsertRow(match[2].str());
        return SQL_SUCCESS;
    }
    const bool hadRows = !Data().m_rows.empty();
    Data().m_rows.clear();
    return hadRows ? SQL_SUCCESS : SQL_NO_DATA;
}

void Statement::SelectRows() {
    m_columns = Data().m_columns;
    const bool isByKeys = m_cursorType == SQL_CURSOR_KEYSET_DRIVEN;
    for (const auto& [key, cells] : Data().m_rows) {
        m_answer.push_back({key, isByKeys ? std::nullopt : std::optional(cells)});
    }
}

void Statement::SelectCalls() {
    constexpr std::size_t LongestCall = 255;
    m_columns = {{"call", Column::Type::Text, LongestCall}};
    for (const std::string& call : Data().m_calls) {
        m_answer.push_back({0, Cells{call}});
    }
}

void Statement::InsertRow(const std::string& names) {
    static const std::regex s_name(R"(\w+)");
    const std::vector<Column>& columns = Data().m_columns;
    Cells cells(columns.size());
    std::size_t number = 0;
    for (auto name = std::sregex_iterator(names.begin(), names.end(), s_name); name != std::sregex_iterator();
         ++name) {
        const auto column = std::find_if(columns.begin(), columns.end(), [&name](const Column& candidate) {
            return Lower(candidate.m_name) == Lower(name->str());
        });
        if (column == columns.end()) {
            throw Failure{"42S22", "no such column: " + name->str()};
        }
        cells[static_cast<std::size_t>(column - columns.begin())] = ParameterValue(number++);
    }
    Data().Append(std::move(cells));
}

Cell Statement::ParameterValue(std::size_t number) const {
    if (number >= m_parameters.size()) {
        throw Failure{"07002", "a parameter is not bound"};
    }
    const Binding& parameter = m_parameters[number];
    if (parameter.m_length != nullptr && *parameter.m_length == SQL_NULL_DATA) {
        return {};
    }
    if (parameter.m_cType == SQL_C_LONG) {
        SQLINTEGER integer = 0;
        std::memcpy(&integer, parameter.m_buffer, sizeof(integer));
        return std::to_string(integer);
    }
    if (parameter.m_cType != SQL_C_WCHAR || parameter.m_length == nullptr || *parameter.m_length < 0) {
        throw Failure{"HYC00", "a type of parameters that this driver does not take"};
    }
    const auto* units = static_cast<const SQLWCHAR*>(parameter.m_buffer);
    std::string text;
    for (std::size_t i = 0; i < static_cast<std::size_t>(*parameter.m_length) / sizeof(SQLWCHAR); ++i) {
        if (units[i] >= 127) {
            throw Failure{"HYC00", "this driver knows ASCII only"};
        }
        text += static_cast<char>(units[i]);
    }
    return text;
}

void Statement::CloseCursor() {
    m_columns.clear();
    m_answer.clear();
    m_position = -1;
    m_gotColumn = 0;
}

void Statement::Log(const std::string& call) {
    if (!m_isOfCalls) {
        Data().m_calls.push_back(call);
    }
}

// ---- Rows

const Column& Statement::At(SQLUSMALLINT column) const {
    if (column < 1 || column > m_columns.size()) {
        throw Failure{"07009", "there is no such column"};
    }
    return m_columns[column - 1U];
}

SQLRETURN Statement::BindColumn(SQLUSMALLINT column, SQLSMALLINT cType, SQLPOINTER buffer, SQLLEN room,
                                SQLLEN* length) {
    Log("BindCol " + std::to_string(column));
    if (column < 1) {
        throw Failure{"HYC00", "there are no bookmarks"};
    }
    m_bindings.resize(std::max<std::size_t>(m_bindings.size(), column));
    m_bindings[column - 1U] = {cType, buffer, room, length};
    return SQL_SUCCESS;
}

SQLUSMALLINT Statement::LastBound() const {
    const auto last = std::find_if(m_bindings.rbegin(), m_bindings.rend(),
                                   [](const Binding& binding) { return binding.m_buffer != nullptr; });
    return static_cast<SQLUSMALLINT>(m_bindings.rend() - last);
}

const Cells* Statement::CurrentRow() const {
    if (m_position < 0 || m_position >= std::ssize(m_answer)) {
        return nullptr;
    }
    const AnswerRow& row = m_answer[static_cast<std::size_t>(m_position)];
    return row.m_values.has_value() ? &*row.m_values : Data().Find(row.m_key);
}

SQLRETURN Statement::Fetch(SQLSMALLINT orientation) {
    Log(orientation == SQL_FETCH_NEXT ? "Fetch next" : "Fetch first");
    if (m_columns.empty()) {
        throw Failure{"24000", "no cursor is open"};
    }
    if (orientation != SQL_FETCH_NEXT &&
        (orientation != SQL_FETCH_FIRST || m_cursorType == SQL_CURSOR_FORWARD_ONLY)) {
        throw Failure{"HY106", "the cursor does not move that way"};
    }
    m_position = orientation == SQL_FETCH_FIRST ? 0 : std::min(m_position + 1, std::ssize(m_answer));
    m_gotColumn = 0;
    const bool isAtRow = m_position < std::ssize(m_answer);
    const Cells* const row = CurrentRow();
    if (m_rowStatus != nullptr) {
        *m_rowStatus = !isAtRow ? SQL_ROW_NOROW : row == nullptr ? SQL_ROW_DELETED : SQL_ROW_SUCCESS;
    }
    SQLRETURN result = isAtRow ? SQL_SUCCESS : SQL_NO_DATA;
    // Of a row that was deleted the buffers learn nothing.
    for (std::size_t i = 0; row != nullptr && i < std::min(m_bindings.size(), m_columns.size()); ++i) {
        std::size_t offset = 0;
        if (m_bindings[i].m_buffer != nullptr &&
            Deliver((*row)[i], m_columns[i].m_type, m_bindings[i], offset) != SQL_SUCCESS) {
            result = SQL_SUCCESS_WITH_INFO;
        }
    }
    return result;
}

SQLRETURN Statement::GetData(SQLUSMALLINT column, SQLSMALLINT cType, SQLPOINTER buffer, SQLLEN room,
                             SQLLEN* length) {
    Log("GetData " + std::to_string(column));
    const Column& asked = At(column);
    const Cells* const row = CurrentRow();
    if (row == nullptr) {
        throw Failure{"HY109", "the cursor is at no row"};
    }
    const SQLUINTEGER extensions = m_connection.GetDataExtensions();
    if (column <= m_bindings.size() && m_bindings[column - 1U].m_buffer != nullptr &&
        (extensions & SQL_GD_BOUND) == 0) {
        throw Failure{"07009", "the column is bound"};
    }
    if (column < LastBound() && (extensions & SQL_GD_ANY_COLUMN) == 0) {
        throw Failure{"07009", "a later column is bound"};
    }
    if (column < m_gotColumn && (extensions & SQL_GD_ANY_ORDER) == 0) {
        throw Failure{"07009", "a later column was asked for"};
    }
    if (column != m_gotColumn) {
        m_gotColumn = column;
        m_gotLength = 0;
    }
    if (m_gotLength == AllGiven) {
        return SQL_NO_DATA;
    }
    return Deliver((*row)[column - 1U], asked.m_type, {cType, buffer, room, length}, m_gotLength);
}

SQLRETURN Statement::Deliver(const Cell& cell, Column::Type type, const Binding& to, std::size_t& offset) {
    const bool isLong = to.m_cType == SQL_C_LONG && type == Column::Type::Integer;
    if (!isLong && to.m_cType != SQL_C_WCHAR) {
        throw Failure{"HYC00", "a type of values that this driver does not give"};
    }
    if (!cell.has_value()) {
        if (to.m_length == nullptr) {
            throw Failure{"22002", "a NULL, and nowhere to say so"};
        }
        *to.m_length = SQL_NULL_DATA;
        offset = AllGiven;
        return SQL_SUCCESS;
    }
    if (isLong) {
        const auto integer = static_cast<SQLINTEGER>(std::strtol(cell->c_str(), nullptr, 10));
        std::memcpy(to.m_buffer, &integer, sizeof(integer));
        if (to.m_length != nullptr) {
            *to.m_length = sizeof(integer);
        }
        offset = AllGiven;
        return SQL_SUCCESS;
    }
    if (to.m_room < static_cast<SQLLEN>(sizeof(SQLWCHAR))) {
        throw Failure{"HY090", "no room for the end of a text"};
    }
    const std::size_t rest = cell->size() - offset;
    const std::size_t given = std::min(rest, static_cast<std::size_t>(to.m_room) / sizeof(SQLWCHAR) - 1);
    auto* const units = static_cast<SQLWCHAR*>(to.m_buffer);
    std::copy_n(cell->data() + offset, given, units);
    units[given] = 0;
    if (to.m_length != nullptr) {
        *to.m_length = static_cast<SQLLEN>(rest * sizeof(SQLWCHAR));
    }
    offset = given == rest ? AllGiven : offset + given;
    return given == rest ? SQL_SUCCESS : Warn("01004", "a text is cut");
}

SQLRETURN Statement::SetPosition(SQLSETPOSIROW row, SQLUSMALLINT operation) {
    Log("SetPos " + std::to_string(operation));
    if (operation != SQL_DELETE) {
        throw Failure{"HYC00", "at its position a cursor can only delete"};
    }
    if (m_concurrency == SQL_CONCUR_READ_ONLY || m_isOfCalls) {
        throw Failure{"HY092", "the cursor only reads"};
    }
    // There is one row at a time, which 0 means too.
    if (row > 1) {
        throw Failure{"HY107", "there is no such row"};
    }
    if (CurrentRow() == nullptr ||
        Data().m_rows.erase(m_answer[static_cast<std::size_t>(m_position)].m_key) == 0) {
        throw Failure{"HY109", "the cursor is at no row"};
    }
    if (m_rowStatus != nullptr) {
        *m_rowStatus = SQL_ROW_DELETED;
    }
    return SQL_SUCCESS;
}

}  // namespace memory_driver
