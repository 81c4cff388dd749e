#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "Quillet/xml/Document.h"
#include "Quillet/xml/Face.h"
#include "support/AsOrdinaryUser.h"
#include "support/ReadingTest.h"
#include "support/Seed.h"

namespace {

using namespace quillet::test;
using testing::Contains;
using testing::HasSubstr;

constexpr const char* InvalidFormat = "Invalid xml database file format";

class BadInput : public ReadingTest {
protected:
    bool IsSequential() const { return GetParam() == Reading::Sequential; }

    // Opens the file, reads everything and closes it: the log reports the error, the file stays.
    void ExpectInvalidFormat(const std::string& xml) {
        {
            const auto database = OpenXml(xml);
            EXPECT_TRUE(database->IsTable("Header"));
            EXPECT_TRUE(database->IsTable("Properties"));
            database->LoadTables();
            Dump(*database);
            EXPECT_TRUE(LogHolds(*database, InvalidFormat)) << xml.substr(0, 200);
            EXPECT_FALSE(database->IsChanged());
        }
        EXPECT_EQ(ReadBytes(File()) == xml, true) << "the file was touched";
    }
};

INSTANTIATE_TEST_SUITE_P(, BadInput, testing::Values(Reading::Whole, Reading::Sequential), ReadingName);

bool SavesToADocument(DbDatabase& database) {
    quillet::xml::Document document;
    quillet::xml::Face face(document.Root());
    return database.Save(face.Get(), nullptr);
}

TEST_P(BadInput, EmptyFile_IsAnInvalidFormat) {
    ExpectInvalidFormat("");
}

TEST_P(BadInput, NoXml_IsAnInvalidFormat) {
    for (const char* text :
         {"x", "\n", "not XML at all", "<", ">", "</", "<<<<>>>>", "<database", "{\"a\": 1}"}) {
        ExpectInvalidFormat(text);
    }
    ExpectInvalidFormat(std::string(1000, '\0'));
    ExpectInvalidFormat(std::string(40000, '<'));
    ExpectInvalidFormat(std::string(40000, '/'));
}

TEST_P(BadInput, XmlOfSomethingElse_IsAnInvalidFormat) {
    for (const char* xml : {"<html><head /><body><p>text</p></body></html>", "<database />",
                            "<database></database>", "<database><header></header></database>",
                            "<database><header><structure></structure></header></database>",
                            "<database>text</database>", "<other><database><header /></database></other>"}) {
        ExpectInvalidFormat(xml);
    }
}

TEST_P(BadInput, CatalogWithoutABody_KeepsItsHeader) {
    const std::string whole = SmallCatalog();
    const std::string xml = whole.substr(0, whole.find("<body>")) + "</database>\n";
    const auto database = OpenXml(xml);
    EXPECT_EQ(database->GetTablesCount(), 2);
    EXPECT_EQ(Cell(database->GetTableData("Header"), 0, 0), "Small");
    EXPECT_TRUE(LogHolds(*database, InvalidFormat));
}

// Every truncated catalog is either reported or complete.
TEST_P(BadInput, CatalogCutAnywhere_IsNoticedUnlessNothingIsMissing) {
    const std::string whole = SmallCatalog();
    const std::string sound = Dump(*OpenXml(whole));
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const std::string beginning = whole.substr(0, length);
        {
            const auto database = OpenXml(beginning);
            database->LoadTables();
            const std::string content = Dump(*database);
            const bool saved = SavesToADocument(*database);
            EXPECT_TRUE(content == sound || !saved || CountTroubles(*database) > 0)
                << length << ": ..." << beginning.substr(length < 60 ? 0 : length - 60);
            EXPECT_FALSE(database->IsChanged()) << length;
        }
        ASSERT_EQ(ReadBytes(File()), beginning);
    }
}

TEST_P(BadInput, CatalogWithBytesChanged_NeverHarms) {
    std::mt19937 random(quillet::test::Seed(7));
    const std::string whole = SmallCatalog();
    const auto below = [&](std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random);
    };
    for (int round = 0; round < 1500; ++round) {
        std::string xml = whole;
        for (std::size_t changes = 1 + below(4); changes > 0; --changes) {
            const std::size_t place = below(xml.size());
            switch (below(4)) {
                case 0:
                    xml[place] = static_cast<char>(below(256));
                    break;
                case 1:
                    xml.erase(place, 1 + below(20));
                    break;
                case 2:
                    xml.insert(place, 1, "<>/\"= &;"[below(8)]);
                    break;
                default:
                    xml.insert(below(xml.size()), xml.substr(place, below(60)));
                    break;
            }
        }
        {
            const auto database = OpenXml(xml);
            database->LoadTables();
            Dump(*database);
            SavesToADocument(*database);
            database->DeleteTable("Alpha");
            database->RenameTable("Beta", "Gamma");
            database->ClearTable("Gamma");
            Dump(*database);
            SavesToADocument(*database);
            database->GetSource()->Create("");
        }
        ASSERT_EQ(ReadBytes(File()) == xml, true);
    }
}

TEST_P(BadInput, InvalidUtf8InRows_IsNotTakenForRowsAndCantBeSaved) {
    CatalogParts parts = SmallParts();
    parts.m_bodyData = TableXml("Alpha", "<row name=\"\xC3\x28\" count=\"1\" />\n") +
                       TableXml("Beta", "<row size=\"2.5\" />\n");
    const std::string xml = parts.Xml();
    {
        const auto database = OpenXml(xml);
        if (!IsSequential()) {
            EXPECT_EQ(database->GetTablesCount(), 2);
            EXPECT_TRUE(LogHolds(*database, InvalidFormat));
        } else {
            EXPECT_EQ(database->GetTableData("Alpha")->size(), 0U);
            EXPECT_EQ(database->GetTableData("Alpha")->size(), 0U);
            EXPECT_EQ(database->GetTableData("Beta")->size(), 1U) << "the other tables are not concerned";
            database->GetTableData("Beta")->AddRow();
            EXPECT_FALSE(database->Save(Path("given.xml")));
            EXPECT_TRUE(LogHolds(*database, "Error on table \"Alpha\" - body data saving"));
        }
    }
    EXPECT_EQ(ReadBytes(File()), xml) << "not by the destructor either";
}

TEST_P(BadInput, InvalidUtf8InTheStructure_IsAnInvalidFormat) {
    CatalogParts parts = SmallParts();
    parts.m_bodyStructure = TableXml("\xFF", FieldXml("a", LongType));
    ExpectInvalidFormat(parts.Xml());
    parts = SmallParts();
    parts.m_headerStructure = TableXml("Header", FieldXml("\xE2\x82", TextType));
    ExpectInvalidFormat(parts.Xml());
    parts = SmallParts();
    parts.m_headerData = TableXml("Header", "<row title=\"\xED\xA0\x80\" />\n") + TableXml("Properties", "");
    ExpectInvalidFormat(parts.Xml());
}

std::string Nested(std::size_t depth, bool closed) {
    std::string xml;
    for (std::size_t i = 0; i < depth; ++i) {
        xml += "<a>";
    }
    for (std::size_t i = 0; closed && i < depth; ++i) {
        xml += "</a>";
    }
    return xml;
}

TEST_P(BadInput, AMillionNestedElements_AreAnInvalidFormat) {
    for (const bool closed : {true, false}) {
        ExpectInvalidFormat(Nested(1000000, closed));
    }
}

TEST_P(BadInput, AMillionNestedElementsInTheStructure_AreAnInvalidFormat) {
    CatalogParts parts = SmallParts();
    parts.m_bodyStructure = Nested(1000000, true);
    ExpectInvalidFormat(parts.Xml());
}

TEST_P(BadInput, AMillionNestedElementsInRows_AreNoRows) {
    CatalogParts parts = SmallParts();
    parts.m_bodyData = TableXml("Alpha", "<row>" + Nested(1000000, true) + "</row>\n") +
                       TableXml("Beta", "<row size=\"2.5\" />\n");
    const auto database = OpenXml(parts.Xml());
    if (IsSequential()) {
        EXPECT_EQ(database->GetTableData("Alpha")->size(), 0U);
        EXPECT_EQ(database->GetTableData("Beta")->size(), 1U);
        EXPECT_FALSE(SavesToADocument(*database));
    } else {
        EXPECT_EQ(database->GetTablesCount(), 2);
        EXPECT_TRUE(LogHolds(*database, InvalidFormat));
    }
}

TEST_P(BadInput, RowsWithOtherNumbersOfAttributes_AreReadAsFarAsTheyGoAndReported) {
    CatalogParts parts = SmallParts();
    parts.m_bodyData = TableXml("Alpha",
                                "<row name=\"right\" count=\"1\" />\n<row name=\"short\" />\n"
                                "<row name=\"long\" count=\"3\" more=\"4\" />\n<row />\n") +
                       TableXml("Beta", "<row size=\"2.5\" />\n") + TableXml("Gamma", "");
    const auto database = OpenXml(parts.Xml());
    DbTableData* const alpha = database->GetTableData("Alpha");
    ASSERT_EQ(alpha->size(), 4U);
    EXPECT_EQ(Cell(alpha, 0, 1), "1");
    EXPECT_EQ(Cell(alpha, 1, 0), "short");
    EXPECT_EQ(Cell(alpha, 1, 1), "");
    EXPECT_EQ(Cell(alpha, 2, 1), "3");
    EXPECT_EQ(alpha->GetRow(2)->size(), 2U);
    EXPECT_EQ(Cell(alpha, 3, 0), "");
    EXPECT_EQ(database->GetTableData("Beta")->size(), 1U);
    std::vector<std::string> troubles = TakeLog(*database);
    std::erase_if(troubles, IsRoutine);
    ASSERT_EQ(troubles.size(), 1U) << "one line for the table";
    EXPECT_THAT(troubles[0], HasSubstr("Alpha"));
    EXPECT_THAT(troubles[0], HasSubstr("3"));
    EXPECT_TRUE(SavesToADocument(*database));
}

TEST_P(BadInput, RowAttributes_AreTakenByPositionWhateverTheirNames) {
    CatalogParts parts = SmallParts();
    parts.m_bodyData =
        TableXml("Alpha", "<row count=\"first\" name=\"7\" />\n<other x=\"second\" y=\"8\" />\n");
    const auto database = OpenXml(parts.Xml());
    DbTableData* const alpha = database->GetTableData("Alpha");
    ASSERT_EQ(alpha->size(), 2U);
    EXPECT_EQ(Cell(alpha, 0, 0), "first");
    EXPECT_EQ(Cell(alpha, 0, 1), "7");
    EXPECT_EQ(Cell(alpha, 1, 0), "second");
}

TEST_P(BadInput, DuplicateTableNames_TheFirstIsKeptAndALineTells) {
    CatalogParts parts;
    parts.m_bodyStructure = TableXml("Alpha", FieldXml("a", LongType)) +
                            TableXml("ALPHA", FieldXml("b", TextType)) +
                            TableXml("Beta", FieldXml("c", LongType));
    parts.m_bodyData = TableXml("Alpha", "<row a=\"1\" />\n") + TableXml("ALPHA", "<row b=\"x\" />\n") +
                       TableXml("Beta", "<row c=\"3\" />\n");
    const auto database = OpenXml(parts.Xml());
    EXPECT_EQ(database->GetTablesCount(), 4);
    ASSERT_EQ(database->GetTableData("Alpha")->size(), 1U);
    EXPECT_EQ(Cell(database->GetTableData("Alpha"), 0, 0), "1");
    ASSERT_EQ(database->GetTableData("Beta")->size(), 1U);
    EXPECT_EQ(Cell(database->GetTableData("Beta"), 0, 0), "3");
    EXPECT_TRUE(LogHolds(*database, "Table 'ALPHA' already in database, cannot add another 'ALPHA' table"));
    EXPECT_TRUE(SavesToADocument(*database));
}

TEST_P(BadInput, DuplicateHeaderTables_DoNotHarm) {
    CatalogParts parts = SmallParts();
    parts.m_headerStructure =
        TableXml("Header", FieldXml("title", TextType)) + TableXml("header", FieldXml("title", TextType));
    parts.m_headerData =
        TableXml("Header", "<row title=\"a\" />\n") + TableXml("header", "<row title=\"b\" />\n");
    const auto database = OpenXml(parts.Xml());
    EXPECT_TRUE(database->IsTable("Properties"));
    EXPECT_EQ(Cell(database->GetTableData("Header"), 0, 0), "a");
    EXPECT_EQ(database->GetTableData("Alpha")->size(), 2U);
    EXPECT_GT(CountTroubles(*database), 0U);
}

TEST_P(BadInput, UnknownFieldTypes_KeepTheirValuesAsText) {
    for (const char* type : {"99", "9", "8210", "-3", "text", "", "99999999999"}) {
        CatalogParts parts;
        parts.m_bodyStructure = TableXml("T", "<field name=\"odd\" key=\"false\" type=\"" +
                                                  std::string(type) + "\" />\n" + FieldXml("n", LongType));
        parts.m_bodyData = TableXml("T", "<row odd=\"1.50\" n=\"2\" />\n");
        const auto database = OpenXml(parts.Xml());
        ASSERT_EQ(database->GetTableData("T")->size(), 1U) << type;
        EXPECT_EQ(Cell(database->GetTableData("T"), 0, 0), "1.50") << type;
        EXPECT_EQ(Cell(database->GetTableData("T"), 0, 1), "2") << type;
        EXPECT_EQ(CountTroubles(*database), 0U) << "the answer is a field without a type";
        EXPECT_EQ(database->GetTableDescr("T")->front()->GetDbType(), DbFieldDescr::Empty) << type;
        quillet::xml::Document document;
        quillet::xml::Face face(document.Root());
        EXPECT_TRUE(database->Save(face.Get(), nullptr));
        EXPECT_THAT(document.SaveText(), HasSubstr("<row odd=\"1.50\" n=\"2\" />"));
    }
}

TEST_P(BadInput, FieldOfTypeZero_IsNoTrouble) {
    CatalogParts parts;
    parts.m_bodyStructure = TableXml("T", FieldXml("any", 0));
    parts.m_bodyData = TableXml("T", "<row any=\"x\" />\n");
    const auto database = OpenXml(parts.Xml());
    EXPECT_EQ(Cell(database->GetTableData("T"), 0, 0), "x");
    EXPECT_EQ(CountTroubles(*database), 0U);
}

TEST_P(BadInput, NumbersThatAreNone_StayText) {
    CatalogParts parts = SmallParts();
    parts.m_bodyData = TableXml("Alpha", "<row name=\"a\" count=\"many\" />\n") +
                       TableXml("Beta", "<row size=\"1e999\" />\n");
    const auto database = OpenXml(parts.Xml());
    EXPECT_EQ(Cell(database->GetTableData("Alpha"), 0, 1), "many");
    EXPECT_EQ((*database->GetTableData("Alpha"))[0].GetField(1).GetType(), VT_BSTR);
    EXPECT_EQ(Cell(database->GetTableData("Beta"), 0, 0), "1e999");
}

TEST_P(BadInput, StructureThatHoldsOtherThanFields_IsReported) {
    CatalogParts parts;
    parts.m_bodyStructure = TableXml("T", "text");
    parts.m_bodyData = TableXml("T", "");
    const auto database = OpenXml(parts.Xml());
    EXPECT_TRUE(database->IsTable("T"));
    EXPECT_GT(CountTroubles(*database), 0U);
}

TEST_P(BadInput, TextAmongTheRows_IsNotReadAgainAtEveryLook) {
    CatalogParts parts = SmallParts();
    parts.m_bodyData =
        TableXml("Alpha", "<row name=\"a\" count=\"1\" />\ntext\n<row name=\"b\" count=\"2\" />\n") +
        TableXml("Beta", "<row size=\"2.5\" />\n");
    const auto database = OpenXml(parts.Xml());
    DbTableData* const alpha = database->GetTableData("Alpha");
    const uint64 rows = alpha->GetRows()->GetRowsCount();
    EXPECT_LE(rows, 3U);
    for (int look = 0; look < 5; ++look) {
        alpha->size();
        EXPECT_EQ(alpha->GetRows()->GetRowsCount(), rows);
    }
    EXPECT_EQ(database->GetTableData("Beta")->size(), 1U);
}

TEST_P(BadInput, TextAmongTheRows_NeverLosesTheFilesRowsInASave) {
    CatalogParts parts = SmallParts();
    parts.m_bodyData = TableXml("Alpha", "text\n<row name=\"a\" count=\"1\" />\n") +
                       TableXml("Beta", "<row size=\"2.5\" />\n");
    const auto database = OpenXml(parts.Xml());
    database->LoadTables();
    quillet::xml::Document document;
    quillet::xml::Face face(document.Root());
    const bool saved = database->Save(face.Get(), nullptr);
    EXPECT_TRUE(!saved || document.SaveText().find("<row name=\"a\" count=\"1\" />") != std::string::npos ||
                CountTroubles(*database) > 0);
}

TEST_P(BadInput, TableWithoutAName_IsNoticed) {
    CatalogParts parts = SmallParts();
    parts.m_bodyStructure = "<table>\n" + FieldXml("a", LongType) + "</table>\n";
    parts.m_bodyData = "<table>\n<row a=\"1\" />\n</table>\n";
    ExpectInvalidFormat(parts.Xml());
}

TEST_P(BadInput, HeaderDataOfOneTableTooFew_IsNoticedOrKeepsTheBody) {
    CatalogParts parts = SmallParts();
    parts.m_headerData = TableXml("Header", "<row title=\"Small\" />\n");
    const auto database = OpenXml(parts.Xml());
    EXPECT_EQ(Cell(database->GetTableData("Header"), 0, 0), "Small");
    const bool isWhole = database->IsTable("Alpha") && database->GetTableData("Alpha")->size() == 2;
    EXPECT_TRUE(isWhole || CountTroubles(*database) > 0) << "the body is gone and no line tells of it";
}

TEST_P(BadInput, HeaderOfThreeTables_IsNoticedOrKeepsTheThird) {
    CatalogParts parts = SmallParts();
    parts.m_headerStructure += TableXml("Third", FieldXml("n", LongType));
    parts.m_headerData += TableXml("Third", "<row n=\"3\" />\n");
    const auto database = OpenXml(parts.Xml());
    database->LoadTables();
    EXPECT_EQ(database->GetTableData("Alpha")->size(), 2U);
    EXPECT_EQ(database->GetTableData("Beta")->size(), 1U);
    const bool isWhole = database->GetTableData("Third")->size() == 1;
    EXPECT_TRUE(isWhole || CountTroubles(*database) > 0) << "the rows are gone and no line tells of it";
}

TEST_P(BadInput, RowsOfAnUnknownTable_LeaveTheOtherTablesTheirs) {
    CatalogParts parts = SmallParts();
    parts.m_bodyData = TableXml("Ghost", "<row a=\"1\" />\n") + parts.m_bodyData;
    const auto database = OpenXml(parts.Xml());
    EXPECT_EQ(database->GetTableData("Alpha")->size(), 2U);
    EXPECT_EQ(database->GetTableData("Beta")->size(), 1U);
    EXPECT_FALSE(database->IsTable("Ghost"));
    EXPECT_GT(CountTroubles(*database), 0U);
}

TEST_P(BadInput, RowsInTwoPlaces_TheFirstAreKept) {
    CatalogParts parts = SmallParts();
    parts.m_bodyData = TableXml("Alpha", "<row name=\"first\" count=\"1\" />\n") +
                       TableXml("Alpha", "<row name=\"second\" count=\"2\" />\n") +
                       TableXml("Beta", "<row size=\"2.5\" />\n");
    const auto database = OpenXml(parts.Xml());
    ASSERT_EQ(database->GetTableData("Beta")->size(), 1U);
    ASSERT_EQ(database->GetTableData("Alpha")->size(), 1U);
    EXPECT_EQ(Cell(database->GetTableData("Alpha"), 0, 0), "first");
    EXPECT_GT(CountTroubles(*database), 0U);
}

TEST_F(BadInput, RowsThatAreMissing_EndTheSequentialReading) {
    CatalogParts parts = SmallParts();
    parts.m_bodyData = TableXml("Alpha", "<row name=\"a\" count=\"1\" />\n");
    WriteBytes(File(), parts.Xml());
    const auto database = Open(File(), Reading::Sequential);
    database->LoadTables();
    EXPECT_TRUE(database->GetSource()->IsEof());
    EXPECT_EQ(database->GetTableData("Alpha")->size(), 1U);
    EXPECT_EQ(database->GetTableData("Beta")->size(), 0U);
    EXPECT_FALSE(database->GetTableInfo("Beta")->GetData()->IsInitialized());
    EXPECT_GT(CountTroubles(*database), 0U);
    database->DeleteTable("Beta");
    database->RenameTable("Gamma", "Delta");
    EXPECT_EQ(database->GetTableData("Delta")->size(), 0U);
}

TEST_P(BadInput, EntitiesOfADocumentType_AreNotExpanded) {
    std::string xml = SmallCatalog();
    xml.replace(xml.find("title=\"Small\""), 13, "title=\"&big;\"");
    xml.insert(xml.find("<database>"),
               "<!DOCTYPE database [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY big \"&a;&a;&a;\">"
               "<!ENTITY out SYSTEM \"file:///none\">]>\n");
    const auto database = OpenXml(xml);
    EXPECT_GE(database->GetTablesCount(), 2);
    EXPECT_THAT(Dump(*database), testing::Not(HasSubstr("aaaaaaaaaa")));
}

TEST_F(BadInput, Utf16File_IsReadWholeButNotSequentially) {
    const std::string narrow = SmallCatalog();
    std::string wide = "\xFF\xFE";
    for (const char unit : narrow.substr(narrow.find("<database>"))) {
        wide += unit;
        wide += '\0';
    }
    WriteBytes(File(), wide);
    const auto whole = Open(File(), Reading::Whole);
    EXPECT_EQ(whole->GetTableData("Alpha")->size(), 2U);
    const auto sequential = Open(File(), Reading::Sequential);
    EXPECT_EQ(sequential->GetTablesCount(), 2);
    EXPECT_TRUE(LogHolds(*sequential, InvalidFormat));
    EXPECT_EQ(sequential->LastReadError(), "it is in UTF-16 or UTF-32, which can only be read as a whole");
}

TEST_P(BadInput, ByteOrderMark_IsNoTrouble) {
    const auto database = OpenXml("\xEF\xBB\xBF" + SmallCatalog());
    EXPECT_EQ(database->GetTableData("Alpha")->size(), 2U);
    EXPECT_EQ(CountTroubles(*database), 0U);
}

TEST_P(BadInput, EmptyElementWithoutBlank_IsKnownToTheWholeReadingOnly) {
    CatalogParts parts = SmallParts();
    parts.m_headerStructure = "";
    parts.m_headerData = "";
    std::string xml = parts.Xml();
    xml.replace(xml.find("<structure />"), 13, "<structure/>");
    const auto database = OpenXml(xml);
    EXPECT_EQ(database->IsTable("Alpha"), !IsSequential());
    EXPECT_EQ(LogHolds(*database, InvalidFormat), IsSequential());
    EXPECT_FALSE(database->IsChanged());
}

TEST_F(BadInput, Directory_CantBeOpened) {
    std::filesystem::create_directory(m_folder / "folder.xml");
    EXPECT_THAT(ThrownMessage([&] { DbDatabase database(Path("folder.xml")); }),
                HasSubstr("Invalid source file '" + Path("folder.xml").ToUtf8() + "'"));
}

TEST_F(BadInput, PathsThatNoFileHas_CantBeOpened) {
    const WCHAR withZero[] = {'a', 0, '.', 'x', 'm', 'l'};
    for (const CString& path :
         {CString("\n.xml"), CString("/\x01/a.xml"), CString(std::string(100000, 'a') + ".xml"),
          CString(quillet::WideView(withZero, 6)), CString("none/none.xml")}) {
        EXPECT_THAT(ThrownMessage([&] { DbDatabase database(path); }), HasSubstr("Invalid source file '"));
    }
}

TEST_P(BadInput, FileThatMayNotBeWritten_IsReadOnlyAndStays) {
    using std::filesystem::perms;
    WriteBytes(File(), SmallCatalog());
    std::filesystem::permissions(File(), perms::owner_read | perms::group_read | perms::others_read);
    std::filesystem::permissions(m_folder.Path(), perms::all);
    const AsOrdinaryUser user;
    if (!user.IsBound()) {
        GTEST_SKIP() << "the superuser's rights can't be dropped here";
    }
    {
        const auto database = Open(File(), GetParam());
        EXPECT_TRUE(database->IsOpen());
        EXPECT_FALSE(database->CanUpdate());
        EXPECT_EQ(database->GetTableData("Alpha")->size(), 2U);
        EXPECT_EQ(CountTroubles(*database), 0U);
        database->DeleteTable("Alpha");
        EXPECT_FALSE(database->Save(Path("given.xml")));
        EXPECT_TRUE(LogHolds(*database, Path("given.xml").ToUtf8()));
        EXPECT_TRUE(database->IsChanged());
    }
    EXPECT_EQ(ReadBytes(File()), SmallCatalog());
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

}  // namespace
