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

}  // namespace

Comparison ComparisonOf(const CString& op, bool texts) {
    static constexpr struct {
        const char* m_operator;
        Comparison m_ofValues;
        Comparison m_ofTexts;
    } Comparisons[] = {
        {"<", Is<VARCMP_LT>, Is<VARCMP_LT>},
        {"<=", IsOrEqual<VARCMP_LT>, IsOrEqual<VARCMP_LT>},
        {"=", Equal, EqualTexts},
        {"==", Equal, EqualTexts},
        {">=", IsOrEqual<VARCMP_GT>, IsOrEqual<VARCMP_GT>},
        {">", Is<VARCMP_GT>, Is<VARCMP_GT>},
        {"!=", NotEqual, NotEqual},
        {"<>", NotEqual, NotEqual},
    };
    const auto* const found = std::find_if(std::begin(Comparisons), std::end(Comparisons),
                                           [&](const auto& row) { return op == row.m_operator; });
    if (found == std::end(Comparisons)) {
        return nullptr;
    }
    return texts ? found->m_ofTexts : found->m_ofValues;
}

bool IsEquality(const CString& op) {
    return op == "=" || op == "==";
}

}  // namespace quillet
