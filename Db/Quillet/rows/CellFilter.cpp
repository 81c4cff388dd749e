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

// Whether texts are equal without regard to case, where that can be told from their bytes.
std::optional<bool> AreEqualBytes(std::string_view left, std::string_view right) {
    if (left == right) {
        return true;
    }
    if (!IsAscii(left) || !IsAscii(right)) {
        return std::nullopt;
    }
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char one, char other) { return AsciiLower(one) == AsciiLower(other); });
}

CellView ViewOf(const CComVariant& literal) {
    return CellView::Variant(literal).Plain();
}

// Appends the positions of the numbers for which the predicate holds.
template <typename Number, typename Predicate>
void SelectNumbers(const Number* numbers, std::uint32_t count, uint64 position, std::vector<uint64>& found,
                   Predicate predicate) {
    const std::size_t before = found.size();
    found.resize(before + count);
    uint64* next = found.data() + before;
    for (std::uint32_t i = 0; i < count; ++i) {
        *next = position + i;
        next += predicate(numbers[i]) ? 1 : 0;
    }
    found.resize(static_cast<std::size_t>(next - found.data()));
}

template <typename Number>
void SelectNumbers(Operator op, const Number* numbers, std::uint32_t count, Number literal, uint64 position,
                   std::vector<uint64>& found) {
    const auto select = [&](auto predicate) { SelectNumbers(numbers, count, position, found, predicate); };
    switch (op) {
        case Operator::Less:
            select([=](Number number) { return number < literal; });
            break;
        case Operator::LessOrEqual:
            select([=](Number number) { return number <= literal; });
            break;
        case Operator::Equal:
            select([=](Number number) { return number == literal; });
            break;
        case Operator::GreaterOrEqual:
            select([=](Number number) { return number >= literal; });
            break;
        case Operator::Greater:
            select([=](Number number) { return number > literal; });
            break;
        case Operator::NotEqual:
            select([=](Number number) { return number != literal; });
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
            std::optional<bool> equal = AreEqualBytes(cell.AsText(), *m_text);
            if (!equal) {
                equal = platform::CompareNoCase(cell.Wide(m_wide), literal.AsVariant().Text()) == 0;
            }
            return *equal == (m_operator == Operator::Equal);
        }
    }
    return m_filter->m_comparison(left.In(m_left), right.In(m_right));
}

bool CellFilter::Select(const ColumnStore::Run& rows, uint64 position, std::vector<uint64>& found) const {
    const bool isLiteralLeft = m_filter->m_leftIndex < 0;
    const bool isLiteralRight = m_filter->m_rightIndex < 0;
    const auto field =
        static_cast<std::size_t>(isLiteralLeft ? m_filter->m_rightIndex : m_filter->m_leftIndex);
    const CellView& literal = isLiteralLeft ? m_leftValue : m_rightValue;
    if (isLiteralLeft == isLiteralRight || m_operator == Operator::None || field >= rows.m_block->Columns() ||
        literal.GetKind() != rows.m_block->KindOf(field) ||
        !rows.m_block->HoldsValues(field, rows.m_slot + rows.m_rows)) {
        return false;
    }
    const Operator op = isLiteralLeft ? Exchanged(m_operator) : m_operator;
    switch (literal.GetKind()) {
        case Kind::Double: {
            const double* const numbers = rows.m_block->NumbersOf<double>(field) + rows.m_slot;
            if (HasNan(numbers, rows.m_rows)) {
                return false;
            }
            SelectNumbers(op, numbers, rows.m_rows, literal.AsDouble(), position, found);
            return true;
        }
        case Kind::Long:
            SelectNumbers(op, rows.m_block->NumbersOf<LONG>(field) + rows.m_slot, rows.m_rows,
                          literal.AsLong(), position, found);
            return true;
        default:
            return false;
    }
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
    m_isOneFilter = filters.size() == 1 && typeid(clause) == typeid(clv::clause) &&
                    clause.GetRPNString() == filters.front()->string();
}

bool RowsCondition::Holds(const RowsView& rows, uint64 position) {
    if (m_isOneFilter) {
        return m_leaves.front().Holds(rows, position);
    }
    for (std::size_t i = 0; i < m_leaves.size(); ++i) {
        m_filters[i]->clv::expr::operator=(m_leaves[i].Holds(rows, position));
    }
    return m_clause.evaluate();
}

}  // namespace quillet
