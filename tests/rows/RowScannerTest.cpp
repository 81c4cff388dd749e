// Rows that are read straight from the bytes of a document are those that the document gives.
#include "Quillet/rows/RowScanner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "support/RowHelpers.h"
#include "support/RowReading.h"

namespace quillet::test {
namespace {

struct ScannedText {
    const char* m_what;
    const char* m_rows;
    // Whether the scanner reads it.
    bool m_isKnown = true;
};

constexpr ScannedText Texts[] = {
    {"Plain", R"(<row d="1.5" f="2" n="-3" b="true" t="abc" x="YWI=" />)"},
    {"Numbers", R"(<row d="-0.000125" f="1e3" n="2147483647" b="false" t="" x="" />
<row d="123456789012345" f="0.1" n="-2147483648" b="-1" t=" a  b " x="Yg==" />
<row d="1234567890.12345" f="16777217" n="0" b="0" t="1" x="" />
<row d="0.1234567890123456" f="3.4028236e38" n="007" b="1" t="x" x="" />)"},
    {"OddNumbers", R"(<row d="-0" f="-0" n="-0" b="" t="" x="" /><row d="" f="" n="" b="" t="" x=""/>
<row d="1e400" f="1e40" n="2147483648" b="maybe" t="" x="!" />
<row d="1,5" f="1,5" n="1,5" b="True" t="1,5" x="1,5" /><row d="." f="." n="." b="." t="." x="." />
<row d="1." f=".5" n="+5" b="+1" t="" x="" /><row d="--1" f="1-" n="- 1" b=" 1" t="" x="" />
<row d=" 1.5 " f=" 2 " n=" 3 " b=" true" t=" " x=" " /><row d="nan" f="inf" n="1e2" b="1" t="" x="" />)"},
    {"References",
     R"(<row d="&#49;.5" f="2" n="&#x33;" b="true" t="&lt;a&gt; &amp;&quot;&apos;&#233;&#x4E2D;&#9;" x="" />)"},
    {"BeyondAscii",
     "<row d=\"1\" f=\"1\" n=\"1\" b=\"true\" t=\"\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x94\xA9\" x=\"\" />"},
    {"OtherQuotes", R"(<row d='1' f="2" n='3' b="true" t='a"b' x="" />)"},
    {"OtherNames", R"(<row a="1" b="2" c="3" d="true" e="t" g="" />)"},
    {"OtherSpace",
     "<row\td=\"1\"\n f = \"2\"  n=\"3\" b=\"true\" t=\"a\tb\r\nc\nd\" x=\"\"/>\r\n<row  d=\"1\" ></row>"},
    {"TooFew", R"(<row d="1" f="2" /><row /><row></row><row d="1" f="2" n="3" b="true" t="t" x="" />)"},
    {"TooMany",
     R"(<row d="1" f="2" n="3" b="true" t="t" x="" y="1" z="2" /><row d="2" f="2" n="3" b="true" t="u" x="" />)"},
    {"Nothing", ""},
    {"Comment", R"(<!-- none --><row d="1" />)", false},
    {"Content", R"(<row d="1"><sub /></row>)", false},
    {"OtherElement", R"(<line d="1" />)", false},
    {"UnknownReference", R"(<row d="1" f="1" n="1" b="1" t="&nbsp;" x="" />)", false},
    {"Malformed", R"(<row d="1" f=2 />)", false},
    {"NoBlank", R"(<row d="1"f="2" />)", false},
    {"LessInAValue", R"(<row d="1" f="1" n="1" b="1" t="a<b" x="" />)", false},
    {"ControlCharacter", "<row d=\"1\" f=\"1\" n=\"1\" b=\"1\" t=\"a\x01\" x=\"\" />", false},
    {"NotUtf8", "<row d=\"1\" f=\"1\" n=\"1\" b=\"1\" t=\"a\xE9z\" x=\"\" />", false},
};

void PrintTo(const ScannedText& text, std::ostream* stream) {
    *stream << text.m_what;
}

TEST(RowScanner, NumbersOfManyDigits_AreThoseOfTheDocument) {
    Chance chance(15);
    const auto digits = [&](unsigned most) {
        std::string text;
        for (unsigned left = chance.Below(most) + 1; left > 0; --left) {
            text += static_cast<char>('0' + chance.Below(10));
        }
        return text;
    };
    std::string rows;
    for (int i = 0; i < 4000; ++i) {
        std::string number = chance.Below(2) == 0 ? "" : "-";
        number += chance.Below(20) == 0 ? "" : digits(20);
        number += chance.Below(4) == 0 ? "" : "." + (chance.Below(20) == 0 ? "" : digits(20));
        constexpr const char* Exponents[] = {"e", "E", "e-", "E+", "E-"};
        number += chance.Below(2) == 0 ? "" : chance.Of(Exponents) + (chance.Below(20) == 0 ? "" : digits(3));
        rows += "<row d=\"" + number + "\" f=\"0\" n=\"" + (chance.Below(2) == 0 ? "-" : "") + digits(11) +
                "\" b=\"0\" t=\"\" x=\"\" />\n";
    }
    const std::optional<std::string> scanned = ReadByScanner(rows);
    ASSERT_TRUE(scanned);
    EXPECT_EQ(scanned, ReadByDocument(rows));
}

class ScannedRowsOf : public testing::TestWithParam<ScannedText> {};

TEST_P(ScannedRowsOf, Text_AreThoseOfTheDocument) {
    const ScannedText& text = GetParam();
    const std::optional<std::string> scanned = ReadByScanner(text.m_rows);
    EXPECT_EQ(scanned.has_value(), text.m_isKnown);
    if (scanned) {
        EXPECT_EQ(scanned, ReadByDocument(text.m_rows));
    }
}

TEST_P(ScannedRowsOf, TextInPieces_AreTheSame) {
    const std::string rows = GetParam().m_rows;
    if (!GetParam().m_isKnown) {
        GTEST_SKIP() << "the scanner leaves it to the document";
    }
    for (std::size_t pieces = 2; pieces <= std::max<std::size_t>(rows.size(), 2); ++pieces) {
        ASSERT_EQ(ReadByScanner(rows, pieces), ReadByScanner(rows)) << pieces;
    }
}

// Whatever byte is changed, the scanner either reads what the document gives, or leaves it to the document.
TEST_P(ScannedRowsOf, TextWithOneByteChanged_AreThoseOfTheDocument) {
    const std::string rows = GetParam().m_rows;
    constexpr std::string_view Bytes =
        "\"'<>&; /=#x0.-\n\xE9\x01"
        "a";
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (const char byte : Bytes) {
            std::string changed = rows;
            changed[i] = byte;
            if (const std::optional<std::string> scanned = ReadByScanner(changed)) {
                ASSERT_EQ(scanned, ReadByDocument(changed)) << changed;
            }
        }
        std::string shorter = rows;
        shorter.erase(i, 1);
        if (const std::optional<std::string> scanned = ReadByScanner(shorter)) {
            ASSERT_EQ(scanned, ReadByDocument(shorter)) << shorter;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Texts, ScannedRowsOf, testing::ValuesIn(Texts),
                         [](const auto& text) { return std::string(text.param.m_what); });

TEST(RowScanner, Misfits_AreCounted) {
    DbTableDescr descr(nullptr);
    descr.CreateField("a", false, DbFieldDescr::Long);
    descr.CreateField("b", false, DbFieldDescr::Long);
    ColumnStore store;
    RowScanner scanner(descr, store);
    RowScanner::Stop stop = RowScanner::Stop::Unknown;
    scanner.Read(R"(<row a="1" b="2" /><row a="1" /><row a="1" b="2" c="3" /></table>)", stop);
    EXPECT_EQ(stop, RowScanner::Stop::NoRow);
    EXPECT_EQ(scanner.Rows(), 3U);
    EXPECT_EQ(scanner.Misfits(), 2U);
    EXPECT_EQ(scanner.FirstMisfit(), 2U);
}

TEST(RowScanner, FieldWithoutANameOfXml_LeavesItsRowsToTheDocument) {
    for (const char* const name : {"1st", "a=b", "a&b", ""}) {
        DbTableDescr descr(nullptr);
        descr.CreateField(name, false, DbFieldDescr::Long);
        ColumnStore store;
        RowScanner scanner(descr, store);
        RowScanner::Stop stop = RowScanner::Stop::NoRow;
        const std::string row = "<row " + std::string(name) + "=\"5\" />";
        EXPECT_EQ(scanner.Read(row, stop), 0U) << name;
        EXPECT_EQ(stop, RowScanner::Stop::Unknown) << name;
    }
}

TEST(RowScanner, RowsOfSeveralBlocks_AreAllThere) {
    DbTableDescr descr(nullptr);
    descr.CreateField("n", false, DbFieldDescr::Long);
    descr.CreateField("t", false, DbFieldDescr::Text);
    constexpr LONG Rows = 2 * LONG{ColumnBlock::MostSlots} + 7;
    std::string text;
    for (LONG i = 0; i < Rows; ++i) {
        text += "<row n=\"" + std::to_string(i) + "\" t=\"t" + std::to_string(i) + "\" />\n";
    }
    ColumnStore store;
    RowScanner scanner(descr, store);
    RowScanner::Stop stop = RowScanner::Stop::Unknown;
    EXPECT_EQ(scanner.Read(text, stop), text.size() - 1);
    ASSERT_EQ(store.Size(), static_cast<std::size_t>(Rows));
    for (LONG i = 0; i < Rows; ++i) {
        const auto position = static_cast<std::size_t>(i);
        ASSERT_EQ(store.CellAt(position, 0).AsLong(), i);
        ASSERT_EQ(store.CellAt(position, 1).AsText(), "t" + std::to_string(i));
        ASSERT_EQ(store.MadeRowAt(position), nullptr);
    }
}

}  // namespace
}  // namespace quillet::test
