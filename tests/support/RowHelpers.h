// Rows without a table, for tests of algorithms over many rows, and columns of random values to fill them
// with.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <ostream>
#include <random>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "Quillet/rows/CellView.h"
#include "support/Seed.h"
#include "support/TestHelpers.h"

namespace quillet::test {

// A cell that counts its reads.
class CountedCell : public DbFieldValue {
public:
    explicit CountedCell(DbItem* parent) : DbFieldValue(parent) {}

    CComVariant& GetVariant() override {
        ++s_reads;
        return DbFieldValue::GetVariant();
    }
    const CComVariant& GetVariant() const override {
        ++s_reads;
        return DbFieldValue::GetVariant();
    }

    static inline std::size_t s_reads = 0;
};

class RowSet {
public:
    void Add(const std::vector<CComVariant>& values) {
        auto row = std::make_unique<DbTableRow>(nullptr);
        for (const CComVariant& value : values) {
            row->push_back(new CountedCell(row.get()));
            row->back()->GetVariant() = value;
        }
        m_pointers.push_back(row.get());
        m_rows.push_back(std::move(row));
    }

    std::span<DbTableRow* const> Rows() const { return m_pointers; }
    std::size_t Size() const { return m_rows.size(); }

private:
    std::vector<std::unique_ptr<DbTableRow>> m_rows;
    std::vector<DbTableRow*> m_pointers;
};

inline RowSet RowsOfOneField(const std::vector<CComVariant>& values) {
    RowSet rows;
    for (const CComVariant& value : values) {
        rows.Add({value});
    }
    return rows;
}

// The type, the null flag and every bit of a cell's value.
inline std::string ShowCell(const CellView& cell) {
    CComVariant scratch;
    const CComVariant& value = cell.In(scratch);
    std::string text = std::to_string(value.vt) + (cell.IsNull() ? "!" : ":");
    switch (value.vt) {
        case VT_R8:
            return text + std::to_string(std::bit_cast<std::uint64_t>(value.dblVal));
        case VT_R4:
            return text + std::to_string(std::bit_cast<std::uint32_t>(value.fltVal));
        case VT_I4:
            return text + std::to_string(value.lVal);
        case VT_I2:
        case VT_BOOL:
            return text + std::to_string(value.iVal);
        case VT_BSTR:
            for (const WCHAR unit : value.Text()) {
                text += std::to_string(static_cast<unsigned>(unit)) + ",";
            }
            return text;
        case ByteArrayType:
            return text + ContentOf(value).m_bytes;
        default:
            return text + std::to_string(value.llVal);
    }
}

// Random choices that are the same on every system.
class Chance {
public:
    explicit Chance(unsigned seed) : m_numbers(Seed(seed)) {}

    // From 0 to limit - 1.
    unsigned Below(std::size_t limit) { return static_cast<unsigned>(m_numbers() % limit); }
    template <typename List>
    auto Of(const List& list) {
        return list[Below(std::size(list))];
    }
    CString Text(const std::vector<unsigned>& units, std::size_t longest) {
        WideString text;
        for (unsigned left = Below(longest + 1); left > 0; --left) {
            text.push_back(static_cast<WCHAR>(Of(units)));
        }
        return CString(WideView(text));
    }

private:
    std::mt19937 m_numbers;
};

// A distribution of values for a field.
struct Filling {
    const char* m_name;
    std::function<CComVariant(Chance&)> m_draw;
};

inline void PrintTo(const Filling& filling, std::ostream* stream) {
    *stream << filling.m_name;
}

inline CComVariant Typed(VARTYPE type, double number) {
    CComVariant value;
    switch (type) {
        case VT_R4:
            value = CComVariant(static_cast<float>(number));
            break;
        case VT_R8:
            value = CComVariant(number);
            break;
        case VT_DATE:
            value = DateVariant(number);
            break;
        case VT_BOOL:
            value = BooleanBits(static_cast<VARIANT_BOOL>(number));
            break;
        default:
            value.vt = type;
            value.llVal = static_cast<LONGLONG>(number);
            break;
    }
    return value;
}

inline Filling Numbers(const char* name, VARTYPE type, const std::vector<double>& numbers) {
    return {name, [=](Chance& chance) { return Typed(type, chance.Of(numbers)); }};
}

inline Filling TextsOf(const char* name, const std::vector<unsigned>& units, std::size_t longest) {
    return {name, [=](Chance& chance) { return CComVariant(chance.Text(units, longest)); }};
}

// One value in that many is the other one.
inline Filling WithSome(const char* name, const Filling& filling, const CComVariant& other, unsigned oneIn) {
    return {name, [=](Chance& chance) { return chance.Below(oneIn) == 0 ? other : filling.m_draw(chance); }};
}

inline std::vector<Filling> AllFillings() {
    constexpr double Nan = std::numeric_limits<double>::quiet_NaN();
    const Filling shorts = Numbers("Shorts", VT_I2, {-3, -2, -1, 0, 1, 2, 3});
    const Filling doubles =
        Numbers("Doubles", VT_R8, {-1e300, -2.5, -0.0, 0.0, 1e-300, 0.1, 0.2, 7, HUGE_VAL});
    const Filling positive = Numbers("Positive", VT_R8, {1, 2, 3, 4, 5});
    const Filling words = TextsOf("Words", {'a', 'b', 'A', 'B', '1'}, 3);
    std::vector<Filling> fillings = {
        shorts,
        doubles,
        Numbers("Longs", VT_I4, {-2147483648.0, -5, 0, 5, 2147483647.0}),
        Numbers("Floats", VT_R4, {-1.5, -0.0, 0.0, 0.1, 0.25, 3e38}),
        Numbers("Dates", VT_DATE, {-1.75, 0, 0.5, 37623, 37623.75}),
        Numbers("Booleans", VT_BOOL, {-1, 0, 1, 2}),
        Numbers("Bytes", VT_UI1, {0, 1, 128, 255}),
        Numbers("HugeIntegers", VT_I8, {-9007199254740992.0, 0, 1, 9007199254740992.0}),
        Numbers("UnsignedShorts", VT_UI2, {0, 1, 65535}),
        {"ManyDoubles", [](Chance& chance) { return CComVariant(chance.Below(100000) / 8.0); }},
        Numbers("NotANumber", VT_R8, {Nan, 0, 1, 2, Nan}),
        Numbers("FloatsNotANumber", VT_R4, {Nan, 0, 1, 2}),
        {"Empty", [](Chance&) { return CComVariant(); }},
        {"Null", [](Chance&) { return NullVariant(); }},
        WithSome("NumbersAndNulls", shorts, NullVariant(), 5),
        WithSome("NumbersAndEmpty", shorts, CComVariant(), 5),
        WithSome("PositiveAndEmpty", positive, CComVariant(), 5),
        WithSome("NumbersNullsAndEmpty", WithSome("", doubles, NullVariant(), 6), CComVariant(), 6),
        {"TwoNumberTypes",
         [=](Chance& chance) { return (chance.Below(2) == 0 ? shorts : doubles).m_draw(chance); }},
        words,
        TextsOf("Letters", {'a', 'A', 'b', 'B', 'c', 'C'}, 2),
        TextsOf("Sentences", {'a', 'B', ' ', '-', '\'', '.', '_', 'b'}, 5),
        TextsOf("Hyphens", {'a', 'A', 'b', '-', '\''}, 4),
        TextsOf("Accents", {'a', 'e', 'E', 0xE9, 0xC9, 0xE4, 'o', 0xDF, 's', 'S', 0x17F, 0xE6}, 3),
        TextsOf("Marks", {'a', 'e', 'E', 0xE9, 0xC9, 0x301, 0x308, 0x323, 0x327}, 4),
        TextsOf("VoicedMarks", {0x304B, 0x30AB, 0x3099, 0x309A, 0x30FC, 0x31C}, 3),
        TextsOf("WithoutWeight", {'a', 'A', 'b', 0xAD, 0x200B, 0x200D, 1}, 3),
        TextsOf("Zeros", {'a', 'A', 'b', 0, 0xAD}, 3),
        TextsOf("Greek", {0x3C3, 0x3C2, 0x3A3, 0x3B1, 0x391, 0xB5, 0x3BC}, 3),
        TextsOf("Thai", {0xE2F, 0xE4C, 0xE46, 0xE47, 0xE27, 0xE40, '-'}, 3),
        TextsOf("Kana", {0x3042, 0x30A2, 0x3041, 0x30A1, 0x304B, 0x30AB}, 2),
        TextsOf("Surrogates", {'a', 0xD801, 0xDC00, 0xDC28, 0xD800}, 3),
        WithSome("WordsAndNulls", words, NullVariant(), 5),
        WithSome("WordsAndEmpty", words, CComVariant(), 5),
        WithSome("NumbersAndAText", shorts, CComVariant("1"), 6),
        WithSome("WordsAndANumber", words, Long(1), 6),
        WithSome("WordsAndASoftHyphen", words, CComVariant(Units({'a', 0xAD})), 8),
        WithSome("WordsAndAZero", words, CComVariant(Units({'a', 0})), 8),
        {"NumbersAndTheirTexts",
         [=](Chance& chance) {
             CComVariant value = shorts.m_draw(chance);
             if (chance.Below(2) == 0) {
                 value.ChangeType(VT_BSTR);
             }
             return value;
         }},
        {"ByteArrays", [](Chance& chance) { return ByteArray(chance.Below(2) == 0 ? "ab" : "c"); }},
    };
    fillings.push_back(
        {"Anything", [all = fillings](Chance& chance) { return chance.Of(all).m_draw(chance); }});
    return fillings;
}

inline std::string FillingName(const testing::TestParamInfo<Filling>& info) {
    return info.param.m_name;
}

// A number of rows with the fillings' fields; some rows are too short.
inline RowSet RandomRows(Chance& chance, std::size_t count, const std::vector<Filling>& fillings) {
    constexpr unsigned OneShortRowIn = 50;
    RowSet rows;
    for (std::size_t i = 0; i < count; ++i) {
        std::vector<CComVariant> values;
        for (const Filling& filling : fillings) {
            values.push_back(filling.m_draw(chance));
        }
        if (fillings.size() > 1 && chance.Below(OneShortRowIn) == 0) {
            values.pop_back();
        }
        rows.Add(values);
    }
    return rows;
}

}  // namespace quillet::test
