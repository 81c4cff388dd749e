#include "Quillet/rows/CellFilter.h"

#include <algorithm>
#include <typeinfo>

#include "Quillet/base/Utf8.h"

namespace quillet {

namespace {

using Kind = CellView::Kind;

// What the comparison of values of one type finds; neither is not a number.
template <typename Number>
bool CompareNumbers(Operator op, Number left, Number right) {
    switch (op) {
        case Operator::Less:
            return left < right;
        case Operator::LessOrEqual:
            return left <= right;
        case Operator::Equal:
            return left == right;
        case Operator::GreaterOrEqual:
            return left >= right;
        case Operator::Greater:
            return left > right;
        case Operator::NotEqual:
            return left != right;
        case Operator::None:
            break;
    }
    return false;
}

char AsciiLower(char letter) {
    constexpr char ToLower = 'a' - 'A';
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ToLower) : letter;
}

CellView ViewOf(const CComVariant& literal) {
    return CellView::Variant(literal).Plain();
}

template <typename Number>
void MarkNumbers(Operator op, const Number* numbers, Number literal, std::uint32_t count, std::uint8_t bit,
                 std::uint8_t* marks) {
    const auto mark = [&](auto predicate) {
        for (std::uint32_t i = 0; i < count; ++i) {
            marks[i] |= predicate(numbers[i]) ? bit : std::uint8_t{0};
        }
    };
    switch (op) {
        case Operator::Less:
            mark([=](Number number) { return number < literal; });
            break;
        case Operator::LessOrEqual:
            mark([=](Number number) { return number <= literal; });
            break;
        case Operator::Equal:
            mark([=](Number number) { return number == literal; });
            break;
        case Operator::GreaterOrEqual:
            mark([=](Number number) { return number >= literal; });
            break;
        case Operator::Greater:
            mark([=](Number number) { return number > literal; });
            break;
        case Operator::NotEqual:
            mark([=](Number number) { return number != literal; });
            break;
        case Operator::None:
            break;
    }
}

// The operator with its sides exchanged.
Operator Exchanged(Operator op) {
    switch (op) {
        case Operator::Less:
            return Operator::Greater;
        case Operator::LessOrEqual:
            return Operator::GreaterOrEqual;
        case Operator::GreaterOrEqual:
            return Operator::LessOrEqual;
        case Operator::Greater:
            return Operator::Less;
        default:
            return op;
    }
}

template <typename Number>
bool HasNan(const Number* numbers, std::uint32_t count) {
    bool found = false;
    for (std::uint32_t i = 0; i < count; ++i) {
        found |= numbers[i] != numbers[i];
    }
    return found;
}

}  // namespace

CellFilter::CellFilter(const DbFilter& filter)
    : m_filter(&filter),
      m_operator(OperatorOf(filter.m_comparison)),
      m_leftValue(ViewOf(filter.m_leftValue)),
      m_rightValue(ViewOf(filter.m_rightValue)) {
    const WideView text = filter.m_leftIndex < 0 ? filter.m_leftValue.Text() : filter.m_rightValue.Text();
    if (!HasLoneSurrogate(text)) {
        AppendUtf8(text, m_text.emplace());
        m_isTextAscii = IsAscii(*m_text);
    }
}

bool CellFilter::Holds(const RowsView& rows, uint64 position) {
    const DbFilter& filter = *m_filter;
    const auto has = [&](std::int32_t field) {
        return field >= 0 && static_cast<std::size_t>(field) < rows.Width(position);
    };
    if (m_operator == Operator::None || (filter.m_leftIndex < 0 && filter.m_rightIndex < 0)) {
        return false;
    }
    CellView left = m_leftValue;
    CellView right = m_rightValue;
    if (filter.m_leftIndex >= 0) {
        if (!has(filter.m_leftIndex)) {
            return false;
        }
        left = rows.Cell(position, static_cast<uint64>(filter.m_leftIndex));
    }
    if (filter.m_rightIndex >= 0) {
        if (!has(filter.m_rightIndex)) {
            return false;
        }
        right = rows.Cell(position, static_cast<uint64>(filter.m_rightIndex));
    }
    return Compare(left.Plain(), right.Plain());
}

bool CellFilter::Compare(const CellView& left, const CellView& right) {
    const bool isLiteralLeft = m_filter->m_leftIndex < 0;
    const bool isLiteralRight = m_filter->m_rightIndex < 0;
    const bool isEquality = m_operator == Operator::Equal || m_operator == Operator::NotEqual;
    if (left.GetKind() == right.GetKind()) {
        switch (left.GetKind()) {
            case Kind::Double:
                if (left.AsDouble() == left.AsDouble() && right.AsDouble() == right.AsDouble()) {
                    return CompareNumbers(m_operator, left.AsDouble(), right.AsDouble());
                }
                break;
            case Kind::Float:
                if (left.AsFloat() == left.AsFloat() && right.AsFloat() == right.AsFloat()) {
                    return CompareNumbers(m_operator, left.AsFloat(), right.AsFloat());
                }
                break;
            case Kind::Long:
                return CompareNumbers(m_operator, left.AsLong(), right.AsLong());
            case Kind::Short:
            case Kind::Boolean:
                return CompareNumbers(m_operator, left.AsShort(), right.AsShort());
            default:
                break;
        }
    } else if (isEquality && (isLiteralLeft || isLiteralRight)) {
        const CellView& literal = isLiteralLeft ? left : right;
        const CellView& cell = isLiteralLeft ? right : left;
        if (cell.GetKind() == Kind::Text && literal.Type() == VT_BSTR && m_text) {
            return IsLiteral(cell.AsText()) == (m_operator == Operator::Equal);
        }
    }
    return m_filter->m_comparison(left.In(m_left), right.In(m_right));
}

bool CellFilter::IsLiteral(std::string_view text) {
    if (text == *m_text) {
        return true;
    }
    if (m_isTextAscii && IsAscii(text)) {
        return std::equal(text.begin(), text.end(), m_text->begin(), m_text->end(),
                          [](char one, char other) { return AsciiLower(one) == AsciiLower(other); });
    }
    const CellView& literal = m_filter->m_leftIndex < 0 ? m_leftValue : m_rightValue;
    return platform::CompareNoCase(CellView::Text(text).Wide(m_wide), literal.AsVariant().Text()) == 0;
}

bool CellFilter::Mark(const ColumnStore::Run& rows, std::uint8_t bit, std::uint8_t* marks) {
    const bool isLiteralLeft = m_filter->m_leftIndex < 0;
    const bool isLiteralRight = m_filter->m_rightIndex < 0;
    const auto field =
        static_cast<std::size_t>(isLiteralLeft ? m_filter->m_rightIndex : m_filter->m_leftIndex);
    const CellView& literal = isLiteralLeft ? m_leftValue : m_rightValue;
    const ColumnBlock& block = *rows.m_block;
    if (isLiteralLeft == isLiteralRight || m_operator == Operator::None || field >= block.Columns() ||
        CellView::TypeOf(block.KindOf(field)) != literal.Type() ||
        !block.HoldsValues(field, rows.m_slot + rows.m_rows)) {
        return false;
    }
    const Operator op = isLiteralLeft ? Exchanged(m_operator) : m_operator;
    const auto mark = [&]<typename Number>(Number value) {
        const Number* const numbers = block.NumbersOf<Number>(field) + rows.m_slot;
        if (value != value || HasNan(numbers, rows.m_rows)) {
            return false;
        }
        MarkNumbers(op, numbers, value, rows.m_rows, bit, marks);
        return true;
    };
    switch (block.KindOf(field)) {
        case Kind::Double:
            return mark(literal.AsDouble());
        case Kind::Float:
            return mark(literal.AsFloat());
        case Kind::Long:
            return mark(literal.AsLong());
        case Kind::Short:
        case Kind::Boolean:
            return mark(literal.AsShort());
        case Kind::Text:
            break;
        default:
            return false;
    }
    const bool isEqual = op == Operator::Equal;
    if (!m_text || !(isEqual || op == Operator::NotEqual)) {
        return false;
    }
    for (std::uint32_t i = 0; i < rows.m_rows; ++i) {
        marks[i] |= IsLiteral(block.TextAt(field, rows.m_slot + i)) == isEqual ? bit : std::uint8_t{0};
    }
    return true;
}

bool RowsCondition::AreOwn(std::span<DbFilter* const> filters) {
    return std::all_of(filters.begin(), filters.end(), [](const DbFilter* filter) {
        return filter != nullptr && typeid(*filter) == typeid(DbFilter);
    });
}

RowsCondition::RowsCondition(clv::clause& clause, std::span<DbFilter* const> filters)
    : m_clause(clause), m_filters(filters.begin(), filters.end()) {
    for (const DbFilter* const filter : filters) {
        m_leaves.emplace_back(*filter);
    }
    TabulateClause();
}

void RowsCondition::TabulateClause() {
    if (m_filters.size() > MostBits || typeid(m_clause) != typeid(clv::clause)) {
        return;
    }
    m_table.resize(std::size_t{1} << m_filters.size());
    for (std::size_t bits = 0; bits < m_table.size(); ++bits) {
        for (std::size_t i = 0; i < m_filters.size(); ++i) {
            m_filters[i]->clv::expr::operator=((bits >> i & 1U) != 0);
        }
        m_table[bits] = m_clause.evaluate() ? 1 : 0;
    }
}

void RowsCondition::Select(const RowsView& rows, const ColumnStore::Run& run, uint64 position,
                           std::vector<uint64>& found) {
    if (m_table.empty()) {
        for (uint64 end = position + run.m_rows; position < end; ++position) {
            if (Holds(rows, position)) {
                found.push_back(position);
            }
        }
        return;
    }
    m_marks.assign(run.m_rows, 0);
    for (std::size_t i = 0; i < m_leaves.size(); ++i) {
        const auto bit = static_cast<std::uint8_t>(1U << i);
        if (!m_leaves[i].Mark(run, bit, m_marks.data())) {
            for (std::uint32_t row = 0; row < run.m_rows; ++row) {
                m_marks[row] |= m_leaves[i].Holds(rows, position + row) ? bit : std::uint8_t{0};
            }
        }
    }
    const std::size_t before = found.size();
    found.resize(before + run.m_rows);
    uint64* next = found.data() + before;
    for (std::uint32_t row = 0; row < run.m_rows; ++row) {
        *next = position + row;
        next += m_table[m_marks[row]];
    }
    found.resize(static_cast<std::size_t>(next - found.data()));
}

bool RowsCondition::Holds(const RowsView& rows, uint64 position) {
    if (!m_table.empty()) {
        std::size_t bits = 0;
        for (std::size_t i = 0; i < m_leaves.size(); ++i) {
            bits |= std::size_t{m_leaves[i].Holds(rows, position)} << i;
        }
        return m_table[bits] != 0;
    }
    for (std::size_t i = 0; i < m_leaves.size(); ++i) {
        m_filters[i]->clv::expr::operator=(m_leaves[i].Holds(rows, position));
    }
    return m_clause.evaluate();
}

}  // namespace quillet
