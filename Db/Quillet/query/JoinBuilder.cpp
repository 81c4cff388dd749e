// Where the operator asks for equality, values become classes, and a row is compared with those of its own
// class only; for the other operators with every row. Either way the pairs come in the order of the tables.
#include "Quillet/query/JoinBuilder.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <numeric>
#include <set>
#include <span>
#include <utility>

#include "Quillet/Db_TableData.h"
#include "Quillet/document/LazyReader.h"
#include "Quillet/query/QueryBuilder.h"
#include "Quillet/query/SqlText.h"
#include "Quillet/registry/Log.h"
#include "Quillet/registry/Registry.h"
#include "Quillet/rows/EqualityClasses.h"
#include "Quillet/values/Comparison.h"
#include "Quillet/values/Names.h"

namespace quillet {

namespace {

// Rows are numbered in 32 bits, as positions are.
using RowNumber = std::uint32_t;
using RowNumbers = std::span<const RowNumber>;
constexpr std::size_t MostRows = std::numeric_limits<std::int32_t>::max();

// The values of one field, row by row.
using Column = std::vector<const CComVariant*>;

Column ColumnOf(const std::vector<DbTableRow*>& rows, int field) {
    Column column(rows.size());
    std::transform(rows.begin(), rows.end(), column.begin(), [&](const DbTableRow* row) {
        return &row->GetField(static_cast<uint64>(field)).GetVariant();
    });
    return column;
}

template <typename Classes>
std::vector<std::uint32_t> ClassesOf(const Column& column, Classes& classes) {
    std::vector<std::uint32_t> numbers(column.size());
    std::transform(column.begin(), column.end(), numbers.begin(),
                   [&](const CComVariant* value) { return classes.ClassOf(*value); });
    return numbers;
}

// The rows of each class, in their order.
class RowsOfClasses {
public:
    // What is in no class counts as one more class after the last.
    RowsOfClasses(const std::vector<std::uint32_t>& ofRow, std::size_t classes)
        : m_last(classes), m_starts(classes + 2), m_rows(ofRow.size()) {
        for (const std::uint32_t number : ofRow) {
            ++m_starts[Inside(number) + 1];
        }
        std::partial_sum(m_starts.begin(), m_starts.end(), m_starts.begin());
        std::vector<std::size_t> next(m_starts);
        for (RowNumber row = 0; row < ofRow.size(); ++row) {
            m_rows[next[Inside(ofRow[row])]++] = row;
        }
    }

    RowNumbers Of(std::uint32_t number) const { return At(Inside(number)); }
    RowNumbers OfNoClass() const { return At(m_last); }

private:
    std::size_t Inside(std::uint32_t number) const { return std::min<std::size_t>(number, m_last); }
    RowNumbers At(std::size_t number) const {
        return RowNumbers(m_rows).subspan(m_starts[number], m_starts[number + 1] - m_starts[number]);
    }

    std::size_t m_last;
    std::vector<std::size_t> m_starts;
    std::vector<RowNumber> m_rows;
};

// The pairs that match.
class Matches {
public:
    struct Pair {
        RowNumber m_first;
        RowNumber m_second;
    };

    Matches(const Column& first, const Column& second, Comparison comparison)
        : m_first(first),
          m_second(second),
          m_comparison(comparison),
          m_isMatched(second.size()),
          m_allOfSecond(second.size()) {
        std::iota(m_allOfSecond.begin(), m_allOfSecond.end(), RowNumber{0});
    }

    void Find() {
        for (RowNumber row = 0; row < m_first.size() && !AreTooMany(); ++row) {
            Try(row, m_allOfSecond);
        }
    }

    // The same for a comparison that holds inside of classes only, and for what is in none.
    template <typename Classes>
    void FindInClasses() {
        Classes classes;
        const std::vector<std::uint32_t> ofSecond = ClassesOf(m_second, classes);
        const std::vector<std::uint32_t> ofFirst = ClassesOf(m_first, classes);
        const RowsOfClasses rows(ofSecond, classes.Count());
        const RowNumbers others = rows.OfNoClass();
        std::vector<RowNumber> merged;
        for (RowNumber row = 0; row < m_first.size() && !AreTooMany(); ++row) {
            if (ofFirst[row] >= classes.Count()) {
                Try(row, m_allOfSecond);
                continue;
            }
            const RowNumbers own = rows.Of(ofFirst[row]);
            if (others.empty()) {
                Try(row, own);
                continue;
            }
            merged.clear();
            std::merge(own.begin(), own.end(), others.begin(), others.end(), std::back_inserter(merged));
            Try(row, merged);
        }
    }

    const std::vector<Pair>& Pairs() const { return m_pairs; }
    // Whether there are more than can be rows of a table; then the rest is missing.
    bool AreTooMany() const { return m_pairs.size() > MostRows; }

    std::vector<RowNumber> Unmatched() const {
        std::vector<RowNumber> rows;
        std::copy_if(m_allOfSecond.begin(), m_allOfSecond.end(), std::back_inserter(rows),
                     [&](RowNumber row) { return !m_isMatched[row]; });
        return rows;
    }

private:
    void Try(RowNumber first, RowNumbers candidates) {
        for (const RowNumber second : candidates) {
            if (!AreTooMany() && m_comparison(*m_first[first], *m_second[second])) {
                m_pairs.push_back({first, second});
                m_isMatched[second] = true;
            }
        }
    }

    const Column& m_first;
    const Column& m_second;
    Comparison m_comparison;
    std::vector<Pair> m_pairs;
    std::vector<bool> m_isMatched;
    std::vector<RowNumber> m_allOfSecond;
};

std::vector<DbTableRow*> RowsOf(DbTableData& data) {
    std::vector<DbTableRow*> rows;
    rows.reserve(data.size());
    for (uint64 i = 0; i < data.size(); ++i) {
        if (DbTableRow* const row = data.GetRow(static_cast<int>(i))) {
            rows.push_back(row);
        }
    }
    return rows;
}

// Appends the fields of tables to a structure. A name that is taken gets the table's before it.
class FieldList {
public:
    explicit FieldList(DbTableDescr& to) : m_to(to) {}

    void Append(const DbTableInfo& table) {
        for (const DbFieldDescr* const field : *table.GetDescr()) {
            CString name = field->GetName();
            while (m_names.count(Lowered(WithoutBrackets(name))) > 0) {
                name = table.GetName() + "." + name;
            }
            m_names.insert(Lowered(name));
            DbFieldDescr renamed;
            renamed.SetName(name);
            renamed.SetKey(field->IsKey());
            renamed.SetType(field->GetType());
            m_to.AppendField(renamed);
        }
    }

private:
    DbTableDescr& m_to;
    // As the structure looks for them.
    std::set<CString> m_names;
};

void CopyCells(const DbTableRow& from, std::size_t fields, DbTableRow& to, std::size_t at) {
    for (std::size_t field = 0; field < fields; ++field) {
        to[at + field] = from[field];
    }
}

void MakeNull(DbTableRow& row, std::size_t fields) {
    CComVariant null;
    null.vt = VT_NULL;
    for (std::size_t field = 0; field < fields; ++field) {
        row[field].GetVariant() = null;
        row[field].SetNull(true);
    }
}

// A row for each pair, and one for each unmatched row of the second table.
void Fill(DbRows& rows, const std::vector<DbTableRow*>& first, const std::vector<DbTableRow*>& second,
          std::size_t fieldsOfFirst, const std::vector<Matches::Pair>& pairs,
          const std::vector<RowNumber>& alone) {
    rows.AddRows(pairs.size() + alone.size(), false);
    int position = 0;
    for (const Matches::Pair& pair : pairs) {
        DbTableRow& row = *rows.GetRow(position++);
        CopyCells(*first[pair.m_first], fieldsOfFirst, row, 0);
        CopyCells(*second[pair.m_second], row.size() - fieldsOfFirst, row, fieldsOfFirst);
    }
    for (const RowNumber number : alone) {
        DbTableRow& row = *rows.GetRow(position++);
        MakeNull(row, fieldsOfFirst);
        CopyCells(*second[number], row.size() - fieldsOfFirst, row, fieldsOfFirst);
    }
}

}  // namespace

CString JoinBuilder::Inner(const Texts& texts) {
    return Answer(texts, "INNER", false);
}

CString JoinBuilder::Right(const Texts& texts) {
    return Answer(texts, "RIGHT", true);
}

CString JoinBuilder::Answer(const Texts& texts, const char* kind, bool withUnmatched) {
    Side first;
    Side second;
    if (!FindTable(texts.m_firstTable, first) || !FindTable(texts.m_secondTable, second) ||
        !FindField(texts.m_left, first) || !FindField(texts.m_right, second)) {
        return {};
    }
    const VARTYPE type = first.Field().GetType();
    const Comparison comparison = ComparisonOf(texts.m_operator, type == VT_BSTR);
    if (comparison == nullptr || type == VT_EMPTY || type != second.Field().GetType()) {
        m_log.Add(InvalidConditionEntry(texts.m_left + " " + texts.m_operator + " " + texts.m_right));
        return {};
    }
    CString name;
    name.Format("%s %s JOIN %s ON %s %s %s", first.m_name.ToUtf8().c_str(), kind,
                second.m_name.ToUtf8().c_str(), texts.m_left.ToUtf8().c_str(),
                texts.m_operator.ToUtf8().c_str(), texts.m_right.ToUtf8().c_str());
    if (!CanHoldAnswer(name, first, second)) {
        return {};
    }

    const std::vector<DbTableRow*> rowsOfFirst = RowsOf(*first.m_table->GetData());
    const std::vector<DbTableRow*> rowsOfSecond = RowsOf(*second.m_table->GetData());
    const Column left = ColumnOf(rowsOfFirst, first.m_field);
    const Column right = ColumnOf(rowsOfSecond, second.m_field);
    Matches matches(left, right, comparison);
    if (!IsEquality(texts.m_operator)) {
        matches.Find();
    } else if (type == VT_BSTR) {
        matches.FindInClasses<TextClasses>();
    } else {
        matches.FindInClasses<EqualityClasses>();
    }
    const std::vector<RowNumber> unmatched = withUnmatched ? matches.Unmatched() : std::vector<RowNumber>();
    const std::vector<Matches::Pair>& pairs = matches.Pairs();
    if (pairs.size() + unmatched.size() > MostRows) {
        m_log.Print(Log::Kind::QueryFault, "Join '%s' has more rows than a table can hold",
                    name.ToUtf8().c_str());
        return {};
    }

    DbTableInfo& answer = MakeTable(name, *first.m_table);
    DbTableDescr& descr = *answer.GetDescr();
    try {
        FieldList fields(descr);
        fields.Append(*first.m_table);
        const std::size_t fieldsOfFirst = descr.size();
        fields.Append(*second.m_table);
        Fill(*answer.GetData()->GetRows(), rowsOfFirst, rowsOfSecond, fieldsOfFirst, pairs, unmatched);
    } catch (...) {
        m_registry.DeleteWithRelated(name);
        throw;
    }
    answer.SetSyncStamp(first.m_table->GetData()->GetChangeId());
    // An answer is no change of the catalog.
    descr.Sync();
    answer.GetData()->Sync();
    return name;
}

const DbFieldDescr& JoinBuilder::Side::Field() const {
    return m_table->GetDescr()->GetField(m_field);
}

bool JoinBuilder::FindTable(const CString& name, Side& side) {
    side.m_name = WithoutBrackets(name);
    // A query that is out of step is answered again here, and its fields may be others after that.
    side.m_table = m_queries.FindInStep(side.m_name);
    if (side.m_table == nullptr) {
        m_log.Add(NoTableEntry(side.m_name));
        return false;
    }
    if (!side.m_table->GetData()->ParseXmlData()) {
        m_log.Add(UnreadRowsEntry(side.m_name, m_reader.LastReadError()));
        return false;
    }
    return true;
}

bool JoinBuilder::FindField(const CString& name, Side& side) {
    side.m_field = side.m_table->GetDescr()->GetFieldIndex(name);
    if (side.m_field < 0) {
        m_log.Add(NoFieldEntry(name, side.m_name));
        return false;
    }
    return true;
}

bool JoinBuilder::CanHoldAnswer(const CString& name, const Side& first, const Side& second) {
    const DbTableInfo* const answer = m_registry.Find(name);
    if (answer == nullptr) {
        return true;
    }
    if (!answer->IsJoin()) {
        m_log.Print(Log::Kind::QueryFault, Log::Place(name),
                    "Table '%s' already in database, a join can't be put in it", name.ToUtf8().c_str());
        return false;
    }
    if (first.m_table->DependsOn(*answer) || second.m_table->DependsOn(*answer)) {
        m_log.Print(Log::Kind::QueryFault, "Query '%s' stands on itself", name.ToUtf8().c_str());
        return false;
    }
    return true;
}

DbTableInfo& JoinBuilder::MakeTable(const CString& name, DbTableInfo& first) {
    if (DbTableInfo* const answer = m_registry.Find(name)) {
        m_registry.Renew(*answer, first);
        return *answer;
    }
    return *m_registry.CreateJoin(name, first);
}

}  // namespace quillet
