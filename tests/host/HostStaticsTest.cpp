#include <gtest/gtest.h>

#include "support/CatalogHelpers.h"

namespace {

using namespace quillet::test;

// A host reads and writes the library's statics: both must mean the same variable.
class HostStaticsTest : public testing::Test {
protected:
    StaticsGuard m_statics;
    TemporaryFolder m_folder;
};

// Captured before any test runs.
const bool ForceXmlAtStart = DbSource::ForceXML;
const std::int32_t BufferSizeAtStart = DbSource::MaxBufferSize;

TEST_F(HostStaticsTest, Defaults_AreForceXmlAndSixteenKilobytes) {
    EXPECT_TRUE(ForceXmlAtStart);
    EXPECT_EQ(BufferSizeAtStart, 16384);
}

TEST_F(HostStaticsTest, ForceXml_WrittenByTheHost_DecidesWhatAnMdbNameIs) {
    WriteBytes(m_folder / "steel.mdb", "");
    WriteBytes(m_folder / "steel.xml", "");
    const CString path(Utf8(m_folder / "steel.mdb"));
    for (const bool force : {true, false, true}) {
        DbSource::ForceXML = force;
        EXPECT_EQ(DbSource(nullptr, path).IsXmlBased(), force);
        EXPECT_EQ(DbSource(nullptr, path).IsMdbBased(), !force);
        EXPECT_EQ(DbSource::ForceXML, force);
    }
}

TEST_F(HostStaticsTest, MaxBufferSize_WrittenByTheHost_IsHowMuchIsReadAtOnce) {
    WriteBytes(m_folder / "small.xml", SmallCatalog());
    for (const std::int32_t size : {2, 64, 1 << 16}) {
        DbSource::MaxBufferSize = size;
        const auto database = Open(m_folder / "small.xml", Reading::Sequential);
        EXPECT_EQ(database->GetTableData("Alpha")->size(), 2U) << size;
        EXPECT_EQ(DbSource::MaxBufferSize, size);
    }
}

TEST_F(HostStaticsTest, OpenDbCount_WrittenByTheHost_IsCountedOn) {
    const std::int32_t before = DbDatabase::m_openDbCount;
    DbDatabase::m_openDbCount = 100;
    {
        const DbDatabase database;
        EXPECT_EQ(DbDatabase::m_openDbCount, 101);
    }
    EXPECT_EQ(DbDatabase::m_openDbCount, 100);
    DbDatabase::m_openDbCount = before;
}

TEST_F(HostStaticsTest, QueriesCount_WrittenByTheHost_IsCountedOn) {
    DbDatabase database;
    database.CreateTable("T", DbTableInfo::Table);
    DbDatabase::m_queriesCount = 7;
    CString name;
    EXPECT_TRUE(database.Query("T", name));
    EXPECT_EQ(DbDatabase::m_queriesCount, 8);
}

TEST_F(HostStaticsTest, ChangeCounter_WrittenByTheHost_GivesTheNextStamp) {
    DbItem item;
    DbItem::m_changeCounter += 1000;
    const std::int32_t before = DbItem::m_changeCounter;
    item.SetChanged();
    EXPECT_EQ(DbItem::m_changeCounter, before + 1);
    EXPECT_EQ(item.GetChangeId(), before + 1);
}

}  // namespace
