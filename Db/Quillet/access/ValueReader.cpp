#include "Quillet/access/ValueReader.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <system_error>

namespace quillet::access {
namespace {

// The size of a type whose values all have the same; 0 for others.
std::size_t SizeOf(eColumnType type) {
    switch (type) {
        case eColumnType::Byte:
            return 1;
        case eColumnType::Integer:
            return 2;
        case eColumnType::Long:
        case eColumnType::Single:
        case eColumnType::Complex:
            return 4;
        case eColumnType::Money:
        case eColumnType::Double:
        case eColumnType::Date:
        case eColumnType::BigInteger:
            return 8;
        case eColumnType::Guid:
            return 16;
        case eColumnType::Numeric:
            return 17;
        case eColumnType::ExtendedDate:
            return 42;
        default:
            return 0;
    }
}

Error DamagedValue(const char* text) {
    return {Error::Damaged, text};
}

void SetInteger(Value::eKind kind, std::int64_t number, Value& value) {
    value.m_kind = kind;
    value.m_integer = number;
}

void SetReal(Value::eKind kind, double number, Value& value) {
    value.m_kind = kind;
    value.m_real = number;
}

void SetBytes(Value::eKind kind, ByteView bytes, Value& value) {
    value.m_kind = kind;
    value.m_bytes = bytes;
}

void DecodeNumeric(const Column& column, ByteView bytes, Value& value) {
    constexpr std::size_t SignSize = 1;
    value.m_kind = Value::Exact;
    value.m_numeric.m_isNegative = bytes[0] != 0;
    value.m_numeric.m_scale = column.m_scale;
    for (std::size_t i = 0; i < value.m_numeric.m_words.size(); ++i) {
        value.m_numeric.m_words[i] = LittleU32(bytes, SignSize + 4 * i);
    }
}

// Calculated columns keep decimals as automation does: a tag, scale and sign, then 96 bits, the highest word
// first.
void DecodeCalculatedNumeric(ByteView bytes, Value& value) {
    constexpr std::size_t Size = 16;
    if (bytes.size() < Size) {
        throw DamagedValue("the value of a calculated column is too short");
    }
    value.m_kind = Value::Exact;
    value.m_numeric.m_scale = bytes[2];
    value.m_numeric.m_isNegative = bytes[3] != 0;
    value.m_numeric.m_words = {0, LittleU32(bytes, 4), LittleU32(bytes, 12), LittleU32(bytes, 8)};
}

// Digits only; the whole range of the digits fits.
std::int64_t DigitsOf(std::string_view digits) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc() || end != digits.data() + digits.size() || number < 0) {
        throw DamagedValue("an extended date is not written in digits");
    }
    return number;
}

// As text: 19 digits for the day, a colon, 12 for the second of the day and 7 for its fraction.
void DecodeExtendedDate(ByteView bytes, Value& value) {
    constexpr std::size_t DayDigits = 19;
    constexpr std::size_t SecondDigits = 12;
    constexpr std::size_t FractionDigits = 7;
    constexpr std::int64_t SecondsOfDay = 86'400;
    constexpr std::int64_t TicksOfSecond = 10'000'000;
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const std::int64_t day = DigitsOf(text.substr(0, DayDigits));
    const std::int64_t second = DigitsOf(text.substr(DayDigits + 1, SecondDigits));
    const std::int64_t fraction = DigitsOf(text.substr(DayDigits + 1 + SecondDigits, FractionDigits));
    if (text[DayDigits] != ':' || second >= SecondsOfDay) {
        throw DamagedValue("an extended date has no such form");
    }
    SetInteger(Value::ExtendedDate, day, value);
    value.m_ticks = second * TicksOfSecond + fraction;
}

// The value within the frame that those of calculated columns have; empty for a null.
ByteView Unwrap(ByteView bytes) {
    constexpr std::size_t LengthOffset = 16;
    constexpr std::size_t ValueOffset = 20;
    if (bytes.empty()) {
        return bytes;
    }
    if (bytes.size() < ValueOffset) {
        throw DamagedValue("the value of a calculated column is too short");
    }
    const std::size_t length = LittleU32(bytes, LengthOffset);
    if (length > bytes.size() - ValueOffset) {
        throw DamagedValue("the value of a calculated column is longer than its field");
    }
    return bytes.subspan(ValueOffset, length);
}

std::optional<ByteView> BytesOf(const RowFields& row, const Column& column) {
    if (!column.IsFixed()) {
        return row.Variable(column.m_variableIndex);
    }
    const std::size_t size = SizeOf(column.m_type);
    const std::optional<ByteView> bytes = row.Fixed(column.m_fixedOffset, size != 0 ? size : column.m_length);
    if (!bytes) {
        throw DamagedValue("a column lies beyond the fixed part of its row");
    }
    return bytes;
}

}  // namespace

void ValueReader::Read(const RowFields& row, const Column& column, Value& value) {
    value.m_kind = Value::Null;
    m_isShort = false;
    const bool bit = row.HasBit(column.m_number);
    if (column.m_type == eColumnType::Boolean && column.IsFixed()) {
        SetInteger(Value::Boolean, bit ? 1 : 0, value);
        return;
    }
    const std::optional<ByteView> field = bit ? BytesOf(row, column) : std::nullopt;
    if (!field) {
        return;
    }
    ByteView bytes = *field;
    if (column.IsLongValue()) {
        bytes = m_longValues.Read(bytes);
        m_isShort = m_longValues.IsShort();
    }
    if (column.IsCalculated()) {
        bytes = Unwrap(bytes);
        if (bytes.empty()) {
            return;
        }
    }
    Decode(column, bytes, value);
}

void ValueReader::Decode(const Column& column, ByteView bytes, Value& value) {
    if (column.IsCalculated() && column.m_type == eColumnType::Numeric) {
        DecodeCalculatedNumeric(bytes, value);
        return;
    }
    if (bytes.size() < SizeOf(column.m_type)) {
        throw DamagedValue("a value is too short for its type");
    }
    switch (column.m_type) {
        case eColumnType::Boolean:
            SetInteger(Value::Boolean, bytes.empty() || bytes[0] == 0 ? 0 : 1, value);
            break;
        case eColumnType::Byte:
            SetInteger(Value::Integer, bytes[0], value);
            break;
        case eColumnType::Integer:
            SetInteger(Value::Integer, static_cast<std::int16_t>(LittleU16(bytes, 0)), value);
            break;
        case eColumnType::Long:
            SetInteger(Value::Integer, static_cast<std::int32_t>(LittleU32(bytes, 0)), value);
            break;
        case eColumnType::Complex:
            SetInteger(Value::Complex, static_cast<std::int32_t>(LittleU32(bytes, 0)), value);
            break;
        case eColumnType::BigInteger:
            SetInteger(Value::Integer, static_cast<std::int64_t>(LittleU64(bytes, 0)), value);
            break;
        case eColumnType::Money:
            SetInteger(Value::Money, static_cast<std::int64_t>(LittleU64(bytes, 0)), value);
            break;
        case eColumnType::Single:
            SetReal(Value::Single, LittleFloat(bytes, 0), value);
            break;
        case eColumnType::Double:
            SetReal(Value::Double, LittleDouble(bytes, 0), value);
            break;
        case eColumnType::Date:
            SetReal(Value::Date, LittleDouble(bytes, 0), value);
            break;
        case eColumnType::Text:
        case eColumnType::Memo:
            DecodeText(bytes, value);
            break;
        case eColumnType::Guid:
            SetBytes(Value::Guid, bytes.first(SizeOf(eColumnType::Guid)), value);
            break;
        case eColumnType::Numeric:
            DecodeNumeric(column, bytes, value);
            break;
        case eColumnType::ExtendedDate:
            DecodeExtendedDate(bytes, value);
            break;
        case eColumnType::Binary:
        case eColumnType::Ole:
        default:
            SetBytes(Value::Bytes, bytes, value);
            break;
    }
}

void ValueReader::DecodeText(ByteView bytes, Value& value) {
    m_text.clear();
    m_texts.AppendValue(bytes, m_text);
    value.m_kind = Value::Text;
    value.m_text = m_text;
}

}  // namespace quillet::access
