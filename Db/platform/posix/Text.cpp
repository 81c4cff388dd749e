// Case mapping through ICU's character properties, with Latin letters mapped by arithmetic.
#include "platform/Text.h"

#include <unicode/uchar.h>
#include <unicode/utf16.h>

namespace quillet::platform {
namespace {

constexpr UChar32 Latin1End = 0x100;
constexpr UChar32 CaseDistance = 0x20;
constexpr UChar32 MultiplicationSign = 0xD7;
constexpr UChar32 DivisionSign = 0xF7;
constexpr UChar32 MicroSign = 0xB5;
constexpr UChar32 SharpS = 0xDF;
constexpr UChar32 SmallYWithDiaeresis = 0xFF;

constexpr bool IsLatin1Capital(UChar32 c) {
    return (c >= 'A' && c <= 'Z') || (c >= 0xC0 && c <= 0xDE && c != MultiplicationSign);
}

// The small letters whose capital is in Latin-1 too.
constexpr bool IsLatin1Small(UChar32 c) {
    return (c >= 'a' && c <= 'z') || (c > SharpS && c < SmallYWithDiaeresis && c != DivisionSign);
}

UChar32 Lower(UChar32 c) {
    if (c < Latin1End) {
        return IsLatin1Capital(c) ? c + CaseDistance : c;
    }
    return u_tolower(c);
}

UChar32 Upper(UChar32 c) {
    if (c < Latin1End && c != MicroSign && c != SmallYWithDiaeresis) {
        return IsLatin1Small(c) ? c - CaseDistance : c;
    }
    return u_toupper(c);
}

UChar32 Fold(UChar32 c) {
    if (c < Latin1End && c != MicroSign) {
        return IsLatin1Capital(c) ? c + CaseDistance : c;
    }
    return u_foldCase(c, U_FOLD_CASE_DEFAULT);
}

// The code point at the position, which moves behind it; a lone surrogate stands for itself.
UChar32 Next(WideView text, std::size_t& at) {
    const WCHAR unit = text[at++];
    if (U16_IS_LEAD(unit) && at < text.size() && U16_IS_TRAIL(text[at])) {
        return U16_GET_SUPPLEMENTARY(unit, text[at++]);
    }
    return unit;
}

// Simple mappings never lead from one code unit to two or back, so the text keeps its length.
template <UChar32 (*Map)(UChar32)>
void MapInPlace(WideString& text) {
    for (std::size_t next = 0; next < text.size();) {
        const std::size_t at = next;
        const UChar32 c = Next(text, next);
        const UChar32 mapped = Map(c);
        if (mapped == c) {
            continue;
        }
        if (U_IS_BMP(mapped)) {
            text[at] = static_cast<WCHAR>(mapped);
        } else {
            text[at] = U16_LEAD(mapped);
            text[at + 1] = U16_TRAIL(mapped);
        }
    }
}

}  // namespace

void MakeLower(WideString& text) {
    MapInPlace<Lower>(text);
}

void MakeUpper(WideString& text) {
    MapInPlace<Upper>(text);
}

int CompareNoCase(WideView left, WideView right) {
    std::size_t leftNext = 0;
    std::size_t rightNext = 0;
    while (leftNext < left.size() && rightNext < right.size()) {
        const UChar32 leftChar = Next(left, leftNext);
        const UChar32 rightChar = Next(right, rightNext);
        if (leftChar != rightChar) {
            const UChar32 difference = Fold(leftChar) - Fold(rightChar);
            if (difference != 0) {
                return difference;
            }
        }
    }
    return static_cast<int>(leftNext < left.size()) - static_cast<int>(rightNext < right.size());
}

}  // namespace quillet::platform
