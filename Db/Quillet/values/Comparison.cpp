#include "Quillet/values/Comparison.h"

#include <algorithm>
#include <iterator>

namespace quillet {

namespace {

template <HRESULT Wanted>
bool Is(const CComVariant& left, const CComVariant& right) {
    return Order(left, right) == Wanted;
}

// Values of two types may be less or greater than each other, but never equal.
template <HRESULT Wanted>
bool IsOrEqual(const CComVariant& left, const CComVariant& right) {
    const HRESULT order = Order(left, right);
    return order == Wanted || (left.vt == right.vt && (order == VARCMP_EQ || left.vt == VT_NULL));
}

bool Equal(const CComVariant& left, const CComVariant& right) {
    return left == right;
}

// What has no text is equal to nothing, but null to null.
bool EqualTexts(const CComVariant& left, const CComVariant& right) {
    if (left.vt == VT_BSTR) {
        return EqualIgnoringCase(left, right);
    }
    if (left.vt == VT_NULL) {
        return right.vt == VT_NULL;
    }
    CComVariant text = left;
    return SUCCEEDED(text.ChangeType(VT_BSTR)) && EqualIgnoringCase(text, right);
}

// Whether case counts is not up to the fields here, as it is for equality, but to the value on the left.
bool NotEqual(const CComVariant& left, const CComVariant& right) {
    return !EqualIgnoringCase(left, right);
}

struct OperatorRow {
    const char* m_text;
    Operator m_operator;
    Comparison m_ofValues;
    Comparison m_ofTexts;
};

constexpr OperatorRow Operators[] = {
    {"<", Operator::Less, Is<VARCMP_LT>, Is<VARCMP_LT>},
    {"<=", Operator::LessOrEqual, IsOrEqual<VARCMP_LT>, IsOrEqual<VARCMP_LT>},
    {"=", Operator::Equal, Equal, EqualTexts},
    {"==", Operator::Equal, Equal, EqualTexts},
    {">=", Operator::GreaterOrEqual, IsOrEqual<VARCMP_GT>, IsOrEqual<VARCMP_GT>},
    {">", Operator::Greater, Is<VARCMP_GT>, Is<VARCMP_GT>},
    {"!=", Operator::NotEqual, NotEqual, NotEqual},
    {"<>", Operator::NotEqual, NotEqual, NotEqual},
};

template <typename Predicate>
const OperatorRow* FindOperator(Predicate predicate) {
    const auto* const found = std::find_if(std::begin(Operators), std::end(Operators), predicate);
    return found == std::end(Operators) ? nullptr : found;
}

}  // namespace

Comparison ComparisonOf(const CString& op, bool texts) {
    const OperatorRow* const row = FindOperator([&](const OperatorRow& known) { return op == known.m_text; });
    if (row == nullptr) {
        return nullptr;
    }
    return texts ? row->m_ofTexts : row->m_ofValues;
}

Operator OperatorOf(Comparison comparison) {
    const OperatorRow* const row = FindOperator([&](const OperatorRow& known) {
        return known.m_ofValues == comparison || known.m_ofTexts == comparison;
    });
    return row == nullptr ? Operator::None : row->m_operator;
}

bool IsEquality(const CString& op) {
    return op == "=" || op == "==";
}

}  // namespace quillet
