// Wrappers whose part of the model is deleted: each reports it, and none follows a dangling pointer.
#include "Server.h"

namespace {

using namespace quillet::test;

using Lifetime = ServerTest;

TEST_F(Lifetime, RowIsRemoved_ItAndItsCellsFail) {
    const auto row = Row("T", 1);
    const auto cell = Given(row, "FieldByIndex", {1});
    EXPECT_EQ(Said(cell, "Value"), "b");
    Given(Contents("T"), "RemoveRow", {1});
    EXPECT_EQ(Said(row, "FieldsCount"), "failed");
    EXPECT_EQ(Said(row, "FieldByIndex", {0}), "failed");
    EXPECT_EQ(Said(row, "FieldByName", {"n"}), "failed");
    EXPECT_EQ(Said(cell, "Value"), "failed");
    EXPECT_EQ(Said(cell, "Index"), "failed");
    EXPECT_NE(Put(cell, "Value", "x"), S_OK);
    EXPECT_EQ(CellsOf(Row("T", 1)), "3 c");
}

TEST_F(Lifetime, RowBeforeIsRemoved_AWrapperFollowsItsRow) {
    const auto row = Row("T", 1);
    Given(Contents("T"), "RemoveRow", {0});
    EXPECT_EQ(CellsOf(row), "2 b");
    Given(Contents("T"), "AddRow");
    EXPECT_EQ(CellsOf(row), "0 ") << "it is the kept wrapper, on the new row now";
}

TEST_F(Lifetime, RowIsRemovedAndAnotherTakesItsMemory_TheCellStillFails) {
    const auto cell = Given(Row("T", 2), "FieldByIndex", {0});
    for (int i = 0; i < 50; ++i) {
        Given(Contents("T"), "RemoveRow", {2});
        AddRow("T", i, "new");
        // The same wrapper, which now shows something again.
        EXPECT_EQ(Said(cell, "Value"), "new");
    }
}

TEST_F(Lifetime, FieldIsDeleted_ItsCellFailsAndOthersStay) {
    const auto row = Row("T", 0);
    const auto cell = Given(row, "FieldByName", {"t"});
    Given(Structure("T"), "DeleteField", {0});
    EXPECT_EQ(Said(cell, "Value"), "a");
    EXPECT_EQ(Said(row, "FieldsCount"), "1");
    EXPECT_EQ(Put(cell, "Value", "changed"), S_OK);
    EXPECT_EQ(CellsOf(Row("T", 0)), "changed");
    const auto again = Given(Row("T", 0), "FieldByIndex", {0});
    Given(Structure("T"), "DeleteField", {0});
    EXPECT_EQ(Said(again, "Value"), "failed");
    EXPECT_NE(Put(again, "Value", "x"), S_OK);
    Given(Structure("T"), "CreateField", {"t", TextField});
    EXPECT_EQ(Said(again, "Value"), "failed") << "a new field of the old name is another one";
}

TEST_F(Lifetime, FieldIsDeleted_ItsWrapperFails) {
    const auto first = Given(Structure("T"), "FieldByIndex", {0});
    Given(Structure("T"), "DeleteField", {0});
    EXPECT_EQ(Said(first, "Name"), "failed");
    EXPECT_EQ(Said(first, "Type"), "failed");
    EXPECT_EQ(Said(first, "TypeName"), "failed");
    EXPECT_EQ(Said(first, "Index"), "failed");
    EXPECT_NE(Put(first, "Type", 3), S_OK);
    EXPECT_EQ(Said(Given(Structure("T"), "FieldByIndex", {0}), "Name"), "t");
    EXPECT_EQ(Said(first, "Name"), "t") << "it is the kept wrapper, on the field that is there";
}

TEST_F(Lifetime, TableIsDeleted_EverythingOfItFailsAndANewOneOfItsNameIsAnother) {
    const auto structure = Structure("T");
    const auto contents = Contents("T");
    const auto row = Row("T", 0);
    const auto cell = Given(row, "FieldByIndex", {0});
    const auto field = Given(structure, "FieldByIndex", {0});
    const auto entry = Given(m_catalog, "TableInfoByName", {"T"});
    Given(m_catalog, "DeleteTable", {"T"});
    MakeTable("T");
    EXPECT_EQ(Said(structure, "FieldsCount"), "failed");
    EXPECT_EQ(Said(structure, "FieldByIndex", {0}), "failed");
    EXPECT_EQ(Said(structure, "FieldByName", {"n"}), "failed");
    EXPECT_EQ(Said(structure, "CreateField", {"x", 1}), "failed");
    EXPECT_EQ(Said(structure, "DeleteField", {0}), "failed");
    EXPECT_EQ(Said(structure, "CreateIndex", {"i", "n"}), "failed");
    EXPECT_EQ(Said(contents, "RowsCount"), "failed");
    EXPECT_EQ(Said(contents, "Row", {0}), "failed");
    EXPECT_EQ(Said(contents, "AddRow"), "failed");
    EXPECT_EQ(Said(contents, "RemoveRow", {0}), "failed");
    EXPECT_EQ(Said(row, "FieldsCount"), "failed");
    EXPECT_EQ(Said(cell, "Value"), "failed");
    EXPECT_EQ(Said(field, "Name"), "failed");
    EXPECT_EQ(Said(entry, "sql"), "failed");
    EXPECT_EQ(Said(entry, "Type"), "failed");
    EXPECT_EQ(Said(Contents("T"), "RowsCount"), "0");
    EXPECT_NE(Contents("T").Get(), contents.Get());
}

TEST_F(Lifetime, TablesComeAndGo_EachNewOneHasAWrapperOfItsOwn) {
    for (int i = 0; i < 300; ++i) {
        MakeTable("passing");
        const auto contents = Contents("passing");
        EXPECT_EQ(Said(contents, "RowsCount"), "0");
        Given(m_catalog, "DeleteTable", {"passing"});
        EXPECT_EQ(Said(contents, "RowsCount"), "failed");
    }
    EXPECT_EQ(Said(Contents("T"), "RowsCount"), "3");
}

TEST_F(Lifetime, AnswerIsFilledAnew_ItsWrapperStaysAndItsOldRowsFail) {
    const auto name = Asked("select t from T where n > 1");
    const auto answer = Given(m_catalog, "TableData", {name});
    const auto row = Given(answer, "Row", {0});
    EXPECT_EQ(CellsOf(row), "b");
    AddRow("T", 4, "d");
    EXPECT_EQ(Given(m_catalog, "TableData", {name}).Get(), answer.Get());
    EXPECT_EQ(Said(answer, "RowsCount"), "3");
    EXPECT_EQ(CellsOf(row), "failed");
}

TEST_F(Lifetime, AnswerWithEveryField_ShowsTheRowsOfTheTableItself) {
    const auto name = Asked("select * from T where n > 1");
    const auto row = Given(Given(m_catalog, "TableData", {name}), "Row", {0});
    EXPECT_EQ(Put(Given(row, "FieldByName", {"t"}), "Value", "changed"), S_OK);
    EXPECT_EQ(CellsOf(Row("T", 1)), "2 changed");
    Given(m_catalog, "TableData", {name});
    EXPECT_EQ(CellsOf(row), "2 changed");
    Given(Contents("T"), "RemoveRow", {1});
    EXPECT_EQ(CellsOf(row), "failed");
}

TEST_F(Lifetime, AnswersTableIsDeleted_TheAnswerFails) {
    const auto name = Asked("select * from T where n > 1");
    const auto answer = Given(m_catalog, "TableData", {name});
    Given(m_catalog, "DeleteTable", {"T"});
    EXPECT_EQ(Said(answer, "RowsCount"), "failed");
    EXPECT_EQ(Said(m_catalog, "TableData", {name}), "nothing");
}

TEST_F(Lifetime, AnotherFileOrANewCatalog_LetsGoOfEverything) {
    const auto contents = Contents("T");
    const auto header = Given(m_catalog, "Header");
    const auto source = Given(m_catalog, "Source");
    EXPECT_EQ(Said(m_catalog, "Find", {0, "T", "n = 2"}), "1");
    Given(m_catalog, "Save", {CComVariant(CString(Path()))});
    EXPECT_EQ(Put(source, "FilePath", CComVariant(CString(Path()))), S_OK);
    EXPECT_EQ(Said(contents, "RowsCount"), "failed");
    EXPECT_EQ(Said(header, "Title"), "failed");
    EXPECT_EQ(Said(m_catalog, "Find", {1, "T", "n > 1"}), "1") << "a fresh cursor begins at the first row";
    const auto reread = Contents("T");
    EXPECT_EQ(Said(reread, "RowsCount"), "3");
    Given(m_catalog, "Create", {CComVariant(CString(Path("other.xml")))});
    EXPECT_EQ(Said(reread, "RowsCount"), "failed");
    EXPECT_EQ(Said(source, "FilePath"), Path("other.xml"));
    EXPECT_EQ(Said(m_catalog, "TablesCount"), "2");
}

TEST_F(Lifetime, CatalogGoes_WhatWasHandedOutFailsAndKeepsTheLibraryLoaded) {
    std::vector<CComPtr<IDispatch>> held = {Given(m_catalog, "Source"),
                                            Given(m_catalog, "Header"),
                                            Given(m_catalog, "Properties"),
                                            Given(m_catalog, "TableInfoByName", {"T"}),
                                            Structure("T"),
                                            Given(Structure("T"), "FieldByIndex", {0}),
                                            Contents("T"),
                                            Row("T", 0),
                                            Given(Row("T", 0), "FieldByIndex", {0})};
    Given(m_catalog, "Save", {CComVariant(CString(Path()))});
    m_catalog = {};
    const std::vector<const char*> members = {"FilePath", "Title",     "Material",    "sql",  "FieldsCount",
                                              "Name",     "RowsCount", "FieldsCount", "Value"};
    for (std::size_t i = 0; i < held.size(); ++i) {
        EXPECT_EQ(Said(held[i], members[i]), "failed") << members[i];
    }
    EXPECT_EQ(CanUnloadNow(), S_FALSE);
    held.clear();
    EXPECT_EQ(CanUnloadNow(), S_OK);
}

TEST_F(Lifetime, ChildOutlivesItsParentWrapper_AndShowsOn) {
    auto row = NewObject(__uuidof(DbTableRow));
    EXPECT_EQ(Said(row, "FieldsCount"), "failed");
    // The catalog keeps the wrapper of the contents, which keeps that of the row.
    row = Given(Given(m_catalog, "TableData", {"T"}), "Row", {2});
    EXPECT_EQ(CellsOf(row), "3 c");
}

TEST_F(Lifetime, ChangedCatalogGoes_ItSavesItself) {
    Put(Given(m_catalog, "Header"), "Title", "kept");
    m_catalog = NewObject(__uuidof(DbDatabase));
    EXPECT_EQ(Put(Given(m_catalog, "Source"), "FilePath", CComVariant(CString(Path()))), S_OK);
    EXPECT_EQ(Said(Given(m_catalog, "Header"), "Title"), "kept");
    EXPECT_EQ(Said(Contents("T"), "RowsCount"), "3");
}

}  // namespace
