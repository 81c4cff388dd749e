// convert, and the other commands on Access files.
#include <gmock/gmock.h>

#include "Failure.h"
#include "Quillet/Db_Database.h"
#include "Quillet/dbaccess/DBACCESS.h"
#include "Quillet/platform/FileLock.h"
#include "commands/Commands.h"
#include "support/ToolTest.h"

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class Convert : public quillet::test::ToolTest {
protected:
    Convert() : m_connectFormat(DBACCESS::m_connectFormat) {}
    ~Convert() override { DBACCESS::m_connectFormat = m_connectFormat; }

    // A copy of one of the shared files.
    std::string CopyShared(const std::string& name) const {
        std::filesystem::copy_file(std::filesystem::path(QUILLET_SHARED_DATA_DIR) / name, m_folder / name);
        std::filesystem::permissions(m_folder / name, std::filesystem::perms::owner_all);
        return Path(name);
    }

    static bool HasShared(const std::string& name) {
        return std::filesystem::exists(std::filesystem::path(QUILLET_SHARED_DATA_DIR) / name);
    }

    // From now on, the SQLite driver, which can write, opens files that end in .mdb. An empty file will do.
    static void UseSqlite() { DBACCESS::m_connectFormat = "Database=%s;Driver={SQLite3}"; }

    // Converts in this process. Returns the error message; empty on success.
    static std::string ConvertHere(const std::string& source, const std::string& target, bool replace = false,
                                   bool waits = true) {
        quillet::tool::Settings settings;
        settings.m_waits = waits;
        settings.m_format = quillet::tool::Format::Json;
        try {
            EXPECT_EQ(quillet::tool::Convert(settings, {source, target, replace}), 0);
        } catch (const quillet::tool::Failure& failure) {
            return failure.what();
        }
        return {};
    }

    // A catalog with a table that has a field of every type.
    std::string MakeEveryType(const std::string& name) const {
        const std::string file = Path(name);
        Output({"new", file, "--header", "title=Größen & \"Maße\""});
        const std::string csv =
            Write("types.csv",
                  "a text,a boolean,a long,a float,a double,some bytes\n"
                  "\"it's \"\"quoted\"\", ширина\",true,-2147483648,0.5,1.79769313486231E+308,AAA=\n"
                  "[x],false,2147483647,-1.5,-2.75,//4=\n"
                  "  blanks  ,true,0,0,0,AQ==\n");
        Output({"import", file, "Every type", csv, "--type", "a float=float", "--type", "some bytes=binary"});
        return file;
    }

    std::vector<std::string> FileNames() const {
        std::vector<std::string> names;
        for (const std::filesystem::path& name : m_folder.Names()) {
            if (name.extension() == ".mdb" || name.extension() == ".xml") {
                names.push_back(quillet::test::Utf8(name));
            }
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    // Every value of a table.
    std::string Values(const std::string& file, const std::string& table) const {
        return Output({"export", file, table, "-"});
    }

private:
    const quillet::CString m_connectFormat;
};

TEST_F(Convert, TargetThatSomebodyChanges_IsRefusedAndStays) {
    UseSqlite();
    const std::string catalog = CopyExample("materials.xml");
    const std::string access = Write("materials.mdb", "");
    ASSERT_EQ(ConvertHere(catalog, access), "");
    for (const auto& [source, target] : {std::pair(access, catalog), std::pair(catalog, access)}) {
        const std::string contents = Read(target == access ? "materials.mdb" : "materials.xml");
        quillet::platform::FileLock::Refusal refusal;
        auto lock = quillet::platform::FileLock::Take(target, std::chrono::milliseconds(0), refusal);
        ASSERT_NE(lock, nullptr) << refusal.m_why;
        EXPECT_THAT(ConvertHere(source, target, true, false), StartsWith(target + ": locked by "));
        EXPECT_EQ(Read(target == access ? "materials.mdb" : "materials.xml"), contents);
        lock.reset();
        EXPECT_EQ(ConvertHere(source, target, true, false), "");
    }
}

constexpr const char* AiscTables[] = {"C",  "DBL_L", "HP",   "HSS_R", "HSS", "L",  "MC",
                                      "MT", "M",     "PIPE", "ST",    "S",   "WT", "W"};

TEST_F(Convert, ToXml_RealFile_GivesACatalogWithTheSameValues) {
    if (!HasShared("aisc.mdb")) {
        GTEST_SKIP() << "no ../shared/data/aisc.mdb";
    }
    const std::string source = CopyShared("aisc.mdb");
    const std::string target = Path("aisc.xml");
    EXPECT_EQ(Output({"convert", source, target}), target + ": 16 tables converted\n");
    EXPECT_EQ(Output({"check", target}), target + ": ok\n");
    EXPECT_EQ(Output({"check", source}), source + ": ok\n");
    for (const char* table : {"Header", "Properties"}) {
        EXPECT_EQ(Values(target, table), Values(source, table)) << table;
    }
    for (const char* table : AiscTables) {
        const std::string values = Values(source, table);
        EXPECT_GT(std::count(values.begin(), values.end(), '\n'), 10) << table;
        EXPECT_EQ(Values(target, table), values) << table;
    }
    EXPECT_THAT(FileNames(), ElementsAre("aisc.mdb", "aisc.xml"));
}

TEST_F(Convert, EveryReadingCommand_TakesAccessFiles) {
    if (!HasShared("aisc.mdb")) {
        GTEST_SKIP() << "no ../shared/data/aisc.mdb";
    }
    const std::string file = CopyShared("aisc.mdb");
    const std::string info = Output({"info", file});
    EXPECT_THAT(info, HasSubstr("\n  kind       Access\n"));
    EXPECT_LT(info.find("\n  Header "), info.find("\n  Properties "));
    EXPECT_LT(info.find("\n  Properties "), info.find("\n  W "));
    EXPECT_THAT(Output({"fields", file, "w"}), HasSubstr("\nshape "));
    EXPECT_THAT(Output({"show", file, "W", "--limit", "1"}), HasSubstr("\nW"));
    EXPECT_THAT(Output({"query", file, "select top 1 shape from W"}), HasSubstr("\nW"));
    EXPECT_THAT(Output({"find", file, "W", "shape > 'W'"}), HasSubstr("W"));
    EXPECT_EQ(Failure({"set", file, "header", "title=x"}), file + ": only .xml catalogs can be changed");
}

TEST_F(Convert, ToXml_ColumnsWithoutAType_AreWarnedOf) {
    if (!HasShared("types.mdb")) {
        GTEST_SKIP() << "no ../shared/data/types.mdb";
    }
    const std::string source = CopyShared("types.mdb");
    const quillet::test::RunResult result = Run({"convert", "--lossy", source, Path("types.xml")});
    EXPECT_EQ(result.m_status, 0) << result.m_errors;
    EXPECT_THAT(result.m_errors, HasSubstr("warning: " + source + ": table 'values', field "));
    EXPECT_THAT(result.m_errors, HasSubstr(", field 'a_date': values of its type are left out\n"));
}

TEST_F(Convert, ToXml_ExistingTarget_IsOverwrittenOnRequestOnly) {
    if (!HasShared("aisc.mdb")) {
        GTEST_SKIP() << "no ../shared/data/aisc.mdb";
    }
    const std::string source = CopyShared("aisc.mdb");
    const std::string target = Write("old.xml", "old");
    EXPECT_EQ(Failure({"convert", source, target}), target + ": already there; --replace overwrites it");
    EXPECT_EQ(Read("old.xml"), "old");
    EXPECT_EQ(Output({"convert", source, target, "--replace"}), target + ": 16 tables converted\n");
    EXPECT_EQ(Output({"check", target}), target + ": ok\n");
}

TEST_F(Convert, ToXml_NoAccessFile_SaysWhatIsWrong) {
    const std::string target = Path("new.xml");
    const std::string text =
        Write("text.mdb", "These are words, and more of them than a page begins with......\n");
    EXPECT_EQ(Failure({"convert", text, target}), text + ": not an Access file");
    EXPECT_EQ(Failure({"info", text}), text + ": not an Access file");
    EXPECT_EQ(Failure({"show", text, "Header"}), text + ": not an Access file");
    EXPECT_EQ(Failure({"check", text}), text + ": not an Access file");
    const std::string empty = Write("empty.mdb", "");
    EXPECT_EQ(Failure({"convert", empty, target}), empty + ": not an Access file");
    const std::string absent = Path("none.mdb");
    EXPECT_EQ(Failure({"convert", absent, target}), absent + ": " + WhyUnreadable(absent));
    std::filesystem::create_directory(m_folder / "folder.mdb");
    const std::string folder = Path("folder.mdb");
    EXPECT_EQ(Failure({"convert", folder, target}), folder + ": " + WhyUnreadable(folder));
    EXPECT_FALSE(Exists("new.xml"));
}

TEST_F(Convert, ToXml_TruncatedFile_NamesTheFirstTableThatIsCutAndWritesNothing) {
    if (!HasShared("aisc.mdb")) {
        GTEST_SKIP() << "no ../shared/data/aisc.mdb";
    }
    CopyShared("aisc.mdb");
    const std::string cut = Write("cut.mdb", Read("aisc.mdb").substr(0, 200000));
    const quillet::test::RunResult result = Run({"convert", cut, Path("new.xml")});
    EXPECT_EQ(result.m_status, 1);
    EXPECT_EQ(result.m_output, "");
    // The driver may print messages first.
    EXPECT_THAT(result.m_errors, EndsWith("quillet: " + cut + ": table 'M' can't be read\n"));
    EXPECT_FALSE(Exists("new.xml"));
}

TEST_F(Convert, ToXml_RowsThatTheDriverPassesOverInSilence_AreMissed) {
    if (!HasShared("types.mdb")) {
        GTEST_SKIP() << "no ../shared/data/types.mdb";
    }
    CopyShared("types.mdb");
    const std::string whole = Read("types.mdb");
    const std::string fault = "Table 'desc_48': 0 of 4 rows can be read";
    const std::string cut = Write("cut.mdb", whole.substr(0, whole.size() - 4096));
    const quillet::test::RunResult conversion = Run({"convert", cut, Path("new.xml")});
    EXPECT_EQ(conversion.m_status, 1);
    EXPECT_THAT(conversion.m_errors,
                EndsWith("quillet: " + cut +
                         ": not converted, for it has faults that 'quillet check' lists: " + fault + "\n"));
    EXPECT_FALSE(Exists("new.xml"));
    const quillet::test::RunResult check = Run({"check", cut});
    EXPECT_EQ(check.m_status, 1);
    EXPECT_THAT(check.m_output, testing::StartsWith(cut + ": " + fault + "\n"));
    // If the list of tables is truncated too, the driver finds none.
    const std::string stump = Write("stump.mdb", whole.substr(0, 5 * 4096));
    const quillet::test::RunResult nothing = Run({"convert", stump, Path("new.xml")});
    EXPECT_EQ(nothing.m_status, 1);
    EXPECT_THAT(nothing.m_errors, EndsWith("quillet: " + stump + ": its tables can't be listed\n"));
    EXPECT_FALSE(Exists("new.xml"));
}

TEST_F(Convert, DriverThatIsMissing_IsNamedWithWhatBringsOne) {
    const std::string source = Write("some.mdb", "anything");
    DBACCESS::m_connectFormat = "DBQ=%s;Driver={Driver That Nobody Has}";
    const auto complaint = AllOf(StartsWith(source + ": "),
                                 HasSubstr("'Driver That Nobody Has' is missing: "), HasSubstr(" brings "));
    EXPECT_THAT(ConvertHere(source, Path("new.xml")), complaint);
    EXPECT_THAT(ConvertHere(CopyExample("materials.xml"), source), complaint);
    EXPECT_EQ(Read("some.mdb"), "anything");
    EXPECT_THAT(FileNames(), ElementsAre("materials.xml", "some.mdb"));
}

TEST_F(Convert, ToAccess_DriverThatOnlyReads_IsRefusedAndTheTargetStays) {
    if (!HasShared("aisc.mdb")) {
        GTEST_SKIP() << "no ../shared/data/aisc.mdb";
    }
    const std::string target = CopyShared("aisc.mdb");
    const std::string before = Read("aisc.mdb");
    EXPECT_THAT(
        Failure({"convert", CopyExample("materials.xml"), target}),
        AllOf(StartsWith(target + ": not converted: the ODBC driver 'Microsoft Access Driver (*.mdb)' "),
              HasSubstr(" does not write: ")));
    EXPECT_EQ(Read("aisc.mdb"), before);
    EXPECT_THAT(FileNames(), ElementsAre("aisc.mdb", "materials.xml"));
}

TEST_F(Convert, ToAccess_AbsentTarget_IsNotMade) {
    const std::string target = Path("none.mdb");
    EXPECT_THAT(Failure({"convert", CopyExample("materials.xml"), target}),
                StartsWith(target + ": not there; "));
    EXPECT_FALSE(Exists("none.mdb"));
}

TEST_F(Convert, OtherKinds_AreNoUsage) {
    for (const auto& [source, target] : {std::pair("a.xml", "b.xml"),
                                         {"a.mdb", "b.mdb"},
                                         {"a.csv", "b.xml"},
                                         {"a.mdb", "b"},
                                         {"mdb", "xml"}}) {
        EXPECT_THAT(UsageError({"convert", source, target}), HasSubstr("convert makes OUT.xml of IN.mdb"))
            << source;
    }
}

TEST_F(Convert, ToAccessAndBack_GivesTheSameValues) {
    UseSqlite();
    const std::string file = Write("there.mdb", "");
    for (const std::string name : {"materials.xml", "every-type.xml"}) {
        const std::string source = name == "materials.xml" ? CopyExample(name) : MakeEveryType(name);
        Write("there.mdb", "");
        const std::string back = Path("back.xml");
        ASSERT_EQ(ConvertHere(source, file), "") << name;
        ASSERT_EQ(ConvertHere(file, back, true), "") << name;
        DbDatabase database(source);
        for (std::size_t i = 0; i < static_cast<std::size_t>(database.GetTablesCount()); ++i) {
            const std::string table = database.GetTableName(i).ToUtf8();
            EXPECT_EQ(Values(back, table), Values(source, table)) << name << ", " << table;
        }
        database.Sync();
    }
}

TEST_F(Convert, ToXml_NumberThatItsTextCannotCarry_IsNamedUnlessLossIsAllowed) {
    UseSqlite();
    const std::string access = Write("large.mdb", "");
    ASSERT_EQ(ConvertHere(WriteChanged("large.xml", R"(d="10")", R"(d="1.7976931348623157e308")"), access),
              "")
        << "an Access file holds numbers, not texts";
    const std::string target = Path("back.xml");
    EXPECT_THAT(
        ConvertHere(access, target),
        AllOf(StartsWith(access + ": not converted: table 'Bolts', row 2, field 'd': the number can't be "
                                  "carried by a text: '"),
              EndsWith(" is not read back; --lossy goes on")));
    EXPECT_FALSE(Exists("back.xml"));

    quillet::tool::Settings lossy{quillet::tool::Format::Json};
    lossy.m_lossy = true;
    testing::internal::CaptureStderr();
    EXPECT_EQ(quillet::tool::Convert(lossy, {access, target}), 0);
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                StartsWith("quillet: warning: " + access + ": table 'Bolts', row 2, field 'd': the number "));
    EXPECT_THAT(Values(target, "Bolts"), HasSubstr("M12,12,1.75,"));
}

TEST_F(Convert, ToAccess_TableWithoutRows_IsThereWithItsFields) {
    UseSqlite();
    const std::string source = Path("empty.xml");
    Output({"new", source});
    const std::string csv = Write("mine.csv", "name,size\n");
    Output({"import", source, "Mine", csv, "--type", "size=double"});
    const std::string file = Write("there.mdb", "");
    ASSERT_EQ(ConvertHere(source, file), "");
    ASSERT_EQ(ConvertHere(source, file), "") << "again, onto a table without rows";
    const std::string back = Path("back.xml");
    ASSERT_EQ(ConvertHere(file, back), "");
    EXPECT_EQ(Values(back, "Mine"), Values(source, "Mine"));
    EXPECT_EQ(Values(back, "Mine"), "name,size\r\n");
}

TEST_F(Convert, ToAccess_TwiceAndBeside_ReplacesItsTablesAndLeavesOthers) {
    UseSqlite();
    const std::string file = Write("there.mdb", "");
    ASSERT_EQ(ConvertHere(CopyExample("materials.xml"), file), "");
    const std::string source = Path("mine.xml");
    Output({"new", source, "--header", "title=Mine"});
    const std::string csv = Write("mine.csv", "name\n\"[it's] \"\"mine\"\" Größe\"\n");
    Output({"import", source, "My table", csv});
    ASSERT_EQ(ConvertHere(source, file), "");
    ASSERT_EQ(ConvertHere(source, file), "");
    const std::string back = Path("back.xml");
    ASSERT_EQ(ConvertHere(file, back), "");
    EXPECT_EQ(Values(back, "My table"), Values(source, "My table"));
    EXPECT_EQ(Values(back, "Header"), Values(source, "Header"));
    EXPECT_EQ(Values(back, "Concrete"), Values(Path("materials.xml"), "Concrete"));
}

TEST_F(Convert, ToAccess_TableThatCantBeWritten_LeavesTheTargetAsItWas) {
    UseSqlite();
    const std::string file = Write("there.mdb", "");
    ASSERT_EQ(ConvertHere(CopyExample("materials.xml"), file), "");
    const std::string before = Read("there.mdb");
    const std::string source = Path("mine.xml");
    Output({"new", source});
    const std::string csv = Write("mine.csv", "name\nx\n");
    Output({"import", source, "a]b", csv});
    EXPECT_THAT(ConvertHere(source, file), StartsWith(file + ": not converted: table 'a]b': "));
    EXPECT_EQ(Read("there.mdb"), before);
    EXPECT_THAT(FileNames(), ElementsAre("materials.xml", "mine.xml", "there.mdb"));
}

TEST_F(Convert, ToAccess_FieldsThatDifferInCaseOnly_AreRefusedByTheDriver) {
    UseSqlite();
    const std::string file = Write("there.mdb", "");
    EXPECT_THAT(ConvertHere(CopyExample("european-steel.xml"), file),
                AllOf(StartsWith(file + ": not converted: table 'IPE': "), HasSubstr("iy")));
    EXPECT_EQ(Read("there.mdb"), "");
}

TEST_F(Convert, ToAccess_NamesOfAllScripts_ComeBackOrAreNoticed) {
    UseSqlite();
    const std::string file = Write("there.mdb", "");
    const std::string source = CopyExample("field-types.xml");
    const std::string complaint = ConvertHere(source, file);
    if (complaint.empty()) {
        const std::string back = Path("back.xml");
        ASSERT_EQ(ConvertHere(file, back), "");
        // Floats come back as doubles.
        const std::string query =
            "select name, text, binary, typeless, Länge, ширина, 名前 from [Every type]";
        EXPECT_EQ(Output({"query", back, query}), Output({"query", source, query}));
    } else {
        EXPECT_THAT(complaint, StartsWith(file + ": not converted: the ODBC driver 'SQLite3' gives table "));
        EXPECT_EQ(Read("there.mdb"), "");
    }
}

TEST_F(Convert, ToAccess_TableThatIsThereWithOtherFields_LeavesTheTargetAsItWas) {
    UseSqlite();
    const std::string file = Write("there.mdb", "");
    const std::string source = Path("mine.xml");
    Output({"new", source});
    Output({"import", source, "Mine", Write("mine.csv", "a,b\n1,2\n")});
    ASSERT_EQ(ConvertHere(source, file), "");
    const std::string before = Read("there.mdb");
    Output({"import", source, "Mine", Write("mine.csv", "b,a\n1,2\n"), "--replace"});
    EXPECT_EQ(ConvertHere(source, file),
              file + ": not converted: table 'Mine' is there with other fields: a, b");
    EXPECT_EQ(Read("there.mdb"), before);
}

TEST_F(Convert, ToAccess_TableWithoutFields_IsRefused) {
    const std::string file = Write("there.mdb", "as it was");
    const std::string source =
        WriteChanged("bare.xml", "<body>\n<structure>", "<body>\n<structure>\n<table name=\"Bare\" />");
    EXPECT_EQ(Failure({"convert", source, file}),
              source + ": not converted: table 'Bare' has no fields, and an Access file takes no such table");
    EXPECT_EQ(Read("there.mdb"), "as it was");
}

TEST_F(Convert, ToAccess_FaultyCatalog_IsRefused) {
    const std::string file = Write("there.mdb", "as it was");
    const std::string source = WriteChanged("faulty.xml", "<row ", "<row <");
    EXPECT_THAT(Failure({"convert", source, file}), StartsWith(source + ":"));
    EXPECT_EQ(Read("there.mdb"), "as it was");
}

}  // namespace
