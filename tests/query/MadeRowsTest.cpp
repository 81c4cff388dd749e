// What is asked of a table has one answer, whether none, some or all of its rows were made before.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Quillet/rows/RowsView.h"
#include "support/CatalogHelpers.h"
#include "support/RowHelpers.h"

namespace quillet::test {
namespace {

using Strings = std::vector<std::string>;

enum class Made { None, All, EveryThird, OfHalfTheBlocks };

constexpr Made AllMade[] = {Made::None, Made::All, Made::EveryThird, Made::OfHalfTheBlocks};

struct Field {
    const char* m_name;
    DbFieldDescr::eFieldType m_type;
    Filling m_filling;
};

constexpr const char* FieldNames[] = {"d", "e", "f", "l", "b", "t", "u"};

// Fields with values of their own types.
std::vector<Field> CleanFields() {
    return {
        {"d", DbFieldDescr::Double, {"", [](Chance& chance) { return CComVariant(chance.Below(90) / 8.0); }}},
        {"e", DbFieldDescr::Double, Numbers("", VT_R8, {-1e300, -2.5, -0.0, 0.0, 1e-300, 7, HUGE_VAL})},
        {"f", DbFieldDescr::Float, Numbers("", VT_R4, {-1.5, -0.0, 0.0, 0.1, 0.25, 3e38})},
        {"l", DbFieldDescr::Long, Numbers("", VT_I4, {-2147483648.0, -1, 0, 1, 2, 3, 2147483647.0})},
        {"b", DbFieldDescr::Boolean, Numbers("", VT_BOOL, {-1, 0})},
        {"t", DbFieldDescr::Text, TextsOf("", {'a', 'b', 'A', 'B', '-'}, 3)},
        {"u", DbFieldDescr::Text, TextsOf("", {'a', 'e', 0xE9, 'E', 0xDF, 0xAD, 's'}, 3)},
    };
}

// The same with nulls, empty cells, values that equal nothing and values of other types.
std::vector<Field> MixedFields() {
    std::vector<Field> fields = CleanFields();
    for (Field& field : fields) {
        field.m_filling = WithSome("", field.m_filling, NullVariant(), 40);
        field.m_filling = WithSome("", field.m_filling, CComVariant(), 50);
    }
    fields[0].m_filling = WithSome("", fields[0].m_filling, CComVariant(std::nan("")), 60);
    fields[3].m_filling = WithSome("", fields[3].m_filling, CComVariant("1"), 60);
    fields[5].m_filling = WithSome("", fields[5].m_filling, Long(1), 60);
    fields[6].m_filling = WithSome("", fields[6].m_filling, CComVariant(Units({'a', 0xD800})), 60);
    return fields;
}

class Catalog {
public:
    Catalog(Made made, const std::vector<Field>& fields, unsigned seed, std::size_t rows) {
        Chance chance(seed);
        Fill("parts", made, fields, chance, rows);
        Fill("other", made, fields, chance, rows / 8);
    }

    Strings Answer(const std::string& sql) {
        CString name;
        return m_database.Query(CString(sql), name) ? Rows(name) : Strings{"no answer"};
    }

    Strings Join(bool withUnmatched, const std::string& field, const std::string& op) {
        const CString name(field);
        return Rows(withUnmatched ? m_database.right_join("parts", "other", name, CString(op), name)
                                  : m_database.inner_join("parts", "other", name, CString(op), name));
    }

    // The positions that finds go to, forward from the first row and backward from the last.
    std::vector<long> Found(const std::string& condition) {
        DbRecordset cursor(&m_database);
        cursor.Open("parts");
        std::vector<long> found;
        const CString text(condition);
        for (bool is = cursor.FindFirst(text); is; is = cursor.FindNext(text)) {
            found.push_back(cursor.GetAbsolutePosition());
        }
        for (bool is = cursor.FindLast(text); is; is = cursor.FindPrev(text)) {
            found.push_back(cursor.GetAbsolutePosition());
        }
        return found;
    }

    // The order of an index and the places where Seek finds keys; then finds in that order.
    std::vector<long> Sought(const std::string& fields, const std::vector<CComVariant>& keys,
                             const std::string& condition) {
        m_database.GetTableDescr("parts")->CreateIndex(CString(fields), CString(fields));
        DbRecordset cursor(&m_database);
        cursor.Open("parts");
        std::vector<long> sought = {cursor.SetCurrentIndex(CString(fields)) ? 1 : 0};
        for (uint64 place = 0; place < m_database.GetTableData("parts")->size(); ++place) {
            sought.push_back(static_cast<long>(cursor.RemapRowIndex(place)));
        }
        for (CComVariant key : keys) {
            sought.push_back(cursor.Seek(CString(fields), &key, 1) ? cursor.GetAbsolutePosition() : -1);
        }
        cursor.FindFirst(CString(condition));
        for (int i = 0; i < 5; ++i) {
            sought.push_back(cursor.GetAbsolutePosition());
            cursor.FindNext(CString(condition));
        }
        return sought;
    }

private:
    void Fill(const char* table, Made made, const std::vector<Field>& fields, Chance& chance,
              std::size_t count) {
        DbTableInfo* const info = m_database.CreateTable(table, DbTableInfo::Table);
        for (const Field& field : fields) {
            info->GetDescr()->CreateField(field.m_name, false, field.m_type);
        }
        DbRows& rows = *info->GetData()->GetRows();
        rows.AddRows(count, false);
        RowsView view(rows);
        for (uint64 row = 0; row < count; ++row) {
            for (uint64 field = 0; field < fields.size(); ++field) {
                view.SetCell(row, field, CellView::Variant(fields[field].m_filling.m_draw(chance)));
            }
        }
        for (std::size_t deleted = count / 50; deleted > 0; --deleted) {
            rows.DeleteRow(chance.Below(view.Count()));
        }
        for (uint64 row = 0; row < view.Count(); ++row) {
            const bool isInMadeBlock = row / ColumnBlock::MostSlots % 2 == 0;
            if (made == Made::All || (made == Made::EveryThird && row % 3 == 0) ||
                (made == Made::OfHalfTheBlocks && isInMadeBlock && row % 7 == 0)) {
                rows.GetRow(static_cast<int>(row));
            }
        }
    }

    Strings Rows(const CString& table) {
        DbTableData* const data = m_database.GetTableData(table);
        Strings lines;
        for (uint64 row = 0; data != nullptr && row < data->size(); ++row) {
            const RowsView view(*data->GetRows());
            lines.emplace_back();
            for (std::size_t field = 0; field < view.Width(row); ++field) {
                lines.back() += ShowCell(view.Cell(row, field)) + " ";
            }
        }
        return lines;
    }

    StaticsGuard m_statics;
    DbDatabase m_database;
};

class MadeRows : public testing::TestWithParam<bool> {
protected:
    static constexpr std::size_t Few = 300;
    // More than two blocks.
    static constexpr std::size_t Many = 9000;

    // Whether rows are made makes no difference to what is asked.
    template <typename Ask>
    void ExpectOneAnswer(unsigned seed, std::size_t rows, Ask ask) {
        const std::vector<Field> fields = GetParam() ? MixedFields() : CleanFields();
        Catalog expectedOf(Made::All, fields, seed, rows);
        const auto expected = ask(expectedOf);
        for (const Made made : AllMade) {
            Catalog catalog(made, fields, seed, rows);
            EXPECT_EQ(ask(catalog), expected) << static_cast<int>(made) << ", seed " << seed;
        }
    }

    static std::string Condition(Chance& chance) {
        static const std::vector<std::string> Conditions = {
            "d > 5",    "d <= 2.5", "3 < d",    "e = 0",    "e <> 7",    "f >= 0.25", "l = 1",
            "l != 1",   "2 > l",    "b = 1",    "t = 'AB'", "'a' = t",   "t <> 'b'",  "t > 'a-'",
            "t <= 'B'", "u = 'e'",  "u = 'SS'", "u < 'e'",  "u != 'as'", "t = u",     "d > e",
            "l < d",    "t = ''",   "u > t",    "d = 'x'",
        };
        std::string text = chance.Of(Conditions);
        while (chance.Below(2) == 0) {
            text += std::string(chance.Below(2) == 0 ? " and " : " or ") +
                    (chance.Below(4) == 0 ? "not " : "") + chance.Of(Conditions);
            if (chance.Below(3) == 0) {
                text = (chance.Below(2) == 0 ? "(" : "not (") + text + ")";
            }
        }
        return text;
    }

    static std::string Fields(Chance& chance) {
        std::string text = chance.Of(FieldNames);
        while (chance.Below(2) == 0) {
            text += std::string(", ") + chance.Of(FieldNames);
        }
        return text;
    }

    static std::string Query(Chance& chance) {
        std::string text = "select ";
        text += chance.Below(4) == 0 ? "distinct " : "";
        text += chance.Below(8) == 0 ? "top " + std::to_string(chance.Below(Few)) + " " : "";
        text += chance.Below(6) == 0 ? "*" : Fields(chance);
        text += " from parts";
        text += chance.Below(3) != 0 ? " where " + Condition(chance) : "";
        text += chance.Below(2) == 0 ? " order by " + Fields(chance) : "";
        return text + (chance.Below(6) == 0 && text.find("order") != std::string::npos ? " desc" : "");
    }
};

TEST_P(MadeRows, Queries) {
    for (unsigned seed = 0; seed < 12; ++seed) {
        Chance chance(100 + seed);
        Strings queries;
        for (int i = 0; i < 25; ++i) {
            queries.push_back(Query(chance));
        }
        ExpectOneAnswer(seed, Few, [&](Catalog& catalog) {
            std::vector<Strings> answers;
            for (const std::string& query : queries) {
                answers.push_back(catalog.Answer(query));
            }
            return answers;
        });
    }
}

TEST_P(MadeRows, QueriesOverSeveralBlocks) {
    for (const char* const query :
         {"select u, d, f, b from parts order by d", "select t, e from parts order by l, t desc",
          "select d, t, u, l, f, b from parts where d > 4", "select distinct d from parts",
          "select distinct u, l from parts", "select t from parts where d > 4 and t = 'ab' or l = 1",
          "select u from parts order by u"}) {
        ExpectOneAnswer(1, Many, [&](Catalog& catalog) { return catalog.Answer(query); });
    }
}

TEST_P(MadeRows, Joins) {
    for (const char* const field : FieldNames) {
        for (const char* const op : {"=", "<"}) {
            ExpectOneAnswer(2, Few / 2, [&](Catalog& catalog) { return catalog.Join(true, field, op); });
        }
        ExpectOneAnswer(3, Few, [&](Catalog& catalog) { return catalog.Join(false, field, "="); });
    }
}

TEST_P(MadeRows, Finds) {
    Chance chance(4);
    for (unsigned seed = 0; seed < 30; ++seed) {
        const std::string condition = Condition(chance);
        SCOPED_TRACE(condition);
        ExpectOneAnswer(seed, Few, [&](Catalog& catalog) { return catalog.Found(condition); });
    }
    ExpectOneAnswer(5, Many, [](Catalog& catalog) { return catalog.Found("d > 11 and l = 1"); });
}

TEST_P(MadeRows, IndexesAndSeek) {
    const std::vector<std::pair<std::string, std::vector<CComVariant>>> indexes = {
        {"d", {5.0, 5.1, -1.0, 11.125}},
        {"e", {0.0, 7.0}},
        {"f", {0.25F}},
        {"l", {Long(1), Long(9)}},
        {"t", {"ab", "AB", "-"}},
        {"u", {"e", "as", Units({0xDF})}},
        {"t,d", {"a", "b"}},
        {"l,u", {Long(2)}},
    };
    for (const auto& [fields, keys] : indexes) {
        SCOPED_TRACE(fields);
        ExpectOneAnswer(6, Few, [&](Catalog& catalog) { return catalog.Sought(fields, keys, "d > 4"); });
    }
    ExpectOneAnswer(7, Many, [&](Catalog& catalog) { return catalog.Sought("d", {5.0}, "t = 'ab'"); });
}

std::string CellsName(const testing::TestParamInfo<bool>& info) {
    return info.param ? "OfAnyType" : "OfTheirTypes";
}

INSTANTIATE_TEST_SUITE_P(Cells, MadeRows, testing::Bool(), CellsName);

}  // namespace
}  // namespace quillet::test
