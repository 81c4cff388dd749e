#include "Quillet/dbaccess/DBACCESS_RECORD.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Quillet/dbaccess/DBACCESS_ALL.h"

namespace {

DBACCESS_RECORD Record(std::initializer_list<const char*> names) {
    DBACCESS_RECORD record;
    for (const char* name : names) {
        record.emplace_back(name);
    }
    return record;
}

DBACCESS_RECORD Numbers(std::initializer_list<long> numbers) {
    DBACCESS_RECORD record;
    for (const long number : numbers) {
        record.emplace_back() = number;
    }
    return record;
}

// Puts the shared column of find back.
class MissingColumnGuard {
public:
    MissingColumnGuard() = default;
    MissingColumnGuard(const MissingColumnGuard&) = delete;
    MissingColumnGuard& operator=(const MissingColumnGuard&) = delete;
    ~MissingColumnGuard() { DBACCESS_RECORD().find("") = DBACCESS_COLUMN(); }
};

TEST(DBACCESS_RECORD, FindIdx_TakesTheFirstColumnThatMatchesInAnyForm) {
    EXPECT_EQ(Record({"Tab.Width", "Width"}).findIdx("Width"), 0);
    EXPECT_EQ(Record({"Width", "Tab.Width"}).findIdx("Tab.Width"), 1);
}

TEST(DBACCESS_RECORD, FindIdx_CutsOnePrefixAfterTheOther) {
    const DBACCESS_RECORD record = Record({"x", "a.b.c"});
    EXPECT_EQ(record.findIdx("a.b.c"), 1);
    EXPECT_EQ(record.findIdx("b.c"), 1);
    EXPECT_EQ(record.findIdx(OLESTR("c")), 1);
    EXPECT_EQ(record.findIdx("a.b"), -1);
    EXPECT_EQ(record.findIdx("a"), -1);
}

TEST(DBACCESS_RECORD, FindIdx_RegardsCase) {
    EXPECT_EQ(Record({"Width"}).findIdx("width"), -1);
}

TEST(DBACCESS_RECORD, FindIdx_NothingIsLeftBehindALastDot) {
    EXPECT_EQ(Record({"a."}).findIdx(""), -1);
    EXPECT_EQ(Record({"a."}).findIdx("a."), 0);
    EXPECT_EQ(Record({"a..b"}).findIdx(".b"), 0);
    EXPECT_EQ(Record({"a..b"}).findIdx("b"), 0);
}

TEST(DBACCESS_RECORD, FindIdx_EmptyNameFindsTheColumnWithoutName) {
    EXPECT_EQ(Record({"a", ""}).findIdx(""), 1);
    EXPECT_EQ(Record({"a", ""}).findIdx(static_cast<const WCHAR*>(nullptr)), 1);
}

TEST(DBACCESS_RECORD, FindIdx_EmptyRecord_IsMinusOne) {
    EXPECT_EQ(DBACCESS_RECORD().findIdx("a"), -1);
}

TEST(DBACCESS_RECORD, Position_GivesTheColumn) {
    DBACCESS_RECORD record = Record({"a", "b"});
    record[1] = 2L;
    EXPECT_EQ(record.back().m_long, 2);
    EXPECT_EQ(std::as_const(record)[0].m_name, CString("a"));
}

TEST(DBACCESS_RECORD, Position_OutOfRange_IsAColumnOfNobody) {
    DBACCESS_RECORD record = Record({"a"});
    record[1] = 2L;
    record[-1] = 3L;
    EXPECT_EQ(record.size(), 1U);
    EXPECT_EQ(record[1].m_long, 0);
    EXPECT_EQ(std::as_const(record)[-1].m_type, 0);
}

TEST(DBACCESS_RECORD, Name_Absent_AppendsAColumnOfThatName) {
    DBACCESS_RECORD record = Record({"a"});
    record["b"] = 2L;
    EXPECT_EQ(record.size(), 2U);
    EXPECT_EQ(record[1].m_name, CString("b"));
    EXPECT_EQ(record[1].m_long, 2);
    EXPECT_EQ(record["b"].m_long, 2);
    EXPECT_EQ(record.size(), 2U);
}

TEST(DBACCESS_RECORD, Name_FoundBehindAPrefix_AppendsNothing) {
    DBACCESS_RECORD record = Record({"t.a"});
    record["a"] = 2L;
    EXPECT_EQ(record.size(), 1U);
    EXPECT_EQ(record[0].m_long, 2);
}

TEST(DBACCESS_RECORD, Find_Absent_IsOneColumnSharedByAllRecords) {
    const MissingColumnGuard guard;
    DBACCESS_RECORD record;
    DBACCESS_RECORD other = Record({"a"});
    EXPECT_EQ(&record.find("x"), &other.find("y"));
    record.find("x") = 7L;
    EXPECT_EQ(other.find("y").m_long, 7);
    EXPECT_TRUE(record.empty());
}

TEST(DBACCESS_RECORD, Find_Absent_TheConstFormHasAColumnOfItsOwn) {
    const MissingColumnGuard guard;
    DBACCESS_RECORD record;
    EXPECT_NE(&record.find("x"), &std::as_const(record).find("x"));
    record.find("x") = 7L;
    EXPECT_EQ(std::as_const(record).find("x").m_long, 0);
    EXPECT_EQ(&std::as_const(record).find("x"), &std::as_const(record).find("y"));
}

TEST(DBACCESS_RECORD, GetLong_Absent_IsTheSlotOfTheSharedColumn) {
    const DBACCESS_RECORD record;
    EXPECT_EQ(record.GetLong("x"), 0);
    // Only the reference is const, not the object.
    DBACCESS_COLUMN& shared = const_cast<DBACCESS_COLUMN&>(record.find("x"));
    shared.m_long = 7;
    EXPECT_EQ(record.GetLong("y"), 7);
    EXPECT_EQ(DBACCESS_RECORD().GetLong("z"), 7);
    shared = DBACCESS_COLUMN();
}

TEST(DBACCESS_RECORD, Getters_ReadTheirOwnSlotWhateverTheCodeIs) {
    DBACCESS_RECORD record;
    DBACCESS_COLUMN& column = record["a"];
    column = 1L;
    column = 2.5;
    column = 3.5F;
    column = "four";
    column = 5;
    constexpr BYTE Six = 6;
    column = CByteArray(&Six, 1);
    column.m_int = 7;
    EXPECT_EQ(record.GetLong("a"), 1);
    EXPECT_EQ(record.GetDouble("a"), 2.5);
    EXPECT_EQ(record.GetFloat("a"), 3.5F);
    EXPECT_EQ(record.GetString("a"), CString("four"));
    EXPECT_EQ(record.GetBool("a"), 5);
    EXPECT_EQ(record.GetBinary("a"), CByteArray(&Six, 1));
    EXPECT_EQ(record.GetInt("a"), 7);
    EXPECT_EQ(record.GetLong(OLESTR("a")), 1);
}

TEST(DBACCESS_RECORD, GetInt_OfALong_IsZero) {
    DBACCESS_RECORD record;
    record["a"] = 9L;
    EXPECT_EQ(record.GetInt("a"), 0);
}

TEST(DBACCESS_RECORD, GetBool_OfAnInt_IsThatNumber) {
    DBACCESS_RECORD record;
    record["a"] = 5;
    EXPECT_EQ(record["a"].m_type, 1);
    EXPECT_EQ(record.GetBool("a"), 5);
}

TEST(DBACCESS_RECORD, GetFloatEx_TakesTheFirstNameThatIsThere) {
    DBACCESS_RECORD record;
    record["a"] = 1.5F;
    record["b"] = 2.5F;
    EXPECT_EQ(record.GetFloatEx("a", "b"), 1.5F);
    EXPECT_EQ(record.GetFloatEx("x", "b"), 2.5F);
    EXPECT_EQ(record.GetFloatEx("x", "y"), 0.0F);
    record["c"] = 7L;
    EXPECT_EQ(record.GetFloatEx("c", "b"), 0.0F);
}

TEST(DBACCESS_RECORD, SetParam_OnAnEmptyRecord_AppendsADouble) {
    DBACCESS_RECORD record;
    EXPECT_EQ(&record.SetParam("k", 2.5), &record);
    EXPECT_EQ(record.size(), 1U);
    EXPECT_EQ(record[0].m_name, CString("k"));
    EXPECT_EQ(record[0].m_type, 7);
    double value = 0;
    EXPECT_TRUE(record.GetParam("k", value));
    EXPECT_EQ(value, 2.5);
}

// A host with its own storage for parameters, with the names of the interface.
class Limited : public DBACCESS_RECORD {
public:
    using DBACCESS_RECORD::GetParam;
    using DBACCESS_RECORD::SetParam;
    IDbParamValues& SetParam(const WCHAR* name, double value) override {
        m_names.push_back(CString(name).ToUtf8());
        return DBACCESS_RECORD::SetParam(name, std::min(value, 100.0));
    }
    bool GetParam(const WCHAR* name, double& value) override {
        m_names.push_back(CString(name).ToUtf8());
        return DBACCESS_RECORD::GetParam(name, value);
    }

    std::vector<std::string> m_names;
};

TEST(DBACCESS_RECORD, SetParamAndGetParam_OverriddenByAHost_AreCalledForEveryFormOfAName) {
    Limited limited;
    IDbParamValues& parameters = limited;
    parameters.SetParam(OLESTR("wide"), 500).SetParam("narrow", 2).SetParam(CString("text"), 3);
    limited.SetParam(std::string("own"), 4);
    double value = 0;
    EXPECT_TRUE(parameters.GetParam("wide", value));
    EXPECT_EQ(value, 100);
    EXPECT_TRUE(parameters.GetParam(OLESTR("narrow"), value));
    EXPECT_EQ(value, 2);
    EXPECT_FALSE(limited.GetParam(CString("missing"), value));
    EXPECT_EQ(limited.m_names,
              (std::vector<std::string>{"wide", "narrow", "text", "own", "wide", "narrow", "missing"}));
}

TEST(DBACCESS_RECORD, Names_WideText_AreTakenAsTheyAre) {
    const WCHAR* const name = OLESTR("\u0142");
    DBACCESS_RECORD record;
    record.push_back(DBACCESS_COLUMN(name));
    record[name] = 5;
    EXPECT_EQ(record.size(), 1U);
    EXPECT_EQ(record.findIdx(name), 0);
    EXPECT_EQ(record.find(name).m_bool, 5);
    EXPECT_EQ(std::as_const(record).find(name).m_bool, 5);
    EXPECT_EQ(record.GetBool(name), 5);
    const WCHAR* const none = nullptr;
    EXPECT_EQ(DBACCESS_COLUMN(none).m_name, CString());
    EXPECT_EQ(record.findIdx(none), -1);
}

TEST(DBACCESS_RECORD, SetParam_OnAColumn_TurnsItIntoADouble) {
    DBACCESS_RECORD record;
    record["t.k"] = "text";
    IDbParamValues& parameters = record;
    parameters.SetParam("k", -1.0).SetParam("l", 2.0);
    EXPECT_EQ(record.size(), 2U);
    EXPECT_EQ(record[0].m_type, 7);
    EXPECT_EQ(record[0].m_double, -1.0);
    EXPECT_EQ(record[0].m_text, CString("text"));
}

TEST(DBACCESS_RECORD, GetParam_ReadsTheDoubleWhateverTheCodeIs) {
    DBACCESS_RECORD record;
    record["k"] = 2.5;
    record["k"] = "text";
    double value = 0;
    EXPECT_TRUE(record.GetParam("k", value));
    EXPECT_EQ(value, 2.5);
}

TEST(DBACCESS_RECORD, GetParam_Absent_LeavesTheValue) {
    double value = 4;
    EXPECT_FALSE(DBACCESS_RECORD().GetParam("k", value));
    EXPECT_EQ(value, 4);
}

TEST(DBACCESS_RECORD, Equal_ComparesTheOthersColumnsOnly) {
    const DBACCESS_RECORD shorter = Numbers({1});
    DBACCESS_RECORD longer = Numbers({1, 2});
    EXPECT_TRUE(longer == shorter);
    EXPECT_FALSE(longer != shorter);
    EXPECT_FALSE(shorter == longer);
    EXPECT_TRUE(shorter != longer);
    EXPECT_FALSE(longer == Numbers({2}));
    EXPECT_TRUE(longer == DBACCESS_RECORD());
}

TEST(DBACCESS_RECORD, IsEqual_SwapsTheTwo) {
    DBACCESS_RECORD shorter = Numbers({1});
    DBACCESS_RECORD longer = Numbers({1, 2});
    EXPECT_TRUE(shorter.IsEqual(longer));
    EXPECT_FALSE(longer.IsEqual(shorter));
}

TEST(DBACCESS_RECORD, Assign_TakesColumnCountNamesAndValues) {
    DBACCESS_RECORD record = Record({"a", "b", "c"});
    DBACCESS_RECORD other = Record({"x"});
    other[0] = 4L;
    EXPECT_EQ(&(record = other), &record);
    EXPECT_EQ(record.size(), 1U);
    EXPECT_EQ(record[0], other[0]);
}

TEST(DBACCESS_RECORD, GetData_PullsAndSetDataPushes) {
    DBACCESS_RECORD record = Numbers({1});
    DBACCESS_RECORD other = Numbers({2, 3});
    record.GetData(other);
    EXPECT_EQ(record.size(), 2U);
    EXPECT_EQ(record[1].m_long, 3);
    DBACCESS_RECORD third;
    std::as_const(record).SetData(third);
    EXPECT_EQ(third.size(), 2U);
    EXPECT_EQ(third[0].m_long, 2);
}

TEST(DBACCESS_RECORD, Destroy_ThroughTheInterface_FreesTheColumns) {
    std::unique_ptr<IDbParamValues> parameters =
        std::make_unique<DBACCESS_RECORD>(Record({"a long column name"}));
    double value = 0;
    EXPECT_TRUE(parameters->GetParam("a long column name", value));
    parameters.reset();
}

TEST(DBACCESS_VECTOR, CopyAndMove_TakeRowsFlagAndRemarks) {
    DBACCESS_VECTOR rows;
    EXPECT_FALSE(rows.m_noRows);
    rows.push_back(Numbers({1}));
    rows.m_noRows = true;
    rows.m_remarks.emplace_back("remark");
    DBACCESS_VECTOR copy = rows;
    const DBACCESS_VECTOR moved = std::move(rows);
    for (const DBACCESS_VECTOR& vector : {copy, moved}) {
        EXPECT_EQ(vector.size(), 1U);
        EXPECT_EQ(vector.front()[0].m_long, 1);
        EXPECT_TRUE(vector.m_noRows);
        EXPECT_EQ(vector.m_remarks.size(), 1U);
    }
    copy.front()[0] = 2L;
    EXPECT_EQ(moved[0][0].m_long, 1);
}

TEST(DBACCESS_ALL, KeepsTablesInTheOrderInWhichTheyWereAdded) {
    DBACCESS_ALL all;
    all.emplace_back("b", DBACCESS_VECTOR());
    all.emplace_back("a", DBACCESS_VECTOR());
    all.at(0).second.push_back(Numbers({1}));
    DBACCESS_ALL copy = all;
    const DBACCESS_ALL moved = std::move(all);
    EXPECT_EQ(copy[0].first, CString("b"));
    EXPECT_EQ(moved.back().first, CString("a"));
    EXPECT_EQ(copy[0].second.size(), 1U);
}

}  // namespace
