#include "input/CellText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <type_traits>

#include "Quillet/values/PlainNumber.h"
#include "output/NameSuggestions.h"
#include "output/PlainText.h"

namespace quillet::tool {

namespace {

constexpr std::string_view Digits = "0123456789";

std::string_view WithoutPlus(std::string_view text) {
    return text.starts_with('+') && !text.starts_with("+-") ? text.substr(1) : text;
}

// The whole text as a number. The words for infinity and the like, which the conversion accepts, are not
// numbers here.
template <typename Number>
std::optional<Number> ReadNumber(std::string_view text) {
    text = WithoutPlus(text);
    Number number{};
    const char* const end = text.data() + text.size();
    if constexpr (std::is_same_v<Number, double>) {
        if (ReadPlainDouble(text.data(), number) == end) {
            return number;
        }
    }
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    const bool hasDigits = text.find_first_of(Digits) != std::string_view::npos;
    if (!hasDigits || result.ec != std::errc() || result.ptr != end ||
        !IsReadBack(CellView::Double(number))) {
        return std::nullopt;
    }
    return number;
}

std::optional<bool> ReadBoolean(std::string_view text) {
    const CString word(std::string{text});
    if (word.CompareNoCase("true") == 0 || text == "1") {
        return true;
    }
    if (word.CompareNoCase("false") == 0 || text == "0") {
        return false;
    }
    return std::nullopt;
}

// Four characters for three bytes, padded at the end only.
bool IsBase64(std::string_view text) {
    constexpr std::size_t Group = 4;
    constexpr std::string_view Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t padding = std::min(text.find_first_not_of(Alphabet), text.size());
    const std::string_view rest = text.substr(padding);
    return text.size() % Group == 0 && (rest.empty() || rest == "=" || rest == "==");
}

// Identifiers such as 007 and 12345678901234567890 would lose digits as numbers.
bool KeepsDigitsAsNumber(std::string_view text) {
    constexpr std::size_t DigitsOfDouble = 15;
    const std::string_view number = text.starts_with('-') ? text.substr(1) : text;
    const bool isInteger = number.find_first_not_of(Digits) == std::string_view::npos;
    const bool hasLeadingZero =
        number.size() > 1 && number[0] == '0' && Digits.find(number[1]) != Digits.npos;
    return !text.starts_with('+') && !hasLeadingZero && (!isInteger || number.size() <= DigitsOfDouble);
}

constexpr std::array<DbFieldDescr::eFieldType, 8> Types = {
    DbFieldDescr::Boolean, DbFieldDescr::Integer, DbFieldDescr::Long,   DbFieldDescr::Float,
    DbFieldDescr::Double,  DbFieldDescr::Text,    DbFieldDescr::Binary, DbFieldDescr::Empty,
};

// GetTypeString names the variant type, which integer fields share with long fields.
std::string WordOfType(DbFieldDescr::eFieldType type) {
    if (type == DbFieldDescr::Integer) {
        return "integer";
    }
    DbFieldDescr field;
    field.SetDbType(type);
    return field.GetTypeString().ToUtf8();
}

}  // namespace

void TypeGuess::See(std::string_view text) {
    if (text.empty()) {
        return;
    }
    m_sawValue = true;
    if (m_isBoolean) {
        m_isBoolean = text != "0" && text != "1" && ReadBoolean(text).has_value();
    }
    if (m_isDouble) {
        m_isDouble = KeepsDigitsAsNumber(text) && ReadNumber<double>(text).has_value();
        m_isLong = m_isLong && m_isDouble && ReadNumber<std::int32_t>(text).has_value();
    }
}

DbFieldDescr::eFieldType TypeGuess::Type() const {
    if (!m_sawValue) {
        return DbFieldDescr::Text;
    }
    if (m_isBoolean) {
        return DbFieldDescr::Boolean;
    }
    if (!m_isDouble) {
        return DbFieldDescr::Text;
    }
    return m_isLong ? DbFieldDescr::Long : DbFieldDescr::Double;
}

std::optional<DbFieldDescr::eFieldType> TypeOfWord(std::string_view word) {
    const auto* const found = std::find_if(Types.begin(), Types.end(), [&](DbFieldDescr::eFieldType type) {
        return CString(WordOfType(type)).CompareNoCase(std::string(word)) == 0;
    });
    return found == Types.end() ? std::nullopt : std::optional<DbFieldDescr::eFieldType>(*found);
}

std::string TypeWords() {
    std::vector<std::string> words;
    std::transform(Types.begin(), Types.end(), std::back_inserter(words), WordOfType);
    return JoinNames(words);
}

std::optional<CellView> ReadCell(const DbFieldDescr& field, std::string_view text, CComVariant& scratch) {
    const bool isText = field.GetType() == VT_BSTR || field.GetType() == VT_EMPTY;
    if (isText) {
        return CellView::Text(text);
    }
    if (text.empty()) {
        return CellView();
    }
    switch (field.GetType()) {
        case VT_I4: {
            const auto number = ReadNumber<std::int32_t>(text);
            return number ? std::optional(CellView::Long(*number)) : std::nullopt;
        }
        case VT_R4: {
            const auto number = ReadNumber<float>(text);
            return number ? std::optional(CellView::Float(*number)) : std::nullopt;
        }
        case VT_R8: {
            const auto number = ReadNumber<double>(text);
            return number ? std::optional(CellView::Double(*number)) : std::nullopt;
        }
        case VT_BOOL: {
            const auto value = ReadBoolean(text);
            return value ? std::optional(CellView::Boolean(*value ? VARIANT_TRUE : VARIANT_FALSE))
                         : std::nullopt;
        }
        default:
            if (!IsBase64(text)) {
                return std::nullopt;
            }
            field.Convert(scratch, CString(std::string(text)).GetString());
            return CellView::Variant(scratch);
    }
}

bool FillCell(const DbFieldDescr& field, std::string_view text, CComVariant& cell) {
    CComVariant scratch;
    const std::optional<CellView> value = ReadCell(field, text, scratch);
    if (value) {
        value->CopyTo(cell);
    }
    return value.has_value();
}

std::string CellText(const CellView& cell) {
    std::string text;
    CComVariant scratch;
    AppendValueText(cell.In(scratch), text);
    return text;
}

bool IsSurelyReadBack(double number) {
    constexpr double Small = 1e-30;
    constexpr double Large = 1e30;
    const double size = std::fabs(number);
    return size == 0 || (size > Small && size < Large);
}

bool IsReadBack(const CellView& value) {
    if (value.Type() != VT_R4 && value.Type() != VT_R8) {
        return true;
    }
    CComVariant scratch;
    const CComVariant& cell = value.In(scratch);
    if (IsSurelyReadBack(cell.vt == VT_R4 ? static_cast<double>(cell.fltVal) : cell.dblVal)) {
        return true;
    }
    DbFieldDescr field;
    field.SetType(cell.vt);
    CComVariant back;
    field.Convert(back, CString(CellText(value)).GetString());
    return back.vt == cell.vt;
}

std::string LostNumber(const CellView& cell) {
    return "the number can't be carried by a text: " + Quoted(CellText(cell)) + " is not read back";
}

std::string UncarriableCharacter(std::string_view text) {
    // Nearly all texts have no such byte.
    bool isSuspect = false;
    for (const char letter : text) {
        isSuspect |= static_cast<unsigned char>(letter) < ' ' || letter == '\xEF';
    }
    if (!isSuspect) {
        return {};
    }
    // U+FFFE and U+FFFF, without their first two bytes EF BF.
    const std::size_t noncharacter = std::min(text.find("\xEF\xBF\xBE"), text.find("\xEF\xBF\xBF"));
    const auto* const control = std::find_if(text.begin(), text.end(), [](char letter) {
        return static_cast<unsigned char>(letter) < ' ' && letter != '\t' && letter != '\n' && letter != '\r';
    });
    unsigned codePoint = 0;
    if (control != text.end()) {
        codePoint = static_cast<unsigned char>(*control);
    } else if (noncharacter != std::string_view::npos) {
        codePoint = text[noncharacter + 2] == '\xBE' ? 0xFFFEU : 0xFFFFU;
    } else {
        return {};
    }
    std::array<char, 16> name;
    std::snprintf(name.data(), name.size(), "U+%04X", codePoint);
    return name.data();
}

}  // namespace quillet::tool
