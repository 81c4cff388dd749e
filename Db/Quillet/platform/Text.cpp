// Case mapping of texts, code point by code point; Latin letters are mapped by arithmetic.
#include "Quillet/platform/Text.h"

#include "Quillet/platform/CaseMapping.h"

namespace quillet::platform {
namespace {

constexpr char32_t Latin1End = 0x100;
constexpr char32_t CaseDistance = 0x20;
constexpr char32_t MultiplicationSign = 0xD7;
constexpr char32_t DivisionSign = 0xF7;
constexpr char32_t MicroSign = 0xB5;
constexpr char32_t SharpS = 0xDF;
constexpr char32_t SmallYWithDiaeresis = 0xFF;

constexpr char32_t LeadStart = 0xD800;
constexpr char32_t TrailStart = 0xDC00;
constexpr char32_t TrailEnd = 0xE000;
constexpr char32_t SupplementaryStart = 0x10000;
constexpr unsigned BitsPerSurrogate = 10;
constexpr char32_t SurrogateMask = (1U << BitsPerSurrogate) - 1;

constexpr bool IsLead(char32_t unit) {
    return unit >= LeadStart && unit < TrailStart;
}

constexpr bool IsTrail(char32_t unit) {
    return unit >= TrailStart && unit < TrailEnd;
}

constexpr bool IsLatin1Capital(char32_t c) {
    return (c >= 'A' && c <= 'Z') || (c >= 0xC0 && c <= 0xDE && c != MultiplicationSign);
}

// The small letters whose capital is in Latin-1 too.
constexpr bool IsLatin1Small(char32_t c) {
    return (c >= 'a' && c <= 'z') || (c > SharpS && c < SmallYWithDiaeresis && c != DivisionSign);
}

char32_t Lower(char32_t c) {
    if (c < Latin1End) {
        return IsLatin1Capital(c) ? c + CaseDistance : c;
    }
    return LowerOf(c);
}

char32_t Upper(char32_t c) {
    if (c < Latin1End && c != MicroSign && c != SmallYWithDiaeresis) {
        return IsLatin1Small(c) ? c - CaseDistance : c;
    }
    return UpperOf(c);
}

char32_t Fold(char32_t c) {
    if (c < Latin1End && c != MicroSign) {
        return IsLatin1Capital(c) ? c + CaseDistance : c;
    }
    return FoldOf(c);
}

// The code point at the position, which moves past it; a lone surrogate stands for itself.
char32_t Next(WideView text, std::size_t& at) {
    const char32_t unit = text[at++];
    if (IsLead(unit) && at < text.size() && IsTrail(text[at])) {
        const char32_t trail = text[at++];
        return SupplementaryStart + ((unit - LeadStart) << BitsPerSurrogate) + (trail - TrailStart);
    }
    return unit;
}

// Simple mappings never lead from one code unit to two or back, so the text keeps its length.
template <char32_t (*Map)(char32_t)>
void MapInPlace(WideString& text) {
    for (std::size_t next = 0; next < text.size();) {
        const std::size_t at = next;
        const char32_t c = Next(text, next);
        const char32_t mapped = Map(c);
        if (mapped == c) {
            continue;
        }
        if (mapped < SupplementaryStart) {
            text[at] = static_cast<WCHAR>(mapped);
        } else {
            const char32_t offset = mapped - SupplementaryStart;
            text[at] = static_cast<WCHAR>(LeadStart + (offset >> BitsPerSurrogate));
            text[at + 1] = static_cast<WCHAR>(TrailStart + (offset & SurrogateMask));
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

void FoldCase(WideString& text) {
    MapInPlace<Fold>(text);
}

int CompareNoCase(WideView left, WideView right) {
    std::size_t leftNext = 0;
    std::size_t rightNext = 0;
    while (leftNext < left.size() && rightNext < right.size()) {
        const char32_t leftChar = Next(left, leftNext);
        const char32_t rightChar = Next(right, rightNext);
        if (leftChar != rightChar) {
            const int difference = static_cast<int>(Fold(leftChar)) - static_cast<int>(Fold(rightChar));
            if (difference != 0) {
                return difference;
            }
        }
    }
    return static_cast<int>(leftNext < left.size()) - static_cast<int>(rightNext < right.size());
}

}  // namespace quillet::platform
