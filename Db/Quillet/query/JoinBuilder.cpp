// Where the operator asks for equality, values become classes, and a row is compared with those of its own
// class only; for the other operators with every row. Either way the pairs come in the order of the tables.
#include "Quillet/query/JoinBuilder.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <iterator>
#include <limits>
#include <numeric>
#include <optional>
#include <set>
#include <span>
#include <utility>

#include "Quillet/Db_TableData.h"
#include "Quillet/document/LazyReader.h"
#include "Quillet/query/QueryBuilder.h"
#include "Quillet/query/SqlText.h"
#include "Quillet/registry/Log.h"
#include "Quillet/registry/Registry.h"
#include "Quillet/rows/CellCopies.h"
#include "Quillet/rows/EqualityClasses.h"
#include "Quillet/rows/RowsView.h"
#include "Quillet/values/Comparison.h"
#include "Quillet/values/Names.h"

namespace quillet {

namespace {

// Rows are numbered in 32 bits, as positions are.
using RowNumber = std::uint32_t;
using RowNumbers = std::span<const RowNumber>;
constexpr std::size_t MostRows = std::numeric_limits<std::int32_t>::max();

// The rows of a table that exist.
class JoinedRows {
public:
    explicit JoinedRows(DbTableData& data) : m_view(*data.GetRows()) {
        m_positions.reserve(m_view.Count());
        for (uint64 i = 0; i < m_view.Count(); ++i) {
            if (m_view.HasRow(i)) {
                m_positions.push_back(i);
            }
        }
    }

    std::size_t Size() const { return m_positions.size(); }
    CellView Cell(RowNumber row, uint64 field) const { return m_view.Cell(m_positions[row], field); }
    const RowsView& View() const { return m_view; }
    RowSelection All() const { return {m_view, m_positions}; }
    uint64 PositionOf(RowNumber row) const { return m_positions[row]; }

private:
    RowsView m_view;
    std::vector<uint64> m_positions;
};

struct JoinedField {
    const JoinedRows& m_rows;
    uint64 m_field;
};

// The values of one field, row by row.
class Column {
public:
    explicit Column(const JoinedField& field) {
        m_cells.reserve(field.m_rows.Size());
        for (RowNumber row = 0; row < field.m_rows.Size(); ++row) {
            const CellView cell = field.m_rows.Cell(row, field.m_field);
            const bool isVariant = cell.GetKind() == CellView::Kind::Variant;
            m_cells.push_back(isVariant ? &cell.AsVariant() : &cell.In(m_copies.emplace_back()));
        }
    }
    Column(const Column&) = delete;
    Column& operator=(const Column&) = delete;

    std::size_t Size() const { return m_cells.size(); }
    const CComVariant& operator[](RowNumber row) const { return *m_cells[row]; }

private:
    std::vector<const CComVariant*> m_cells;
    // The values of rows that were not made.
    std::deque<CComVariant> m_copies;
};

std::vector<std::uint32_t> ClassesOf(const JoinedField& field, EqualityClasses& classes) {
    return classes.ClassesOf(field.m_rows.All(), field.m_field);
}

std::vector<std::uint32_t> ClassesOf(const Column& column, TextClasses& classes) {
    std::vector<std::uint32_t> numbers(column.Size());
    for (RowNumber row = 0; row < numbers.size(); ++row) {
        numbers[row] = classes.ClassOf(CellView::Variant(column[row]));
    }
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

    Matches(const JoinedField& first, const JoinedField& second, Comparison comparison)
        : m_firstField(first),
          m_secondField(second),
          m_comparison(comparison),
          m_isMatched(second.m_rows.Size()),
          m_allOfSecond(second.m_rows.Size()) {
        std::iota(m_allOfSecond.begin(), m_allOfSecond.end(), RowNumber{0});
    }

    void Find() {
        ReadValues();
        for (RowNumber row = 0; row < m_first->Size() && !AreTooMany(); ++row) {
            Try(row, m_allOfSecond);
        }
    }

    // The same for the equality of texts, which holds inside of classes only, and for what is in none.
    void FindEqualTexts() {
        ReadValues();
        TextClasses classes;
        const std::vector<std::uint32_t> ofSecond = ClassesOf(*m_second, classes);
        FindInClasses(ClassesOf(*m_first, classes), ofSecond, classes.Count());
    }

    // The same for the equality of other values.
    void FindEqualValues() {
        EqualityClasses classes;
        const std::vector<std::uint32_t> ofSecond = ClassesOf(m_secondField, classes);
        const std::vector<std::uint32_t> ofFirst = ClassesOf(m_firstField, classes);
        m_areEqualInClasses = classes.AreSure();
        if (!m_areEqualInClasses) {
            ReadValues();
        }
        FindInClasses(ofFirst, ofSecond, classes.Count());
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
    void ReadValues() {
        m_first.emplace(m_firstField);
        m_second.emplace(m_secondField);
    }

    void FindInClasses(const std::vector<std::uint32_t>& ofFirst, const std::vector<std::uint32_t>& ofSecond,
                       std::size_t classes) {
        const RowsOfClasses rows(ofSecond, classes);
        const RowNumbers others = rows.OfNoClass();
        std::vector<RowNumber> merged;
        for (RowNumber row = 0; row < ofFirst.size() && !AreTooMany(); ++row) {
            if (ofFirst[row] >= classes) {
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

    void Try(RowNumber first, RowNumbers candidates) {
        for (const RowNumber second : candidates) {
            if (!AreTooMany() &&
                (m_areEqualInClasses || m_comparison((*m_first)[first], (*m_second)[second]))) {
                m_pairs.push_back({first, second});
                m_isMatched[second] = true;
            }
        }
    }

    const JoinedField& m_firstField;
    const JoinedField& m_secondField;
    // The values where they are compared.
    std::optional<Column> m_first;
    std::optional<Column> m_second;
    Comparison m_comparison;
    // The rows of a class need no comparison.
    bool m_areEqualInClasses = false;
    std::vector<Pair> m_pairs;
    std::vector<bool> m_isMatched;
    std::vector<RowNumber> m_allOfSecond;
};

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

std::vector<uint64> FieldNumbers(std::size_t count) {
    std::vector<uint64> fields(count);
    std::iota(fields.begin(), fields.end(), uint64{0});
    return fields;
}

// Gives rows, which have none yet, one for each pair, and one for each unmatched row of the second table.
void FillRows(DbRows& rows, const JoinedRows& first, const JoinedRows& second,
              const std::vector<Matches::Pair>& pairs, const std::vector<RowNumber>& alone,
              std::size_t fieldsOfFirst, std::size_t fieldsOfSecond) {
    std::vector<uint64> positions;
    positions.reserve(pairs.size() + alone.size());
    for (const Matches::Pair& pair : pairs) {
        positions.push_back(first.PositionOf(pair.m_first));
    }
    rows.AddRows(pairs.size() + alone.size(), false);
    RowsView target(rows);
    CopyCells({first.View(), positions}, FieldNumbers(fieldsOfFirst), target, 0, 0);
    for (uint64 position = pairs.size(); position < target.Count(); ++position) {
        for (std::size_t field = 0; field < fieldsOfFirst; ++field) {
            target.SetCell(position, field, CellView::Null(true));
        }
    }
    positions.clear();
    for (const Matches::Pair& pair : pairs) {
        positions.push_back(second.PositionOf(pair.m_second));
    }
    for (const RowNumber row : alone) {
        positions.push_back(second.PositionOf(row));
    }
    CopyCells({second.View(), positions}, FieldNumbers(fieldsOfSecond), target, 0, fieldsOfFirst);
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

    const JoinedRows rowsOfFirst(*first.m_table->GetData());
    const JoinedRows rowsOfSecond(*second.m_table->GetData());
    const JoinedField left{rowsOfFirst, static_cast<uint64>(first.m_field)};
    const JoinedField right{rowsOfSecond, static_cast<uint64>(second.m_field)};
    Matches matches(left, right, comparison);
    if (!IsEquality(texts.m_operator)) {
        matches.Find();
    } else if (type == VT_BSTR) {
        matches.FindEqualTexts();
    } else {
        matches.FindEqualValues();
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
        FillRows(*answer.GetData()->GetRows(), rowsOfFirst, rowsOfSecond, pairs, unmatched, fieldsOfFirst,
                 descr.size() - fieldsOfFirst);
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
