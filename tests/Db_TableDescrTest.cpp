#include "Quillet/Db_TableDescr.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>
#include <vector>

#include "support/AllocationPlan.h"
#include "support/TestHelpers.h"

namespace {

using namespace quillet::test;
using DbIndex = DbTableDescr::DbIndex;

std::vector<std::string> FieldNames(DbTableDescr& descr) {
    std::vector<std::string> names;
    for (const DbFieldDescr* field : descr) {
        names.push_back(field->GetName().ToUtf8());
    }
    return names;
}

std::vector<std::string> ParsedNames(const char* list) {
    return Utf8Of(DbIndex("i", CString(list)).GetFieldNames());
}

using Strings = std::vector<std::string>;

// A structure without a database, with the fields a (long), b (text) and c (double).
class ThreeFields : public testing::Test {
protected:
    ThreeFields() {
        m_descr.CreateField("a", true, DbFieldDescr::Long);
        m_descr.CreateField("b", false, DbFieldDescr::Text);
        m_descr.CreateField("c", false, DbFieldDescr::Double);
    }

    DbTableDescr m_descr{nullptr};
};

// The same in a database, with two rows.
class TableInDatabase : public testing::Test {
protected:
    TableInDatabase() : m_info(m_database.CreateTable("T", DbTableInfo::Table)) {
        Descr().CreateField("a", true, DbFieldDescr::Long);
        Descr().CreateField("b", false, DbFieldDescr::Text);
        Data().AddRows(2);
        Data()[0].SetValue("a", Long(10));
        Data()[1].SetValue("a", Long(20));
        Data()[0].SetValue("b", CString("x"));
        Data()[1].SetValue("b", CString("y"));
    }

    DbTableDescr& Descr() { return *m_info->GetDescr(); }
    DbTableData& Data() { return *m_info->GetData(); }
    Strings Cells(uint64 row) {
        Strings cells;
        for (const DbFieldValue* cell : Data()[row]) {
            cells.push_back(PrintedText(*cell));
        }
        return cells;
    }

    DbDatabase m_database;
    DbTableInfo* m_info;
};

TEST(DbTableDescr, Construct_StandsAlone_IsEmpty) {
    DbTableDescr descr(nullptr);
    EXPECT_TRUE(descr.empty());
    EXPECT_EQ(descr.GetParent(), nullptr);
    EXPECT_EQ(descr.GetFieldIndex("a"), -1);
    EXPECT_FALSE(descr.IsChanged());
    EXPECT_EQ(descr.GetSize(), 8U + 9U);
}

TEST(DbTableDescr, Construct_WithDatabase_IsItsChild) {
    DbDatabase database;
    DbTableDescr descr(&database);
    EXPECT_EQ(descr.GetParent(), &database);
    descr.SetChanged();
    EXPECT_TRUE(database.IsChanged());
}

TEST(DbTableDescr, Destroy_DatabaseFirst_FreeStandingDescriptorWorksOn) {
    auto database = std::make_unique<DbDatabase>();
    DbTableDescr descr(database.get());
    database.reset();
    EXPECT_TRUE(descr.CreateField("a", false, DbFieldDescr::Text));
    EXPECT_TRUE(descr.DeleteField("a"));
    descr.Clear();
    EXPECT_TRUE(descr.empty());
}

TEST_F(ThreeFields, GetFieldIndex_AnyCase_FindsTheField) {
    m_descr.CreateField("Name", false, DbFieldDescr::Text);
    EXPECT_EQ(m_descr.GetFieldIndex("Name"), 3);
    EXPECT_EQ(m_descr.GetFieldIndex("NAME"), 3);
    EXPECT_EQ(m_descr.GetFieldIndex("name"), 3);
    EXPECT_EQ(m_descr.GetFieldIndex("nam"), -1);
    EXPECT_EQ(m_descr.GetFieldIndex(""), -1);
}

TEST_F(ThreeFields, GetFieldIndex_BeyondAscii_IgnoresCaseToo) {
    m_descr.CreateField("\u0141\u00F3d\u017A", false, DbFieldDescr::Text);
    EXPECT_EQ(m_descr.GetFieldIndex("\u0142\u00D3D\u0179"), 3);
}

TEST_F(ThreeFields, GetFieldIndex_Brackets_OnePairIsPassedOver) {
    EXPECT_EQ(m_descr.GetFieldIndex("[B]"), 1);
    EXPECT_EQ(m_descr.GetFieldIndex("b]"), 1);
    EXPECT_EQ(m_descr.GetFieldIndex("[b"), 1);
    EXPECT_EQ(m_descr.GetFieldIndex("[[b]]"), -1);
    EXPECT_EQ(m_descr.GetFieldIndex("[]"), -1);
    EXPECT_EQ(m_descr.GetFieldIndex("["), -1);
    EXPECT_EQ(m_descr.GetFieldIndex("]"), -1);
}

TEST_F(ThreeFields, GetFieldIndex_NameThatStandsInBrackets_NeedsASecondPair) {
    m_descr.CreateField("[x]", false, DbFieldDescr::Text);
    EXPECT_EQ(m_descr.GetFieldIndex("[x]"), -1);
    EXPECT_EQ(m_descr.GetFieldIndex("[[x]]"), 3);
}

TEST_F(ThreeFields, GetFieldIndex_FieldRenamedAfterALookup_StillAnswersToTheOldName) {
    EXPECT_EQ(m_descr.GetFieldIndex("b"), 1);
    m_descr[1].SetName("renamed");
    EXPECT_EQ(m_descr.GetFieldIndex("b"), 1);
    EXPECT_EQ(m_descr.GetFieldIndex("renamed"), -1);
    m_descr.CreateField("d", false, DbFieldDescr::Text);
    EXPECT_EQ(m_descr.GetFieldIndex("b"), -1);
    EXPECT_EQ(m_descr.GetFieldIndex("renamed"), 1);
}

TEST_F(ThreeFields, GetFieldIndex_FieldRenamedInAnyWay_IsKnownAfterTheNextField) {
    const auto rename = [&](const auto& change) {
        EXPECT_EQ(m_descr.GetFieldIndex("no such field"), -1) << "the lookup is made";
        change();
        m_descr.CreateField(CString("more " + std::to_string(m_descr.size())), false, DbFieldDescr::Text);
    };
    rename([&] { m_descr[0].SetName("set"); });
    EXPECT_EQ(m_descr.GetFieldIndex("set"), 0);
    EXPECT_EQ(m_descr.GetFieldIndex("a"), -1);
    rename([&] {
        DbFieldDescr other;
        other.SetName("assigned");
        m_descr[1] = other;
    });
    EXPECT_EQ(m_descr.GetFieldIndex("assigned"), 1);
    rename([&] {
        m_descr.push_back(new DbFieldDescr(&m_descr, 5));
        m_descr.back()->SetName("pushed");
    });
    EXPECT_EQ(m_descr.GetFieldIndex("pushed"), 5);
    EXPECT_EQ(m_descr.GetFieldIndex("more 6"), 6);
}

TEST_F(ThreeFields, CreateField_AfterClear_StartsAnew) {
    EXPECT_EQ(m_descr.GetFieldIndex("b"), 1);
    m_descr.Clear();
    EXPECT_TRUE(m_descr.CreateField("c", false, DbFieldDescr::Text));
    EXPECT_TRUE(m_descr.CreateField("b", false, DbFieldDescr::Text));
    EXPECT_EQ(m_descr.GetFieldIndex("b"), 1);
    EXPECT_EQ(m_descr.GetFieldIndex("a"), -1);
}

// Looking at all earlier fields for each field would take minutes instead of a second.
TEST(DbTableDescr, CreateField_VeryManyFields_CostEachTheSame) {
    constexpr int Fields = 30000;
    DbTableDescr descr(nullptr);
    for (int i = 0; i < Fields; ++i) {
        ASSERT_TRUE(descr.CreateField(CString("field " + std::to_string(i)), false, DbFieldDescr::Long));
    }
    EXPECT_FALSE(descr.CreateField("FIELD 777", false, DbFieldDescr::Long));
    EXPECT_EQ(descr.GetFieldIndex("Field 29999"), Fields - 1);
}

TEST_F(ThreeFields, DeleteField_AnIndexOverALaterField_FollowsIt) {
    ASSERT_TRUE(m_descr.CreateIndex("cb", "c,b"));
    const DbIndex& index = *m_descr.FindIndex("cb");
    EXPECT_EQ(index.GetFieldIndexes(), (std::vector<uint64>{2, 1}));
    EXPECT_TRUE(m_descr.DeleteField("a"));
    EXPECT_EQ(index.GetFieldIndexes(), (std::vector<uint64>{1, 0}));
    EXPECT_TRUE(m_descr.CheckIndexFields(&index));
    EXPECT_TRUE(m_descr.DeleteField("b"));
    EXPECT_EQ(index.GetFieldIndexes(), (std::vector<uint64>{0, DbIndex::NoField}));
    EXPECT_FALSE(m_descr.CheckIndexFields(&index));
    EXPECT_TRUE(m_descr.CreateField("B", false, DbFieldDescr::Text));
    EXPECT_EQ(index.GetFieldIndexes(), (std::vector<uint64>{0, 1}));
    EXPECT_TRUE(m_descr.CheckIndexFields(&index));
}

TEST_F(ThreeFields, CreateField_AnIndexOverARenamedField_IsResolvedByName) {
    ASSERT_TRUE(m_descr.CreateIndex("b", "b"));
    const DbIndex& index = *m_descr.FindIndex("b");
    m_descr[0].SetName("b");
    m_descr[1].SetName("was b");
    EXPECT_EQ(index.GetFieldIndexes(), (std::vector<uint64>{1})) << "a new name is known later";
    m_descr.CreateField("d", false, DbFieldDescr::Text);
    EXPECT_EQ(index.GetFieldIndexes(), (std::vector<uint64>{0}));
}

TEST(DbTableDescr, CreateAndDeleteField_OutOfMemory_HappenWhollyOrNotAtAll) {
    const auto stateOf = [](DbTableDescr& descr) {
        Strings state = FieldNames(descr);
        for (const uint64 position : descr.FindIndex("ca")->GetFieldIndexes()) {
            state.push_back(std::to_string(position));
        }
        state.push_back(std::to_string(descr.GetFieldIndex("c")));
        state.push_back(std::to_string(descr.CalcSize()));
        return state;
    };
    const auto steps = {+[](DbTableDescr& descr) {
                            descr.CreateField("a name that is too long to stand in a string itself", false,
                                              DbFieldDescr::Long);
                        },
                        +[](DbTableDescr& descr) { descr.DeleteField("b"); },
                        +[](DbTableDescr& descr) { descr.DeleteField(0); }};
    for (const auto step : steps) {
        SweepAllocations([&](std::size_t failing) {
            DbTableDescr descr(nullptr);
            for (const char* name : {"a", "b", "c"}) {
                descr.CreateField(name, false, DbFieldDescr::Text);
            }
            descr.CreateIndex("ca", "c,a");
            const Strings before = stateOf(descr);
            AllocationPlan plan(failing);
            try {
                step(descr);
            } catch (const std::bad_alloc&) {
            }
            plan.Disarm();
            EXPECT_EQ(stateOf(descr) == before, plan.HasFailed()) << failing;
            return plan.HasFailed();
        });
    }
}

TEST_F(TableInDatabase, SpatialIndex_AfterFieldsWereDeleted_ComparesTheIndexesOwnOrNothing) {
    Descr().CreateField("c", false, DbFieldDescr::Long);
    Data()[0].SetValue("c", Long(100));
    Data()[1].SetValue("c", Long(200));
    ASSERT_TRUE(Descr().CreateIndex("c", "c"));
    DbIndex* const index = Descr().FindIndex("c");
    const CComVariant key = Long(200);
    uint64 place = 7;
    Descr().DeleteField("a");
    EXPECT_EQ(Data().SpatialIndex(index, &key, 1, place), DbTableRow::CmpEqual);
    EXPECT_EQ(place, 1U);
    const CComVariant above = Long(201);
    EXPECT_EQ(Data().SpatialIndex(index, &above, 1, place), DbTableRow::CmpGreater);
    EXPECT_EQ(place, 2U);
    Descr().DeleteField("c");
    EXPECT_EQ(Data().SpatialIndex(index, &above, 1, place), DbTableRow::CmpEqual);
    EXPECT_EQ(place, 0U) << "nothing was compared";
}

TEST_F(ThreeFields, GetFieldIndex_TwoFieldsOfOneName_FindsTheFirst) {
    m_descr[2].SetName("A");
    EXPECT_EQ(m_descr.GetFieldIndex("a"), 0);
}

TEST_F(ThreeFields, IsField_ByNameAndByPosition) {
    EXPECT_TRUE(m_descr.IsField("[A]"));
    EXPECT_FALSE(m_descr.IsField("d"));
    EXPECT_TRUE(m_descr.IsField(uint64(2)));
    EXPECT_FALSE(m_descr.IsField(uint64(3)));
    EXPECT_FALSE(m_descr.IsField(~uint64(0)));
}

TEST_F(ThreeFields, GetField_AndBrackets_AreTheFieldsThemselves) {
    EXPECT_EQ(&m_descr[1], m_descr.at(1));
    EXPECT_EQ(&m_descr["B"], m_descr.at(1));
    EXPECT_EQ(&m_descr.GetField(0), m_descr.at(0));
    EXPECT_EQ(&m_descr.GetField(1), m_descr.at(1));
    EXPECT_EQ(&m_descr.GetField("[b]"), m_descr.at(1));
}

TEST_F(ThreeFields, GetField_WhereThereIsNone_IsAFieldOfNobody) {
    EXPECT_EQ(m_descr.GetField(3).GetType(), VT_EMPTY);
    EXPECT_EQ(m_descr.GetField(-1).GetType(), VT_EMPTY);
    EXPECT_EQ(m_descr.GetField("unknown").GetType(), VT_EMPTY);
    m_descr[99].SetName("lost");
    m_descr["unknown"].SetType(VT_R8);
    EXPECT_EQ(m_descr[99].GetName().ToUtf8(), "");
    EXPECT_EQ(m_descr["unknown"].GetType(), VT_EMPTY);
    EXPECT_EQ(FieldNames(m_descr), (Strings{"a", "b", "c"}));
}

TEST_F(ThreeFields, CreateField_NewName_AppendsTheField) {
    const std::int32_t stamp = DbItem::m_changeCounter;
    EXPECT_TRUE(m_descr.CreateField("New Field", true, DbFieldDescr::Integer));
    const DbFieldDescr& field = m_descr.GetField(3);
    EXPECT_EQ(field.GetName().ToUtf8(), "New Field");
    EXPECT_EQ(field.GetSafeName().ToUtf8(), "New_Field");
    EXPECT_TRUE(field.IsKey());
    EXPECT_EQ(field.GetDbType(), DbFieldDescr::Long) << "an integer field is a long field";
    EXPECT_EQ(field.GetIndex(), 3);
    EXPECT_EQ(m_descr[3].GetParent(), &m_descr);
    EXPECT_GT(m_descr.GetChangeId(), stamp);
}

TEST_F(ThreeFields, CreateField_NameTakenInAnotherCaseOrInBrackets_ChangesNothing) {
    m_descr.Sync();
    EXPECT_FALSE(m_descr.CreateField("B", false, DbFieldDescr::Text));
    EXPECT_FALSE(m_descr.CreateField("[b]", false, DbFieldDescr::Text));
    EXPECT_EQ(m_descr.size(), 3U);
    EXPECT_FALSE(m_descr.IsChanged());
}

TEST_F(ThreeFields, CreateField_FromAnotherField_TakesNameKeyAndType) {
    DbTableDescr other(nullptr);
    EXPECT_TRUE(other.CreateField(m_descr[0]));
    EXPECT_TRUE(other.CreateField(m_descr.GetField(2)));
    EXPECT_EQ(FieldNames(other), (Strings{"a", "c"}));
    EXPECT_TRUE(other[0].IsKey());
    EXPECT_EQ(other[0].GetDbType(), DbFieldDescr::Long);
    EXPECT_FALSE(other[1].IsKey());
    EXPECT_EQ(other[1].GetDbType(), DbFieldDescr::Double);
    EXPECT_FALSE(other.CreateField(other[0]));
}

TEST_F(ThreeFields, CreateField_AfterALookup_IsFoundAtOnce) {
    EXPECT_EQ(m_descr.GetFieldIndex("d"), -1);
    m_descr.CreateField("d", false, DbFieldDescr::Text);
    EXPECT_EQ(m_descr.GetFieldIndex("d"), 3);
}

TEST_F(ThreeFields, DeleteField_FirstOfThree_MovesTheOthersUp) {
    EXPECT_EQ(m_descr.GetFieldIndex("c"), 2);
    EXPECT_TRUE(m_descr.DeleteField(0));
    EXPECT_EQ(m_descr.GetFieldIndex("c"), 1);
    EXPECT_EQ(m_descr.GetFieldIndex("a"), -1);
    EXPECT_EQ(FieldNames(m_descr), (Strings{"b", "c"}));
}

TEST_F(ThreeFields, DeleteField_TheOthers_KeepTheIndexNumberTheyHad) {
    m_descr.DeleteField(0);
    EXPECT_EQ(m_descr[0].GetIndex(), 1);
    EXPECT_EQ(m_descr[1].GetIndex(), 2);
    m_descr.CreateField("d", false, DbFieldDescr::Text);
    EXPECT_EQ(m_descr[2].GetIndex(), 2) << "the new one counts the fields there are";
}

TEST_F(ThreeFields, DeleteField_StampsTheDescriptorAndLosesTheChild) {
    m_descr.Sync();
    const uint64 size = m_descr.GetSize();
    EXPECT_TRUE(m_descr.DeleteField("[B]"));
    EXPECT_TRUE(m_descr.IsChanged());
    EXPECT_EQ(m_descr.GetSize(), size - 22);
}

TEST_F(ThreeFields, DeleteField_WhereThereIsNone_IsFalse) {
    m_descr.Sync();
    EXPECT_FALSE(m_descr.DeleteField(-1));
    EXPECT_FALSE(m_descr.DeleteField(3));
    EXPECT_FALSE(m_descr.DeleteField("unknown"));
    EXPECT_EQ(m_descr.size(), 3U);
    EXPECT_FALSE(m_descr.IsChanged());
}

TEST_F(ThreeFields, DeleteField_ByItsOwnName_IsRemoved) {
    EXPECT_TRUE(m_descr.DeleteField(m_descr[1].GetName()));
    EXPECT_EQ(FieldNames(m_descr), (Strings{"a", "c"}));
}

TEST_F(ThreeFields, GetSize_CountsTheFieldsAndNine) {
    EXPECT_EQ(m_descr.GetSize(), 3 * 22U + 8U + 9U);
}

TEST_F(TableInDatabase, CreateField_TableWithRows_GivesEveryRowTheDefault) {
    EXPECT_TRUE(Descr().CreateField("c", false, DbFieldDescr::Double));
    EXPECT_EQ(Cells(0), (Strings{"10", "x", "0"}));
    EXPECT_EQ(Cells(1), (Strings{"20", "y", "0"}));
    EXPECT_EQ(Data()[1][uint64(2)].GetIndex(), 2);
    EXPECT_EQ(Data()[1][uint64(2)].GetType(), VT_R8);
}

TEST_F(TableInDatabase, DeleteField_TableWithRows_TakesTheCellOutOfEveryRow) {
    EXPECT_TRUE(Descr().DeleteField("a"));
    EXPECT_EQ(Cells(0), (Strings{"x"}));
    EXPECT_EQ(Cells(1), (Strings{"y"}));
    EXPECT_EQ(Data()[0][uint64(0)].GetIndex(), 1) << "the cell keeps its number";
    EXPECT_EQ(Data()[0].GetSize(), 22U + 8U + 8U);
}

TEST_F(TableInDatabase, DeleteField_FieldAddedLater_TakesItsCellOut) {
    Descr().CreateField("c", false, DbFieldDescr::Text);
    Data()[0].SetValue("c", CString("late"));
    EXPECT_TRUE(Descr().DeleteField("a"));
    EXPECT_EQ(Cells(0), (Strings{"x", "late"}));
    EXPECT_TRUE(Descr().DeleteField("c"));
    EXPECT_TRUE(Descr().DeleteField("b"));
    EXPECT_TRUE(Data()[0].empty());
}

TEST_F(TableInDatabase, CreateField_AfterEveryFieldWasDeleted_FillsTheRowsAgain) {
    Descr().DeleteField("a");
    Descr().DeleteField("b");
    Descr().CreateField("n", false, DbFieldDescr::Long);
    EXPECT_EQ(Cells(0), (Strings{"0"}));
    EXPECT_EQ(Data().size(), 2U);
}

TEST_F(TableInDatabase, CreateField_StampsTheStructureButNotTheRows) {
    m_database.Sync();
    Descr().CreateField("c", false, DbFieldDescr::Text);
    EXPECT_TRUE(Descr().IsChanged());
    EXPECT_TRUE(m_database.IsChanged());
}

TEST_F(TableInDatabase, Clear_LeavesTheRowsTheirCells) {
    Descr().Clear();
    EXPECT_TRUE(Descr().empty());
    EXPECT_EQ(Data().size(), 2U);
    EXPECT_EQ(Cells(0), (Strings{"10", "x"}));
}

TEST_F(TableInDatabase, Clear_RowsWithoutFields_FailToSaveAndSaySo) {
    Descr().Clear();
    TakeLog(m_database);
    SaveTarget target;
    EXPECT_FALSE(Data().Save(target.Automation(), target.Element()));
    EXPECT_EQ(TakeLog(m_database),
              (Strings{"Error on DbTableRow::Save(IDispatch* doc, IDispatch* element), , 0",
                       "Error on DbTableData::Save(IDispatch* doc, IDispatch* element)"}));
}

TEST_F(ThreeFields, Clear_RemovesFieldsIndexesAndNames) {
    m_descr.CreateIndex("i", CString("a"));
    EXPECT_EQ(m_descr.GetFieldIndex("a"), 0);
    m_descr.Clear();
    EXPECT_TRUE(m_descr.empty());
    EXPECT_EQ(m_descr.FindIndex("i"), nullptr);
    EXPECT_EQ(m_descr.GetFieldIndex("a"), -1);
    EXPECT_EQ(m_descr.GetSize(), 8U + 9U);
}

TEST_F(ThreeFields, Clear_ThenLoad_HidesTheNewFieldsFromTheLookup) {
    EXPECT_EQ(m_descr.GetFieldIndex("a"), 0);
    m_descr.Clear();
    EXPECT_TRUE(m_descr.Load(ElementOf("<t><field name='n' type='8'/></t>").Get()));
    EXPECT_EQ(m_descr.GetFieldIndex("n"), -1) << "the emptied lookup is not marked for rebuilding";
    m_descr.CreateField("m", false, DbFieldDescr::Text);
    EXPECT_EQ(m_descr.GetFieldIndex("n"), 0);
}

TEST(DbIndex, Construct_Name_IsLowered) {
    const DbIndex index("IDX_\u0141");
    EXPECT_EQ(index.GetName().ToUtf8(), "idx_\u0142");
    EXPECT_TRUE(index.GetFieldNames().empty());
    EXPECT_TRUE(index.GetFieldIndexes().empty());
    EXPECT_TRUE(index.GetRowOrder().empty());
}

TEST(DbIndex, Construct_WithNames_KeepsThemAsGiven) {
    const DbIndex index("i", Names({"A", "[B c]", "A"}));
    EXPECT_EQ(Utf8Of(index.GetFieldNames()), (Strings{"A", "[B c]", "A"}));
    EXPECT_TRUE(index.GetFieldIndexes().empty());
}

TEST(DbIndex, AddField_AppendsTheName) {
    DbIndex index("i", CString("a"));
    index.AddField("B");
    EXPECT_EQ(Utf8Of(index.GetFieldNames()), (Strings{"a", "B"}));
}

TEST(DbIndex, FieldList_NamesBetweenCommas_LoseBlanksOutsideBrackets) {
    EXPECT_EQ(ParsedNames("A, [B C],D"), (Strings{"A", "B C", "D"}));
    EXPECT_EQ(ParsedNames(" a b , c "), (Strings{"ab", "c"}));
    EXPECT_EQ(ParsedNames("a\tb"), (Strings{"a\tb"}));
}

TEST(DbIndex, FieldList_LastName_KeepsItsBrackets) {
    EXPECT_EQ(ParsedNames("[A],[B]"), (Strings{"A", "[B]"}));
    EXPECT_EQ(ParsedNames("[A B]"), (Strings{"[A B]"}));
}

TEST(DbIndex, FieldList_Comma_SeparatesInsideBracketsToo) {
    EXPECT_EQ(ParsedNames("[a,b]"), (Strings{"a", "b]"}));
    EXPECT_EQ(ParsedNames("[a, b],c d"), (Strings{"a", " b", "cd"}));
}

TEST(DbIndex, FieldList_EmptyNames_CountBeforeACommaOnly) {
    EXPECT_EQ(ParsedNames(""), Strings{});
    EXPECT_EQ(ParsedNames("   "), Strings{});
    EXPECT_EQ(ParsedNames("a,,b,"), (Strings{"a", "", "b"}));
    EXPECT_EQ(ParsedNames(","), (Strings{""}));
    EXPECT_EQ(ParsedNames("[],a"), (Strings{"", "a"}));
}

TEST(DbIndex, FieldList_BracketsInTheMiddle_ProtectTheBlanksInThem) {
    EXPECT_EQ(ParsedNames("x [y z] w,q"), (Strings{"x[y z]w", "q"}));
}

TEST_F(ThreeFields, CreateIndex_WithNames_ResolvesThemInOrder) {
    EXPECT_TRUE(m_descr.CreateIndex("Idx", Names({"C", "[a]"})));
    const DbIndex* const index = m_descr.FindIndex("IDX");
    ASSERT_NE(index, nullptr);
    EXPECT_EQ(index->GetName().ToUtf8(), "idx");
    EXPECT_EQ(index->GetFieldIndexes(), (std::vector<uint64>{2, 0}));
}

TEST_F(ThreeFields, CreateIndex_WithList_ResolvesIt) {
    EXPECT_TRUE(m_descr.CreateIndex("Idx", CString("[b], A")));
    ASSERT_NE(m_descr.FindIndex("idx"), nullptr);
    EXPECT_EQ(m_descr.FindIndex("idx")->GetFieldIndexes(), (std::vector<uint64>{1, 0}));
}

TEST_F(ThreeFields, CreateIndex_UnknownField_RegistersNothing) {
    EXPECT_FALSE(m_descr.CreateIndex("Idx", CString("a,x")));
    EXPECT_FALSE(m_descr.CreateIndex("Idx", Names({"x"})));
    EXPECT_EQ(m_descr.FindIndex("idx"), nullptr);
}

TEST_F(ThreeFields, CreateIndex_NameTakenInAnotherCase_KeepsTheExistingOne) {
    EXPECT_TRUE(m_descr.CreateIndex("idx", CString("b")));
    const DbIndex* const existing = m_descr.FindIndex("idx");
    EXPECT_TRUE(m_descr.CreateIndex("IDX", CString("a")));
    EXPECT_TRUE(m_descr.CreateIndex("IDX", Names({"unknown"}))) << "an existing index is not checked";
    EXPECT_EQ(m_descr.FindIndex("Idx"), existing);
    EXPECT_EQ(existing->GetFieldIndexes(), (std::vector<uint64>{1}));
}

TEST_F(ThreeFields, CreateIndex_EmptyName_IsRefused) {
    EXPECT_FALSE(m_descr.CreateIndex("", CString("a")));
    EXPECT_FALSE(m_descr.CreateIndex("", Names({"a"})));
    EXPECT_EQ(m_descr.CreateIndex(""), nullptr);
    EXPECT_EQ(m_descr.FindIndex(""), nullptr);
}

TEST_F(ThreeFields, CreateIndex_NameAlone_GivesAnIndexWithoutFields) {
    DbIndex* const index = m_descr.CreateIndex("IDX");
    ASSERT_NE(index, nullptr);
    EXPECT_EQ(index, m_descr.FindIndex("idx"));
    EXPECT_TRUE(index->GetFieldIndexes().empty());
}

TEST_F(ThreeFields, CreateIndex_NameAloneThatIsTaken_GivesTheExistingIndex) {
    m_descr.CreateIndex("idx", CString("a"));
    EXPECT_EQ(m_descr.CreateIndex("IDX"), m_descr.FindIndex("idx"));
    EXPECT_EQ(m_descr.FindIndex("idx")->GetFieldIndexes(), (std::vector<uint64>{0}));
}

TEST_F(ThreeFields, CreateIndex_Object_IsTakenOver) {
    auto* const index = new DbIndex("other name", Names({"b"}));
    EXPECT_TRUE(m_descr.CreateIndex("Idx", index));
    EXPECT_EQ(m_descr.FindIndex("idx"), index);
    EXPECT_EQ(index->GetFieldIndexes(), (std::vector<uint64>{1}));
    EXPECT_EQ(m_descr.FindIndex("other name"), nullptr);
}

TEST_F(ThreeFields, CreateIndex_ObjectWithATakenName_IsDeletedAndTheResultIsTrue) {
    m_descr.CreateIndex("idx", CString("a"));
    const DbIndex* const existing = m_descr.FindIndex("idx");
    EXPECT_TRUE(m_descr.CreateIndex("IDX", new DbIndex("idx", Names({"b"}))));
    EXPECT_EQ(m_descr.FindIndex("idx"), existing);
}

TEST_F(ThreeFields, CreateIndex_ObjectThatIsRefused_StaysTheCallers) {
    DbIndex unknownField("i", Names({"x"}));
    EXPECT_FALSE(m_descr.CreateIndex("i", &unknownField));
    DbIndex withoutName("i", Names({"a"}));
    EXPECT_FALSE(m_descr.CreateIndex("", &withoutName));
    EXPECT_FALSE(m_descr.CreateIndex("i", static_cast<DbIndex*>(nullptr)));
    EXPECT_EQ(Utf8Of(withoutName.GetFieldNames()), (Strings{"a"}));
}

TEST_F(ThreeFields, CreateIndex_ObjectThatIsTheRegisteredOne_StaysRegistered) {
    m_descr.CreateIndex("idx", CString("a"));
    DbIndex* const index = m_descr.FindIndex("idx");
    EXPECT_TRUE(m_descr.CreateIndex("IDX", index));
    EXPECT_EQ(m_descr.FindIndex("idx"), index);
    EXPECT_EQ(index->GetFieldIndexes(), (std::vector<uint64>{0}));
}

TEST_F(ThreeFields, CreateIndex_ObjectRegisteredUnderAnotherName_IsNotOwnedTwice) {
    m_descr.CreateIndex("one", CString("a"));
    m_descr.CreateIndex("two", m_descr.FindIndex("one"));
    EXPECT_TRUE(m_descr.DeleteIndex("one"));
    m_descr.DeleteIndex("two");
    EXPECT_EQ(m_descr.FindIndex("two"), nullptr);
}

TEST_F(ThreeFields, CreateIndex_RegisteredObjectOntoATakenName_StaysAlive) {
    m_descr.CreateIndex("one", CString("a"));
    m_descr.CreateIndex("two", CString("b"));
    m_descr.CreateIndex("two", m_descr.FindIndex("one"));
    ASSERT_NE(m_descr.FindIndex("one"), nullptr);
    EXPECT_EQ(m_descr.FindIndex("one")->GetFieldIndexes(), (std::vector<uint64>{0}));
}

TEST_F(ThreeFields, CheckIndexFields_NullUnknownAndEmpty) {
    EXPECT_FALSE(m_descr.CheckIndexFields(nullptr));
    const DbIndex none("i");
    EXPECT_TRUE(m_descr.CheckIndexFields(&none));
    const DbIndex known("i", Names({"A", "[b]"}));
    EXPECT_TRUE(m_descr.CheckIndexFields(&known));
    const DbIndex unknown("i", Names({"a", "x"}));
    EXPECT_FALSE(m_descr.CheckIndexFields(&unknown));
    const DbIndex emptyName("i", CString("a,,b"));
    EXPECT_FALSE(m_descr.CheckIndexFields(&emptyName));
}

TEST_F(ThreeFields, DeleteIndex_KnownInAnyCase_IsGone) {
    m_descr.CreateIndex("Idx", CString("a"));
    EXPECT_TRUE(m_descr.DeleteIndex("IDX"));
    EXPECT_EQ(m_descr.FindIndex("idx"), nullptr);
    EXPECT_FALSE(m_descr.DeleteIndex("idx"));
    EXPECT_FALSE(m_descr.DeleteIndex(""));
}

// Records the rows that it evaluates.
class ProbeFilter : public DbFilter {
public:
    ProbeFilter(std::vector<std::string>& notes, std::string name)
        : m_notes(notes), m_name(std::move(name)) {}
    ~ProbeFilter() override { m_notes.push_back(m_name + " dies"); }
    void Evaluate(const DbTableRow& row) override { m_notes.push_back(m_name + " " + PrintedText(row[0])); }

private:
    std::vector<std::string>& m_notes;
    std::string m_name;
};

TEST_F(TableInDatabase, Evaluate_AsksEveryFilterInOrder) {
    Strings notes;
    Descr().AppendFilter(std::make_unique<ProbeFilter>(notes, "first"));
    Descr().AppendFilter(std::make_unique<ProbeFilter>(notes, "second"));
    Descr().Evaluate(Data()[1]);
    Data()[0].Evaluate();
    EXPECT_EQ(notes, (Strings{"first 20", "second 20", "first 10", "second 10"}));
    Descr().ClearFilters();
}

TEST_F(TableInDatabase, ClearFilters_DeletesEveryFilter) {
    Strings notes;
    Descr().AppendFilter(std::make_unique<ProbeFilter>(notes, "first"));
    Descr().ClearFilters();
    EXPECT_EQ(notes, (Strings{"first dies"}));
    Descr().Evaluate(Data()[0]);
    EXPECT_EQ(notes.size(), 1U);
}

TEST_F(TableInDatabase, AppendFilter_Null_AddsNothing) {
    Descr().AppendFilter(nullptr);
    Descr().Evaluate(Data()[0]);
    EXPECT_EQ(Cells(0), (Strings{"10", "x"}));
}

TEST_F(TableInDatabase, AddFilter_StandsBehindTheOthersUntilTheyAreCleared) {
    Strings notes;
    Descr().AppendFilter(std::make_unique<ProbeFilter>(notes, "first"));
    const DbFilter* const ten = Descr().AddFilter("a", "=", "10");
    const DbFilter* const twenty = Descr().AddFilter("20", "=", "a");
    ASSERT_NE(ten, nullptr);
    ASSERT_NE(twenty, nullptr);
    Data()[1].Evaluate();
    EXPECT_EQ(notes, (Strings{"first 20"}));
    EXPECT_FALSE(ten->value());
    EXPECT_TRUE(twenty->value());
    Descr().ClearFilters();
    EXPECT_EQ(notes, (Strings{"first 20", "first dies"}));
}

TEST_F(TableInDatabase, AddFilter_IsNoChange) {
    m_database.Sync();
    EXPECT_NE(Descr().AddFilter("a", "=", "10"), nullptr);
    Data()[0].Evaluate();
    Descr().ClearFilters();
    EXPECT_FALSE(m_database.IsChanged());
}

TEST_F(TableInDatabase, Clear_DeletesTheFiltersToo) {
    Strings notes;
    Descr().AppendFilter(std::make_unique<ProbeFilter>(notes, "first"));
    Descr().Clear();
    EXPECT_EQ(notes, (Strings{"first dies"}));
}

TEST_F(ThreeFields, Save_WritesTheFieldsInOrderAndNothingElse) {
    m_descr.CreateIndex("i", CString("a"));
    SaveTarget target;
    EXPECT_TRUE(m_descr.Save(target.Automation(), target.Element()));
    EXPECT_EQ(target.Content(),
              "<field name=\"a\" key=\"true\" type=\"3\" required=\"0\" />\n"
              "<field name=\"b\" key=\"false\" type=\"8\" required=\"0\" />\n"
              "<field name=\"c\" key=\"false\" type=\"5\" required=\"0\" />\n");
}

TEST_F(ThreeFields, Save_AFieldThatFails_EndsTheSave) {
    m_descr[1].SetName(Units({'b', 2}));
    SaveTarget target;
    EXPECT_FALSE(m_descr.Save(target.Automation(), target.Element()));
    EXPECT_EQ(target.Content(), "<field name=\"a\" key=\"true\" type=\"3\" required=\"0\" />\n");
}

TEST(DbTableDescr, Save_WithoutFields_IsTrue) {
    DbTableDescr descr(nullptr);
    SaveTarget target;
    EXPECT_TRUE(descr.Save(target.Automation(), target.Element()));
    EXPECT_EQ(target.Content(), "");
}

TEST(DbTableDescr, Load_EveryChildWhateverItsName_BecomesAField) {
    DbTableDescr descr(nullptr);
    EXPECT_TRUE(
        descr.Load(ElementOf("<t name='x'><field name='a' type='3'/><other name='b' type='8' key='true'/>"
                             "<!-- remark --><field/></t>")
                       .Get()));
    EXPECT_EQ(FieldNames(descr), (Strings{"a", "b", ""}));
    EXPECT_EQ(descr[1].GetIndex(), 1);
    EXPECT_EQ(descr[2].GetIndex(), 2);
    EXPECT_EQ(descr[1].GetParent(), &descr);
    EXPECT_TRUE(descr[1].IsKey());
    EXPECT_EQ(descr.GetFieldIndex("B"), 1);
}

TEST(DbTableDescr, Load_FieldsThatStand_AreKeptAndTheNewOnesCountFromZero) {
    DbTableDescr descr(nullptr);
    descr.CreateField("a", false, DbFieldDescr::Text);
    EXPECT_TRUE(descr.Load(ElementOf("<t><field name='b' type='3'/></t>").Get()));
    EXPECT_EQ(FieldNames(descr), (Strings{"a", "b"}));
    EXPECT_EQ(descr[1].GetIndex(), 0);
}

TEST(DbTableDescr, Load_AfterALookup_HidesTheNewFieldsFromIt) {
    DbTableDescr descr(nullptr);
    EXPECT_EQ(descr.GetFieldIndex("a"), -1);
    EXPECT_TRUE(descr.Load(ElementOf("<t><field name='a' type='3'/></t>").Get()));
    EXPECT_EQ(descr.GetFieldIndex("a"), -1);
    EXPECT_TRUE(descr.CreateField("a", false, DbFieldDescr::Text)) << "the hidden field is no obstacle";
    EXPECT_EQ(descr.GetFieldIndex("a"), 0);
}

TEST(DbTableDescr, Load_AFieldThatFails_StaysAndEndsTheLoad) {
    DbTableDescr descr(nullptr);
    EXPECT_FALSE(descr.Load(ElementOf("<t><field name='a'/>text<field name='b'/></t>").Get()));
    EXPECT_EQ(FieldNames(descr), (Strings{"a", ""}));
}

TEST(DbTableDescr, Load_ElementWithoutChildren_IsTrue) {
    DbTableDescr descr(nullptr);
    EXPECT_TRUE(descr.Load(ElementOf("<t/>").Get()));
    EXPECT_TRUE(descr.empty());
}

TEST(DbTableDescrFilters, TakeAllFilters_LeavesNone) {
    DbTableDescr descr(nullptr);
    descr.CreateField("a", false, DbFieldDescr::Long);
    DbFilter* const first = descr.AddFilter("a", "=", "1");
    DbFilter* const second = descr.AddFilter("a", "=", "2");
    const auto taken = descr.TakeAllFilters();
    ASSERT_EQ(taken.size(), 2U);
    EXPECT_EQ(taken[0].get(), first);
    EXPECT_EQ(taken[1].get(), second);
    EXPECT_TRUE(descr.TakeAllFilters().empty());
}

TEST(DbTableDescr, Load_UnknownType_KeepsTheValuesAsText) {
    DbDatabase database;
    DbTableInfo* const info = database.CreateTable("T", DbTableInfo::Table);
    EXPECT_TRUE(info->GetDescr()->Load(ElementOf("<t><field name='a' type='6'/></t>").Get()));
    info->GetData()->AddRow();
    info->GetData()->GetRow(0)->SetValue("a", CString("12"));
    EXPECT_EQ(TextOf((*info->GetData())[0][uint64(0)].GetValue()), "12");
}

TEST_F(ThreeFields, SaveAndLoad_Structure_ComesBack) {
    SaveTarget target;
    ASSERT_TRUE(m_descr.Save(target.Automation(), target.Element()));
    DbTableDescr read(nullptr);
    EXPECT_TRUE(read.Load(target.Element()));
    EXPECT_EQ(FieldNames(read), FieldNames(m_descr));
    for (uint64 i = 0; i < 3; ++i) {
        EXPECT_EQ(read[i].GetDbType(), m_descr[i].GetDbType());
        EXPECT_EQ(read[i].IsKey(), m_descr[i].IsKey());
        EXPECT_EQ(read[i].GetIndex(), m_descr[i].GetIndex());
    }
}

TEST(DbTableDescrFilters, TakeFilters_HandsOverThoseThatAreHere) {
    DbTableDescr descr(nullptr);
    descr.CreateField("a", false, DbFieldDescr::Long);
    DbFilter* const first = descr.AddFilter("a", "=", "1");
    DbFilter* const second = descr.AddFilter("a", "=", "2");
    DbFilter* const third = descr.AddFilter("a", "=", "3");
    const DbFilter foreign;
    const auto taken = descr.TakeFilters({third, const_cast<DbFilter*>(&foreign), first, first});
    ASSERT_EQ(taken.size(), 2U);
    EXPECT_EQ(taken[0].get(), first) << "in the order in which they were made";
    EXPECT_EQ(taken[1].get(), third);
    EXPECT_TRUE(descr.TakeFilters({}).empty());
    EXPECT_EQ(descr.TakeFilters({first, second, third}).size(), 1U);
}

}  // namespace
