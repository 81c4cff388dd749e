// Random operations over cursors, definitions, queries and their tables, each compared with the plain
// reference model.
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/CatalogHelpers.h"
#include "support/PlainCursor.h"
#include "support/PlainValues.h"
#include "support/Seed.h"
#include "support/TestHelpers.h"

namespace {

using quillet::test::Long;
using quillet::test::PlainContents;
using quillet::test::PlainCursor;
using quillet::test::PlainDatabase;
using quillet::test::PlainIndex;
using quillet::test::PlainLower;
using quillet::test::PlainStoredRow;
using quillet::test::PlainTableDef;
using quillet::test::PlainValue;
using quillet::test::Printed;
using quillet::test::TakeLog;
using quillet::test::ThrownMessage;
using quillet::test::VariantOf;

using Index = DbTableDescr::DbIndex;
using Strings = std::vector<std::string>;
using Table = PlainDatabase::Table;

const Strings FieldNames = {"a", "b", "c", "d"};

DbFieldDescr::eFieldType FieldType(const std::string& field) {
    const char type = PlainContents::TypeOf(field);
    return type == 't' ? DbFieldDescr::Text : type == 'd' ? DbFieldDescr::Double : DbFieldDescr::Long;
}

std::string Printed(const DbTableRow* row) {
    std::string text = row == nullptr ? "no row" : "";
    for (std::size_t i = 0; row != nullptr && i < row->size(); ++i) {
        text += Printed(row->GetField(i).GetVariant()) + " ";
    }
    return text;
}

std::string Printed(const PlainStoredRow* row) {
    std::string text = row == nullptr ? "no row" : "";
    for (std::size_t i = 0; row != nullptr && i < row->m_cells.size(); ++i) {
        text += Printed(row->m_cells[i].m_value) + " ";
    }
    return text;
}

std::string Report(int line, const std::string& message) {
    return "Quillet exception thrown\r\nFile: Db/Quillet/Db_Recordset @ " + std::to_string(line) +
           "\r\nMessage: " + message;
}

// Binds two variables, whatever the positions of their fields.
class BoundCursor : public DbRecordset {
public:
    BoundCursor(DbDatabase* database, bool isBound) : DbRecordset(database), m_isBound(isBound) {}

    void InitFieldExchange() override {
        if (m_isBound && GetFieldIndex("a") == 0) {
            MapClassMember("a", m_a);
        }
        if (m_isBound && GetFieldIndex("b") == 1) {
            MapClassMember("b", m_b);
        }
    }

    int m_a = 0;
    CString m_b;

private:
    bool m_isBound;
};

// The library's objects and those of the reference model.
class World {
public:
    explicit World(unsigned seed) : m_random(seed) {
        for (const bool isBound : {true, false, false}) {
            m_cursors.push_back(std::make_unique<Cursor>(isBound));
        }
        Renew();
    }

    void Run(int steps) {
        for (m_step = 0; m_step < steps && !testing::Test::HasFailure(); ++m_step) {
            Step();
            CompareAll();
        }
        if (testing::Test::HasFailure()) {
            std::string trace;
            for (const std::string& line : m_trace) {
                trace += line + "\n";
            }
            ADD_FAILURE() << "after step " << m_step << ":\n" << trace;
        }
    }

private:
    struct Cursor {
        explicit Cursor(bool isBound) : m_real(nullptr, isBound), m_plain(isBound) {}

        BoundCursor m_real;
        PlainCursor m_plain;
        // False before a database was set, and after Close.
        bool m_isSet = false;
        PlainDatabase* m_database = nullptr;
    };

    struct TableDef {
        DbTableDef m_real{nullptr};
        PlainTableDef m_plain;
        PlainDatabase* m_database = nullptr;
    };

    struct QueryDef {
        DbQueryDef m_real{nullptr};
        PlainDatabase* m_database = nullptr;
        std::string m_sql;
    };

    // ---- Chance

    std::size_t Below(std::size_t count) { return m_random() % count; }
    bool Chance(std::size_t oneIn) { return Below(oneIn) == 0; }
    template <typename List>
    auto OneOf(const List& list) {
        return *(list.begin() + static_cast<std::ptrdiff_t>(Below(list.size())));
    }
    std::string OneOf(std::initializer_list<const char*> texts) { return texts.begin()[Below(texts.size())]; }

    PlainValue Value(const std::string& field) {
        if (Chance(6)) {
            return {};
        }
        const auto number = static_cast<double>(Below(6));
        switch (PlainContents::TypeOf(field)) {
            case 't':
                return PlainValue::Text(OneOf({"", "a", "A", "b", "B", "ab", "Ab", "aB", "c"}));
            case 'd':
                return Chance(6) ? PlainValue::Number('l', number) : PlainValue::Number('d', number / 2);
            default:
                return PlainValue::Number('l', number);
        }
    }

    std::string TableName() {
        if (m_plain == nullptr || m_plain->Tables().empty() || Chance(8)) {
            return OneOf({"t0", "t1", "t2", "T3", "none"});
        }
        return OneOf(m_plain->Tables())->m_name;
    }

    std::string Condition() {
        std::string text = Term();
        while (Chance(3)) {
            text += OneOf({" and ", " or ", " AND "}) + Term();
        }
        return text;
    }

    std::string Term() {
        switch (Below(24)) {
            case 0:
                return "a";
            case 1:
                return "nope = 1";
            case 2:
                return "( a = 1 or b = 'b' )";
            case 3:
                return "not ( c < 1 )";
            case 4:
                return "a = d";
            case 5:
                return "a = ' '";
            default:
                break;
        }
        const std::string negation = Chance(6) ? "not " : "";
        const std::string relation = OneOf({" < ", " <= ", " = ", " == ", " >= ", " > ", " != ", " <> "});
        switch (Below(3)) {
            case 0:
                return negation + OneOf({"b", "[B]"}) + relation + OneOf({"'a'", "b ", "'Ab'", "''", "'c'"});
            case 1:
                return negation + "c" + relation + OneOf({"0", "0.5", "1", "1.5", "2"});
            default:
                return negation + OneOf({"a", "[a]", "A", "d"}) + relation + std::to_string(Below(6));
        }
    }

    std::string Sql() {
        const std::string table = TableName();
        switch (Below(10)) {
            case 0:
            case 1:
            case 2:
                return table;
            case 3:
                return "[" + table + "]";
            case 4:
                return "select * from " + table;
            case 5:
                return "select a, b from " + table + " where " + Condition();
            case 6:
                return "select * from " + table + " order by " +
                       OneOf({"a", "b", "c desc", "b, a", "b, c desc", "nope"});
            case 7:
                return "SELECT top 3 * from " + table + " order by " + OneOf({"a desc", "b", "c"});
            default:
                return "select * from " + table + " where " + Condition();
        }
    }

    // ---- The steps

    void Note(const std::string& line) {
        m_trace.push_back(std::to_string(m_step) + ": " + line);
        if (m_trace.size() > 40) {
            m_trace.pop_front();
        }
    }

    void Step() {
        if (m_database == nullptr) {
            if (Chance(10)) {
                Renew();
            }
        } else if (Chance(1500)) {
            Note("the database goes");
            m_database.reset();
            m_plain.reset();
            for (const auto& cursor : m_cursors) {
                cursor->m_database = nullptr;
            }
            m_tableDef.m_database = nullptr;
            m_secondDef.m_database = nullptr;
            m_queryDef.m_database = nullptr;
        }
        const std::size_t kind = Below(100);
        Cursor& cursor = *m_cursors[Below(m_cursors.size())];
        if (kind < 75) {
            CursorStep(cursor, kind);
        } else if (m_database != nullptr) {
            kind < 85 ? TableStep() : DefinitionStep(cursor);
        }
    }

    void CursorStep(Cursor& cursor, std::size_t kind) {
        if (!cursor.m_plain.IsOpen() && !Chance(4)) {
            Open(cursor);
        } else if (cursor.m_plain.m_mode != PlainCursor::None && !Chance(4)) {
            Edit(cursor);
        } else if (kind < 4) {
            Open(cursor);
        } else if (kind < 5) {
            CloseCursor(cursor);
        } else if (kind < 22) {
            Move(cursor);
        } else if (kind < 32) {
            Find(cursor);
        } else if (kind < 56) {
            Edit(cursor);
        } else if (kind < 63) {
            Bookmark(cursor);
        } else if (kind < 71) {
            SetIndex(cursor);
        } else {
            LookAtFields(cursor);
        }
    }

    void Renew() {
        Note("a new database");
        m_database = std::make_unique<DbDatabase>();
        m_plain = std::make_unique<PlainDatabase>(DbDatabase::m_queriesCount);
        m_tableDef.m_real = DbTableDef(m_database.get());
        m_tableDef.m_plain = {};
        m_tableDef.m_database = m_plain.get();
        m_secondDef.m_real = DbTableDef(m_database.get());
        m_secondDef.m_plain = {};
        m_secondDef.m_database = m_plain.get();
        m_queryDef.m_real = DbQueryDef(m_database.get());
        m_queryDef.m_database = m_plain.get();
        m_queryDef.m_sql.clear();
    }

    void SetDatabase(Cursor& cursor) {
        cursor.m_real.SetDatabase(m_database.get());
        cursor.m_plain.Close();
        cursor.m_plain.m_position = 0;
        cursor.m_isSet = m_database != nullptr;
        cursor.m_database = m_plain.get();
    }

    void CloseCursor(Cursor& cursor) {
        if (Chance(2)) {
            Note("SetDatabase");
            SetDatabase(cursor);
            return;
        }
        Note("Close");
        cursor.m_real.Close();
        cursor.m_plain.Close();
        cursor.m_isSet = false;
        cursor.m_database = nullptr;
    }

    void Open(Cursor& cursor) {
        if (!cursor.m_isSet || (cursor.m_database == nullptr && Chance(4))) {
            Note("SetDatabase");
            SetDatabase(cursor);
        }
        if (!cursor.m_isSet) {
            return;
        }
        const std::string sql = Sql();
        Note("Open " + sql);
        EXPECT_EQ(cursor.m_real.Open(CString(sql)), cursor.m_plain.Open(cursor.m_database, sql));
    }

    void Move(Cursor& cursor) {
        DbRecordset& real = cursor.m_real;
        PlainCursor& plain = cursor.m_plain;
        const std::int64_t rows = static_cast<std::int64_t>(plain.RowCount());
        const std::size_t kind = Below(7);
        if (kind != 6) {
            plain.Cancel();
        }
        switch (kind) {
            case 0:
                Note("MoveFirst");
                EXPECT_EQ(real.MoveFirst(), plain.MoveTo(0));
                break;
            case 1:
            case 2:
                Note("MoveNext");
                EXPECT_EQ(real.MoveNext(), plain.MoveTo(plain.m_position + 1));
                break;
            case 3:
                Note("MovePrev");
                EXPECT_EQ(real.MovePrev(), !plain.IsBof() && plain.MoveTo(plain.m_position - 1));
                break;
            case 4:
                Note("MoveLast");
                EXPECT_EQ(real.MoveLast(), rows > 0 && plain.MoveTo(rows - 1));
                break;
            case 5: {
                const int by = static_cast<int>(Below(9)) - 4;
                Note("Move " + std::to_string(by));
                EXPECT_EQ(real.Move(by), plain.MoveTo(plain.m_position + by));
                break;
            }
            default: {
                const int to = static_cast<int>(Below(16)) - 2;
                Note("SetAbsolutePosition " + std::to_string(to));
                EXPECT_EQ(real.SetAbsolutePosition(to), plain.MoveTo(to));
                break;
            }
        }
    }

    void Find(Cursor& cursor) {
        DbRecordset& real = cursor.m_real;
        PlainCursor& plain = cursor.m_plain;
        const std::string where = Condition();
        const CString text(where);
        const std::uint64_t rows = plain.RowCount();
        const auto position = static_cast<std::uint64_t>(plain.m_position);
        LinesOfTheLog();
        bool isAnalysed = false;
        bool found = false;
        bool expected = false;
        const auto find = [&](std::uint64_t from, std::uint64_t to, bool isForward) {
            return plain.FindRow(cursor.m_database, where, from, to, isForward, isAnalysed);
        };
        const std::size_t kind = Below(6);
        Note("Find " + std::to_string(kind) + ": " + where);
        if (kind == 5) {
            const std::uint64_t from = Below(rows + 2);
            const std::uint64_t to = Below(rows + 2);
            const bool isForward = Chance(2);
            found = real.FindRow(text, from, to, isForward ? DbRecordset::Forward : DbRecordset::Backward);
            expected = find(from, to, isForward);
        } else {
            plain.Cancel();
            const bool isDirect = Chance(2);
            switch (kind) {
                case 0:
                    found = isDirect ? real.FindNext(text) : real.Find(DbRecordset::Next, text);
                    expected = find(position + 1, rows, true);
                    break;
                case 1:
                    found = isDirect ? real.FindPrev(text) : real.Find(DbRecordset::Previous, text);
                    expected = plain.m_position >= 1 && find(position - 1, 0, false);
                    break;
                case 2:
                    found = isDirect ? real.FindFirst(text) : real.Find(DbRecordset::First, text);
                    expected = find(0, rows, true);
                    break;
                case 3:
                    found = isDirect ? real.FindLast(text) : real.Find(DbRecordset::Last, text);
                    expected = rows > 0 && find(rows - 1, 0, false);
                    break;
                default:
                    found = real.Find(static_cast<DbRecordset::eFindOperation>(4 + Below(5)), text);
                    break;
            }
        }
        EXPECT_EQ(found, expected);
        int timings = 0;
        for (const std::string& line : LinesOfTheLog()) {
            timings += line.rfind("FindRow '" + where + "' processed in ", 0) == 0 ? 1 : 0;
        }
        EXPECT_EQ(timings, isAnalysed ? 1 : 0);
        m_found += found ? 1 : 0;
    }

    void Edit(Cursor& cursor) {
        DbRecordset& real = cursor.m_real;
        PlainCursor& plain = cursor.m_plain;
        const bool isPending = plain.m_mode != PlainCursor::None;
        const std::size_t kind = isPending && !Chance(3) ? 4 + Below(6) : Below(12);
        if (kind < 2) {
            Note("AddNew");
            real.AddNew();
            plain.Cancel();
            plain.m_mode = PlainCursor::Add;
        } else if (kind < 4) {
            Note("Edit");
            real.Edit();
            plain.Cancel();
            plain.m_mode = PlainCursor::Change;
        } else if (kind < 7) {
            SetValue(cursor);
        } else if (kind < 8) {
            Note("variables");
            cursor.m_real.m_a = plain.m_a = static_cast<int>(Below(6));
            plain.m_b = OneOf({"a", "B", "ab", "x"});
            cursor.m_real.m_b = CString(plain.m_b);
        } else if (kind < 10) {
            Note("Update");
            const std::string thrown = ThrownMessage([&] { real.Update(); });
            if (plain.CanUpdate(cursor.m_database)) {
                EXPECT_EQ(thrown, "");
                m_updates += plain.m_mode == PlainCursor::None ? 0 : 1;
                plain.Update();
            } else {
                EXPECT_EQ(thrown, Report(990,
                                         "Read only recordset (or database), cannot be modified (Update "
                                         "operation)"));
            }
        } else if (kind < 11) {
            Note("Delete");
            const std::string thrown = ThrownMessage([&] { real.Delete(); });
            if (plain.CanUpdate(cursor.m_database)) {
                EXPECT_EQ(thrown, "");
                m_deletions += plain.RowAt(plain.m_position) == nullptr ? 0 : 1;
                plain.Delete();
            } else {
                EXPECT_EQ(thrown, Report(895,
                                         "Read only recordset (or database), cannot be modified (Delete "
                                         "operation)"));
            }
        } else {
            Note("CancelUpdate");
            real.CancelUpdate();
            plain.Cancel();
        }
    }

    void SetValue(Cursor& cursor) {
        PlainCursor& plain = cursor.m_plain;
        const std::size_t field = Below(FieldNames.size());
        const PlainValue value = Value(FieldNames[field]);
        const bool byName = Chance(2);
        Note("SetFieldValue " + FieldNames[field] + " " + Printed(value));
        const std::string thrown = ThrownMessage([&] {
            if (byName) {
                cursor.m_real.SetFieldValue(CString(FieldNames[field]), VariantOf(value));
            } else {
                cursor.m_real.SetFieldValue(field, VariantOf(value));
            }
        });
        const Table table = plain.m_table.lock();
        if (byName && (table == nullptr || table->Find(FieldNames[field]) < 0)) {
            EXPECT_EQ(thrown, Report(1340, "Column '" + FieldNames[field] + "' not found in table '" +
                                               plain.m_name + "'"));
        } else if (plain.m_mode == PlainCursor::None) {
            EXPECT_EQ(thrown, Report(1353, "SetFieldValue(...) without proper update operation"));
        } else {
            EXPECT_EQ(thrown, "");
            plain.m_pending[field] = value;
        }
    }

    void Bookmark(Cursor& cursor) {
        DbRecordset& real = cursor.m_real;
        PlainCursor& plain = cursor.m_plain;
        plain.Cancel();
        switch (Below(4)) {
            case 0: {
                const uint64 number = DbRecordset::bookmarkid + 2;
                Note("GetBookmark");
                EXPECT_EQ(real.GetBookmark(), number);
                plain.m_bookmarks[number] = plain.m_position;
                break;
            }
            case 1:
                Note("GetLastModifiedBookmark");
                EXPECT_EQ(real.GetLastModifiedBookmark(), 0U);
                plain.m_bookmarks[0] = plain.m_lastModified;
                break;
            default: {
                uint64 number = DbRecordset::bookmarkid + 1 - Below(8);
                if (!plain.m_bookmarks.empty() && !Chance(4)) {
                    number = std::next(plain.m_bookmarks.begin(),
                                       static_cast<std::ptrdiff_t>(Below(plain.m_bookmarks.size())))
                                 ->first;
                }
                Note("SetBookmark " + std::to_string(number));
                const auto known = plain.m_bookmarks.find(number);
                EXPECT_EQ(real.IsBookmark(number), known != plain.m_bookmarks.end());
                const bool isThere = known != plain.m_bookmarks.end() && plain.IsOpen();
                EXPECT_EQ(real.SetBookmark(number), isThere);
                if (isThere) {
                    plain.MoveTo(known->second);
                }
                break;
            }
        }
    }

    // ---- Indexes

    static Strings FieldsOf(const std::string& index) {
        Strings fields;
        for (std::size_t i = 1; i < index.size(); ++i) {
            fields.emplace_back(1, index[i]);
        }
        return fields;
    }

    static std::vector<CString> Names(const Strings& texts) { return {texts.begin(), texts.end()}; }

    std::string IndexName() { return OneOf({"ia", "ib", "ic", "iba", "icb", "id"}); }

    void SetIndex(Cursor& cursor) {
        PlainCursor& plain = cursor.m_plain;
        const Table table = plain.m_table.lock();
        if (table != nullptr && !table->HasEveryRow()) {
            return;
        }
        const std::string name = IndexName();
        if (table != nullptr && Chance(2)) {
            Note("CreateIndex " + name);
            EXPECT_EQ(RealTable(*table)->GetDescr()->CreateIndex(CString(name), Names(FieldsOf(name))),
                      PlainDatabase::CreateIndex(*table, name, FieldsOf(name)));
        }
        switch (Below(6)) {
            case 0:
                Note("SetCurrentIndex null");
                EXPECT_EQ(cursor.m_real.SetCurrentIndex(nullptr), plain.SetIndex(nullptr));
                break;
            case 1:
                if (table != nullptr && table->m_indexes.count(name) != 0) {
                    Note("SetCurrentIndex by pointer " + name);
                    const Index* const index = RealTable(*table)->GetDescr()->FindIndex(CString(name));
                    EXPECT_EQ(cursor.m_real.SetCurrentIndex(index), plain.SetIndex(table->m_indexes[name]));
                }
                break;
            case 2:
                SetOwnIndex(cursor);
                break;
            case 3:
                Note("SetCurrentIndex " + name);
                EXPECT_EQ(cursor.m_real.SetCurrentIndex(CString(name)), plain.SetIndexNamed(name));
                break;
            default:
                Seek(cursor, name);
                break;
        }
    }

    void SetOwnIndex(Cursor& cursor) {
        if (m_ownIndex == nullptr || Chance(4)) {
            const std::string name = IndexName();
            Note("own index " + name);
            const PlainIndex plain{"own", FieldsOf(name), {}, nullptr, -1};
            m_plainOwnIndex = std::make_shared<PlainIndex>(plain);
            m_ownIndex = std::make_unique<Index>("OWN", Names(FieldsOf(name)));
            return;
        }
        Note("SetCurrentIndex own");
        EXPECT_EQ(cursor.m_real.SetCurrentIndex(m_ownIndex.get()), cursor.m_plain.SetIndex(m_plainOwnIndex));
    }

    void Seek(Cursor& cursor, const std::string& name) {
        PlainCursor& plain = cursor.m_plain;
        const Strings fields = FieldsOf(name);
        std::vector<PlainValue> keys;
        std::vector<CComVariant> variants;
        std::string text;
        for (const std::string& field : fields) {
            keys.push_back(Value(field));
            variants.push_back(VariantOf(keys.back()));
            text += " " + Printed(keys.back());
        }
        const std::size_t count = Below(fields.size() + 2);
        const bool takesAll = count > fields.size();
        Note("Seek " + name + text + ", " + std::to_string(count));
        const std::int64_t before = plain.m_position;
        const bool found = takesAll ? cursor.m_real.Seek(CString(name), variants.data())
                                    : cursor.m_real.Seek(CString(name), variants.data(), count);
        keys.resize(std::min(count, keys.size()));
        plain.Cancel();
        const Table table = plain.m_table.lock();
        const auto isThere = [&table](const std::string& field) { return table->Find(field) >= 0; };
        // An index that lost a field is searched by nobody, and does not become current.
        if (table == nullptr || table->m_indexes.count(name) == 0 ||
            !std::all_of(fields.begin(), fields.end(), isThere) || !plain.SetIndexNamed(name)) {
            EXPECT_FALSE(found);
            return;
        }
        if (plain.IsIndexFresh()) {
            const std::optional<std::int64_t> place = plain.Seek(keys);
            EXPECT_EQ(found, place.has_value() && plain.MoveTo(*place));
            m_sought += found ? 1 : 0;
        } else if (found) {
            // Rows were changed since the order was built: rows that are found are equal, but others may be
            // missed.
            const std::int64_t place = cursor.m_real.GetAbsolutePosition();
            EXPECT_TRUE(plain.MatchesAt(place, keys));
            EXPECT_TRUE(plain.MoveTo(place));
        } else {
            EXPECT_EQ(cursor.m_real.GetAbsolutePosition(), before);
        }
    }

    // ---- Fields

    void LookAtFields(Cursor& cursor) {
        PlainCursor& plain = cursor.m_plain;
        const Table table = plain.m_table.lock();
        const bool isOutside = plain.IsEof() || plain.IsBof();
        const bool isB = Chance(2);
        void* const variable =
            isB ? static_cast<void*>(&cursor.m_real.m_b) : static_cast<void*>(&cursor.m_real.m_a);
        const bool isBound = isB ? plain.m_hasB : plain.m_hasA;
        PlainStoredRow* const row =
            isOutside ? nullptr : table->m_rows->At(static_cast<std::uint64_t>(plain.m_position));
        const std::size_t field = isB ? 1 : 0;
        quillet::test::PlainCell* const cell =
            row == nullptr || field >= row->m_cells.size() ? nullptr : &row->m_cells[field];
        if (Chance(2)) {
            Note("SetFieldNull");
            const std::string thrown = ThrownMessage([&] { cursor.m_real.SetFieldNull(variable); });
            EXPECT_EQ(thrown, isOutside  ? Report(1380, "SetFieldNull out of recordset range")
                              : !isBound ? Report(1390, "SetFieldNull invalid field binding")
                                         : "");
            if (thrown.empty() && cell != nullptr) {
                cell->m_isNull = true;
                PlainDatabase::Touch(*row);
            }
            return;
        }
        Note("IsFieldNull");
        bool isNull = false;
        EXPECT_EQ(ThrownMessage([&] { isNull = cursor.m_real.IsFieldNull(variable); }),
                  isOutside  ? Report(1361, "Out of recordset range")
                  : !isBound ? Report(1371, "IsFieldNull invalid field binding")
                             : "");
        // A copy keeps the flag, which the plain answer of a query does not have.
        const bool isCopy = table != nullptr && table->m_isQuery && !table->m_rows->m_isBound;
        if (!isOutside && isBound && !isCopy) {
            EXPECT_EQ(isNull, cell == nullptr || cell->m_isNull || cell->m_value.IsNull());
        }
    }

    // ---- Tables

    DbTableInfo* RealTable(const PlainContents& table) {
        return m_database->GetTableInfo(CString(table.m_name));
    }

    bool HasQueries(const Table& table) {
        for (const Table& other : m_plain->Tables()) {
            if (m_plain->IsRelated(other, table)) {
                return true;
            }
        }
        return false;
    }

    std::string FreeName() {
        for (const char* const name : {"t0", "t1", "t2", "t3", "t4"}) {
            if (m_plain->Find(name) == nullptr) {
                return name;
            }
        }
        return "";
    }

    void TableStep() {
        const std::string name = TableName();
        const Table table = m_plain->Find(name);
        const bool isFull = m_plain->Tables().size() > 14;
        const std::size_t kind = isFull ? 9 : Below(24);
        if (kind < 4) {
            CreateTable();
        } else if (kind < 7) {
            Note("AskFor " + name);
            m_database->GetTableData(CString(name));
            if (table != nullptr) {
                m_plain->RefreshAlone(table);
            }
        } else if (kind < 8) {
            Note("ClearTable " + name);
            m_database->ClearTable(CString(name));
            m_plain->Clear(name);
        } else if (kind < 9) {
            const std::string free = FreeName();
            if (!free.empty()) {
                Note("RenameTable " + name + " " + free);
                EXPECT_EQ(m_database->RenameTable(CString(name), CString(free)), m_plain->Rename(name, free));
            }
        } else if (kind < 10 || isFull) {
            const std::string doomed = isFull ? OneOf({"t0", "t1", "t2", "t3", "t4"}) : name;
            Note("DeleteTable " + doomed);
            m_database->DeleteTable(CString(doomed));
            m_plain->Delete(doomed);
        } else if (table != nullptr && !table->m_isQuery) {
            kind < 23 ? AddRow(*table) : DeleteRow(*table);
        }
    }

    void CreateTable() {
        const std::string name = FreeName();
        if (name.empty()) {
            return;
        }
        Note("CreateTable " + name);
        DbTableInfo* const info = m_database->CreateTable(CString(name), DbTableInfo::Table);
        ASSERT_NE(info, nullptr);
        const Table table = PlainDatabase::Make(name);
        EXPECT_TRUE(m_plain->Add(table));
        const std::size_t fields = Chance(6) ? 1 + Below(FieldNames.size()) : FieldNames.size();
        for (std::size_t i = 0; i < fields; ++i) {
            info->GetDescr()->CreateField(CString(FieldNames[i]), false, FieldType(FieldNames[i]));
            PlainDatabase::CreateField(*table, FieldNames[i]);
        }
        for (std::size_t rows = 2 + Below(9); rows > 0; --rows) {
            AddRow(*table);
        }
    }

    void AddRow(PlainContents& table) {
        if (table.RowCount() > 12) {
            return;
        }
        Note("AddRow " + table.m_name);
        DbTableData& data = *RealTable(table)->GetData();
        const uint64 position = data.AddRow();
        EXPECT_EQ(position, PlainDatabase::AddRow(table));
        PlainStoredRow& row = *table.m_rows->At(position);
        for (std::size_t field = 0; field < row.m_cells.size(); ++field) {
            row.m_cells[field].m_value = Value(table.m_fields[field]);
            DbFieldValue& cell = data[position][field];
            cell.GetVariant() = VariantOf(row.m_cells[field].m_value);
            cell.SetChanged();
            PlainDatabase::Touch(row);
        }
    }

    void DeleteRow(PlainContents& table) {
        const std::uint64_t position = Below(table.RowCount() + 1);
        Note("DeleteRow " + table.m_name + " " + std::to_string(position));
        RealTable(table)->GetData()->DeleteRow(position);
        PlainDatabase::DeleteRow(table, position);
    }

    // ---- Definitions

    void DefinitionStep(Cursor& cursor) {
        switch (Below(12)) {
            case 0:
            case 1:
                DefineQuery();
                break;
            case 2:
                OpenQueryDef(cursor);
                break;
            case 3:
                OpenTableDef(cursor);
                break;
            default:
                DefineTable(Chance(3) ? m_secondDef : m_tableDef);
                break;
        }
    }

    void DefineQuery() {
        if (Chance(8)) {
            Note("query definition closes");
            m_queryDef.m_real.Close();
            m_queryDef.m_database = nullptr;
            m_queryDef.m_sql.clear();
            m_queryDef.m_real = Chance(2) ? DbQueryDef(m_database.get()) : m_queryDef.m_real;
            m_queryDef.m_database = m_queryDef.m_real.GetDatabase() == nullptr ? nullptr : m_plain.get();
        } else {
            m_queryDef.m_sql = Sql();
            Note("query definition " + m_queryDef.m_sql);
            const std::string thrown =
                ThrownMessage([&] { m_queryDef.m_real.Create("q", CString(m_queryDef.m_sql)); });
            const bool isGood = m_queryDef.m_database != nullptr && m_plain->Verify(m_queryDef.m_sql);
            EXPECT_EQ(thrown, isGood ? ""
                                     : "Quillet exception thrown\r\nFile: Db/Quillet/Db_QueryDef @ 55\r\n"
                                       "Message: Invalid '" +
                                           m_queryDef.m_sql + "' query");
        }
        EXPECT_EQ(m_queryDef.m_real.GetSQL().ToUtf8(), m_queryDef.m_sql);
    }

    bool IsQueryDefOpen() { return m_queryDef.m_database != nullptr && m_plain->Verify(m_queryDef.m_sql); }

    void OpenQueryDef(Cursor& cursor) {
        Note("Open the query definition");
        const bool opened = cursor.m_real.Open(&m_queryDef.m_real);
        bool expected = IsQueryDefOpen();
        if (expected) {
            TakeDatabase(cursor);
            expected = cursor.m_plain.Open(m_plain.get(), m_queryDef.m_sql);
        }
        EXPECT_EQ(opened, expected);
    }

    void OpenTableDef(Cursor& cursor) {
        Note("Open the table definition of " + m_tableDef.m_plain.m_name);
        const bool opened = cursor.m_real.Open(&m_tableDef.m_real);
        bool expected = m_tableDef.m_plain.IsOpen();
        if (expected) {
            TakeDatabase(cursor);
            expected = cursor.m_plain.Open(m_plain.get(), m_tableDef.m_plain.m_name);
        }
        EXPECT_EQ(opened, expected);
    }

    // What opening a definition does to a cursor before anything else.
    void TakeDatabase(Cursor& cursor) {
        cursor.m_plain.Close();
        cursor.m_plain.m_position = 0;
        cursor.m_isSet = true;
        cursor.m_database = m_plain.get();
    }

    void DefineTable(TableDef& def) {
        PlainTableDef& plain = def.m_plain;
        const Table shown = plain.Shown();
        switch (Below(14)) {
            case 0:
            case 1: {
                const std::string name = OneOf({"t0", "t1", "t2", "t3", "t4"});
                Note("definition creates " + name);
                EXPECT_TRUE(def.m_real.Create(CString(name)));
                plain.m_prepared = PlainDatabase::Make(name);
                plain.m_table.reset();
                plain.m_name = name;
                break;
            }
            case 2:
            case 3:
                Append(def);
                break;
            case 4:
                Note("definition closes");
                def.m_real.Close();
                plain.Close();
                break;
            case 5:
            case 6:
                OpenDef(def);
                break;
            case 7:
                CopyDef();
                break;
            case 8:
                DeleteField(def);
                break;
            case 9: {
                const std::string name = IndexName();
                Note("definition adds index " + name);
                Index index(CString(name), Names(FieldsOf(name)));
                const bool expected =
                    shown != nullptr && PlainDatabase::CreateIndex(*shown, name, FieldsOf(name));
                EXPECT_EQ(def.m_real.CreateIndex(index), expected);
                break;
            }
            default:
                CreateField(def);
                break;
        }
    }

    void CreateField(TableDef& def) {
        const Table shown = def.m_plain.Shown();
        if (shown != nullptr && (shown->m_isQuery || shown->FieldCount() == FieldNames.size())) {
            return;
        }
        // The next one, or one that is there.
        const std::size_t place = shown == nullptr ? 0 : Below(shown->FieldCount() + 1);
        const std::string name = FieldNames[shown == nullptr || Chance(2) ? place : shown->FieldCount()];
        Note("definition adds field " + name);
        EXPECT_EQ(def.m_real.CreateField(CString(name), FieldType(name)),
                  shown != nullptr && PlainDatabase::CreateField(*shown, name));
    }

    void DeleteField(TableDef& def) {
        const Table shown = def.m_plain.Shown();
        if (shown != nullptr && (shown->m_isQuery || HasQueries(shown) || shown->m_fields.empty())) {
            return;
        }
        Note("definition deletes the last field");
        const bool byName = shown != nullptr && Chance(2);
        const bool deleted =
            byName ? def.m_real.DeleteField(CString(shown->m_fields.back()))
                   : def.m_real.DeleteField(shown == nullptr ? 0 : static_cast<int>(shown->FieldCount()) - 1);
        EXPECT_EQ(deleted, shown != nullptr && PlainDatabase::DeleteLastField(*shown));
    }

    void Append(TableDef& def) {
        PlainTableDef& plain = def.m_plain;
        Note("definition appends " + plain.m_name);
        LinesOfTheLog();
        const bool appended = def.m_real.Append();
        if (plain.m_prepared == nullptr) {
            EXPECT_FALSE(appended);
            const Strings lines = LinesOfTheLog();
            EXPECT_EQ(lines, Strings{"Cannot append database... call DbTableDef::Create(...) first"});
        } else if (m_plain->Add(plain.m_prepared)) {
            EXPECT_TRUE(appended);
            plain.m_table = plain.m_prepared;
            plain.m_prepared.reset();
        } else {
            EXPECT_FALSE(appended);
            plain.Close();
        }
    }

    void OpenDef(TableDef& def) {
        const std::string name = TableName();
        const bool hasBrackets = Chance(3);
        Note("definition opens " + name);
        const Table table = m_plain->Find(name);
        EXPECT_EQ(def.m_real.Open(CString(hasBrackets ? "[" + name + "]" : name)), table != nullptr);
        if (table != nullptr) {
            m_plain->RefreshAlone(table);
            def.m_plain.m_prepared.reset();
            def.m_plain.m_table = table;
            def.m_plain.m_name = name;
        }
    }

    void CopyDef() {
        Note("definition is copied");
        m_secondDef.m_real = m_tableDef.m_real;
        m_secondDef.m_plain.Close();
        if (m_tableDef.m_plain.m_prepared == nullptr) {
            m_secondDef.m_plain = m_tableDef.m_plain;
        }
    }

    // ---- Comparing

    Strings LinesOfTheLog() { return m_database == nullptr ? Strings() : TakeLog(*m_database); }

    void CompareAll() {
        LinesOfTheLog();
        for (const auto& cursor : m_cursors) {
            Compare(*cursor);
        }
        Compare(m_tableDef);
        Compare(m_secondDef);
        if (m_step % 20 == 0 && m_database != nullptr) {
            CompareTables();
            EXPECT_EQ(m_queryDef.m_real.IsOpen(), IsQueryDefOpen());
        }
    }

    void Compare(Cursor& cursor) {
        DbRecordset& real = cursor.m_real;
        const PlainCursor& plain = cursor.m_plain;
        EXPECT_EQ(real.IsOpen(), plain.IsOpen());
        EXPECT_EQ(real.GetAbsolutePosition(), plain.m_position);
        EXPECT_EQ(real.IsBOF(), plain.IsBof());
        EXPECT_EQ(real.IsEOF(), plain.IsEof());
        EXPECT_EQ(real.GetRecordCount(), static_cast<long>(plain.RowCount()));
        EXPECT_EQ(real.CanUpdate(), plain.CanUpdate(cursor.m_database));
        EXPECT_EQ(cursor.m_real.m_a, plain.m_a);
        EXPECT_EQ(cursor.m_real.m_b.ToUtf8(), plain.m_b);
        const auto index = plain.m_index.lock();
        EXPECT_EQ(real.GetCurrentIndex().ToUtf8(), index == nullptr ? "" : index->m_name);
        const Table table = plain.m_table.lock();
        EXPECT_EQ(real.GetFieldCount(), table == nullptr ? 0 : table->FieldCount());
        EXPECT_EQ(Printed(real.GetCurrentRow()), Printed(plain.RowAt(plain.m_position)));
        // Exceptions cost more than everything else.
        if (Chance(6)) {
            CompareFields(cursor);
        }
    }

    void CompareFields(Cursor& cursor) {
        const PlainCursor& plain = cursor.m_plain;
        const PlainStoredRow* const row = plain.RowAt(plain.m_position);
        const bool isOutside = row == nullptr || plain.IsEof() || plain.IsBof();
        const std::size_t cells = isOutside ? 0 : row->m_cells.size();
        CComVariant value;
        for (std::size_t field = 0; field < cells; ++field) {
            cursor.m_real.GetFieldValue(field, value);
            EXPECT_EQ(Printed(value), Printed(row->m_cells[field].m_value));
        }
        EXPECT_EQ(ThrownMessage([&] { cursor.m_real.GetFieldValue(cells, value); }),
                  isOutside ? Report(1302, "Out of recordset range")
                            : Report(1311, "Column '" + std::to_string(cells) + "' not found in table '" +
                                               plain.m_name + "'"));
    }

    void Compare(TableDef& def) {
        const PlainTableDef& plain = def.m_plain;
        const Table shown = plain.Shown();
        EXPECT_EQ(def.m_real.IsOpen(), plain.IsOpen());
        EXPECT_EQ(def.m_real.GetTableName().ToUtf8(), plain.m_name);
        EXPECT_EQ(def.m_real.GetFieldCount(), shown == nullptr ? 0 : shown->FieldCount());
        EXPECT_EQ(def.m_real.GetDatabase(), def.m_database == nullptr ? nullptr : m_database.get());
        if (shown != nullptr) {
            EXPECT_EQ(def.m_real.GetRecordCount(), static_cast<long>(shown->RowCount()));
        } else if (Chance(20)) {
            EXPECT_NE(ThrownMessage([&] { def.m_real.GetRecordCount(); }), "");
        }
    }

    void CompareTables() {
        ASSERT_EQ(m_database->GetTablesCount(), static_cast<int>(m_plain->Tables().size()));
        EXPECT_EQ(DbDatabase::m_queriesCount, m_plain->Queries());
        for (std::size_t i = 0; i < m_plain->Tables().size(); ++i) {
            const PlainContents& plain = *m_plain->Tables()[i];
            EXPECT_EQ(m_database->GetTableName(i).ToUtf8(), plain.m_name);
            const DbTableInfo* const real = RealTable(plain);
            ASSERT_NE(real, nullptr) << plain.m_name;
            EXPECT_EQ(real->GetType(), plain.m_isQuery ? DbTableInfo::Query : DbTableInfo::Table);
            EXPECT_EQ(real->GetSql().ToUtf8(), plain.m_sql);
            ASSERT_EQ(real->GetDescr()->size(), plain.FieldCount()) << plain.m_name;
            for (std::size_t field = 0; field < plain.FieldCount(); ++field) {
                EXPECT_EQ(real->GetDescr()->at(field)->GetName().ToUtf8(), plain.m_fields[field]);
            }
            // Not by name, because that would answer the query again.
            ASSERT_EQ(real->GetData()->size(), plain.RowCount()) << plain.m_name;
            for (std::uint64_t row = 0; row < plain.RowCount(); ++row) {
                EXPECT_EQ(Printed(real->GetData()->GetRow(static_cast<int>(row))),
                          Printed(plain.m_rows->At(row)))
                    << plain.m_name << " " << row;
            }
            for (const auto& [name, index] : plain.m_indexes) {
                const Index* const found = real->GetDescr()->FindIndex(CString(name));
                ASSERT_NE(found, nullptr) << plain.m_name << " " << name;
                EXPECT_EQ(found->GetRowOrder(), index->m_order) << plain.m_name << " " << name;
            }
        }
    }

    std::mt19937 m_random;
    int m_step = 0;
    std::deque<std::string> m_trace;
    std::unique_ptr<DbDatabase> m_database;
    std::unique_ptr<PlainDatabase> m_plain;
    std::vector<std::unique_ptr<Cursor>> m_cursors;
    TableDef m_tableDef;
    TableDef m_secondDef;
    QueryDef m_queryDef;
    std::unique_ptr<Index> m_ownIndex;
    std::shared_ptr<PlainIndex> m_plainOwnIndex;

public:
    // Counts of what happened, to verify that the operations had an effect.
    int m_found = 0;
    int m_sought = 0;
    int m_updates = 0;
    int m_deletions = 0;
};

TEST(CursorModel, RandomOperations_DoWhatThePlainRulesSay) {
    const quillet::test::StaticsGuard statics;
    int found = 0;
    int sought = 0;
    int updates = 0;
    int deletions = 0;
    for (unsigned seed = 1; seed <= 10 && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        World world(quillet::test::Seed(seed));
        world.Run(10000);
        found += world.m_found;
        sought += world.m_sought;
        updates += world.m_updates;
        deletions += world.m_deletions;
    }
    EXPECT_GT(found, 1000);
    EXPECT_GT(sought, 300);
    EXPECT_GT(updates, 1000);
    EXPECT_GT(deletions, 500);
    RecordProperty("found", found);
    RecordProperty("sought", sought);
    RecordProperty("updates", updates);
    RecordProperty("deletions", deletions);
}

}  // namespace
