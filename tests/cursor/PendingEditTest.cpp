#include "Quillet/cursor/PendingEdit.h"

#include <gtest/gtest.h>

#include "Quillet/Db_TableData.h"
#include "Quillet/Db_TableDescr.h"
#include "support/TestHelpers.h"

namespace {

using quillet::FieldBindings;
using quillet::PendingEdit;
using quillet::test::Long;

// An edit of a row with the cells 0 and 0.
class PendingEditTest : public testing::Test {
protected:
    PendingEditTest() {
        m_descr.CreateField("a", false, DbFieldDescr::Long);
        m_descr.CreateField("b", false, DbFieldDescr::Long);
        m_data.AddRow();
        m_data.Sync();
    }

    bool Store() {
        return m_edit.Store(m_bindings, [this] { return m_data.GetRow(0); });
    }
    DbFieldValue& Cell(uint64 field) { return m_data.GetRow(0)->GetField(field); }

    DbTableDescr m_descr{nullptr};
    DbTableData m_data{nullptr, &m_descr};
    FieldBindings m_bindings;
    PendingEdit m_edit;
};

TEST_F(PendingEditTest, Begin_DropsWhatWasPending) {
    EXPECT_FALSE(m_edit.IsPending());
    m_edit.Begin(PendingEdit::Kind::NewRow);
    EXPECT_TRUE(m_edit.IsPending());
    EXPECT_TRUE(m_edit.IsNewRow());
    m_edit.Set(0, Long(5));
    m_edit.Begin(PendingEdit::Kind::Change);
    EXPECT_TRUE(m_edit.IsPending());
    EXPECT_FALSE(m_edit.IsNewRow());
    EXPECT_TRUE(Store());
    EXPECT_EQ(Cell(0).GetValue(), Long(0));
    m_edit.Drop();
    EXPECT_FALSE(m_edit.IsPending());
}

TEST_F(PendingEditTest, Store_TheLatestValueOfEachField_CountsAsChanged) {
    m_edit.Set(1, Long(5));
    m_edit.Set(1, Long(6));
    m_edit.Set(2, Long(7));
    EXPECT_TRUE(Store());
    EXPECT_EQ(Cell(0).GetValue(), Long(0));
    EXPECT_FALSE(Cell(0).IsChanged());
    EXPECT_EQ(Cell(1).GetValue(), Long(6));
    EXPECT_TRUE(Cell(1).IsChanged());
}

TEST_F(PendingEditTest, Store_ValuesThatWereSet_ReplaceThoseOfBoundVariables) {
    int variables[2] = {3, 4};
    m_bindings.Bind(&variables[0], 0, nullptr, FieldBindings::WriteVariable<int>);
    m_bindings.Bind(&variables[1], 1, nullptr, FieldBindings::WriteVariable<int>);
    m_edit.Set(1, Long(6));
    EXPECT_TRUE(Store());
    EXPECT_EQ(Cell(0).GetValue(), Long(3));
    EXPECT_EQ(Cell(1).GetValue(), Long(6));
}

TEST_F(PendingEditTest, Store_FunctionThatThrows_LeavesTheRow) {
    int variables[2] = {3, 4};
    m_bindings.Bind(&variables[0], 0, nullptr, FieldBindings::WriteVariable<int>);
    m_bindings.Bind(&variables[1], 1, nullptr, [](CComVariant&, const void*) { throw 1; });
    m_edit.Set(1, Long(6));
    EXPECT_THROW(Store(), int);
    EXPECT_EQ(Cell(0).GetValue(), Long(0));
    EXPECT_EQ(Cell(1).GetValue(), Long(0));
}

TEST_F(PendingEditTest, Store_WithoutARow_IsFalse) {
    m_data.DeleteRow(0);
    m_edit.Set(0, Long(5));
    EXPECT_FALSE(Store());
}

}  // namespace
