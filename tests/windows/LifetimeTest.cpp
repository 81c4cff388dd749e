// Wrappers whose part of the model is deleted: each reports it, and none follows a dangling pointer.
#include "Server.h"

namespace {

using namespace quillet::test;

using Lifetime = ServerTest;

TEST_F(Lifetime, RowIsRemoved_ItAndItsCellsFail) {
    const auto row = Row("T", 1);
    const auto cell = ObjectFrom(row, "FieldByIndex", {1});
    EXPECT_EQ(ResultText(cell, "Value"), "b");
    ObjectFrom(Contents("T"), "RemoveRow", {1});
    EXPECT_EQ(ResultText(row, "FieldsCount"), "failed");
    EXPECT_EQ(ResultText(row, "FieldByIndex", {0}), "failed");
    EXPECT_EQ(ResultText(row, "FieldByName", {"n"}), "failed");
    EXPECT_EQ(ResultText(cell, "Value"), "failed");
    EXPECT_EQ(ResultText(cell, "Index"), "failed");
    EXPECT_NE(PutProperty(cell, "Value", "x"), S_OK);
    EXPECT_EQ(CellsOf(Row("T", 1)), "3 c");
}

TEST_F(Lifetime, RowBeforeIsRemoved_AWrapperFollowsItsRow) {
    const auto row = Row("T", 1);
    ObjectFrom(Contents("T"), "RemoveRow", {0});
    EXPECT_EQ(CellsOf(row), "2 b");
    ObjectFrom(Contents("T"), "AddRow");
    EXPECT_EQ(CellsOf(row), "0 ") << "it is the kept wrapper, on the new row now";
}

TEST_F(Lifetime, RowIsRemovedAndAnotherTakesItsMemory_TheCellStillFails) {
    const auto cell = ObjectFrom(Row("T", 2), "FieldByIndex", {0});
    for (int i = 0; i < 50; ++i) {
        ObjectFrom(Contents("T"), "RemoveRow", {2});
        AddRow("T", i, "new");
        // The same wrapper, which now shows something again.
        EXPECT_EQ(ResultText(cell, "Value"), "new");
    }
}

TEST_F(Lifetime, FieldIsDeleted_ItsCellFailsAndOthersStay) {
    const auto row = Row("T", 0);
    const auto cell = ObjectFrom(row, "FieldByName", {"t"});
    ObjectFrom(Structure("T"), "DeleteField", {0});
    EXPECT_EQ(ResultText(cell, "Value"), "a");
    EXPECT_EQ(ResultText(row, "FieldsCount"), "1");
    EXPECT_EQ(PutProperty(cell, "Value", "changed"), S_OK);
    EXPECT_EQ(CellsOf(Row("T", 0)), "changed");
    const auto again = ObjectFrom(Row("T", 0), "FieldByIndex", {0});
    ObjectFrom(Structure("T"), "DeleteField", {0});
    EXPECT_EQ(ResultText(again, "Value"), "failed");
    EXPECT_NE(PutProperty(again, "Value", "x"), S_OK);
    ObjectFrom(Structure("T"), "CreateField", {"t", TextField});
    EXPECT_EQ(ResultText(again, "Value"), "failed") << "a new field of the old name is another one";
}

TEST_F(Lifetime, FieldIsDeleted_ItsWrapperFails) {
    const auto first = ObjectFrom(Structure("T"), "FieldByIndex", {0});
    ObjectFrom(Structure("T"), "DeleteField", {0});
    EXPECT_EQ(ResultText(first, "Name"), "failed");
    EXPECT_EQ(ResultText(first, "Type"), "failed");
    EXPECT_EQ(ResultText(first, "TypeName"), "failed");
    EXPECT_EQ(ResultText(first, "Index"), "failed");
    EXPECT_NE(PutProperty(first, "Type", 3), S_OK);
    EXPECT_EQ(ResultText(ObjectFrom(Structure("T"), "FieldByIndex", {0}), "Name"), "t");
    EXPECT_EQ(ResultText(first, "Name"), "t") << "it is the kept wrapper, on the field that is there";
}

TEST_F(Lifetime, TableIsDeleted_EverythingOfItFailsAndANewOneOfItsNameIsAnother) {
    const auto structure = Structure("T");
    const auto contents = Contents("T");
    const auto row = Row("T", 0);
    const auto cell = ObjectFrom(row, "FieldByIndex", {0});
    const auto field = ObjectFrom(structure, "FieldByIndex", {0});
    const auto entry = ObjectFrom(m_catalog, "TableInfoByName", {"T"});
    ObjectFrom(m_catalog, "DeleteTable", {"T"});
    MakeTable("T");
    EXPECT_EQ(ResultText(structure, "FieldsCount"), "failed");
    EXPECT_EQ(ResultText(structure, "FieldByIndex", {0}), "failed");
    EXPECT_EQ(ResultText(structure, "FieldByName", {"n"}), "failed");
    EXPECT_EQ(ResultText(structure, "CreateField", {"x", 1}), "failed");
    EXPECT_EQ(ResultText(structure, "DeleteField", {0}), "failed");
    EXPECT_EQ(ResultText(structure, "CreateIndex", {"i", "n"}), "failed");
    EXPECT_EQ(ResultText(contents, "RowsCount"), "failed");
    EXPECT_EQ(ResultText(contents, "Row", {0}), "failed");
    EXPECT_EQ(ResultText(contents, "AddRow"), "failed");
    EXPECT_EQ(ResultText(contents, "RemoveRow", {0}), "failed");
    EXPECT_EQ(ResultText(row, "FieldsCount"), "failed");
    EXPECT_EQ(ResultText(cell, "Value"), "failed");
    EXPECT_EQ(ResultText(field, "Name"), "failed");
    EXPECT_EQ(ResultText(entry, "sql"), "failed");
    EXPECT_EQ(ResultText(entry, "Type"), "failed");
    EXPECT_EQ(ResultText(Contents("T"), "RowsCount"), "0");
    EXPECT_NE(Contents("T").Get(), contents.Get());
}

TEST_F(Lifetime, TablesComeAndGo_EachNewOneHasAWrapperOfItsOwn) {
    for (int i = 0; i < 300; ++i) {
        MakeTable("passing");
        const auto contents = Contents("passing");
        EXPECT_EQ(ResultText(contents, "RowsCount"), "0");
        ObjectFrom(m_catalog, "DeleteTable", {"passing"});
        EXPECT_EQ(ResultText(contents, "RowsCount"), "failed");
    }
    EXPECT_EQ(ResultText(Contents("T"), "RowsCount"), "3");
}

TEST_F(Lifetime, AnswerIsFilledAnew_ItsWrapperStaysAndItsOldRowsFail) {
    const auto name = AnswerName("select t from T where n > 1");
    const auto answer = ObjectFrom(m_catalog, "TableData", {name});
    const auto row = ObjectFrom(answer, "Row", {0});
    EXPECT_EQ(CellsOf(row), "b");
    AddRow("T", 4, "d");
    EXPECT_EQ(ObjectFrom(m_catalog, "TableData", {name}).Get(), answer.Get());
    EXPECT_EQ(ResultText(answer, "RowsCount"), "3");
    EXPECT_EQ(CellsOf(row), "failed");
}

TEST_F(Lifetime, AnswerWithEveryField_ShowsTheRowsOfTheTableItself) {
    const auto name = AnswerName("select * from T where n > 1");
    const auto row = ObjectFrom(ObjectFrom(m_catalog, "TableData", {name}), "Row", {0});
    EXPECT_EQ(PutProperty(ObjectFrom(row, "FieldByName", {"t"}), "Value", "changed"), S_OK);
    EXPECT_EQ(CellsOf(Row("T", 1)), "2 changed");
    ObjectFrom(m_catalog, "TableData", {name});
    EXPECT_EQ(CellsOf(row), "2 changed");
    ObjectFrom(Contents("T"), "RemoveRow", {1});
    EXPECT_EQ(CellsOf(row), "failed");
}

TEST_F(Lifetime, AnswersTableIsDeleted_TheAnswerFails) {
    const auto name = AnswerName("select * from T where n > 1");
    const auto answer = ObjectFrom(m_catalog, "TableData", {name});
    ObjectFrom(m_catalog, "DeleteTable", {"T"});
    EXPECT_EQ(ResultText(answer, "RowsCount"), "failed");
    EXPECT_EQ(ResultText(m_catalog, "TableData", {name}), "nothing");
}

TEST_F(Lifetime, AnotherFileOrANewCatalog_LetsGoOfEverything) {
    const auto contents = Contents("T");
    const auto header = ObjectFrom(m_catalog, "Header");
    const auto source = ObjectFrom(m_catalog, "Source");
    EXPECT_EQ(ResultText(m_catalog, "Find", {0, "T", "n = 2"}), "1");
    ObjectFrom(m_catalog, "Save", {CComVariant(CString(Path()))});
    EXPECT_EQ(PutProperty(source, "FilePath", CComVariant(CString(Path()))), S_OK);
    EXPECT_EQ(ResultText(contents, "RowsCount"), "failed");
    EXPECT_EQ(ResultText(header, "Title"), "failed");
    EXPECT_EQ(ResultText(m_catalog, "Find", {1, "T", "n > 1"}), "1")
        << "a fresh cursor begins at the first row";
    const auto reread = Contents("T");
    EXPECT_EQ(ResultText(reread, "RowsCount"), "3");
    ObjectFrom(m_catalog, "Create", {CComVariant(CString(Path("other.xml")))});
    EXPECT_EQ(ResultText(reread, "RowsCount"), "failed");
    EXPECT_EQ(ResultText(source, "FilePath"), Path("other.xml"));
    EXPECT_EQ(ResultText(m_catalog, "TablesCount"), "2");
}

TEST_F(Lifetime, CatalogGoes_WhatWasHandedOutFailsAndKeepsTheLibraryLoaded) {
    std::vector<CComPtr<IDispatch>> held = {ObjectFrom(m_catalog, "Source"),
                                            ObjectFrom(m_catalog, "Header"),
                                            ObjectFrom(m_catalog, "Properties"),
                                            ObjectFrom(m_catalog, "TableInfoByName", {"T"}),
                                            Structure("T"),
                                            ObjectFrom(Structure("T"), "FieldByIndex", {0}),
                                            Contents("T"),
                                            Row("T", 0),
                                            ObjectFrom(Row("T", 0), "FieldByIndex", {0})};
    ObjectFrom(m_catalog, "Save", {CComVariant(CString(Path()))});
    m_catalog = {};
    const std::vector<const char*> members = {"FilePath", "Title",     "Material",    "sql",  "FieldsCount",
                                              "Name",     "RowsCount", "FieldsCount", "Value"};
    for (std::size_t i = 0; i < held.size(); ++i) {
        EXPECT_EQ(ResultText(held[i], members[i]), "failed") << members[i];
    }
    EXPECT_EQ(CanUnloadNow(), S_FALSE);
    held.clear();
    EXPECT_EQ(CanUnloadNow(), S_OK);
}

TEST_F(Lifetime, ChildOutlivesItsParentWrapper_AndShowsOn) {
    auto row = NewObject(__uuidof(DbTableRow));
    EXPECT_EQ(ResultText(row, "FieldsCount"), "failed");
    // The catalog keeps the wrapper of the contents, which keeps that of the row.
    row = ObjectFrom(ObjectFrom(m_catalog, "TableData", {"T"}), "Row", {2});
    EXPECT_EQ(CellsOf(row), "3 c");
}

TEST_F(Lifetime, ChangedCatalogGoes_ItSavesItself) {
    PutProperty(ObjectFrom(m_catalog, "Header"), "Title", "kept");
    m_catalog = NewObject(__uuidof(DbDatabase));
    EXPECT_EQ(PutProperty(ObjectFrom(m_catalog, "Source"), "FilePath", CComVariant(CString(Path()))), S_OK);
    EXPECT_EQ(ResultText(ObjectFrom(m_catalog, "Header"), "Title"), "kept");
    EXPECT_EQ(ResultText(Contents("T"), "RowsCount"), "3");
}

}  // namespace
