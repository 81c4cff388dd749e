// The order of variants: null apart, strings after numbers, numbers by value, strings by the locale's
// collation.
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <string>

#include "Quillet/platform/Automation.h"
#include "Quillet/platform/posix/IcuMemory.h"
#include "Quillet/platform/posix/Locale.h"

namespace quillet::platform {
namespace {

enum class Operand { Empty, Null, Integer, Single, Real, Text, Error, Mismatched, Bad };

// The function is older than most integer types. It refuses them with two different codes, and VT_INT on one
// side only.
Operand OperandOf(const VARIANT& value, bool isLeft) {
    switch (value.vt) {
        case VT_EMPTY:
            return Operand::Empty;
        case VT_NULL:
            return Operand::Null;
        case VT_UI1:
        case VT_I2:
        case VT_I4:
        case VT_I8:
        case VT_BOOL:
            return Operand::Integer;
        case VT_INT:
            return isLeft ? Operand::Integer : Operand::Bad;
        case VT_R4:
            return Operand::Single;
        case VT_R8:
        case VT_DATE:
            return Operand::Real;
        case VT_BSTR:
            return Operand::Text;
        case VT_ERROR:
            return Operand::Error;
        case VT_I1:
        case VT_UI2:
        case VT_UI4:
        case VT_DISPATCH:
        case VT_UNKNOWN:
            return Operand::Mismatched;
        case VT_UI8:
            return isLeft ? Operand::Mismatched : Operand::Bad;
        default:
            return Operand::Bad;
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

// Infinite beyond the range of a float.
float SingleOf(const VARIANT& value) {
    const double real = RealOf(value);
    constexpr double LargestFloat = static_cast<double>(std::numeric_limits<float>::max());
    return std::abs(real) > LargestFloat
               ? std::copysign(std::numeric_limits<float>::infinity(), real < 0 ? -1.0F : 1.0F)
               : static_cast<float>(real);
}

template <typename T>
HRESULT Order(T left, T right) {
    if (left == right) {
        return VARCMP_EQ;
    }
    return left < right ? VARCMP_LT : VARCMP_GT;
}

// The collator may find texts equal whose keys differ. Their keys decide then, since sorting and hashing many
// texts goes by keys.
HRESULT CompareKeys(const UCollator& collator, WideView left, WideView right) {
    std::string leftKey;
    std::string rightKey;
    AppendSortKey(collator, left, leftKey);
    AppendSortKey(collator, right, rightKey);
    return Order(leftKey.compare(rightKey), 0);
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
    // The collator does not take a null pointer, not even as an empty text.
    const WideView leftText(left == nullptr ? u"" : left, leftLength);
    const WideView rightText(right == nullptr ? u"" : right, rightLength);
    const UCollationResult result = WithMemory([&] {
        return ucol_strcoll(collator, leftText.data(), static_cast<std::int32_t>(leftLength),
                            rightText.data(), static_cast<std::int32_t>(rightLength));
    });
    return result == UCOL_EQUAL ? CompareKeys(*collator, leftText, rightText)
                                : Order<int>(result, UCOL_EQUAL);
}

HRESULT CompareTextWith(const VARIANT& text, Operand other) {
    if (other == Operand::Empty && SysStringLen(text.bstrVal) == 0) {
        return VARCMP_EQ;
    }
    return VARCMP_GT;
}

HRESULT Compare(const VARIANT& left, const VARIANT& right, LCID locale, ULONG flags) {
    const Operand leftOperand = OperandOf(left, true);
    const Operand rightOperand = OperandOf(right, false);
    const auto isEither = [&](Operand operand) { return leftOperand == operand || rightOperand == operand; };
    if (isEither(Operand::Bad)) {
        return DISP_E_BADVARTYPE;
    }
    if (leftOperand == Operand::Error && rightOperand == Operand::Error) {
        return VARCMP_EQ;
    }
    if (isEither(Operand::Mismatched) || isEither(Operand::Error)) {
        return DISP_E_TYPEMISMATCH;
    }
    if (isEither(Operand::Null)) {
        return VARCMP_NULL;
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
    if (isEither(Operand::Single)) {
        // The other side is rounded to a float too, so that both have the same digits.
        return Order(SingleOf(left), SingleOf(right));
    }
    if (isEither(Operand::Real)) {
        return Order(RealOf(left), RealOf(right));
    }
    return Order(IntegerOf(left), IntegerOf(right));
}

}  // namespace
}  // namespace quillet::platform

HRESULT VarCmp(VARIANT* left, VARIANT* right, LCID locale, ULONG flags) {
    using namespace quillet::platform;
    if (left == nullptr || right == nullptr) {
        return E_INVALIDARG;
    }
    try {
        return Compare(*left, *right, locale, flags);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}
