// The model saved into and loaded from documents that a host created with the system's XML parser.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "Quillet/xml/Node.h"
#include "support/CatalogHelpers.h"
#include "support/MsxmlDocument.h"

namespace {

using namespace quillet::test;
using Strings = std::vector<std::string>;

// Texts that need care in a document or as an attribute's value.
const Strings HardTexts = {
    "",
    " ",
    "  blanks before, within  and behind  ",
    "a & b < c > d \" e ' f",
    "&amp; &lt; &#9; &x; &",
    "<!-- --> <?p?> ]]> <![CDATA[",
    "\t",
    "\r\n",
    "one\ntwo\r\tthree\r\n",
    "za\u017C\u00F3\u0142\u0107 g\u0119\u015Bl\u0105 ja\u017A\u0144",
    "\u65E5\u672C\u8A9E \u0434\u0430 \u05D0\u05D1 e\u0301",
    "\U0001F600 \U0010FFFD",
    "\u00A0\u0085\u2028\uFEFF\uFFFD\x7F",
    std::string(70000, 'x') + "&" + std::string(70000, 'y'),
};

class WindowsXml : public testing::Test {
protected:
    WindowsXml() : m_element(m_document.AppendRoot()) {}

    // Saves the same object into a document of the system and into one of ours, and compares the two.
    void ExpectSavedLikeOurs(const std::function<bool(IDispatch* document, IDispatch* parent)>& save) {
        SaveTarget ours;
        EXPECT_TRUE(save(ours.Automation(), ours.Element()));
        EXPECT_TRUE(save(m_document.Automation(), m_element.Get()));
        EXPECT_EQ(Outline(m_element.Get()), Outline(ours.Element()));
        // The text of the system's document says the same.
        EXPECT_EQ(Outline(ElementOf(m_document.Xml()).Get()), Outline(ours.Element()));
    }

    ComApartment m_apartment;
    MsxmlDocument m_document;
    CComPtr<IDispatch> m_element;
};

// A database with one table, which has a field of every type and names that must be changed for a document.
class WindowsXmlTable : public WindowsXml {
protected:
    WindowsXmlTable() : m_info(m_database.CreateTable("T & <t>", DbTableInfo::Table)) {
        Descr().CreateField("flag", true, DbFieldDescr::Boolean);
        Descr().CreateField("short", false, DbFieldDescr::Integer);
        Descr().CreateField("long one", true, DbFieldDescr::Long);
        Descr().CreateField("f/s\\", false, DbFieldDescr::Float);
        Descr().CreateField("d<e>", false, DbFieldDescr::Double);
        Descr().CreateField("t (x)*", false, DbFieldDescr::Text);
        Descr().CreateField("bin", false, DbFieldDescr::Binary);
        Descr().CreateField("any", false, DbFieldDescr::Empty);
        Descr().CreateField("\u017C-1.\u65E5", false, DbFieldDescr::Text);
    }

    DbTableDescr& Descr() { return *m_info->GetDescr(); }
    DbTableData& Data() { return *m_info->GetData(); }

    // A row that is different for every number.
    DbTableRow& AddRow(int number) {
        DbTableRow& row = Data()[Data().AddRow()];
        const std::string& text = HardTexts[static_cast<std::size_t>(number) % HardTexts.size()];
        row[0].SetValue(CComVariant(number % 2 == 1));
        row[1].SetValue(CComVariant(-number));
        row[2].SetValue(CComVariant(2147483647 - number));
        row[3].SetValue(CComVariant(0.25F * static_cast<float>(number)));
        row[4].SetValue(CComVariant(-0.375 * number));
        row[5].SetValue(CComVariant(CString(text)));
        row[6].SetValue(ByteArray(std::string(static_cast<std::size_t>(number) * 7 % 90, '\xE9')));
        row[7].SetValue(CComVariant(CString("any " + std::to_string(number))));
        row[8].SetValue(CComVariant(CString("\u017C" + std::to_string(number))));
        return row;
    }
    void AddHardRows() {
        for (std::size_t i = 0; i < HardTexts.size(); ++i) {
            AddRow(static_cast<int>(i));
        }
    }
    static DbTableInfo& EmptyTable(DbDatabase& database) {
        return *database.CreateTable("T & <t>", DbTableInfo::Table);
    }

    DbDatabase m_database;
    DbTableInfo* m_info;
};

TEST_F(WindowsXml, FieldSave_EveryTypeAndKey_GivesWhatOurDocumentGives) {
    ExpectSavedLikeOurs([](IDispatch* document, IDispatch* parent) {
        bool saved = true;
        for (const VARTYPE type : {VARTYPE(VT_EMPTY), VARTYPE(VT_BOOL), VARTYPE(VT_I2), VARTYPE(VT_I4),
                                   VARTYPE(VT_R4), VARTYPE(VT_R8), VARTYPE(VT_BSTR), ByteArrayType}) {
            for (const bool key : {false, true}) {
                DbFieldDescr field;
                field.SetName("a <field>");
                field.SetType(type);
                field.SetKey(key);
                saved &= field.Save(document, parent);
            }
        }
        return saved;
    });
}

TEST_F(WindowsXml, FieldSaveAndLoad_EveryName_ComesBack) {
    for (const std::string& name : HardTexts) {
        const MsxmlDocument document;
        const auto parent = document.AppendRoot();
        DbFieldDescr field;
        field.SetName(CString(name));
        field.SetType(VT_R8);
        field.SetKey(true);
        ASSERT_TRUE(field.Save(document.Automation(), parent.Get())) << name.substr(0, 80);
        DbFieldDescr read;
        ASSERT_TRUE(read.Load(ChildAt(parent, 0).Get()));
        EXPECT_EQ(read.GetName().ToUtf8(), name);
        EXPECT_EQ(read.GetType(), VT_R8);
        EXPECT_TRUE(read.IsKey());
        EXPECT_FALSE(read.IsRequired());
    }
}

TEST_F(WindowsXml, FieldLoad_AttributesInAnyOrderAndOthers_AreTaken) {
    DbFieldDescr field;
    EXPECT_TRUE(field.Load(
        m_document.Load("<field x='1' type='11' Name='no' name='a&#32;b&amp;' key='true' required='-1'/>")
            .Get()));
    EXPECT_EQ(field.GetName().ToUtf8(), "a b&");
    EXPECT_EQ(field.GetDbType(), DbFieldDescr::Boolean);
    EXPECT_TRUE(field.IsKey());
}

TEST_F(WindowsXml, FieldLoad_MissingAttributes_LeaveTheFieldAsItIs) {
    DbFieldDescr field;
    EXPECT_TRUE(field.Load(m_document.Load("<field/>").Get()));
    EXPECT_EQ(field.GetName().ToUtf8(), "");
    EXPECT_EQ(field.GetType(), VT_EMPTY);
    EXPECT_FALSE(field.IsKey());
}

TEST_F(WindowsXmlTable, DescriptorSaveAndLoad_ComesBack) {
    ASSERT_TRUE(Descr().CreateIndex("by flag", "flag, [long one]"));
    ExpectSavedLikeOurs(
        [&](IDispatch* document, IDispatch* parent) { return Descr().Save(document, parent); });
    DbTableDescr read(nullptr);
    EXPECT_TRUE(read.Load(m_element.Get()));
    ASSERT_EQ(read.size(), Descr().size());
    for (uint64 i = 0; i < read.size(); ++i) {
        EXPECT_EQ(read[i].GetName(), Descr()[i].GetName()) << i;
        EXPECT_EQ(read[i].GetSafeName(), Descr()[i].GetSafeName()) << i;
        EXPECT_EQ(read[i].GetType(), Descr()[i].GetType()) << i;
        EXPECT_EQ(read[i].IsKey(), Descr()[i].IsKey()) << i;
        EXPECT_EQ(read[i].GetIndex(), static_cast<int>(i));
    }
    EXPECT_EQ(read.GetFieldIndex("D<E>"), 4);
    // Indexes are not part of a document.
    EXPECT_EQ(read.FindIndex("by flag"), nullptr);
}

TEST_F(WindowsXmlTable, RowSaveAndLoad_ComesBack) {
    for (std::size_t i = 0; i < HardTexts.size(); ++i) {
        DbTableRow& row = AddRow(static_cast<int>(i));
        ExpectSavedLikeOurs(
            [&](IDispatch* document, IDispatch* parent) { return row.Save(document, parent); });
        DbTableRow& read = Data()[Data().AddRow()];
        ASSERT_TRUE(read.Load(ChildAt(m_element, 0).Get()));
        for (uint64 field = 0; field < row.size(); ++field) {
            EXPECT_EQ(read[field].GetType(), row[field].GetType()) << field;
            EXPECT_TRUE(read[field].GetType() == ByteArrayType
                            ? ContentOf(read[field].GetVariant()) == ContentOf(row[field].GetVariant())
                            : read[field].GetVariant() == row[field].GetVariant())
                << i << ' ' << field;
        }
        ASSERT_TRUE(InvokeByName(m_element.Get(), "removeChild", {CComVariant(ChildAt(m_element, 0).Get())})
                        .Succeeded());
    }
}

TEST_F(WindowsXmlTable, RowSave_NullAndEmptyCells_GiveWhatOurDocumentGives) {
    DbTableRow& row = AddRow(1);
    DbTableRow& nulls = AddRow(2);
    for (uint64 field = 0; field < row.size(); ++field) {
        row[field].GetVariant() = CComVariant();
        nulls[field].GetVariant() = NullVariant();
    }
    ExpectSavedLikeOurs([&](IDispatch* document, IDispatch* parent) {
        return row.Save(document, parent) && nulls.Save(document, parent);
    });
    SaveTarget ours;
    ASSERT_TRUE(Data().Save(ours.Automation(), ours.Element()));
    DbDatabase fromOurs;
    DbDatabase fromTheirs;
    for (auto* const database : {&fromOurs, &fromTheirs}) {
        DbTableInfo& info = EmptyTable(*database);
        for (const DbFieldDescr* const field : Descr()) {
            info.GetDescr()->CreateField(*field);
        }
        EXPECT_TRUE(info.GetData()->Load(database == &fromOurs ? ours.Element() : m_element.Get()));
        EXPECT_EQ(info.GetData()->size(), 2U);
    }
    EXPECT_EQ(Dump(fromTheirs), Dump(fromOurs));
}

TEST_F(WindowsXmlTable, RowSave_WhatXmlCannotCarry_IsRefusedAndNothingAppended) {
    DbTableRow& row = AddRow(1);
    TakeLog(m_database);
    for (const CString& text : {Units({1}), Units({'a', 0, 'b'}), Units({0xD800}), Units({0xFFFE})}) {
        row[5].SetValue(CComVariant(text));
        EXPECT_FALSE(row.Save(m_document.Automation(), m_element.Get()));
        EXPECT_EQ(TakeLog(m_database),
                  (Strings{"Error on DbTableRow::Save(IDispatch* doc, IDispatch* element), "
                           "t__LP_x_RP__STAR_, 5"}));
    }
    for (const char* name :
         {"1st", "a+b", "50%", "a,b", "a;b", "a=b", "\"", "'", "&", "#", "[n]", "\u00B7", "flag"}) {
        Descr()[5].SetName(name);
        EXPECT_FALSE(row.Save(m_document.Automation(), m_element.Get())) << name;
        EXPECT_THAT(TakeLog(m_database), testing::Contains(testing::StartsWith("Error on DbTableRow::Save(")))
            << name;
    }
    EXPECT_EQ(Outline(m_element.Get()), "1 t\n");
}

TEST_F(WindowsXmlTable, RowLoad_FewerOrMoreAttributesThanFields_TakesThoseThatHaveAPlace) {
    DbTableRow& row = AddRow(1);
    EXPECT_TRUE(row.Load(m_document.Load("<row a='false' b='7'/>").Get()));
    EXPECT_EQ(row[0].GetVariant().boolVal, VARIANT_FALSE);
    EXPECT_EQ(row[1].GetVariant().lVal, 7);
    EXPECT_EQ(row[2].GetVariant().lVal, 2147483646);
    std::string many;
    for (int i = 0; i < 40; ++i) {
        many += " a" + std::to_string(i) + "='" + std::to_string(i) + "'";
    }
    EXPECT_TRUE(row.Load(m_document.Load("<row" + many + "/>").Get()));
    EXPECT_EQ(row[8].GetVariant().Text(), CString("8").View());
}

TEST_F(WindowsXmlTable, DataSaveAndLoad_ComesBack) {
    AddHardRows();
    const auto descr = m_document.Append(m_element.Get(), "descr");
    ASSERT_TRUE(Descr().Save(m_document.Automation(), descr.Get()));
    m_element = m_document.Append(m_element.Get(), "data");
    const auto save = [&](IDispatch* document, IDispatch* parent) { return Data().Save(document, parent); };
    SaveTarget ours;
    EXPECT_TRUE(save(ours.Automation(), ours.Element()));
    EXPECT_TRUE(save(m_document.Automation(), m_element.Get()));
    EXPECT_EQ(InvokeByName(InvokeByName(m_element.Get(), "childNodes").Object().Get(), "length").m_value.lVal,
              static_cast<LONG>(HardTexts.size()));
    for (std::size_t i = 0; i < HardTexts.size(); ++i) {
        EXPECT_EQ(Outline(ChildAt(m_element, static_cast<int>(i)).Get()),
                  Outline(ChildAt(ours.Element(), static_cast<int>(i)).Get()));
    }
    DbDatabase copy;
    DbTableInfo& read = EmptyTable(copy);
    EXPECT_TRUE(read.GetDescr()->Load(descr.Get()));
    EXPECT_TRUE(read.GetData()->Load(m_element.Get()));
    EXPECT_TRUE(Dump(copy) == Dump(m_database));
    EXPECT_EQ(CountTroubles(copy), 0U);
}

TEST_F(WindowsXmlTable, DataSaveAndLoad_ManyRows_ComeBack) {
    constexpr int Rows = 2000;
    for (int i = 0; i < Rows; ++i) {
        DbTableRow& row = AddRow(i);
        row[5].SetValue(CComVariant(CString("text & number " + std::to_string(i))));
    }
    ASSERT_TRUE(Data().Save(m_document.Automation(), m_element.Get()));
    DbDatabase copy;
    DbTableInfo& read = EmptyTable(copy);
    for (const DbFieldDescr* const field : Descr()) {
        read.GetDescr()->CreateField(*field);
    }
    EXPECT_TRUE(read.GetData()->Load(m_element.Get()));
    EXPECT_EQ(read.GetData()->size(), static_cast<uint64>(Rows));
    EXPECT_TRUE(Dump(copy) == Dump(m_database));
}

TEST_F(WindowsXmlTable, DatabaseSave_UnderAParent_GivesWhatOurDocumentGives) {
    AddHardRows();
    ExpectSavedLikeOurs(
        [&](IDispatch* document, IDispatch* parent) { return m_database.Save(document, parent); });
}

TEST_F(WindowsXmlTable, DatabaseSave_FileOfTheirs_IsOpenedByUs) {
    AddHardRows();
    m_database.CreateTable("No fields", DbTableInfo::Table);
    TemporaryFolder folder;
    const MsxmlDocument document;
    document.AppendDeclaration();
    ASSERT_TRUE(m_database.Save(document.Automation(), nullptr));
    document.SaveFile(folder / "theirs.xml");
    for (const Reading reading : {Reading::Whole, Reading::Sequential}) {
        const auto copy = Open(folder / "theirs.xml", reading);
        EXPECT_TRUE(Dump(*copy) == Dump(m_database)) << testing::PrintToString(reading);
        EXPECT_EQ(CountTroubles(*copy), 0U);
    }
}

TEST_F(WindowsXmlTable, Load_FileOfOursLoadedByThem_GivesTheSameTables) {
    AddHardRows();
    m_database.CreateTable("No fields", DbTableInfo::Table);
    TemporaryFolder folder;
    ASSERT_TRUE(m_database.Save(CString(Utf8(folder / "ours.xml"))));
    for (const bool keepsBlanks : {false, true}) {
        const MsxmlDocument document;
        if (keepsBlanks) {
            document.KeepBlanks();
        }
        quillet::xml::Node database(document.LoadFile(folder / "ours.xml").Get());
        DbDatabase copy;
        for (auto part = database.FirstChild(); !part.IsNull(); part = part.NextSibling()) {
            const auto structure = part.FirstChild();
            for (auto table = structure.FirstChild(); !table.IsNull(); table = table.NextSibling()) {
                DbTableInfo* const info =
                    copy.CreateTable(CString(table.FirstAttributeValue().value()), DbTableInfo::Table);
                EXPECT_TRUE(info->GetDescr()->Load(table.Foreign()));
            }
            for (auto table = structure.NextSibling().FirstChild(); !table.IsNull();
                 table = table.NextSibling()) {
                EXPECT_TRUE(
                    copy.GetTableData(CString(table.FirstAttributeValue().value()))->Load(table.Foreign()));
            }
        }
        EXPECT_EQ(copy.GetTablesCount(), 4);
        EXPECT_TRUE(Dump(copy) == Dump(m_database)) << keepsBlanks;
        EXPECT_EQ(CountTroubles(copy), 0U);
    }
}

// Nodes between the elements of a list that are not elements.
constexpr const char* Remarks = "\n <!-- <row/> -->\t<?p <row/>?>\r\n";

std::string FieldsAmongRemarks() {
    return std::string("<t>") + Remarks + "<field name='n' type='3'/>" + Remarks + Remarks +
           "<field name='t' type='8'/>" + Remarks + "</t>";
}

TEST_F(WindowsXml, Load_RemarksAndBlanksBetweenElements_ArePassedOver) {
    for (const bool keepsBlanks : {false, true}) {
        const MsxmlDocument document;
        if (keepsBlanks) {
            document.KeepBlanks();
        }
        DbTableDescr descr(nullptr);
        EXPECT_TRUE(descr.Load(document.Load(FieldsAmongRemarks()).Get())) << keepsBlanks;
        ASSERT_EQ(descr.size(), 2U) << keepsBlanks;
        EXPECT_EQ(descr[1].GetName().ToUtf8(), "t");
        DbTableData data(nullptr, &descr);
        EXPECT_TRUE(data.Load(document
                                  .Load(std::string("<t>") + Remarks + "<row n='1' t='a'/>" + Remarks +
                                        "<row n='2' t='b'>" + Remarks + "</row>" + Remarks + "</t>")
                                  .Get()))
            << keepsBlanks;
        ASSERT_EQ(data.size(), 2U) << keepsBlanks;
        EXPECT_EQ(TextOf(data[1][uint64(1)].GetValue()), "b");
    }
}

TEST_F(WindowsXml, Load_TextOrCdataBetweenElements_IsFalseAsInOurDocuments) {
    for (const bool keepsBlanks : {false, true}) {
        for (const char* stranger : {"text", "<![CDATA[text]]>", "<![CDATA[ ]]>", " &#160; "}) {
            const std::string text = std::string("<t><row n='1'/>") + stranger + "<row n='2'/></t>";
            const MsxmlDocument document;
            if (keepsBlanks) {
                document.KeepBlanks();
            }
            const auto theirs = document.Load(text);
            const auto ours = ElementOf(text);
            for (IDispatch* const element : {theirs.Get(), ours.Get()}) {
                DbTableDescr descr(nullptr);
                EXPECT_FALSE(descr.Load(element)) << stranger;
                DbTableDescr fields(nullptr);
                fields.CreateField("n", false, DbFieldDescr::Long);
                DbTableData data(nullptr, &fields);
                EXPECT_FALSE(data.Load(element)) << stranger;
                ASSERT_GE(data.size(), 1U);
                EXPECT_EQ(data[0][uint64(0)].GetValue().lVal, 1);
            }
        }
    }
}

TEST_F(WindowsXml, Load_NoChildren_ReadsNothing) {
    DbTableDescr descr(nullptr);
    EXPECT_TRUE(descr.Load(m_element.Get()));
    EXPECT_EQ(descr.size(), 0U);
    DbTableData data(nullptr, &descr);
    EXPECT_TRUE(data.Load(m_element.Get()));
    EXPECT_EQ(data.size(), 0U);
}

TEST_F(WindowsXmlTable, Load_WhatIsNoElement_IsFalse) {
    DbTableRow& row = AddRow(1);
    DbFieldDescr field;
    const auto element = m_document.Load("<t a='1'>text<!-- c --><?p d?></t>");
    const auto attributes = InvokeByName(element.Get(), "attributes").Object();
    const CComPtr<IDispatch> strangers[] = {
        ChildAt(element, 0),
        ChildAt(element, 1),
        ChildAt(element, 2),
        attributes,
        InvokeByName(attributes.Get(), "item", {Long(0)}).Object(),
        InvokeByName(element.Get(), "childNodes").Object(),
        InvokeByName(m_document.Automation(), "parseError").Object(),
        InvokeByName(m_document.Automation(), "implementation").Object(),
        m_document.Automation(),
        nullptr,
    };
    for (const CComPtr<IDispatch>& stranger : strangers) {
        EXPECT_FALSE(row.Load(stranger.Get()));
        EXPECT_FALSE(field.Load(stranger.Get()));
    }
    EXPECT_FALSE(Descr().Load(nullptr));
    EXPECT_FALSE(Data().Load(nullptr));
    EXPECT_FALSE(Descr().Load(attributes.Get()));
    EXPECT_FALSE(Data().Load(attributes.Get()));
    EXPECT_EQ(row[2].GetVariant().lVal, 2147483646);
}

TEST_F(WindowsXmlTable, Save_WhatIsNoDocumentOrNoElement_IsFalse) {
    DbTableRow& row = AddRow(1);
    const auto expectRefused = [&](IDispatch* document, IDispatch* parent) {
        EXPECT_FALSE(row.Save(document, parent));
        EXPECT_FALSE(Data().Save(document, parent));
        EXPECT_FALSE(Descr()[0].Save(document, parent));
        EXPECT_FALSE(Descr().Save(document, parent));
    };
    const auto attributes = InvokeByName(m_element.Get(), "attributes").Object();
    const auto error = InvokeByName(m_document.Automation(), "parseError").Object();
    SaveTarget ours;
    for (IDispatch* const document : {static_cast<IDispatch*>(nullptr), m_element.Get(), attributes.Get(),
                                      error.Get(), ours.Automation()}) {
        expectRefused(document, m_element.Get());
        if (document != nullptr) {
            EXPECT_EQ(m_database.Save(document, m_element.Get()), false);
        }
    }
    EXPECT_EQ(ThrownMessage([&] { m_database.Save(nullptr, m_element.Get()); }), "Invalid pointer");
    for (IDispatch* const parent :
         {static_cast<IDispatch*>(nullptr), attributes.Get(), error.Get(), ours.Element()}) {
        expectRefused(m_document.Automation(), parent);
        if (parent != nullptr) {
            EXPECT_FALSE(m_database.Save(m_document.Automation(), parent));
        }
    }
    EXPECT_EQ(Outline(m_element.Get()), "1 t\n");
    EXPECT_EQ(ours.Content(), "");
}

TEST_F(WindowsXmlTable, Save_IntoAnElementOfAnotherDocument_DoesWhatTheHostDoes) {
    DbTableRow& row = AddRow(1);
    const MsxmlDocument other;
    const auto strange = other.AppendRoot();
    const bool saved = row.Save(m_document.Automation(), strange.Get());
    EXPECT_EQ(InvokeByName(strange.Get(), "hasChildNodes").m_value.boolVal != VARIANT_FALSE, saved);
    EXPECT_EQ(Outline(m_element.Get()), "1 t\n");
}

TEST_F(WindowsXmlTable, DatabaseSave_IntoADocumentThatHasARoot_DoesWhatTheHostDoes) {
    const bool saved = m_database.Save(m_document.Automation(), nullptr);
    const auto children = InvokeByName(m_document.Automation(), "childNodes").Object();
    EXPECT_EQ(InvokeByName(children.Get(), "length").m_value.lVal, saved ? 2 : 1);
    EXPECT_EQ(Outline(m_element.Get()), "1 t\n");
}

TEST_F(WindowsXmlTable, SaveAndLoad_LeaveNoReferences) {
    AddHardRows();
    IDispatch* const document = m_document.Automation();
    const auto fields = m_document.Append(m_element.Get(), "fields");
    const auto rows = m_document.Append(m_element.Get(), "rows");
    const auto whole = m_document.Append(m_element.Get(), "whole");
    const std::vector<IDispatch*> objects = {document, m_element.Get(), fields.Get(), rows.Get(),
                                             whole.Get()};
    std::vector<ULONG> before;
    for (IDispatch* const object : objects) {
        before.push_back(ReferencesOf(object));
    }
    EXPECT_TRUE(Descr().Save(document, fields.Get()));
    EXPECT_TRUE(Data().Save(document, rows.Get()));
    EXPECT_TRUE(m_database.Save(document, whole.Get()));
    Descr()[5].SetName("1st");
    EXPECT_FALSE(Data().Save(document, rows.Get()));
    DbTableDescr readFields(nullptr);
    EXPECT_TRUE(readFields.Load(fields.Get()));
    DbTableData readRows(nullptr, &readFields);
    EXPECT_TRUE(readRows.Load(rows.Get()));
    EXPECT_FALSE(readRows.Load(InvokeByName(whole.Get(), "attributes").Object().Get()));
    const auto text = InvokeByName(document, "createTextNode", {CComVariant("text")}).Object();
    ASSERT_TRUE(InvokeByName(rows.Get(), "appendChild", {CComVariant(text.Get())}).Succeeded());
    EXPECT_FALSE(readRows.Load(rows.Get()));
    for (std::size_t i = 0; i < objects.size(); ++i) {
        EXPECT_EQ(ReferencesOf(objects[i]), before[i]) << i;
    }
}

TEST_F(WindowsXmlTable, SaveAndLoad_ElementThatOutlivesItsDocument_Works) {
    AddHardRows();
    CComPtr<IDispatch> element;
    {
        const MsxmlDocument document;
        element = document.AppendRoot();
    }
    auto owner = InvokeByName(element.Get(), "ownerDocument").Object();
    ASSERT_TRUE(owner);
    ASSERT_TRUE(Data().Save(owner.Get(), element.Get()));
    owner = {};
    DbDatabase copy;
    DbTableInfo& read = EmptyTable(copy);
    for (const DbFieldDescr* const field : Descr()) {
        read.GetDescr()->CreateField(*field);
    }
    EXPECT_TRUE(read.GetData()->Load(element.Get()));
    EXPECT_TRUE(Dump(copy) == Dump(m_database));
}

}  // namespace
