#include "Quillet/Db_Serializer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "support/AccessHelpers.h"
#include "support/CatalogHelpers.h"
#include "support/RecordHelpers.h"

namespace {

using namespace quillet::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

Strings NamesOf(const DBACCESS_ALL& all) {
    Strings names;
    for (const auto& [name, rows] : all) {
        names.push_back(name.ToUtf8());
    }
    return names;
}

class DbSerializerTest : public testing::Test {
protected:
    CString Path(const std::string& name) const { return CString(Utf8(m_folder / name)); }
    CString File(const std::string& name, const std::string& content) const {
        WriteBytes(m_folder / name, content);
        return Path(name);
    }

    ShownMessages m_messages;
    TemporaryFolder m_folder;
};

// ---- documents

TEST_F(DbSerializerTest, LoadXml_GivesEveryTableWithItsRows) {
    DBACCESS_ALL all;
    all.resize(7);
    EXPECT_TRUE(DbSerializer::Load(File("small.xml", SmallCatalog()), all));
    EXPECT_THAT(NamesOf(all), ElementsAre("Header", "Properties", "Alpha", "Beta", "Gamma"));
    EXPECT_EQ(all[2].second.size(), 2U);
    EXPECT_EQ(all[2].second[1].GetString("name"), CString("two"));
    EXPECT_EQ(all[2].second[1].GetLong("count"), 2);
    EXPECT_EQ(all[3].second[0].GetDouble("size"), 2.5);
    EXPECT_TRUE(all[4].second.empty());
    EXPECT_EQ(ReadBytes(m_folder / "small.xml"), SmallCatalog()) << "reading changes nothing";
}

TEST_F(DbSerializerTest, EndingInAnyCase_IsThatOfADocument) {
    for (const char* name : {"a.XML", "b.Xml", "cxml"}) {
        DBACCESS_ALL all;
        EXPECT_TRUE(DbSerializer::Load(File(name, SmallCatalog()), all)) << name;
        EXPECT_THAT(all, SizeIs(5)) << name;
    }
}

TEST_F(DbSerializerTest, LoadXml_WhereNoFileIs_ShowsAMessageAndIsFalse) {
    DBACCESS_ALL all;
    EXPECT_FALSE(DbSerializer::Load(Path("none.xml"), all));
    EXPECT_THAT(m_messages.m_texts, ElementsAre("Error while trying to read '" + Path("none.xml").ToUtf8() +
                                                "' file. Check if file exists on given path."));
}

TEST_F(DbSerializerTest, LoadXml_OfADirectory_ShowsAMessageAndIsFalse) {
    std::filesystem::create_directory(m_folder / "folder.xml");
    DBACCESS_ALL all;
    EXPECT_FALSE(DbSerializer::Load(Path("folder.xml"), all));
    EXPECT_THAT(m_messages.m_texts, SizeIs(1));
}

TEST_F(DbSerializerTest, LoadXml_OfSomethingElse_GivesAnEmptyCatalog) {
    DBACCESS_ALL all;
    EXPECT_TRUE(DbSerializer::Load(File("text.xml", "no document"), all));
    EXPECT_THAT(NamesOf(all), ElementsAre("Header", "Properties"));
    EXPECT_EQ(ReadBytes(m_folder / "text.xml"), "no document");
}

TEST_F(DbSerializerTest, SaveXml_LeavesAFileThatLoads) {
    DBACCESS_ALL all;
    all.push_back(TextTable("T", "a", {"zażółć", ""}));
    all.emplace_back("N", DBACCESS_VECTOR());
    all.back().second.push_back(Record({Column("long", -7L), Column("double", 2.5), Column("yes", true)}));
    EXPECT_TRUE(DbSerializer::Save(Path("new.xml"), all));
    DBACCESS_ALL loaded;
    EXPECT_TRUE(DbSerializer::Load(Path("new.xml"), loaded));
    EXPECT_THAT(NamesOf(loaded), ElementsAre("Header", "Properties", "T", "N"));
    ASSERT_THAT(loaded[2].second, SizeIs(2));
    EXPECT_EQ(loaded[2].second[0].GetString("a"), CString("zażółć"));
    EXPECT_EQ(loaded[3].second[0].GetLong("long"), -7);
    EXPECT_EQ(loaded[3].second[0].GetDouble("double"), 2.5);
    EXPECT_EQ(loaded[3].second[0].GetBool("yes"), 1);
    EXPECT_THAT(m_messages.m_texts, IsEmpty());
}

TEST_F(DbSerializerTest, SaveXml_Header_KeepsTheFieldsOfANewCatalogAndTakesValuesByPosition) {
    DBACCESS_ALL all;
    all.emplace_back("header", DBACCESS_VECTOR());
    all.back().second.push_back(Record({Column("first", "sections"), Column("second", "S")}));
    EXPECT_TRUE(DbSerializer::Save(Path("new.xml"), all));
    DBACCESS_ALL loaded;
    EXPECT_TRUE(DbSerializer::Load(Path("new.xml"), loaded));
    EXPECT_THAT(NamesOf(loaded), ElementsAre("Header", "Properties"));
    EXPECT_EQ(loaded[0].second[0].size(), 6U);
    EXPECT_EQ(loaded[0].second[0].GetString("category"), CString("sections"));
    EXPECT_EQ(loaded[0].second[0].GetString("symbol"), CString("S"));
}

TEST_F(DbSerializerTest, SaveXml_ReplacesTheWholeDocument) {
    DBACCESS_ALL all;
    all.push_back(TextTable("T", "a", {"x"}));
    EXPECT_TRUE(DbSerializer::Save(File("small.xml", SmallCatalog()), all));
    DBACCESS_ALL loaded;
    EXPECT_TRUE(DbSerializer::Load(Path("small.xml"), loaded));
    EXPECT_THAT(NamesOf(loaded), ElementsAre("Header", "Properties", "T"));
}

TEST_F(DbSerializerTest, LoadXml_IntoAListOfTablesWithoutRows_KeepsNothingOfThem) {
    DBACCESS_ALL all;
    all.resize(5);
    for (auto& [name, rows] : all) {
        rows.m_noRows = true;
        rows.m_remarks.emplace_back("of another file");
    }
    EXPECT_TRUE(DbSerializer::Load(File("small.xml", SmallCatalog()), all));
    EXPECT_FALSE(all[3].second.m_noRows);
    EXPECT_THAT(all[3].second.m_remarks, IsEmpty());
    EXPECT_TRUE(DbSerializer::Save(Path("copy.xml"), all));
    DBACCESS_ALL copy;
    EXPECT_TRUE(DbSerializer::Load(Path("copy.xml"), copy));
    EXPECT_THAT(copy[3].second, SizeIs(1)) << "its only row is no description of fields";
}

TEST_F(DbSerializerTest, SaveXml_WhereNoFileCanBe_IsStillTrue) {
    EXPECT_TRUE(DbSerializer::Save(Path("no folder/new.xml"), {}));
    EXPECT_THAT(m_folder.Names(), IsEmpty());
}

// ---- Access files

TEST_F(DbSerializerTest, LoadAccess_FileThatCantBeOpened_HasNoTablesAndIsTrue) {
    std::filesystem::create_directory(m_folder / "folder.mdb");
    File("text.mdb", "this is no Access file");
    File("zeros.mdb", std::string(8192, '\0'));
    for (const char* name : {"none.mdb", "folder.mdb", "text.mdb", "zeros.mdb", "ab", ""}) {
        DBACCESS_ALL all;
        all.resize(3);
        EXPECT_TRUE(DbSerializer::Load(CString(name).IsEmpty() ? CString() : Path(name), all)) << name;
        EXPECT_THAT(all, IsEmpty()) << name;
    }
    EXPECT_THAT(m_messages.m_texts, IsEmpty());
}

TEST_F(DbSerializerTest, SaveAccess_FileThatDoesNotExist_OpensAndWritesNothingAndIsTrue) {
    DBACCESS_ALL all;
    all.push_back(TextTable("T", "a", {"x"}));
    all.push_back(TextTable("U", "a", {"x"}));
    EXPECT_TRUE(DbSerializer::Save(Path("new.mdb"), all));
    EXPECT_THAT(m_folder.Names(), IsEmpty());
    EXPECT_THAT(m_messages.m_texts, SizeIs(2)) << "one message for each table";
    EXPECT_TRUE(DbSerializer::Save(Path("new.mdb"), {}));
    EXPECT_THAT(m_folder.Names(), IsEmpty());
}

TEST_F(DbSerializerTest, SaveAccess_OntoAFileThatIsNone_LeavesIt) {
    DBACCESS_ALL all;
    all.push_back(TextTable("T", "a", {"x"}));
    EXPECT_TRUE(DbSerializer::Save(File("text.mdb", "no Access file"), all));
    EXPECT_EQ(ReadBytes(m_folder / "text.mdb"), "no Access file");
    EXPECT_THAT(m_messages.m_texts, SizeIs(1));
}

using DbSerializerWriting = WritingTest;

TEST_F(DbSerializerWriting, LoadAccess_WithoutTables_IsEmptyAndTrue) {
    DBACCESS_ALL all;
    all.resize(2);
    EXPECT_TRUE(DbSerializer::Load(File(), all));
    EXPECT_THAT(all, IsEmpty());
}

TEST_F(DbSerializerWriting, SaveAccess_ThenLoad_GivesTheTablesBack) {
    DBACCESS_ALL all;
    all.push_back(TextTable("A table", "a \"b\" c", {"zażółć", "x"}));
    all.emplace_back("N", DBACCESS_VECTOR());
    all.back().second.push_back(Record({Column("long", -70000L), Column("double", 2.5)}));
    EXPECT_TRUE(DbSerializer::Save(File(), all));
    EXPECT_THAT(m_messages.m_texts, IsEmpty());
    DBACCESS_ALL loaded;
    EXPECT_TRUE(DbSerializer::Load(File(), loaded));
    EXPECT_THAT(NamesOf(loaded), ElementsAre("A table", "N"));
    ASSERT_THAT(loaded[0].second, SizeIs(2));
    EXPECT_EQ(loaded[0].second[0].GetString("a \"b\" c"), CString("zażółć"));
    EXPECT_FALSE(loaded[0].second.m_noRows);
    EXPECT_EQ(loaded[1].second[0].GetDouble("double"), 2.5);
    // Saved again, the rows are replaced.
    all[0].second.pop_back();
    EXPECT_TRUE(DbSerializer::Save(File(), all));
    EXPECT_TRUE(DbSerializer::Load(File(), loaded));
    EXPECT_THAT(loaded[0].second, SizeIs(1));
}

TEST_F(DbSerializerWriting, SaveAccess_ATableThatFails_IsShownAndTheOthersAreWritten) {
    DBACCESS_ALL all;
    all.push_back(TextTable("a]b", "a", {"x"}));
    all.push_back(TextTable("T", "a", {"x"}));
    EXPECT_TRUE(DbSerializer::Save(File(), all));
    EXPECT_THAT(m_messages.m_texts, SizeIs(1));
    DBACCESS_ALL loaded;
    EXPECT_TRUE(DbSerializer::Load(File(), loaded));
    EXPECT_THAT(NamesOf(loaded), ElementsAre("T"));
}

// ---- one table of a list

TEST(DbSerializer, CopyTableFromDatabase_TakesTheFirstOfTheNameWithItsFlag) {
    DBACCESS_ALL all;
    all.push_back(TableWithoutRows("T", "a"));
    all.push_back(TextTable("T", "a", {"x", "y"}));
    DBACCESS_VECTOR rows;
    EXPECT_TRUE(DbSerializer::CopyTableFromDatabase(all, "T", rows));
    EXPECT_THAT(rows, SizeIs(1));
    EXPECT_TRUE(rows.m_noRows);
}

TEST(DbSerializer, CopyTableFromDatabase_UnknownName_ClearsTheRecords) {
    DBACCESS_ALL all;
    all.push_back(TextTable("T", "a", {"x"}));
    DBACCESS_VECTOR rows = TextTable("", "a", {"old"}).second;
    EXPECT_FALSE(DbSerializer::CopyTableFromDatabase(all, "t", rows)) << "case counts";
    EXPECT_THAT(rows, IsEmpty());
}

TEST(DbSerializer, CopyTableToDatabase_AppendsATable_AndReplacesItInItsPlace) {
    DBACCESS_ALL all;
    all.push_back(TextTable("A", "a", {"x"}));
    EXPECT_TRUE(DbSerializer::CopyTableToDatabase(all, "T", TextTable("", "a", {"one"}).second));
    EXPECT_TRUE(DbSerializer::CopyTableToDatabase(all, "t", TextTable("", "a", {"other"}).second))
        << "case counts";
    EXPECT_TRUE(DbSerializer::CopyTableToDatabase(all, "T", TextTable("", "a", {"two", "three"}).second));
    EXPECT_THAT(NamesOf(all), ElementsAre("A", "T", "t"));
    EXPECT_THAT(all[1].second, SizeIs(2));
    EXPECT_EQ(all[1].second[0][0].m_text, CString("two"));
}

}  // namespace
