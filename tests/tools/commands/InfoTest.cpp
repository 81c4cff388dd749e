#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "support/ToolTest.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

class Info : public quillet::test::ToolTest {};

TEST_F(Info, Info_Catalog_TellsHeaderPropertiesAndTables) {
    const std::string file = CopyExample("materials.xml");
    EXPECT_EQ(Output({"info", file}), "File\n  path       " + file +
                                          R"(
  kind       XML
  read-only  false

Header
  category      Materials
  symbol        EN-MAT
  title         Structural materials and bolts
  catalog_type  Materials
  units_type    Metric
  version       1.0

Properties
  units        mm
  unit_long    mm
  unit_sect    mm
  unit_weight  kg
  material     Various

Tables
  name          kind   fields  rows
  ------------  -----  ------  ----
  Header        table       6     1
  Properties    table       5     1
  Steel         table      10    11
  Concrete      table      15    14
  Timber        table      13    10
  Bolts         table       7    13
  Bolt classes  table       4     7
)");
}

TEST_F(Info, Info_AsJson_IsAListOfRecords) {
    const json facts = json::parse(Output({"info", CopyExample("materials.xml"), "--format", "json"}));
    ASSERT_TRUE(facts.is_array());
    const auto find = [&](const char* section, const char* name) -> json {
        for (const json& fact : facts) {
            if (fact["section"] == section && fact["name"] == name) {
                return fact;
            }
        }
        return nullptr;
    };
    EXPECT_EQ(find("file", "read-only")["value"], false);
    EXPECT_EQ(find("header", "symbol")["value"], "EN-MAT");
    EXPECT_EQ(find("properties", "unit_weight")["value"], "kg");
    EXPECT_EQ(
        find("table", "Concrete"),
        json({{"section", "table"}, {"name", "Concrete"}, {"value", "table"}, {"fields", 15}, {"rows", 14}}));
    EXPECT_EQ(find("header", "symbol")["rows"], nullptr);
}

TEST_F(Info, Info_AsCsv_HasTheSameRecords) {
    const std::string csv = Output({"info", CopyExample("materials.xml"), "--format", "csv"});
    EXPECT_THAT(csv, testing::StartsWith("section,name,value,fields,rows\r\nfile,path,"));
    EXPECT_THAT(csv, HasSubstr("\r\nheader,title,Structural materials and bolts,,\r\n"));
    EXPECT_THAT(csv, HasSubstr("\r\ntable,Bolt classes,table,4,7\r\n"));
}

TEST_F(Info, Info_WriteProtectedFile_SaysReadOnly) {
    const std::string file = CopyExample("materials.xml");
    WriteProtect("materials.xml");
    const quillet::test::RunResult result = RunAsOrdinaryUser({"info", file});
    if (result.m_status == 126 || result.m_status == 127) {
        GTEST_SKIP() << "the program can't be run for another user here";
    }
    EXPECT_THAT(result.m_output, HasSubstr("read-only  true"));
}

TEST_F(Info, Fields_Table_TellsTypesKeysAndDefaults) {
    EXPECT_EQ(Output({"fields", CopyExample("materials.xml"), "bolts"}),
              "name       type     key    default\n"
              "---------  -------  -----  -------\n"
              "name       text     true\n"
              "d          double   false  0\n"
              "P          double   false  0\n"
              "As         double   false  0\n"
              "d0         double   false  0\n"
              "s          double   false  0\n"
              "preferred  boolean  false  false\n");
}

TEST_F(Info, Fields_EveryType_AsJsonKeepsTheTypesOfDefaults) {
    const json fields =
        json::parse(Output({"fields", CopyExample("field-types.xml"), "Every type", "--format", "json"}));
    EXPECT_EQ(fields[0], json({{"name", "name"}, {"type", "text"}, {"key", true}, {"default", ""}}));
    EXPECT_EQ(fields[1]["default"], false);
    EXPECT_EQ(fields[2], json({{"name", "integer"}, {"type", "long"}, {"key", false}, {"default", 0}}));
    EXPECT_EQ(fields[7],
              json({{"name", "typeless"}, {"type", "empty"}, {"key", false}, {"default", nullptr}}));
}

TEST_F(Info, Fields_UnknownTable_Fails) {
    const std::string file = CopyExample("materials.xml");
    EXPECT_EQ(Failure({"fields", file, "Stel"}), file + ": no table 'Stel': did you mean 'Steel'?");
}

}  // namespace
