#include "Quillet/cursor/FieldBindings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <limits>

#include "Quillet/cursor/PendingEdit.h"
#include "support/TestHelpers.h"

namespace {

using quillet::FieldBindings;
using quillet::test::BooleanBits;
using quillet::test::ByteArray;
using quillet::test::Long;
using quillet::test::NullVariant;
using quillet::test::TextOf;
using testing::ElementsAre;

template <typename Variable>
Variable Read(const CComVariant& value, Variable before) {
    FieldBindings::ReadVariable<Variable>(value, &before);
    return before;
}

template <typename Variable>
CComVariant Written(CComVariant value, const Variable& variable) {
    FieldBindings::WriteVariable<Variable>(value, &variable);
    return value;
}

template <typename Variable>
class NumberBindingsTest : public testing::Test {};

using Numbers = testing::Types<short, int, long, float, double>;
TYPED_TEST_SUITE(NumberBindingsTest, Numbers);

TYPED_TEST(NumberBindingsTest, Read_ConvertsFromAnyType) {
    const TypeParam before = 99;
    EXPECT_EQ(Read(Long(-7), before), -7);
    EXPECT_EQ(Read(CComVariant(12.0), before), 12);
    EXPECT_EQ(Read(CComVariant(" 12 "), before), 12);
    EXPECT_EQ(Read(CComVariant(true), before), -1);
}

TYPED_TEST(NumberBindingsTest, Read_NullAndEmpty_AreZero) {
    const TypeParam before = 99;
    EXPECT_EQ(Read(NullVariant(), before), 0);
    EXPECT_EQ(Read(CComVariant(), before), 0);
}

TYPED_TEST(NumberBindingsTest, Read_WhatIsNoNumber_LeavesTheVariable) {
    const TypeParam before = 99;
    EXPECT_EQ(Read(CComVariant("text"), before), 99);
    EXPECT_EQ(Read(CComVariant(""), before), 99);
    EXPECT_EQ(Read(ByteArray("1"), before), 99);
}

TYPED_TEST(NumberBindingsTest, Write_KeepsTheTypeOfTheValue) {
    const TypeParam number = 12;
    EXPECT_EQ(Written(Long(0), number), Long(12));
    EXPECT_EQ(Written(CComVariant(0.0), number), CComVariant(12.0));
    EXPECT_EQ(TextOf(Written(CComVariant(""), number)), "12");
    EXPECT_EQ(Written(CComVariant(false), number), CComVariant(true));
}

TYPED_TEST(NumberBindingsTest, Write_OverNullOrEmpty_StoresTheNumber) {
    const TypeParam number = 12;
    for (CComVariant value : {NullVariant(), CComVariant()}) {
        value = Written(value, number);
        EXPECT_EQ(value.ChangeType(VT_R8), S_OK);
        EXPECT_EQ(value, CComVariant(12.0));
    }
}

TYPED_TEST(NumberBindingsTest, Write_WhatCannotBeConverted_LeavesTheValue) {
    const TypeParam number = 12;
    const CComVariant before = ByteArray("bytes");
    EXPECT_EQ(quillet::test::ContentOf(Written(before, number)), quillet::test::ContentOf(before));
}

TEST(FieldBindingsTest, Read_OutOfRange_LeavesTheVariable) {
    EXPECT_EQ(Read<short>(Long(40000), 99), 99);
    EXPECT_EQ(Read<int>(CComVariant(1e10), 99), 99);
    EXPECT_EQ(Read<long>(CComVariant(1e10), 99), 99) << "32 bits on every system";
    EXPECT_EQ(Read<float>(CComVariant(1e300), 99), 99);
}

TEST(FieldBindingsTest, Read_HalvesRoundToEven) {
    EXPECT_EQ(Read<int>(CComVariant(2.5), 0), 2);
    EXPECT_EQ(Read<short>(CComVariant(3.5), 0), 4);
}

TEST(FieldBindingsTest, Write_OutOfRange_LeavesTheValue) {
    CComVariant small;
    small.vt = VT_I2;
    small.iVal = 5;
    EXPECT_EQ(Written(small, 40000).iVal, 5);
    EXPECT_EQ(Written(Long(5), 1e10), Long(5));
    if (std::numeric_limits<long>::max() > std::numeric_limits<int>::max()) {
        EXPECT_EQ(Written(CComVariant(5.0), std::numeric_limits<long>::max()), CComVariant(5.0));
    }
}

TEST(FieldBindingsTest, ReadText_ConvertsFromAnyType) {
    const CString before("before");
    EXPECT_EQ(Read(CComVariant("text"), before), "text");
    EXPECT_EQ(Read(Long(12), before), "12");
    EXPECT_EQ(Read(CComVariant(), before), "");
    EXPECT_EQ(Read(NullVariant(), before), "");
    EXPECT_EQ(Read(ByteArray("bytes"), before), "before");
}

TEST(FieldBindingsTest, WriteText_KeepsTheTypeOfTheValue) {
    EXPECT_EQ(Written(Long(5), CString("12")), Long(12));
    EXPECT_EQ(Written(Long(5), CString("text")), Long(5));
    EXPECT_EQ(Written(Long(5), CString()), Long(5));
    EXPECT_EQ(TextOf(Written(CComVariant("before"), CString("after"))), "after");
    EXPECT_EQ(TextOf(Written(NullVariant(), CString("after"))), "after");
}

TEST(FieldBindingsTest, ReadFlag_AnythingButZeroIsTrue) {
    EXPECT_TRUE(Read(CComVariant(true), false));
    EXPECT_TRUE(Read(BooleanBits(1), false));
    EXPECT_TRUE(Read(Long(5), false));
    EXPECT_TRUE(Read(CComVariant("True"), false));
    EXPECT_FALSE(Read(CComVariant(0.0), true));
    EXPECT_FALSE(Read(NullVariant(), true));
    EXPECT_FALSE(Read(CComVariant(), true));
    EXPECT_TRUE(Read(CComVariant("text"), true)) << "no flag, no change";
    EXPECT_FALSE(Read(CComVariant("text"), false));
}

TEST(FieldBindingsTest, WriteFlag_IsMinusOneOrZero) {
    EXPECT_EQ(Written(Long(5), true), Long(-1));
    EXPECT_EQ(Written(Long(5), false), Long(0));
    EXPECT_EQ(Written(CComVariant(false), true), CComVariant(true));
}

// A row with cells of numbers.
class BoundRow {
public:
    BoundRow() {
        for (const char* const name : {"a", "b", "c"}) {
            m_descr.CreateField(name, false, DbFieldDescr::Long);
        }
        m_data.AddRow();
    }

    DbTableRow* Row() { return m_data.GetRow(0); }
    auto Getter() {
        return [this] { return Row(); };
    }

    DbTableDescr m_descr{nullptr};
    DbTableData m_data{nullptr, &m_descr};
};

// What an update stores while no values were set.
template <typename Row>
bool Write(const FieldBindings& bindings, Row row) {
    return quillet::PendingEdit().Store(bindings, row);
}

TEST(FieldBindingsTest, ReadAndWrite_GoInTheOrderOfTheAddresses) {
    static std::vector<int> order;
    order.clear();
    BoundRow bound;
    FieldBindings bindings;
    std::array<int, 3> variables = {10, 20, 30};
    const auto write = [](CComVariant& value, const void* variable) {
        order.push_back(*static_cast<const int*>(variable));
        value = CComVariant(order.back());
    };
    bindings.Bind(&variables[2], 0, nullptr, write);
    bindings.Bind(&variables[0], 0, nullptr, write);
    bindings.Bind(&variables[1], 1, nullptr, write);
    EXPECT_TRUE(Write(bindings, bound.Getter()));
    EXPECT_THAT(order, ElementsAre(10, 20, 30));
    EXPECT_EQ(bound.Row()->GetField(0).GetValue(), Long(30)) << "the later one stays";
    EXPECT_EQ(bound.Row()->GetField(1).GetValue(), Long(20));
}

TEST(FieldBindingsTest, Write_MarksTheCellsThatItWrites) {
    BoundRow bound;
    FieldBindings bindings;
    int number = 5;
    bindings.Bind(&number, 1, FieldBindings::ReadVariable<int>, FieldBindings::WriteVariable<int>);
    bound.m_data.Sync();
    Write(bindings, bound.Getter());
    EXPECT_FALSE(bound.Row()->GetField(0).IsChanged());
    EXPECT_TRUE(bound.Row()->GetField(1).IsChanged());
}

TEST(FieldBindingsTest, ReadAndWrite_WithoutFunctionOrCell_PassOver) {
    BoundRow bound;
    FieldBindings bindings;
    int variables[2] = {5, 6};
    bindings.Bind(&variables[0], 0, nullptr, nullptr);
    bindings.Bind(&variables[1], 3, FieldBindings::ReadVariable<int>, FieldBindings::WriteVariable<int>);
    EXPECT_TRUE(bindings.Read(bound.Getter()));
    EXPECT_TRUE(Write(bindings, bound.Getter()));
    EXPECT_THAT(variables, ElementsAre(5, 6));
    EXPECT_EQ(bound.Row()->GetField(0).GetValue(), Long(0));
}

TEST(FieldBindingsTest, ReadAndWrite_WithoutARow_AreFalse) {
    FieldBindings bindings;
    const auto none = [] { return static_cast<DbTableRow*>(nullptr); };
    EXPECT_FALSE(bindings.Read(none));
    EXPECT_FALSE(Write(bindings, none));
    int number = 5;
    bindings.Bind(&number, 0, FieldBindings::ReadVariable<int>, FieldBindings::WriteVariable<int>);
    EXPECT_FALSE(bindings.Read(none));
    EXPECT_FALSE(Write(bindings, none));
    EXPECT_EQ(number, 5);
}

TEST(FieldBindingsTest, FieldOf_TheLatestBinding) {
    FieldBindings bindings;
    int number = 0;
    int other = 0;
    bindings.Bind(&number, 0, nullptr, nullptr);
    bindings.Bind(&number, 2, nullptr, nullptr);
    EXPECT_EQ(bindings.FieldOf(&number), 2);
    EXPECT_EQ(bindings.FieldOf(&other), -1);
    bindings.Clear();
    EXPECT_EQ(bindings.FieldOf(&number), -1);
}

FieldBindings* TheBindings = nullptr;

TEST(FieldBindingsTest, Read_FunctionThatBinds_FinishesTheOldList) {
    static int bound = 0;
    bound = 0;
    BoundRow row;
    FieldBindings bindings;
    TheBindings = &bindings;
    int variables[2] = {1, 1};
    bindings.Bind(
        &variables[0], 0,
        [](const CComVariant&, void*) {
            TheBindings->Clear();
            TheBindings->Bind(&bound, 0, nullptr, nullptr);
        },
        nullptr);
    bindings.Bind(&variables[1], 1, FieldBindings::ReadVariable<int>, nullptr);
    EXPECT_TRUE(bindings.Read(row.Getter()));
    EXPECT_EQ(variables[1], 0);
    EXPECT_EQ(bindings.FieldOf(&bound), 0);
    EXPECT_EQ(bindings.FieldOf(&variables[1]), -1);
}

// What a function binds while the list is gone through is left to the next time.
struct Rebinding {
    // In the order of their addresses.
    enum { First, Second, New, Count };

    static void Rebind() {
        s_running->m_bindings.Bind(&s_running->m_variables[Second], 2, FieldBindings::ReadVariable<int>,
                                   FieldBindings::WriteVariable<int>);
        s_running->m_bindings.Bind(&s_running->m_variables[New], 0, FieldBindings::ReadVariable<int>,
                                   FieldBindings::WriteVariable<int>);
    }
    // Its first variable binds the others anew, whichever way values go.
    Rebinding() {
        s_running = this;
        for (uint64 field = 0; field < 3; ++field) {
            m_row.Row()->GetField(field).GetVariant() = Long(100 + static_cast<int>(field));
        }
        m_bindings.Bind(
            &m_variables[First], 0, [](const CComVariant&, void*) { Rebind(); },
            [](CComVariant&, const void*) { Rebind(); });
        m_bindings.Bind(&m_variables[Second], 1, FieldBindings::ReadVariable<int>,
                        FieldBindings::WriteVariable<int>);
    }

    static Rebinding* s_running;
    BoundRow m_row;
    FieldBindings m_bindings;
    std::array<int, Count> m_variables = {1, 2, 3};
};

Rebinding* Rebinding::s_running = nullptr;

TEST(FieldBindingsTest, Read_FunctionThatBindsAnew_TakesEffectTheNextTime) {
    Rebinding rebinding;
    EXPECT_TRUE(rebinding.m_bindings.Read(rebinding.m_row.Getter()));
    EXPECT_THAT(rebinding.m_variables, ElementsAre(1, 101, 3));
    EXPECT_EQ(rebinding.m_bindings.FieldOf(&rebinding.m_variables[Rebinding::First]), 0) << "still bound";
    EXPECT_TRUE(rebinding.m_bindings.Read(rebinding.m_row.Getter()));
    EXPECT_THAT(rebinding.m_variables, ElementsAre(1, 102, 100));
}

TEST(FieldBindingsTest, Write_FunctionThatBindsAnew_TakesEffectTheNextTime) {
    Rebinding rebinding;
    const auto cell = [&rebinding](uint64 field) {
        return rebinding.m_row.Row()->GetField(field).GetValue();
    };
    EXPECT_TRUE(Write(rebinding.m_bindings, rebinding.m_row.Getter()));
    EXPECT_EQ(cell(0), Long(100));
    EXPECT_EQ(cell(1), Long(2));
    EXPECT_EQ(cell(2), Long(102));
    EXPECT_TRUE(Write(rebinding.m_bindings, rebinding.m_row.Getter()));
    EXPECT_EQ(cell(0), Long(3));
    EXPECT_EQ(cell(2), Long(2));
}

}  // namespace
