#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "support/ToolTest.h"

namespace {

class Export : public quillet::test::ToolTest {};

TEST_F(Export, Export_ToFiles_WritesWhatShowPrints) {
    const std::string file = CopyExample("materials.xml");
    EXPECT_EQ(Output({"export", file, "timber", Path("out.csv")}), "");
    EXPECT_EQ(Read("out.csv"), Output({"show", file, "timber", "--format", "csv"}));
    EXPECT_EQ(Output({"export", file, "timber", Path("out.JSON")}), "");
    EXPECT_EQ(Read("out.JSON"), Output({"show", file, "timber", "--format", "json"}));
}

TEST_F(Export, Export_ToStandardOutput_IsCsvUnlessJsonIsAsked) {
    const std::string file = CopyExample("materials.xml");
    const std::string csv = Output({"show", file, "Bolts", "--format", "csv"});
    EXPECT_EQ(Output({"export", file, "Bolts", "-"}), csv);
    EXPECT_EQ(Output({"export", file, "Bolts", "-", "--format", "csv"}), csv);
    EXPECT_EQ(Output({"export", file, "Bolts", "-", "--format", "text"}), csv);
    EXPECT_EQ(nlohmann::json::parse(Output({"export", file, "Bolts", "-", "--format", "json"})).size(), 13U);
}

TEST_F(Export, Export_OverAnExistingFile_NeedsReplace) {
    const std::string file = CopyExample("materials.xml");
    const std::string old(100000, 'x');
    Write("out.csv", old);
    EXPECT_EQ(Failure({"export", file, "Header", Path("out.csv")}),
              Path("out.csv") + ": already there; --replace overwrites it");
    EXPECT_EQ(Read("out.csv"), old);
    Output({"export", file, "Header", Path("out.csv"), "--replace"});
    EXPECT_EQ(Read("out.csv"),
              "category,symbol,title,catalog_type,units_type,version\r\n"
              "Materials,EN-MAT,Structural materials and bolts,Materials,Metric,1.0\r\n");
}

TEST_F(Export, Export_UnknownEnding_IsBadUsageAndWritesNothing) {
    const std::string file = CopyExample("materials.xml");
    const std::string before = Read("materials.xml");
    EXPECT_EQ(
        UsageError({"export", file, "Steel", Path("out.txt")}),
        Path("out.txt") + ": the name of an export must end in .csv or .json, or be - for standard output");
    EXPECT_FALSE(Exists("out.txt"));
    UsageError({"export", file, "Steel", file, "--format", "csv"});
    EXPECT_EQ(Read("materials.xml"), before);
}

TEST_F(Export, Export_ThatFails_LeavesTheTargetAsItWas) {
    const std::string file = CopyExample("materials.xml");
    const std::string target = Write("out.csv", "mine");
    Failure({"export", file, "None such", target, "--replace"});
    EXPECT_EQ(Read("out.csv"), "mine");
    const std::string nowhere = Path("none/out.csv");
    EXPECT_EQ(Failure({"export", file, "Steel", nowhere}), nowhere + ": " + WhyNoTarget(nowhere));
}

TEST_F(Export, Export_ThenImport_GivesTheSameTable) {
    const std::vector<std::pair<const char*, const char*>> tables = {{"materials.xml", "Timber"},
                                                                     {"materials.xml", "Bolts"},
                                                                     {"european-steel.xml", "IPE"},
                                                                     {"european-steel.xml", "SHS"}};
    for (const auto& [name, table] : tables) {
        const std::string file = CopyExample(name);
        Output({"export", file, table, Path("round.csv"), "--replace"});
        Output({"import", file, "Copy", Path("round.csv"), "--replace", "--names", "keep"});
        EXPECT_EQ(Output({"export", file, "Copy", "-"}), Read("round.csv")) << table;
    }
}

TEST_F(Export, Export_OfEveryType_ComesBackWithTypes) {
    const std::string file = CopyExample("field-types.xml");
    const std::string csv = Path("round.csv");
    Output({"export", file, "Every type", csv});
    Output({"import", file, "Copy", csv, "--type", "float=float", "--type", "binary=binary", "--type",
            "typeless=empty", "--type", "double=double", "--type", "load (kN)=double", "--names", "keep"});
    EXPECT_EQ(Output({"export", file, "Copy", "-"}), Read("round.csv"));
    EXPECT_EQ(Output({"check", file}), file + ": ok\n");
}

TEST_F(Export, Export_OverTheCatalogItself_IsRefused) {
    const std::string file = CopyExample("materials.xml");
    std::error_code error;
    std::filesystem::create_hard_link(file, Path("link.csv"), error);
    if (error) {
        GTEST_SKIP() << "no links here: " << error.message();
    }
    const std::string before = Read("materials.xml");
    EXPECT_EQ(Failure({"export", file, "Steel", Path("link.csv"), "--replace"}),
              Path("link.csv") + ": the catalog itself, which is not overwritten");
    EXPECT_EQ(Read("materials.xml"), before);
}

}  // namespace
