#include "input/CsvReader.h"

#include <gmock/gmock.h>

#include "Failure.h"

namespace quillet::tool {
namespace {

using testing::ElementsAre;
using Rows = std::vector<std::vector<std::string>>;

Rows ReadAll(std::string_view text) {
    CsvReader reader(text, "in.csv");
    Rows rows;
    while (reader.Next()) {
        rows.push_back(reader.Values());
    }
    EXPECT_FALSE(reader.Next()) << "the end is the end";
    return rows;
}

std::vector<std::size_t> LinesOf(std::string_view text) {
    CsvReader reader(text, "in.csv");
    std::vector<std::size_t> lines;
    while (reader.Next()) {
        lines.push_back(reader.Line());
    }
    return lines;
}

std::string FailureOf(std::string_view text) {
    try {
        ReadAll(text);
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "no failure";
}

TEST(CsvReader, Read_EveryLineEnd_EndsTheRow) {
    const Rows expected = {{"a", "b"}, {"1", "2"}};
    EXPECT_EQ(ReadAll("a,b\r\n1,2\r\n"), expected);
    EXPECT_EQ(ReadAll("a,b\n1,2\n"), expected);
    EXPECT_EQ(ReadAll("a,b\r1,2\r"), expected);
    EXPECT_EQ(ReadAll("a,b\n1,2"), expected) << "the last line need not end";
}

TEST(CsvReader, Read_Blanks_BelongToTheValues) {
    EXPECT_EQ(ReadAll(" a ,\tb\n\" c \",  \n"), (Rows{{" a ", "\tb"}, {" c ", "  "}}));
}

TEST(CsvReader, Read_QuotedValues_KeepEverything) {
    EXPECT_EQ(ReadAll("\"a,b\",\"say \"\"x\"\"\"\n\"\",\"\"\"\"\n"),
              (Rows{{"a,b", "say \"x\""}, {"", "\""}}));
    EXPECT_EQ(ReadAll("\"a\r\nb\nc\rd\",e\n"), (Rows{{"a\r\nb\nc\rd", "e"}}));
    EXPECT_EQ(ReadAll("\"\r\n\"\r\n"), (Rows{{"\r\n"}}));
}

TEST(CsvReader, Read_EmptyValues_AreValues) {
    EXPECT_EQ(ReadAll(",\n,,\na,\n"), (Rows{{"", ""}, {"", "", ""}, {"a", ""}}));
    EXPECT_EQ(ReadAll("a\n\"\"\nb\n"), (Rows{{"a"}, {""}, {"b"}}));
}

TEST(CsvReader, Read_EmptyLines_ArePassedOver) {
    EXPECT_EQ(ReadAll("\n\na,b\n\r\n\n1,2\n\n"), (Rows{{"a", "b"}, {"1", "2"}}));
    EXPECT_EQ(ReadAll(""), Rows{});
    EXPECT_EQ(ReadAll("\r\n\r\n"), Rows{});
}

TEST(CsvReader, Read_ByteOrderMark_IsPassedOverAtTheBeginningOnly) {
    EXPECT_EQ(ReadAll("\xEF\xBB\xBF"
                      "a,b\n"),
              (Rows{{"a", "b"}}));
    EXPECT_EQ(ReadAll("\xEF\xBB\xBF\"a,b\"\n"), (Rows{{"a,b"}}));
    EXPECT_EQ(ReadAll("a\n\xEF\xBB\xBF"
                      "b\n"),
              (Rows{{"a"},
                    {"\xEF\xBB\xBF"
                     "b"}}));
}

TEST(CsvReader, Read_RowsOfDifferentLengths_ComeAsTheyAre) {
    EXPECT_EQ(ReadAll("a,b,c\nd\ne,f\n"), (Rows{{"a", "b", "c"}, {"d"}, {"e", "f"}}));
}

TEST(CsvReader, Read_LongValue_IsWhole) {
    const std::string value(1000000, 'x');
    EXPECT_EQ(ReadAll("a," + value + "\n"), (Rows{{"a", value}}));
}

TEST(CsvReader, Line_EveryRow_IsWhereItBegins) {
    EXPECT_THAT(LinesOf("a\nb\n\nc\n"), ElementsAre(1, 2, 4));
    EXPECT_THAT(LinesOf("\n\na\r\n\"b\r\nb\"\r\n\r\nc"), ElementsAre(3, 4, 7));
    EXPECT_THAT(LinesOf("a\r\rb\r"), ElementsAre(1, 3));
}

TEST(CsvReader, Read_StrayQuotationMark_FailsWithItsLine) {
    EXPECT_THAT(FailureOf("a\nb\"c\n"), testing::StartsWith("in.csv:2: a quotation mark inside a value"));
    EXPECT_THAT(FailureOf("a\n\"b\"c\n"), testing::StartsWith("in.csv:2: a quotation mark inside a value"));
    EXPECT_THAT(FailureOf("a\n\"b\" ,c\n"), testing::StartsWith("in.csv:2: a quotation mark inside a value"));
    EXPECT_THAT(FailureOf("a\n \"b\"\n"), testing::StartsWith("in.csv:2: a quotation mark inside a value"));
}

TEST(CsvReader, Read_UnclosedQuote_FailsWithTheLineOfItsRow) {
    EXPECT_EQ(FailureOf("a\nb,\"c\nd\ne\n"),
              "in.csv:2: a quoted value of the row that begins here is never closed");
    EXPECT_EQ(FailureOf("\""), "in.csv:1: a quoted value of the row that begins here is never closed");
}

TEST(CsvReader, Read_InvalidUtf8_FailsWithItsLine) {
    EXPECT_EQ(FailureOf("a\nb\xFF\n"), "in.csv:2: not UTF-8");
    EXPECT_EQ(FailureOf("a\r\n\r\n\xED\xA0\x80"), "in.csv:3: not UTF-8");
    EXPECT_EQ(FailureOf("\xFF\xFE"
                        "a"),
              "in.csv:1: not UTF-8");
}

TEST(CsvReader, Read_ZeroByte_IsPartOfTheValue) {
    EXPECT_EQ(ReadAll(std::string_view("a\0b\n", 4)), (Rows{{std::string("a\0b", 3)}}));
}

}  // namespace
}  // namespace quillet::tool
