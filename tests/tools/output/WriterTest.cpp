#include "output/Writer.h"

#include <gtest/gtest.h>

namespace quillet::tool {
namespace {

class StringSink final : public Sink {
public:
    const std::string& Text() const { return m_text; }

private:
    void Send(std::string_view bytes) override { m_text += bytes; }
    void Finish() override {}

    std::string m_text;
};

std::string Written(Format format, const Listing& listing) {
    StringSink sink;
    MakeWriter(format)->Write(listing, sink);
    sink.Close();
    return sink.Text();
}

TEST(Writer, Text_WideCharacters_CountAsCodePoints) {
    RecordListing listing({{"Länge"}, {"n", true}, {"t"}});
    listing.Add({Value::OfText("ä"), Value::OfCount(5), Value::OfText("x")});
    listing.Add({Value::OfText("abcdefg"), Value::OfCount(12345), {}});
    EXPECT_EQ(Written(Format::Text, listing),
              "Länge        n  t\n"
              "-------  -----  -\n"
              "ä            5  x\n"
              "abcdefg  12345\n");
}

TEST(Writer, Text_ControlCharacters_CountAsTheyAreShown) {
    RecordListing listing({{"a\n"}, {"b"}});
    listing.Add({Value::OfText("\x1B"), Value::OfText("x")});
    EXPECT_EQ(Written(Format::Text, listing),
              "a\\n     b\n"
              "------  -\n"
              "\\u{1b}  x\n");
}

TEST(Writer, Csv_SpecialCharacters_AreQuoted) {
    RecordListing listing({{"a,b"}, {"c\"d"}});
    listing.Add({Value::OfText("line\nbreak"), Value::OfText(" blank ")});
    EXPECT_EQ(Written(Format::Csv, listing), "\"a,b\",\"c\"\"d\"\r\n\"line\nbreak\", blank \r\n");
}

TEST(Writer, Csv_OneEmptyColumn_IsNoEmptyLine) {
    RecordListing listing({{"a"}});
    listing.Add({Value()});
    EXPECT_EQ(Written(Format::Csv, listing), "a\r\n\"\"\r\n");
}

TEST(Writer, Json_EveryKind_KeepsItsType) {
    RecordListing listing({{"a\"b"}, {"n"}, {"ok"}, {"no"}});
    listing.Add({Value::OfText("x\ny\x01"), Value::OfCount(7), Value::OfBoolean(true), Value()});
    listing.Add({Value::OfText(""), Value::OfCount(8), Value::OfBoolean(false), Value()});
    EXPECT_EQ(Written(Format::Json, listing),
              "[\n"
              "  {\"a\\\"b\": \"x\\ny\\u0001\", \"n\": 7, \"ok\": true, \"no\": null},\n"
              "  {\"a\\\"b\": \"\", \"n\": 8, \"ok\": false, \"no\": null}\n"
              "]\n");
}

TEST(Writer, Json_NoRows_IsAnEmptyArray) {
    EXPECT_EQ(Written(Format::Json, RecordListing({{"a"}})), "[]\n");
}

TEST(Writer, Progress_EveryForm_EndsAtTheNumberOfRows) {
    RecordListing listing({{"a"}});
    for (std::size_t i = 0; i < 10; ++i) {
        listing.Add({Value::OfCount(i)});
    }
    for (const Format format : {Format::Text, Format::Csv, Format::Json}) {
        StringSink sink;
        std::size_t last = 0;
        MakeWriter(format)->Write(listing, sink, [&](std::size_t done) {
            EXPECT_GE(done, last);
            last = done;
        });
        EXPECT_EQ(last, 10U);
    }
}

}  // namespace
}  // namespace quillet::tool
