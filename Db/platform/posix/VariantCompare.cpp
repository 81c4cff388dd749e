// The order of variants: null apart, strings above numbers, numbers by value, strings by the locale's
// collation.
#include <cstring>
#include <limits>

#include "platform/Automation.h"
#include "platform/posix/Locale.h"
#include "platform/posix/VariantKind.h"

namespace quillet::platform {
namespace {

enum class Operand { Empty, Null, Integer, Real, Text, Unordered };

Operand OperandOf(const VARIANT& value) {
    switch (value.vt) {
        case VT_EMPTY:
            return Operand::Empty;
        case VT_NULL:
            return Operand::Null;
        case VT_UI1:
        case VT_I2:
        case VT_I4:
        case VT_I8:
        case VT_INT:
        case VT_BOOL:
            return Operand::Integer;
        case VT_R4:
        case VT_R8:
        case VT_DATE:
            return Operand::Real;
        case VT_BSTR:
            return Operand::Text;
        default:
            return Operand::Unordered;
    }
}

LONGLONG IntegerOf(const VARIANT& value) {
    switch (value.vt) {
        case VT_UI1:
            return value.bVal;
        case VT_I2:
            return value.iVal;
        case VT_BOOL:
            return value.boolVal;
        case VT_I4:
        case VT_INT:
            return value.lVal;
        case VT_I8:
            return value.llVal;
        default:
            return 0;
    }
}

double RealOf(const VARIANT& value) {
    switch (value.vt) {
        case VT_R4:
            return double{value.fltVal};
        case VT_R8:
        case VT_DATE:
            return value.dblVal;
        default:
            return static_cast<double>(IntegerOf(value));
    }
}

template <typename T>
HRESULT Order(T left, T right) {
    if (left == right) {
        return VARCMP_EQ;
    }
    return left < right ? VARCMP_LT : VARCMP_GT;
}

HRESULT CompareTexts(BSTR left, BSTR right, LCID locale, ULONG flags) {
    const UINT leftLength = SysStringLen(left);
    const UINT rightLength = SysStringLen(right);
    if (leftLength == rightLength &&
        (leftLength == 0 || std::memcmp(left, right, leftLength * sizeof(OLECHAR)) == 0)) {
        return VARCMP_EQ;
    }
    const UCollator* collator = Locale::For(locale).Collator((flags & NORM_IGNORECASE) != 0);
    if (collator == nullptr) {
        return E_FAIL;
    }
    // A null pointer is no text to the collator, not even an empty one.
    const OLECHAR* leftUnits = left == nullptr ? u"" : left;
    const OLECHAR* rightUnits = right == nullptr ? u"" : right;
    return Order<int>(ucol_strcoll(collator, leftUnits, static_cast<std::int32_t>(leftLength), rightUnits,
                                   static_cast<std::int32_t>(rightLength)),
                      UCOL_EQUAL);
}

HRESULT CompareTextWith(const VARIANT& text, Operand other) {
    if (other == Operand::Empty && SysStringLen(text.bstrVal) == 0) {
        return VARCMP_EQ;
    }
    return VARCMP_GT;
}

HRESULT Compare(const VARIANT& left, const VARIANT& right, LCID locale, ULONG flags) {
    const Operand leftOperand = OperandOf(left);
    const Operand rightOperand = OperandOf(right);
    if (leftOperand == Operand::Null || rightOperand == Operand::Null) {
        return VARCMP_NULL;
    }
    if (leftOperand == Operand::Unordered || rightOperand == Operand::Unordered) {
        return DISP_E_BADVARTYPE;
    }
    if (leftOperand == Operand::Text && rightOperand == Operand::Text) {
        return CompareTexts(left.bstrVal, right.bstrVal, locale, flags);
    }
    if (leftOperand == Operand::Text) {
        return CompareTextWith(left, rightOperand);
    }
    if (rightOperand == Operand::Text) {
        return CompareTextWith(right, leftOperand) == VARCMP_EQ ? VARCMP_EQ : VARCMP_LT;
    }
    if (leftOperand == Operand::Real || rightOperand == Operand::Real) {
        return Order(RealOf(left), RealOf(right));
    }
    return Order(IntegerOf(left), IntegerOf(right));
}

// The value itself, or what it refers to.
HRESULT Resolve(const VARIANT*& value, VARIANT& referred) {
    if ((value->vt & VT_BYREF) == 0) {
        return S_OK;
    }
    const HRESULT result = Dereference(*value, referred);
    value = &referred;
    return result;
}

}  // namespace
}  // namespace quillet::platform

HRESULT VarCmp(VARIANT* left, VARIANT* right, LCID locale, ULONG flags) {
    using namespace quillet::platform;
    if (left == nullptr || right == nullptr) {
        return E_INVALIDARG;
    }
    const VARIANT* leftValue = left;
    const VARIANT* rightValue = right;
    VARIANT leftReferred;
    VARIANT rightReferred;
    HRESULT result = Resolve(leftValue, leftReferred);
    if (SUCCEEDED(result)) {
        result = Resolve(rightValue, rightReferred);
    }
    return FAILED(result) ? result : Compare(*leftValue, *rightValue, locale, flags);
}
