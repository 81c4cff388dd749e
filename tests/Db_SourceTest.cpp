#include "Quillet/Db_Source.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "support/CatalogHelpers.h"

namespace {

using namespace quillet::test;

static_assert(!std::is_copy_constructible_v<DbSource>);
static_assert(!std::is_copy_assignable_v<DbSource>);

class DbSourceTest : public testing::Test {
protected:
    // Writes a file in the folder and returns its path.
    CString File(const std::string& name, const std::string& content = "") {
        WriteBytes(m_folder / name, content);
        return Path(name);
    }
    CString Path(const std::string& name) { return CString(Utf8(m_folder / name)); }

    StaticsGuard m_statics;
    TemporaryFolder m_folder;
};

TEST_F(DbSourceTest, Construct_WithoutAFile_IsNotValid) {
    const DbSource source(nullptr);
    EXPECT_FALSE(source.IsValid());
    EXPECT_FALSE(source.IsReadOnly());
    EXPECT_FALSE(source.IsSequentialAccess());
    EXPECT_FALSE(source.IsEof());
    EXPECT_FALSE(source.IsXmlBased());
    EXPECT_FALSE(source.IsMdbBased());
    EXPECT_TRUE(source.GetFile().IsEmpty());
    EXPECT_TRUE(source.GetBareName().IsEmpty());
}

TEST_F(DbSourceTest, Construct_WithAnEmptyPath_IsNotValid) {
    const DbSource source(nullptr, "");
    EXPECT_FALSE(source.IsValid());
    EXPECT_FALSE(source.IsReadOnly());
    EXPECT_FALSE(source.IsXmlBased());
}

TEST_F(DbSourceTest, SetFile_XmlEnding_IsXmlInAnyCase) {
    for (const char* name : {"steel.xml", "steel.XML", "steel.Xml", "steelxml", "xml"}) {
        const DbSource source(nullptr, File(name));
        EXPECT_TRUE(source.IsValid()) << name;
        EXPECT_TRUE(source.IsXmlBased()) << name;
        EXPECT_FALSE(source.IsMdbBased()) << name;
        EXPECT_FALSE(source.IsSequentialAccess()) << name;
        EXPECT_EQ(source.GetFile(), Path(name)) << "the path stays as given";
    }
}

TEST_F(DbSourceTest, SetFile_OtherEndingOfAnExistingFile_IsNotValidWithoutAnError) {
    for (const char* name : {"steel.xmlx", "steel", "steel.txt", "ml", "steel.xml "}) {
        const DbSource source(nullptr, File(name));
        EXPECT_FALSE(source.IsValid()) << name;
        EXPECT_FALSE(source.IsXmlBased()) << name;
        EXPECT_FALSE(source.IsMdbBased()) << name;
        EXPECT_EQ(source.GetFile(), Path(name)) << name;
    }
}

TEST_F(DbSourceTest, SetFile_OtherEnding_LeavesTheTypeAsItWas) {
    DbSource source(nullptr, File("steel.xml"));
    source.SetFile(File("steel.txt"), false);
    EXPECT_TRUE(source.IsXmlBased());
    EXPECT_TRUE(source.IsValid()) << "valid is what has a type";
    source.SetFile("", false);
    EXPECT_TRUE(source.IsXmlBased());
    EXPECT_TRUE(source.IsValid());
    EXPECT_TRUE(source.GetFile().IsEmpty());
}

TEST_F(DbSourceTest, SetFile_MdbEndingWithForceXml_BecomesXml) {
    DbSource::ForceXML = true;
    File("steel.xml");
    for (const char* name : {"steel.mdb", "steel.MDB", "steel.Mdb"}) {
        const DbSource source(nullptr, Path(name));
        EXPECT_TRUE(source.IsXmlBased());
        EXPECT_FALSE(source.IsMdbBased());
        EXPECT_TRUE(source.IsValid());
        EXPECT_EQ(source.GetFile(), Path("steel.xml")) << "in lower case";
    }
}

TEST_F(DbSourceTest, SetFile_OnlyTheMdbFileExistsWithForceXml_ThrowsWithTheRewrittenPath) {
    DbSource::ForceXML = true;
    const CString path = File("steel.mdb");
    EXPECT_EQ(
        ThrownMessage([&] { DbSource(nullptr, path); }),
        "Quillet exception thrown\r\nFile: Db/Quillet/Db_Source @ 222\r\nMessage: Invalid source file '" +
            Path("steel.xml").ToUtf8() + "'");
}

TEST_F(DbSourceTest, SetFile_MdbEndingWithoutForceXml_IsMdb) {
    DbSource::ForceXML = false;
    for (const char* name : {"steel.mdb", "steel.MDB"}) {
        const DbSource source(nullptr, File(name));
        EXPECT_TRUE(source.IsMdbBased());
        EXPECT_FALSE(source.IsXmlBased());
        EXPECT_TRUE(source.IsValid());
        EXPECT_EQ(source.GetFile(), Path(name));
    }
}

TEST_F(DbSourceTest, SetFile_MissingFile_ThrowsWhateverItsEnding) {
    for (const char* name : {"none.xml", "none.txt"}) {
        EXPECT_EQ(
            ThrownMessage([&] { DbSource(nullptr, Path(name)); }),
            "Quillet exception thrown\r\nFile: Db/Quillet/Db_Source @ 222\r\nMessage: Invalid source file '" +
                Path(name).ToUtf8() + "'");
    }
}

TEST_F(DbSourceTest, SetFile_Directory_Throws) {
    std::filesystem::create_directory(m_folder / "folder.xml");
    EXPECT_NE(ThrownMessage([&] { DbSource(nullptr, Path("folder.xml")); }).find("Invalid source file '"),
              std::string::npos);
}

TEST_F(DbSourceTest, SetFile_MissingFile_KeepsTheNewPathAndIsNotValid) {
    DbSource source(nullptr, File("steel.xml"));
    EXPECT_NE(ThrownMessage([&] { source.SetFile(Path("none.mdb"), false); }), "");
    EXPECT_EQ(source.GetFile(), Path("none.xml"));
    EXPECT_FALSE(source.IsValid());
}

TEST_F(DbSourceTest, SetFile_ReadOnlyArgument_IsTaken) {
    DbSource source(nullptr, File("steel.xml"));
    EXPECT_FALSE(source.IsReadOnly());
    source.SetFile(Path("steel.xml"), true);
    EXPECT_TRUE(source.IsReadOnly());
    source.SetFile(Path("steel.xml"), false);
    EXPECT_FALSE(source.IsReadOnly());
}

TEST_F(DbSourceTest, SetFile_ChecksTheFileWithoutChangingIt) {
    const CString path = File("steel.xml", "not even XML");
    const DbSource source(nullptr, path);
    EXPECT_TRUE(source.IsValid()) << "the content does not decide";
    EXPECT_EQ(ReadBytes(m_folder / "steel.xml"), "not even XML");
}

TEST_F(DbSourceTest, SetFile_ClearsTheOwner) {
    DbDatabase database(File("steel.xml", SmallCatalog()));
    EXPECT_EQ(database.GetTablesCount(), 5);
    DbSource other(&database, File("other.xml"));
    EXPECT_EQ(database.GetHeaderDescr(), nullptr);
    EXPECT_EQ(database.GetTablesCount(), 5) << "and it reads anew";
}

TEST_F(DbSourceTest, Source_WhoseOwnerDied_StillWorks) {
    auto database = std::make_unique<DbDatabase>();
    DbSource source(database.get());
    database.reset();
    source.SetFile(File("steel.xml", "<a>1</a>"), false);
    source.Create(Path("steel.xml"));
    CString text;
    EXPECT_TRUE(source.ExtractXmlNode("\\a", text));
    EXPECT_EQ(text, "<a>1</a>");
}

TEST_F(DbSourceTest, Create_WithForceXml_RewritesAnyEnding) {
    DbSource::ForceXML = true;
    for (const char* name : {"new.mdb", "new.xml", "new.txt", "new.XML"}) {
        DbSource source(nullptr);
        source.Create(Path(name));
        EXPECT_EQ(source.GetFile(), Path("new.xml")) << name;
        EXPECT_TRUE(source.IsXmlBased()) << name;
        EXPECT_TRUE(source.IsValid()) << "though there is no file";
    }
}

TEST_F(DbSourceTest, Create_WithForceXml_OverwritesThreeCharactersWhateverTheyAre) {
    DbSource::ForceXML = true;
    DbSource source(nullptr);
    source.Create("catalog");
    EXPECT_EQ(source.GetFile(), "cataxml");
}

TEST_F(DbSourceTest, Create_PathShorterThanAnEnding_StaysAsItIs) {
    DbSource::ForceXML = true;
    DbSource source(nullptr);
    for (const char* path : {"", "a", "ab"}) {
        source.Create(path);
        EXPECT_EQ(source.GetFile(), path);
        EXPECT_TRUE(source.IsValid());
        EXPECT_TRUE(source.IsXmlBased());
    }
}

TEST_F(DbSourceTest, Create_WithoutForceXml_TakesAnXmlEndingOnly) {
    DbSource::ForceXML = false;
    DbSource xml(nullptr);
    xml.Create("new.XML");
    EXPECT_TRUE(xml.IsXmlBased());
    EXPECT_EQ(xml.GetFile(), "new.XML");
    DbSource mdb(nullptr);
    mdb.Create("new.mdb");
    EXPECT_FALSE(mdb.IsMdbBased()) << "an Access file can't be created";
    EXPECT_FALSE(mdb.IsXmlBased());
    EXPECT_TRUE(mdb.IsValid()) << "valid all the same";
    EXPECT_EQ(mdb.GetFile(), "new.mdb");
}

TEST_F(DbSourceTest, Create_MdbWithoutForceXml_KeepsTheEarlierType) {
    DbSource::ForceXML = false;
    DbSource source(nullptr, File("steel.xml"));
    source.Create("new.mdb");
    EXPECT_TRUE(source.IsXmlBased());
    EXPECT_FALSE(source.IsMdbBased());
}

TEST_F(DbSourceTest, Create_LeavesTheReadOnlyFlag) {
    DbSource source(nullptr);
    source.SetFile(File("steel.xml"), true);
    source.Create(Path("new.xml"));
    EXPECT_TRUE(source.IsReadOnly());
}

TEST_F(DbSourceTest, Create_ClearsTheOwner) {
    DbDatabase database(File("steel.xml", SmallCatalog()));
    EXPECT_EQ(database.GetTablesCount(), 5);
    database.GetSource()->Create(Path("new.xml"));
    EXPECT_EQ(database.GetHeaderDescr(), nullptr);
}

TEST_F(DbSourceTest, SetSequentialAccess_OnASourceThatIsNoXml_IsIgnored) {
    DbSource::ForceXML = false;
    DbSource none(nullptr);
    none.SetSequentialAccess(true);
    EXPECT_FALSE(none.IsSequentialAccess());
    DbSource mdb(nullptr, File("steel.mdb"));
    mdb.SetSequentialAccess(true);
    EXPECT_FALSE(mdb.IsSequentialAccess());
}

TEST_F(DbSourceTest, SetSequentialAccess_LastsUntilTheNextFile) {
    DbSource source(nullptr, File("steel.xml"));
    source.SetSequentialAccess(true);
    EXPECT_TRUE(source.IsSequentialAccess());
    source.SetFile(Path("steel.xml"), false);
    EXPECT_FALSE(source.IsSequentialAccess());
    source.SetSequentialAccess(true);
    source.Create(Path("new.xml"));
    EXPECT_FALSE(source.IsSequentialAccess());
    source.SetSequentialAccess(true);
    source.SetSequentialAccess(false);
    EXPECT_FALSE(source.IsSequentialAccess());
}

TEST_F(DbSourceTest, GetBareName_TakesWhatStandsBetweenTheLastBackslashAndTheLastFullStop) {
    DbSource::ForceXML = false;
    DbSource source(nullptr);
    const auto bareName = [&](const char* path) {
        source.Create(path);
        return source.GetBareName().ToUtf8();
    };
    EXPECT_EQ(bareName("steel.xml"), "steel");
    EXPECT_EQ(bareName("c:\\catalogs\\steel.xml"), "steel");
    EXPECT_EQ(bareName("c:\\catalogs\\steel.eu.xml"), "steel.eu");
    EXPECT_EQ(bareName("c:\\v1.2\\steel"), "") << "the only full stop stands in a folder's name";
    EXPECT_EQ(bareName("steel"), "");
    EXPECT_EQ(bareName("c:\\catalogs\\.xml"), "");
    EXPECT_EQ(bareName("catalogs/steel.xml"), "catalogs/steel") << "a slash separates nothing";
    EXPECT_EQ(bareName(""), "");
}

TEST_F(DbSourceTest, ExtractXmlNode_SourceThatIsNoXml_LeavesTheTextAlone) {
    DbSource source(nullptr, File("steel.txt", "<a>1</a>"));
    CString text = "before";
    EXPECT_FALSE(source.ExtractXmlNode("\\a", text));
    EXPECT_EQ(text, "before");
    EXPECT_FALSE(source.IsEof());
}

TEST_F(DbSourceTest, ExtractXmlNode_NeedsNoSequentialAccess) {
    DbSource source(nullptr, File("steel.xml", "<d><a>1</a></d>"));
    CString text;
    EXPECT_TRUE(source.ExtractXmlNode("\\d\\a", text));
    EXPECT_EQ(text, "<a>1</a>");
}

TEST_F(DbSourceTest, ExtractXmlNode_AfterTheLastElement_ReleasesTheFile) {
    DbSource source(nullptr, File("steel.xml", "<d><a>1</a><a>2</a></d>\n"));
    CString text;
    EXPECT_TRUE(source.ExtractXmlNode("\\d\\a", text));
    EXPECT_TRUE(source.ExtractXmlNode("\\d\\a", text));
    EXPECT_EQ(text, "<a>2</a>");
    EXPECT_FALSE(source.IsEof());
    EXPECT_FALSE(source.ExtractXmlNode("\\d\\a", text));
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_TRUE(source.IsEof());
    text = "before";
    EXPECT_FALSE(source.ExtractXmlNode("\\d\\a", text));
    EXPECT_TRUE(text.IsEmpty()) << "at the end the text is emptied";
}

TEST_F(DbSourceTest, ExtractXmlNode_AcrossTheBlockBoundary_GivesTheWholeElement) {
    ASSERT_EQ(DbSource::MaxBufferSize, 16384);
    const std::string element = "<a name=\"an element of some length\">text</a>";
    for (std::size_t before = 16384 - element.size() - 12; before < 16384 + 4; ++before) {
        const std::string document = "<d><!--" + std::string(before, '-') + "-->" + element + "</d>\n";
        DbSource source(nullptr, File("steel.xml", document));
        CString text;
        ASSERT_TRUE(source.ExtractXmlNode("\\d\\!--" + std::string(before, '-') + "--\\a", text)) << before;
        ASSERT_EQ(text.ToUtf8(), element) << before;
    }
}

TEST_F(DbSourceTest, ExtractXmlNode_AtAnyBufferSize_GivesTheSame) {
    const CString path = File("steel.xml", SmallCatalog());
    for (const std::int32_t size : {-1, 0, 1, 2, 3, 17, 100, 1 << 20}) {
        DbSource::MaxBufferSize = size;
        DbSource source(nullptr, path);
        CString text;
        ASSERT_TRUE(source.ExtractXmlNode("\\database\\header\\data\\table", text)) << size;
        EXPECT_EQ(text, "<table name=\"Header\">\n<row title=\"Small\" />\n</table>") << size;
    }
}

TEST_F(DbSourceTest, ExtractXmlNode_InvalidUtf8_IsFoundAsAnEmptyText) {
    DbSource source(nullptr, File("steel.xml", "<d><a>\xC3\x28</a><b>\xC3\xA4</b></d>\n"));
    CString text = "before";
    EXPECT_TRUE(source.ExtractXmlNode("\\d\\a", text));
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_TRUE(source.ExtractXmlNode("\\d\\b", text));
    EXPECT_EQ(text, "<b>\xC3\xA4</b>");
}

TEST_F(DbSourceTest, ExtractXmlNode_FileThatIsGone_IsFalse) {
    DbSource source(nullptr, File("steel.xml", "<a>1</a>"));
    std::filesystem::remove(m_folder / "steel.xml");
    CString text = "before";
    EXPECT_FALSE(source.ExtractXmlNode("\\a", text));
    File("steel.xml", "<a>1</a>");
    EXPECT_FALSE(source.ExtractXmlNode("\\a", text)) << "it is opened once";
    EXPECT_FALSE(source.IsEof());
}

TEST_F(DbSourceTest, ExtractXmlNode_FileThatWasReadToItsEnd_StaysAtItsEndForOtherFilesToo) {
    DbSource source(nullptr, File("steel.xml", "<a>1</a>\n"));
    CString text;
    EXPECT_FALSE(source.ExtractXmlNode("\\b", text));
    EXPECT_TRUE(source.IsEof());
    source.SetFile(File("other.xml", "<b>1</b>\n"), false);
    EXPECT_TRUE(source.IsEof());
    EXPECT_FALSE(source.ExtractXmlNode("\\b", text));
    source.Create(Path("other.xml"));
    EXPECT_TRUE(source.IsEof());
}

TEST_F(DbSourceTest, SetFile_HalfwayThroughAFile_StartsTheNextOneAnew) {
    DbSource source(nullptr, File("steel.xml", "<d><a>1</a><a>2</a></d>\n"));
    CString text;
    EXPECT_TRUE(source.ExtractXmlNode("\\d\\a", text));
    source.SetFile(File("other.xml", "<b><a>3</a></b>\n"), false);
    EXPECT_TRUE(source.ExtractXmlNode("\\b\\a", text));
    EXPECT_EQ(text, "<a>3</a>");
}

TEST_F(DbSourceTest, Release_HalfwayThroughAFile_EndsTheReading) {
    DbSource source(nullptr, File("steel.xml", "<d><a>1</a><a>2</a></d>\n"));
    CString text;
    EXPECT_TRUE(source.ExtractXmlNode("\\d\\a", text));
    source.Release();
    EXPECT_TRUE(source.IsEof());
    EXPECT_FALSE(source.ExtractXmlNode("\\d\\a", text));
    source.Release();
    EXPECT_TRUE(source.IsEof());
}

TEST_F(DbSourceTest, ReadingSequentially_DoesNotHinderThoseWhoReplaceTheFile) {
    File("steel.xml", SmallCatalog());
    const auto database = Open(m_folder / "steel.xml", Reading::Sequential);
    EXPECT_EQ(database->GetTablesCount(), 5);
    DbDatabase writer(Path("steel.xml"));
    writer.DeleteTable("Alpha");
    EXPECT_TRUE(writer.Save(Path("steel.xml")));
    EXPECT_EQ(database->GetTableData("Alpha")->size(), 2U) << "the file that was opened is read on";
}

}  // namespace
