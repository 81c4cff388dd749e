// A reference model of databases, cursors and definitions: linear searches, and nothing is cached. The tests
// compare the library with it.
//
// Fields are named a, b, c and d, of the types long, text, double and long; a table has the first few of
// them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "support/PlainQuery.h"

namespace quillet::test {

struct PlainCell {
    PlainValue m_value;
    bool m_isNull = false;
};

struct PlainRows;
struct PlainContents;

struct PlainStoredRow {
    std::vector<PlainCell> m_cells;
    std::weak_ptr<PlainRows> m_owner;
};

// The rows of a table, or a selection of another table's rows.
struct PlainRows {
    using Storage = std::vector<std::shared_ptr<PlainStoredRow>>;

    // Null if there is none.
    PlainStoredRow* At(std::uint64_t position) const {
        return position < m_order.size() && m_order[position] < m_storage->size()
                   ? (*m_storage)[m_order[position]].get()
                   : nullptr;
    }

    void RemoveFromOrder(std::size_t position) {
        std::vector<std::size_t> order;
        for (const std::size_t entry : m_order) {
            if (entry != position) {
                order.push_back(entry > position ? entry - 1 : entry);
            }
        }
        m_order = order;
    }

    PlainContents* m_table = nullptr;
    std::shared_ptr<Storage> m_storage = std::make_shared<Storage>();
    std::vector<std::size_t> m_order;
    std::weak_ptr<PlainRows> m_boundTo;
    bool m_isBound = false;
};

struct PlainIndex {
    std::string m_name;
    std::vector<std::string> m_fields;
    std::vector<std::uint64_t> m_order;
    // The table, and its version, that the order was built for.
    const PlainContents* m_table = nullptr;
    long m_version = -1;
};

// A table or the answer of a query.
struct PlainContents {
    std::size_t FieldCount() const { return m_fields.size(); }
    std::uint64_t RowCount() const { return m_rows->m_order.size(); }

    int Find(const std::string& field) const {
        const auto found = std::find(m_fields.begin(), m_fields.end(), PlainLower(field));
        return found == m_fields.end() ? -1 : static_cast<int>(found - m_fields.begin());
    }

    static char TypeOf(const std::string& field) { return field == "b" ? 't' : field == "c" ? 'd' : 'l'; }

    static PlainCell Default(const std::string& field) {
        const char type = TypeOf(field);
        return {type == 't' ? PlainValue::Text("") : PlainValue::Number(type, 0)};
    }

    // The existing rows, each with its position after the cells if that is requested.
    PlainTable VisibleRows(bool areNumbered) const {
        PlainTable table;
        table.m_name = m_name;
        table.m_fields = m_fields;
        for (const std::string& field : m_fields) {
            table.m_types += TypeOf(field);
        }
        for (std::uint64_t i = 0; i < RowCount(); ++i) {
            const PlainStoredRow* const row = m_rows->At(i);
            if (row == nullptr) {
                continue;
            }
            table.m_rows.emplace_back();
            for (std::size_t field = 0; field < m_fields.size(); ++field) {
                PlainValue value = row->m_cells.at(field).m_value;
                value.m_isFlaggedNull = row->m_cells.at(field).m_isNull;
                table.m_rows.back().push_back(value);
            }
            if (areNumbered) {
                table.m_rows.back().push_back(PlainValue::Number('l', static_cast<double>(i)));
            }
        }
        if (areNumbered) {
            table.m_fields.emplace_back("#");
            table.m_types += 'l';
        }
        return table;
    }

    bool HasEveryRow() const {
        for (std::uint64_t i = 0; i < RowCount(); ++i) {
            if (m_rows->At(i) == nullptr) {
                return false;
            }
        }
        return true;
    }

    std::string m_name;
    bool m_isQuery = false;
    std::string m_sql;
    std::weak_ptr<PlainContents> m_related;
    long m_stamp = 0;
    std::vector<std::string> m_fields;
    std::shared_ptr<PlainRows> m_rows;
    // Changes with every change.
    long m_version = 0;
    std::map<std::string, std::shared_ptr<PlainIndex>> m_indexes;
};

class PlainDatabase {
public:
    using Table = std::shared_ptr<PlainContents>;

    explicit PlainDatabase(int queries) : m_queries(queries) {}

    const std::vector<Table>& Tables() const { return m_tables; }
    int Queries() const { return m_queries; }
    // The version of the table that changed last.
    static long LatestVersion() { return s_version; }

    Table Find(const std::string& name) const {
        for (const Table& table : m_tables) {
            if (PlainLower(table->m_name) == PlainLower(name)) {
                return table;
            }
        }
        return nullptr;
    }

    // Whether a query depends on the table.
    bool IsRelated(const Table& query, const Table& table) const {
        const Table related = query->m_isQuery ? query->m_related.lock() : nullptr;
        return related != nullptr && (related == table || IsRelated(related, table));
    }

    static Table Make(const std::string& name) {
        auto table = std::make_shared<PlainContents>();
        table->m_name = name;
        Empty(*table);
        return table;
    }

    bool Add(const Table& table) {
        if (Find(table->m_name) != nullptr) {
            return false;
        }
        m_tables.push_back(table);
        return true;
    }

    void Delete(const std::string& name) {
        const Table doomed = Find(name);
        if (doomed == nullptr) {
            return;
        }
        std::vector<Table> left;
        for (const Table& table : m_tables) {
            if (table != doomed && !IsRelated(table, doomed)) {
                left.push_back(table);
            }
        }
        m_tables = left;
    }

    void Clear(const std::string& name) {
        if (const Table table = Find(name)) {
            Empty(*table);
        }
    }

    bool Rename(const std::string& from, const std::string& to) {
        const Table table = Find(from);
        if (table == nullptr) {
            return false;
        }
        RefreshAlone(table);
        table->m_name = to;
        Touch(*table);
        return true;
    }

    // ---- Fields, indexes and rows

    static bool CreateField(PlainContents& table, const std::string& field) {
        if (table.Find(field) >= 0) {
            return false;
        }
        table.m_fields.push_back(field);
        for (const auto& row : *table.m_rows->m_storage) {
            if (row->m_owner.lock() == table.m_rows) {
                row->m_cells.push_back(PlainContents::Default(field));
            }
        }
        Touch(table);
        return true;
    }

    static bool DeleteLastField(PlainContents& table) {
        if (table.m_fields.empty()) {
            return false;
        }
        table.m_fields.pop_back();
        for (const auto& row : *table.m_rows->m_storage) {
            row->m_cells.pop_back();
        }
        Touch(table);
        return true;
    }

    static bool CreateIndex(PlainContents& table, const std::string& name,
                            const std::vector<std::string>& fields) {
        if (table.m_indexes.count(name) != 0) {
            return true;
        }
        for (const std::string& field : fields) {
            if (table.Find(field) < 0) {
                return false;
            }
        }
        const PlainIndex index{name, fields, {}, nullptr, -1};
        table.m_indexes[name] = std::make_shared<PlainIndex>(index);
        return true;
    }

    static std::uint64_t AddRow(PlainContents& table) {
        const std::shared_ptr<PlainRows> boundTo = table.m_rows->m_boundTo.lock();
        const std::shared_ptr<PlainRows> owner = boundTo == nullptr ? table.m_rows : boundTo;
        auto row = std::make_shared<PlainStoredRow>();
        row->m_owner = owner;
        for (const std::string& field : owner->m_table->m_fields) {
            row->m_cells.push_back(PlainContents::Default(field));
        }
        const std::size_t stored = table.m_rows->m_storage->size();
        table.m_rows->m_storage->push_back(row);
        table.m_rows->m_order.push_back(stored);
        if (boundTo != nullptr) {
            boundTo->m_order.push_back(stored);
            Touch(*boundTo->m_table);
        }
        Touch(table);
        return table.RowCount() - 1;
    }

    static void DeleteRow(PlainContents& table, std::uint64_t position) {
        if (table.m_rows->At(position) == nullptr) {
            return;
        }
        PlainRows::Storage& storage = *table.m_rows->m_storage;
        storage.erase(storage.begin() + static_cast<std::ptrdiff_t>(table.m_rows->m_order[position]));
        table.m_rows->RemoveFromOrder(position);
        Touch(table);
        if (const auto boundTo = table.m_rows->m_boundTo.lock()) {
            boundTo->RemoveFromOrder(position);
            Touch(*boundTo->m_table);
        }
    }

    // A cell of the row was changed.
    static void Touch(const PlainStoredRow& row) {
        if (const auto owner = row.m_owner.lock()) {
            Touch(*owner->m_table);
        }
    }

    // ---- Queries

    // Whether the text was analysed successfully, whatever the answer.
    static bool IsAnalysed(const PlainQuery& query) {
        return std::count(query.Lines().begin(), query.Lines().end(), "SQL Analyze - ok") == 1;
    }

    // What a request for the contents does.
    void RefreshAlone(const Table& table) {
        Refreshed refreshed;
        Refresh(table, refreshed);
    }

    bool Verify(const std::string& sql) {
        Refreshed refreshed;
        return Analyze(sql, refreshed);
    }

    bool Query(const std::string& sql, std::string& name) {
        Refreshed refreshed;
        return AnswerQuery(sql, nullptr, name, refreshed);
    }

private:
    // The queries refreshed by one refreshed.
    using Refreshed = std::set<const PlainContents*>;

    static void Touch(PlainContents& table) { table.m_version = ++s_version; }

    static void Empty(PlainContents& table) {
        table.m_fields.clear();
        table.m_indexes.clear();
        table.m_rows = std::make_shared<PlainRows>();
        table.m_rows->m_table = &table;
        Touch(table);
    }

    static bool IsInStep(const PlainContents& query) {
        const Table related = query.m_related.lock();
        return related == nullptr || (query.m_stamp == related->m_version && IsSync(query));
    }

    // Whether the lowest query has seen the table as it is.
    static bool IsSync(const PlainContents& query) {
        const Table related = query.m_related.lock();
        return related == nullptr ||
               (related->m_isQuery ? IsSync(*related) : query.m_stamp == related->m_version);
    }

    // The word after FROM.
    static std::string SourceOf(const std::string& sql) {
        const std::string text = PlainLower(sql);
        const std::size_t from = text.find(" from ");
        const std::size_t begin = from + 6;
        return from == std::string::npos ? "" : text.substr(begin, text.find(' ', begin) - begin);
    }

    void Refresh(const Table& table, Refreshed& refreshed) {
        const Table related = table->m_isQuery ? table->m_related.lock() : nullptr;
        if (related == nullptr) {
            return;
        }
        Refresh(related, refreshed);
        if (refreshed.insert(table.get()).second && !IsInStep(*table)) {
            std::string name;
            AnswerQuery(table->m_sql, table, name, refreshed);
        }
    }

    bool Analyze(const std::string& sql, Refreshed& refreshed) {
        const Table source = Find(SourceOf(sql));
        if (source != nullptr) {
            Refresh(source, refreshed);
        }
        return IsAnalysed(PlainQuery(sql, TablesOf(source, false)));
    }

    static PlainTables TablesOf(const Table& source, bool areNumbered) {
        return source == nullptr
                   ? PlainTables()
                   : PlainTables{{PlainLower(source->m_name), source->VisibleRows(areNumbered)}};
    }

    bool AnswerQuery(const std::string& sql, Table answer, std::string& name, Refreshed& refreshed) {
        name = "Query_" + std::to_string(m_queries++);
        if (PlainLower(sql).find("select") == std::string::npos) {
            const Table table = Find(PlainTable::Unbracketed(PlainLower(sql)));
            name = table == nullptr ? "" : table->m_name;
            return table != nullptr;
        }
        if (!Analyze(sql, refreshed)) {
            return false;
        }
        const Table source = Find(SourceOf(sql));
        const bool isRefresh = answer != nullptr;
        for (const Table& table : m_tables) {
            if (!isRefresh && table->m_isQuery && table->m_sql == sql) {
                answer = table;
            }
        }
        if (answer != nullptr) {
            name = answer->m_name;
            if (source == answer || IsRelated(source, answer)) {
                return false;
            }
            if (!isRefresh && answer->m_related.lock() == source && IsInStep(*answer)) {
                return true;
            }
        }
        const PlainQuery query(sql, TablesOf(source, false));
        if (!isRefresh && query.IsTable()) {
            name = source->m_name;
            return true;
        }
        return query.IsGood() && Build(sql, query, source, answer, name);
    }

    bool Build(const std::string& sql, const PlainQuery& query, const Table& source, Table answer,
               const std::string& name) {
        const bool selectsAll = sql.find('*') != std::string::npos;
        const PlainQuery numbered(sql, TablesOf(source, selectsAll));
        if (answer == nullptr) {
            answer = Make(name);
            answer->m_isQuery = true;
            answer->m_sql = sql;
            m_tables.push_back(answer);
        } else {
            Empty(*answer);
        }
        answer->m_related = source;
        answer->m_fields = query.Answered().m_fields;
        PlainRows& rows = *answer->m_rows;
        if (selectsAll) {
            const std::shared_ptr<PlainRows> boundTo = source->m_rows->m_boundTo.lock();
            const bool isLent = boundTo != nullptr && boundTo->m_storage == source->m_rows->m_storage;
            rows.m_boundTo = isLent ? boundTo : source->m_rows;
            rows.m_storage = source->m_rows->m_storage;
            rows.m_isBound = true;
            for (const PlainRow& row : numbered.Answered().m_rows) {
                rows.m_order.push_back(
                    source->m_rows->m_order[static_cast<std::size_t>(row.back().m_number)]);
            }
        } else {
            for (const PlainRow& values : query.Answered().m_rows) {
                AddCopy(values, answer);
            }
        }
        Touch(*answer);
        answer->m_stamp = source->m_version;
        return true;
    }

    static void AddCopy(const PlainRow& values, const Table& answer) {
        auto row = std::make_shared<PlainStoredRow>();
        row->m_owner = answer->m_rows;
        for (const PlainValue& value : values) {
            row->m_cells.push_back({value, value.m_isFlaggedNull});
        }
        answer->m_rows->m_order.push_back(answer->m_rows->m_storage->size());
        answer->m_rows->m_storage->push_back(row);
    }

    static inline long s_version = 0;

    std::vector<Table> m_tables;
    int m_queries;
};

// Two values are the same for a search: texts without case.
inline bool PlainMatches(const PlainValue& key, const PlainCell& cell) {
    return PlainEqualIgnoringCase(key, cell.m_value);
}

// A cursor over a table. A database that was deleted is null, and its tables are deleted too.
class PlainCursor {
public:
    using Table = PlainDatabase::Table;

    enum Mode { None, Add, Change };

    // Whether variables are bound to the fields a and b.
    explicit PlainCursor(bool isBound) : m_isBound(isBound) {}

    bool Open(PlainDatabase* database, const std::string& sql) {
        std::string name;
        if (database == nullptr || !database->Query(sql, name)) {
            return false;
        }
        const Table table = database->Find(name);
        database->RefreshAlone(table);
        Cancel();
        if (m_table.lock() != table) {
            m_index.reset();
        }
        m_name = name;
        m_table = table;
        if (m_isBound) {
            // The fields a and b, if a table has them, are the first two.
            m_hasA = m_hasA || table->Find("a") == 0;
            m_hasB = m_hasB || table->Find("b") == 1;
        }
        MoveTo(0);
        return true;
    }

    void Close() {
        m_table.reset();
        m_index.reset();
        m_name.clear();
        m_hasA = false;
        m_hasB = false;
        m_bookmarks.clear();
        m_lastModified = 0;
        Cancel();
    }

    bool IsOpen() const { return !m_table.expired(); }
    std::uint64_t RowCount() const { return IsOpen() ? m_table.lock()->RowCount() : 0; }
    bool IsBof() const { return m_position < 0; }
    bool IsEof() const {
        return !IsOpen() || (m_position >= 0 && static_cast<std::uint64_t>(m_position) >= RowCount());
    }

    // The position in the table's own order.
    std::uint64_t Stored(std::int64_t position) const {
        const auto place = static_cast<std::uint64_t>(position);
        const auto index = m_index.lock();
        if (index == nullptr) {
            return place;
        }
        return place < index->m_order.size() ? index->m_order[place] : UINT64_MAX;
    }

    PlainStoredRow* RowAt(std::int64_t position) const {
        return IsOpen() && position >= 0 ? m_table.lock()->m_rows->At(Stored(position)) : nullptr;
    }

    bool MoveTo(std::int64_t position) {
        m_position = position;
        const PlainStoredRow* const row = IsEof() || IsBof() ? nullptr : RowAt(position);
        if (row == nullptr) {
            return false;
        }
        if (m_hasA && !row->m_cells.empty()) {
            const PlainCell& cell = row->m_cells[0];
            m_a = cell.m_isNull ? 0 : static_cast<int>(cell.m_value.m_number);
        }
        if (m_hasB && row->m_cells.size() > 1) {
            const PlainCell& cell = row->m_cells[1];
            m_b = cell.m_isNull ? "" : cell.m_value.m_text;
        }
        return true;
    }

    void Cancel() {
        m_mode = None;
        m_pending.clear();
    }

    bool CanUpdate(const PlainDatabase* database) const {
        const Table table = m_table.lock();
        return database != nullptr && table != nullptr && database->Find(m_name) == table &&
               (!table->m_isQuery || table->m_rows->m_isBound);
    }

    // ---- Find

    // The positions from the first to the last, in either direction.
    bool FindRow(PlainDatabase* database, const std::string& where, std::uint64_t from, std::uint64_t to,
                 bool isForward, bool& isAnalysed) {
        const Table table = m_table.lock();
        isAnalysed = false;
        if (database == nullptr || table == nullptr || database->Find(m_name) != table) {
            return false;
        }
        const PlainQuery query("select * from " + m_name + " where " + where,
                               {{PlainLower(m_name), table->VisibleRows(true)}});
        isAnalysed = PlainDatabase::IsAnalysed(query);
        if (!isAnalysed) {
            return false;
        }
        // A condition that can't be evaluated holds for no row.
        std::set<std::uint64_t> matches;
        for (const PlainRow& row : query.Answered().m_rows) {
            matches.insert(static_cast<std::uint64_t>(row.back().m_number));
        }
        std::vector<std::int64_t> places;
        for (std::uint64_t i = 0; i < RowCount(); ++i) {
            if (isForward ? i >= from && i < to : i <= from && i >= to) {
                places.push_back(static_cast<std::int64_t>(i));
            }
        }
        if (!isForward) {
            std::reverse(places.begin(), places.end());
        }
        for (const std::int64_t place : places) {
            if (matches.count(Stored(place)) != 0) {
                return MoveTo(place);
            }
        }
        return false;
    }

    // ---- The current index

    bool SetIndex(const std::shared_ptr<PlainIndex>& index) {
        const Table table = m_table.lock();
        if (table == nullptr) {
            return false;
        }
        if (index != m_index.lock()) {
            m_index = index;
            if (index == nullptr || !index->m_order.empty()) {
                return true;
            }
        }
        if (index == nullptr) {
            return false;
        }
        std::vector<std::size_t> fields;
        for (const std::string& field : index->m_fields) {
            if (table->Find(field) < 0) {
                return false;
            }
            fields.push_back(static_cast<std::size_t>(table->Find(field)));
        }
        index->m_order.clear();
        for (std::uint64_t row = 0; row < table->RowCount(); ++row) {
            Insert(*table, fields, row, index->m_order);
        }
        index->m_table = table.get();
        index->m_version = PlainDatabase::LatestVersion();
        return true;
    }

    bool SetIndexNamed(const std::string& name) {
        const Table table = m_table.lock();
        if (table == nullptr) {
            return false;
        }
        const auto found = table->m_indexes.find(name);
        const auto index = found == table->m_indexes.end() ? nullptr : found->second;
        if (index == m_index.lock()) {
            return true;
        }
        m_index = index;
        return SetIndex(index);
    }

    // Whether nothing has changed since the order was built, in this table or in one that shares its rows.
    bool IsIndexFresh() const {
        const auto index = m_index.lock();
        const Table table = m_table.lock();
        return index != nullptr && table != nullptr && index->m_table == table.get() &&
               index->m_version == PlainDatabase::LatestVersion();
    }

    bool MatchesAt(std::int64_t place, const std::vector<PlainValue>& keys) const {
        const PlainStoredRow* const row = RowAt(place);
        const auto index = m_index.lock();
        for (std::size_t i = 0; row != nullptr && i < std::min(keys.size(), index->m_fields.size()); ++i) {
            const int field = m_table.lock()->Find(index->m_fields[i]);
            if (!PlainMatches(keys[i], row->m_cells.at(static_cast<std::size_t>(field)))) {
                return false;
            }
        }
        return row != nullptr;
    }

    // The first position with the keys; nothing if there is none.
    std::optional<std::int64_t> Seek(const std::vector<PlainValue>& keys) const {
        for (std::size_t place = 0; place < m_index.lock()->m_order.size(); ++place) {
            if (MatchesAt(static_cast<std::int64_t>(place), keys)) {
                return static_cast<std::int64_t>(place);
            }
        }
        return std::nullopt;
    }

    // ---- Edits

    void Update() {
        const Table table = m_table.lock();
        if (m_mode == Add) {
            m_position = static_cast<std::int64_t>(PlainDatabase::AddRow(*table));
        }
        if (m_mode != None) {
            m_index.reset();
            PlainStoredRow* const row = IsEof() || IsBof() ? nullptr : RowAt(m_position);
            if (row != nullptr) {
                Write(*row);
            }
            m_lastModified = m_position;
        }
        Cancel();
    }

    void Delete() {
        const Table table = m_table.lock();
        const std::uint64_t stored = Stored(m_position);
        const auto index = m_index.lock();
        const bool isFresh = IsIndexFresh();
        PlainDatabase::DeleteRow(*table, stored);
        if (index != nullptr) {
            std::vector<std::uint64_t> order;
            for (std::size_t place = 0; place < index->m_order.size(); ++place) {
                const std::uint64_t entry = index->m_order[place];
                if (static_cast<std::int64_t>(place) != m_position) {
                    order.push_back(entry > stored ? entry - 1 : entry);
                }
            }
            index->m_order = order;
            index->m_version = isFresh ? PlainDatabase::LatestVersion() : -1;
        }
        --m_position;
        Cancel();
        for (auto bookmark = m_bookmarks.begin(); bookmark != m_bookmarks.end();) {
            if (bookmark->second == m_position) {
                m_bookmarks.erase(bookmark);
                bookmark = m_bookmarks.begin();
            } else {
                ++bookmark;
            }
        }
        for (auto& [number, position] : m_bookmarks) {
            position -= position > m_position ? 1 : 0;
        }
    }

    const bool m_isBound;
    std::weak_ptr<PlainContents> m_table;
    std::string m_name;
    std::int64_t m_position = 0;
    std::weak_ptr<PlainIndex> m_index;
    std::map<std::uint64_t, std::int64_t> m_bookmarks;
    std::map<std::size_t, PlainValue> m_pending;
    std::int64_t m_lastModified = 0;
    Mode m_mode = None;
    // Whether the variables are bound, and their values.
    bool m_hasA = false;
    bool m_hasB = false;
    int m_a = 0;
    std::string m_b;

private:
    static int Compare(const PlainStoredRow& left, const PlainStoredRow& right,
                       const std::vector<std::size_t>& fields) {
        for (const std::size_t field : fields) {
            const PlainValue& a = left.m_cells.at(field).m_value;
            const PlainValue& b = right.m_cells.at(field).m_value;
            if (!PlainEqualIgnoringCase(a, b)) {
                return PlainLess(b, a) ? 1 : -1;
            }
        }
        return 0;
    }

    static void Insert(const PlainContents& table, const std::vector<std::size_t>& fields, std::uint64_t row,
                       std::vector<std::uint64_t>& order) {
        PlainInsert(order, row, [&](std::uint64_t other) {
            return Compare(*table.m_rows->At(row), *table.m_rows->At(other), fields);
        });
    }

    void Write(PlainStoredRow& row) {
        if (m_hasA && !row.m_cells.empty()) {
            row.m_cells[0].m_value = PlainValue::Number('l', m_a);
            PlainDatabase::Touch(row);
        }
        if (m_hasB && row.m_cells.size() > 1) {
            row.m_cells[1].m_value = PlainValue::Text(m_b);
            PlainDatabase::Touch(row);
        }
        for (const auto& [field, value] : m_pending) {
            if (field < row.m_cells.size()) {
                row.m_cells[field].m_value = value;
                PlainDatabase::Touch(row);
            }
        }
    }
};

struct PlainTableDef {
    bool IsOpen() const { return m_prepared == nullptr && !m_table.expired(); }
    PlainDatabase::Table Shown() const { return m_prepared != nullptr ? m_prepared : m_table.lock(); }
    void Close() { *this = PlainTableDef(); }

    std::string m_name;
    std::weak_ptr<PlainContents> m_table;
    PlainDatabase::Table m_prepared;
};

}  // namespace quillet::test
