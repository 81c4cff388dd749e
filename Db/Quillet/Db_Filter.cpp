#include "Quillet/Db_Filter.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "Quillet/Db_TableRow.h"
#include "Quillet/platform/NumberText.h"
#include "Quillet/values/Comparison.h"
#include "Quillet/values/Names.h"

using quillet::CComVariant;
using quillet::CString;
using quillet::WideString;

namespace {

bool IsReal(VARTYPE type) {
    return type == VT_R4 || type == VT_R8;
}

// A literal as it is written, as a value of the type of the field that it is compared with; nothing where it
// is none of the type.
std::optional<CComVariant> ValueOf(const CString& literal, VARTYPE type) {
    WideString text(quillet::WithoutQuotes(literal).View());
    if (IsReal(type)) {
        std::replace_if(
            text.begin(), text.end(), [](WCHAR unit) { return unit == '.' || unit == ','; },
            quillet::platform::DecimalSeparator());
    }
    CComVariant value;
    value.SetText(text);
    if (FAILED(value.ChangeType(type))) {
        return std::nullopt;
    }
    return value;
}

// Null where the row has no such field.
const CComVariant* CellOf(const DbTableRow& row, std::int32_t index) {
    const bool exists = index >= 0 && static_cast<uint64>(index) < row.size();
    return exists ? &row.GetField(static_cast<uint64>(index)).GetVariant() : nullptr;
}

}  // namespace

DbFilter::DbFilter() = default;

DbFilter::DbFilter(const DbFilter& other) = default;

DbFilter& DbFilter::operator=(const DbFilter& other) = default;

DbFilter::~DbFilter() = default;

std::unique_ptr<DbFilter> DbFilter::Create(const Operand& left, const CString& op, const Operand& right) {
    const Operand& field = left.IsField() ? left : right;
    const Operand& other = left.IsField() ? right : left;
    const quillet::Comparison comparison = quillet::ComparisonOf(op, field.m_type == VT_BSTR);
    if (comparison == nullptr || !field.IsField() || field.m_type == VT_EMPTY) {
        return nullptr;
    }
    auto filter = std::make_unique<DbFilter>();
    filter->m_comparison = comparison;
    filter->m_leftIndex = left.m_index;
    filter->m_rightIndex = right.m_index;
    if (other.IsField()) {
        return other.m_type == field.m_type ? std::move(filter) : nullptr;
    }
    std::optional<CComVariant> literal = ValueOf(other.m_literal, field.m_type);
    if (!literal) {
        return nullptr;
    }
    (left.IsField() ? filter->m_rightValue : filter->m_leftValue) = *std::move(literal);
    return filter;
}

void DbFilter::Evaluate(const DbTableRow& row) {
    if (m_leftIndex < 0) {
        EvalValOpRef(row);
    } else if (m_rightIndex < 0) {
        EvalRefOpVal(row);
    } else {
        EvalRefOpRef(row);
    }
}

void DbFilter::EvalRefOpRef(const DbTableRow& row) {
    Keep(CellOf(row, m_leftIndex), CellOf(row, m_rightIndex));
}

void DbFilter::EvalRefOpVal(const DbTableRow& row) {
    Keep(CellOf(row, m_leftIndex), &m_rightValue);
}

void DbFilter::EvalValOpRef(const DbTableRow& row) {
    Keep(&m_leftValue, CellOf(row, m_rightIndex));
}

void DbFilter::Keep(const CComVariant* left, const CComVariant* right) {
    clv::expr::operator=(left != nullptr && right != nullptr && m_comparison != nullptr &&
                         m_comparison(*left, *right));
}
