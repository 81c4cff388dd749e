// Values of every type, as rows keep them.
#include "Quillet/access/Value.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>

#include "support/AccessReading.h"

namespace quillet::access {
namespace {

using namespace std::string_literals;
using test::AccessPages;
using test::MadeColumn;
using test::MadeTable;
using test::MadeValues;
using test::Number;
using test::OpenedFile;
using test::Wide;

template <typename Real>
std::string BytesOfReal(Real number) {
    std::string bytes(sizeof number, '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    return bytes;
}

class ValueTest : public testing::TestWithParam<const Layout*> {
protected:
    // The only value of a table with that column, as it is shown.
    std::string Read(const MadeColumn& column, const std::optional<std::string>& bytes) {
        AccessPages pages = test::PagesOf(*GetParam());
        return Read(pages, column, bytes);
    }
    std::string Read(AccessPages& pages, const MadeColumn& column, const std::optional<std::string>& bytes,
                     const std::optional<std::string>& properties = std::nullopt) {
        const MadeTable made{{column}, {}};
        const std::uint32_t table = pages.AddTable("t", made, 0, properties);
        pages.AddRows(table, {{pages.Row(made, {bytes})}});
        OpenedFile file(pages);
        const std::string value = file.Rows("t").at(0).at(0);
        m_damage = file.Damage();
        return value;
    }
    // The value of a fixed column, after checking that a variable one of the type reads the same, that a null
    // is one, and that a variable one that is too short is damaged.
    std::string ReadNumber(eColumnType type, const std::string& bytes) {
        const auto size = static_cast<std::uint16_t>(bytes.size());
        const MadeColumn fixed = MadeColumn::Fixed("c", type, 0, 0, size);
        const MadeColumn variable = MadeColumn::Variable("c", type, 0, 0);
        const std::string value = Read(fixed, bytes);
        EXPECT_EQ(Read(variable, bytes), value);
        EXPECT_EQ(Read(fixed, std::nullopt), "null");
        EXPECT_EQ(Read(variable, std::nullopt), "null");
        EXPECT_TRUE(m_damage.empty());
        EXPECT_EQ(Read(variable, bytes.substr(1)), "null");
        EXPECT_EQ(m_damage, std::vector<std::string>{"a value is too short for its type"});
        return value;
    }
    std::string Text(const std::string& text) const { return GetParam()->m_isJet3 ? text : Wide(text); }

    std::vector<std::string> m_damage;
};

INSTANTIATE_TEST_SUITE_P(Layouts, ValueTest, testing::Values(&Jet3Layout, &Jet4Layout), test::LayoutName());

TEST_P(ValueTest, ABooleanIsItsBitInTheNullMask) {
    const MadeColumn column = MadeColumn::Fixed("c", eColumnType::Boolean, 0, 0, 0);
    EXPECT_EQ(Read(column, ""), "true");
    EXPECT_EQ(Read(column, std::nullopt), "false");
}

TEST_P(ValueTest, WholeNumbersAreSignedButForBytes) {
    EXPECT_EQ(ReadNumber(eColumnType::Byte, "\xFF"), "255");
    EXPECT_EQ(ReadNumber(eColumnType::Integer, Number(0x8000, 2)), "-32768");
    EXPECT_EQ(ReadNumber(eColumnType::Long, Number(0xFFFFFFFE, 4)), "-2");
    EXPECT_EQ(ReadNumber(eColumnType::BigInteger, Number(std::uint64_t{1} << 63, 8)), "-9223372036854775808");
}

TEST_P(ValueTest, MoneyCountsTenThousandths) {
    EXPECT_EQ(ReadNumber(eColumnType::Money, Number(123456789012345, 8)), "money 123456789012345");
    EXPECT_EQ(ReadNumber(eColumnType::Money, Number(static_cast<std::uint64_t>(-5000), 8)), "money -5000");
}

TEST_P(ValueTest, RealsAreThoseOfTheProcessor) {
    EXPECT_EQ(ReadNumber(eColumnType::Single, BytesOfReal(-1.5F)), "single -1.5");
    EXPECT_EQ(ReadNumber(eColumnType::Double, BytesOfReal(1e300)), "1.0000000000000001e+300");
}

TEST_P(ValueTest, DatesAreDaysAndTheirFractions) {
    EXPECT_EQ(ReadNumber(eColumnType::Date, BytesOfReal(-1.25)), "date -1.25");
}

TEST_P(ValueTest, ExtendedDatesAreDigits) {
    EXPECT_EQ(ReadNumber(eColumnType::ExtendedDate, "0000000000000737592:0000000819121234567:7\0"s),
              "day 737592 ticks 819121234567");
}

TEST_P(ValueTest, ExtendedDatesOfAnotherFormAreDamaged) {
    for (const std::string& text :
         {"000000000000073759x:0000000819121234567:7\0"s, "0000000000000737592 0000000819121234567:7\0"s,
          "0000000000000737592:0000086400000000000:7\0"s, "-000000000000737592:0000000819121234567:7\0"s}) {
        EXPECT_EQ(Read(MadeColumn::Fixed("c", eColumnType::ExtendedDate, 0, 0, 42), text), "null") << text;
        EXPECT_EQ(m_damage.size(), 1U) << text;
    }
}

TEST_P(ValueTest, GuidsAreSixteenBytes) {
    EXPECT_EQ(
        ReadNumber(eColumnType::Guid, "\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A\x0B\x0C\x0D\x0E\x0F\x10"),
        "guid 0102030405060708090a0b0c0d0e0f10");
}

TEST_P(ValueTest, ComplexColumnsGiveTheirNumber) {
    EXPECT_EQ(ReadNumber(eColumnType::Complex, Number(7, 4)), "complex 7");
}

TEST_P(ValueTest, NumericsHaveASignAndFourWordsTheHighestFirst) {
    const std::string words = Number(0, 4) + Number(0, 4) + Number(1, 4) + Number(2, 4);
    EXPECT_EQ(ReadNumber(eColumnType::Numeric, Number(0, 1) + words), "exact 4294967298");
    EXPECT_EQ(ReadNumber(eColumnType::Numeric, Number(0x80, 1) + words), "exact -4294967298");
    MadeColumn scaled = MadeColumn::Fixed("c", eColumnType::Numeric, 0, 0, 17);
    scaled.m_details = GetParam()->m_isJet3 ? 0x0C120000 : 0x0C12;
    EXPECT_EQ(Read(scaled, Number(0x80, 1) + words), "exact -0.004294967298");
}

TEST_P(ValueTest, TextsEndWhereTheNextColumnBegins) {
    const MadeColumn column = MadeColumn::Variable("c", eColumnType::Text, 0, 0);
    EXPECT_EQ(Read(column, Text("a text")), "'a text'");
    EXPECT_EQ(Read(column, ""), "''");
    EXPECT_EQ(Read(column, std::nullopt), "null");
}

TEST_P(ValueTest, FixedTextsAndBytesHaveTheLengthOfTheirColumn) {
    const std::string text = Text("ab ");
    const auto size = static_cast<std::uint16_t>(text.size());
    EXPECT_EQ(Read(MadeColumn::Fixed("c", eColumnType::Text, 0, 0, size), text), "'ab '");
    EXPECT_EQ(Read(MadeColumn::Fixed("c", eColumnType::Binary, 0, 0, 3), "\x01\x02\x03"), "bytes 010203");
}

TEST_P(ValueTest, BytesAreBytes) {
    const MadeColumn column = MadeColumn::Variable("c", eColumnType::Binary, 0, 0);
    EXPECT_EQ(Read(column, "\x00\xFF"s), "bytes 00ff");
    EXPECT_EQ(Read(column, ""), "bytes ");
}

TEST_P(ValueTest, UnknownTypesAreBytes) {
    EXPECT_EQ(Read(MadeColumn::Variable("c", static_cast<eColumnType>(70), 0, 0), "ab"), "bytes 6162");
    EXPECT_EQ(Read(MadeColumn::Fixed("c", static_cast<eColumnType>(71), 0, 0, 2), "ab"), "bytes 6162");
}

TEST_P(ValueTest, AColumnBeyondTheFixedPartIsDamaged) {
    const MadeTable made{{MadeColumn::Fixed("c", eColumnType::Long, 0, 0, 4)}, {}};
    AccessPages pages = test::PagesOf(*GetParam());
    const std::uint32_t table = pages.AddTable("t", made);
    pages.AddRows(table, {{pages.Row(made, {"1234"})}});
    pages.Page(table).Put(GetParam()->m_definitionBody + GetParam()->m_columnOffset, 1, 2);
    OpenedFile file(pages);
    EXPECT_EQ(file.Rows("t"), (std::vector<test::ShownRow>{{"null"}}));
    EXPECT_EQ(file.Damage(), std::vector<std::string>{"a column lies beyond the fixed part of its row"});
}

// Values of calculated columns in a frame: 16 bytes, the length, the value, and more.
class CalculatedValueTest : public ValueTest {
protected:
    static std::string Framed(const std::string& value) {
        return std::string(16, 'f') + Number(value.size(), 4) + value + "end";
    }
    std::string ReadCalculated(eColumnType type, const std::string& bytes,
                               const std::optional<std::uint8_t>& resultType = std::nullopt) {
        MadeColumn column = MadeColumn::Variable("c", type, 0, 0);
        column.m_extraFlags = 0xC0;
        AccessPages pages = AccessPages::Jet4(3);
        return Read(pages, column, bytes,
                    resultType ? std::optional(PropertiesOf("c", *resultType)) : std::nullopt);
    }
    // A blob of two names, and of the second one's value for the column.
    static std::string PropertiesOf(const std::string& column, std::uint8_t type) {
        const auto block = [](std::uint16_t kind, const std::string& content) {
            return Number(content.size() + 6, 4) + Number(kind, 2) + content;
        };
        const auto name = [](const std::string& text) { return Number(2 * text.size(), 2) + Wide(text); };
        const std::string head = Number(6 + 2 * column.size(), 4) + name(column);
        const std::string value =
            Number(9, 2) + Number(0, 1) + Number(2, 1) + Number(1, 2) + Number(1, 2) + Number(type, 1);
        return "MR2\0"s + block(0x80, name("Expression") + name("ResultType")) + block(1, head + value);
    }
};

INSTANTIATE_TEST_SUITE_P(Layouts, CalculatedValueTest, testing::Values(&Jet4Layout), test::LayoutName());

TEST_P(CalculatedValueTest, TheValueIsInAFrame) {
    EXPECT_EQ(ReadCalculated(eColumnType::Long, Framed(Number(42, 4))), "42");
    EXPECT_EQ(ReadCalculated(eColumnType::Text, Framed(Wide("abc"))), "'abc'");
    EXPECT_TRUE(m_damage.empty());
}

TEST_P(CalculatedValueTest, AnEmptyFrameIsANull) {
    EXPECT_EQ(ReadCalculated(eColumnType::Long, Framed("")), "null");
    EXPECT_EQ(ReadCalculated(eColumnType::Text, ""), "null");
    EXPECT_TRUE(m_damage.empty());
}

TEST_P(CalculatedValueTest, AFrameThatDoesNotHoldIsDamaged) {
    EXPECT_EQ(ReadCalculated(eColumnType::Long, std::string(19, 'f')), "null");
    EXPECT_EQ(m_damage, std::vector<std::string>{"the value of a calculated column is too short"});
    EXPECT_EQ(ReadCalculated(eColumnType::Long, std::string(16, 'f') + Number(0xFFFFFFFF, 4) + "1234"),
              "null");
    EXPECT_EQ(m_damage,
              std::vector<std::string>{"the value of a calculated column is longer than its field"});
}

TEST_P(CalculatedValueTest, ThePropertiesTellTheTypeOfTheResult) {
    EXPECT_EQ(ReadCalculated(eColumnType::Integer, Framed("\xFF"), 1), "true");
    EXPECT_EQ(ReadCalculated(eColumnType::Integer, Framed("\0"s), 1), "false");
    EXPECT_EQ(ReadCalculated(eColumnType::Double, Framed(Number(5, 8)), 5), "money 5");
    EXPECT_EQ(ReadCalculated(eColumnType::Long, Framed(Number(5, 4)), 0), "5");
}

TEST_P(CalculatedValueTest, DecimalsHaveAnotherForm) {
    const std::string decimal =
        Number(0x0E, 2) + Number(2, 1) + Number(0x80, 1) + Number(1, 4) + Number(3, 4) + Number(2, 4);
    // 1 * 2^64 + 2 * 2^32 + 3
    EXPECT_EQ(ReadCalculated(eColumnType::Numeric, Framed(decimal)), "exact -184467440822994862.11");
    EXPECT_EQ(ReadCalculated(eColumnType::Numeric, Framed(decimal.substr(1))), "null");
}

TEST_P(CalculatedValueTest, LongValuesAreFramedToo) {
    const std::string framed = Framed(Wide("a memo"));
    EXPECT_EQ(
        ReadCalculated(eColumnType::Memo, Number(0x80000000 + framed.size(), 4) + Number(0, 8) + framed),
        "'a memo'");
}

TEST(NumericTest, TheScaleTellsThePlaceOfThePoint) {
    const auto text = [](std::uint32_t digits, std::uint8_t scale, bool negative = false) {
        return Numeric{negative, scale, {0, 0, 0, digits}}.ToText();
    };
    EXPECT_EQ(text(0, 0), "0");
    EXPECT_EQ(text(0, 0, true), "0");
    EXPECT_EQ(text(0, 2), "0.00");
    EXPECT_EQ(text(1234, 0), "1234");
    EXPECT_EQ(text(1234, 2), "12.34");
    EXPECT_EQ(text(1234, 4), "0.1234");
    EXPECT_EQ(text(1234, 6, true), "-0.001234");
    EXPECT_EQ((Numeric{false, 0, {~0U, ~0U, ~0U, ~0U}}.ToText()), "340282366920938463463374607431768211455");
}

}  // namespace
}  // namespace quillet::access
