// Rows written and read back through a driver that can write.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "Quillet/IQuillet.h"
#include "support/TemporaryFolder.h"

namespace quillet::test {
namespace {

class RowWritingTest : public testing::Test {
protected:
    void SetUp() override {
        m_before = std::exchange(DBACCESS::m_connectFormat, "Database=%s;Driver={SQLite3}");
        m_access =
            std::make_unique<DBACCESS>(CString(Utf8(m_folder / "rows.db")).GetString(), DBACCESS::NoDialog);
        if (!m_access->IsOpen()) {
            GTEST_SKIP() << m_access->GetOpenError();
        }
    }
    void TearDown() override { DBACCESS::m_connectFormat = m_before; }

    const TemporaryFolder m_folder;
    std::unique_ptr<DBACCESS> m_access;

private:
    CString m_before;
};

DBACCESS_RECORD RowOfBytes(const std::string& bytes) {
    DBACCESS_RECORD row;
    row["bytes"] = CByteArray(reinterpret_cast<const BYTE*>(bytes.data()), bytes.size());
    return row;
}

TEST_F(RowWritingTest, BytesOfNoLength_AreNoNull) {
    DBACCESS_VECTOR rows;
    for (const char* bytes : {"", "ab", ""}) {
        rows.push_back(RowOfBytes(bytes));
    }
    ASSERT_TRUE(m_access->SetTableData("t", rows));
    DBACCESS_VECTOR read;
    ASSERT_TRUE(m_access->GetTableData("t", read));
    ASSERT_EQ(read.size(), rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(read[i][0].m_type, DBACCESS_COLUMN::Binary) << i;
        EXPECT_EQ(read[i].GetBinary("bytes"), rows[i].GetBinary("bytes")) << i;
    }
}

TEST_F(RowWritingTest, GetStatedRowsNumber_IsThatOfTheRowsWritten) {
    EXPECT_EQ(m_access->GetStatedRowsNumber("t"), -1) << "there is no such table";
    ASSERT_TRUE(m_access->SetTableData("t", DBACCESS_VECTOR(3, RowOfBytes("x"))));
    EXPECT_EQ(m_access->GetStatedRowsNumber("t"), 3);
    ASSERT_TRUE(m_access->SetTableData("t", DBACCESS_VECTOR()));
    EXPECT_EQ(m_access->GetStatedRowsNumber("t"), 0);
    m_access->Close();
    EXPECT_EQ(m_access->GetStatedRowsNumber("t"), -1);
}

}  // namespace
}  // namespace quillet::test
