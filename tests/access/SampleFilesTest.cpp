// The files of ../shared: every version, every type of column, and the shapes of steel that are there as
// text, too. Without them these tests are skipped.
#include <gtest/gtest.h>

#include <charconv>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "TestPaths.h"
#include "support/AccessReading.h"
#include "support/TemporaryFolder.h"

namespace quillet::access {
namespace {

using test::OpenedFile;
using test::ShownRow;
using test::Utf8Of;
using Cells = std::vector<std::string>;
using Rows = std::vector<ShownRow>;

std::filesystem::path SharedFolder() {
    return std::filesystem::path(QUILLET_SHARED_DATA_DIR);
}

std::vector<Cells> CellsOf(const std::filesystem::path& path, char separator) {
    std::istringstream lines(test::ReadBytes(path));
    std::vector<Cells> rows;
    for (std::string line; std::getline(lines, line);) {
        std::istringstream cells(line);
        rows.emplace_back();
        for (std::string cell; std::getline(cells, cell, separator);) {
            rows.back().push_back(cell);
        }
    }
    return rows;
}

class SampleFiles : public testing::Test {
protected:
    void SetUp() override {
        if (!std::filesystem::exists(SharedFolder() / "access")) {
            GTEST_SKIP() << "no " << SharedFolder() / "access";
        }
    }
    // The sample of that name, in whatever folder it is.
    static std::unique_ptr<platform::RandomAccessFile> Sample(const std::string& name) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(SharedFolder() / "access")) {
            if (entry.path().filename() == name) {
                return platform::RandomAccessFile::Open(test::Utf8(entry.path()));
            }
        }
        throw std::out_of_range(name);
    }
    static Rows RowsOf(const std::string& name, const std::string& table) {
        OpenedFile file(Sample(name));
        Rows rows = file.Rows(table);
        EXPECT_EQ(file.Damage(), Cells()) << name;
        return rows;
    }
    // The columns of the first row, from the second on.
    static Cells Column(const Rows& rows, std::size_t column) {
        Cells cells;
        for (const ShownRow& row : rows) {
            cells.push_back(row.at(column));
        }
        return cells;
    }
};

// What contents.tsv says of a table: rows, columns, real and logical indexes.
using Counts = std::tuple<std::size_t, std::size_t, std::size_t, std::size_t>;
using Contents = std::map<std::string, Counts>;

std::map<std::string, Contents> ExpectedContents() {
    std::map<std::string, Contents> files;
    std::vector<Cells> lines = CellsOf(SharedFolder() / "access" / "contents.tsv", '\t');
    lines.erase(lines.begin());
    for (const Cells& line : lines) {
        files[line.at(0)][line.at(1)] = {std::stoul(line.at(2)), std::stoul(line.at(3)),
                                         std::stoul(line.at(4)), std::stoul(line.at(5))};
    }
    return files;
}

Contents ContentsOf(OpenedFile& file) {
    Contents contents;
    for (const CatalogEntry& entry : file.File().Catalog()) {
        if (entry.IsUserTable()) {
            const TableDefinition table = file.File().ReadDefinition(entry);
            contents[Utf8Of(entry.m_name)] = {test::RowsOf(file.File(), table).size(), table.m_columns.size(),
                                              table.m_realIndexes.size(), table.m_logicalIndexes.size()};
        }
    }
    return contents;
}

TEST_F(SampleFiles, HaveTheTablesThatAreListed) {
    const auto files = ExpectedContents();
    EXPECT_EQ(files.size(), 38U);
    for (const auto& [name, contents] : files) {
        OpenedFile file(platform::RandomAccessFile::Open(test::Utf8(SharedFolder() / "access" / name)));
        EXPECT_EQ(ContentsOf(file), contents) << name;
        EXPECT_EQ(file.Damage(), Cells()) << name;
    }
}

TEST_F(SampleFiles, SystemTablesAreReadToo) {
    std::size_t tables = 0;
    for (const auto& [name, contents] : ExpectedContents()) {
        OpenedFile file(platform::RandomAccessFile::Open(test::Utf8(SharedFolder() / "access" / name)));
        for (const CatalogEntry& entry : file.File().Catalog()) {
            if (entry.m_type == CatalogEntry::Table) {
                const TableDefinition table = file.File().ReadDefinition(entry);
                test::RowsOf(file.File(), table);
                ++tables;
            }
        }
        EXPECT_EQ(file.Damage(), Cells()) << name;
    }
    EXPECT_GT(tables, 500U);
}

TEST_F(SampleFiles, EncodedPagesAreRead) {
    const Rows rows{{"1", "'hello'", "0"}, {"2", "'world'", "42"}};
    EXPECT_EQ(RowsOf("db97-enc.mdb", "Table1"), rows);
    EXPECT_EQ(RowsOf("db-enc.mdb", "Table1"), rows);
}

TEST_F(SampleFiles, FilesWithAPasswordOfTheNewerKindAreRefused) {
    for (const char* const name : {"db2007-oldenc.accdb", "db2007-enc.accdb", "db2013-enc.accdb"}) {
        EXPECT_EQ(test::AccessErrorOf([&] { OpenedFile file(Sample(name)); }),
                  "The file is encrypted with a password and can't be read without it.");
    }
}

TEST_F(SampleFiles, CalculatedColumnsHaveTheTypesOfTheirResults) {
    const Rows rows = RowsOf("calcFieldTestV2010.accdb", "Table1");
    EXPECT_EQ(Column(rows, 3), (Cells{"'Wayne, Bruce'", "'Simpson, Bart'", "'Doe, John'", "'User, Test'"}));
    EXPECT_EQ(Column(rows, 5), (Cells{"12", "13", "9", "10"}));
    EXPECT_EQ(Column(rows, 7), (Cells{"money 833333333", "money -833", "money 0", "money 83333"}));
    EXPECT_EQ(Column(rows, 8), (Cells{"true", "false", "false", "false"}));
    EXPECT_EQ(Column(rows, 9), (Cells{"'Wayne, Bruce=Wayne, Bruce'", "'Simpson, Bart=Simpson, Bart'",
                                      "'Doe, John=Doe, John'", "'User, Test=User, Test'"}));
    EXPECT_EQ(Column(rows, 10), (Cells{"exact 19230.7692307692", "exact -0.0192307692307692", "exact 0",
                                       "exact 1.92307692307692"}));
    EXPECT_EQ(Column(rows, 14), Column(rows, 13));
    EXPECT_EQ(rows[3][13], "exact 102030405060.654321");
}

// A column of the file has the same times as text.
TEST_F(SampleFiles, ExtendedDatesAreRead) {
    const Rows rows = RowsOf("extDateTestV2019.accdb", "Table1");
    EXPECT_EQ(rows[0][2], "day 737592 ticks 0");
    EXPECT_EQ(rows[0][4], "'6/17/2020'");
    EXPECT_EQ(rows[5][2], "day 737954 ticks 819123456789");
    EXPECT_EQ(rows[5][4], "'6/14/2021 10:45:12.3456789 PM'");
    EXPECT_EQ(rows[4][2], "null");
    EXPECT_EQ(Column(rows, 5), Column(rows, 3));
}

TEST_F(SampleFiles, BigIntegersAreRead) {
    EXPECT_EQ(RowsOf("bigintV2016.accdb", "Table"), (Rows{{"1", "42"}}));
}

TEST_F(SampleFiles, CompressedAndPlainTextsStandSideBySide) {
    EXPECT_EQ(Column(RowsOf("testUnicodeCompV2003.mdb", "Table"), 1).at(0), "'only ascii chars'");
    EXPECT_EQ(Column(RowsOf("testUnicodeCompV2003.mdb", "Table"), 1).at(1), "'\u00E4\u00E4kk\u00F6si\u00E4'");
    EXPECT_EQ(Column(RowsOf("testUnicodeCompV2003.mdb", "Table"), 1).at(2), "'\u041C\u0438\u0440'");
}

TEST_F(SampleFiles, FixedColumnsCanBeNumericsAndTexts) {
    EXPECT_EQ(RowsOf("fixedNumericTestV2000.mdb", "test"),
              (Rows{{"'some data'", "exact 1", "exact 0", "exact 0", "exact 4", "exact -1", "exact 1"}}));
    EXPECT_EQ(Column(RowsOf("fixedTextTestV2000.mdb", "users"), 8), (Cells{"'N'", "'N'"}));
}

TEST_F(SampleFiles, RowsSurviveDeletedColumns) {
    const Rows rows{{"0", "2", "'foo'", "'foo2'"}, {"3", "5", "'bar'", "'bar2'"}};
    EXPECT_EQ(RowsOf("delColTestV1997.mdb", "Table1"), rows);
    EXPECT_EQ(RowsOf("delColTestV2000.mdb", "Table1"), rows);
}

TEST_F(SampleFiles, MovedRowsAreRead) {
    for (const char* const name : {"overflowTestV1997.mdb", "overflowTestV2000.mdb"}) {
        const Rows rows = RowsOf(name, "Table1");
        EXPECT_EQ(rows[2][7], "'row3col9'") << name;
        EXPECT_EQ(rows[6][5], "'row7col7'") << name;
    }
}

TEST_F(SampleFiles, UnknownTypesAreReadAsBytes) {
    const Rows rows = RowsOf("unsupportedFieldsTestV2007.accdb", "Test");
    EXPECT_EQ(Column(rows, 1),
              (Cells{"bytes fffe736f6d6564617461", "bytes fffe6f746865722064617461", "null"}));
    EXPECT_EQ(Column(rows, 2), (Cells{"bytes 37000000", "bytes f3ffffff", "bytes 02000000"}));
}

TEST_F(SampleFiles, OldAndNewVersionsOfOneTableReadTheSame) {
    EXPECT_EQ(RowsOf("indexTestV1997.mdb", "Table1"), RowsOf("indexTestV2000.mdb", "Table1"));
    EXPECT_EQ(RowsOf("indexTestV2000.mdb", "Table1"), RowsOf("indexTestV2010.accdb", "Table1"));
    EXPECT_EQ(RowsOf("plain4.mdb", "shapes"), RowsOf("plain14.accdb", "shapes"));
}

TEST_F(SampleFiles, EveryTypeReadsAsItWasWritten) {
    OpenedFile file(platform::RandomAccessFile::Open(test::Utf8(SharedFolder() / "types.mdb")));
    const Rows rows = file.Rows("values");
    EXPECT_EQ(rows.at(0).at(8), "date 36925.170208333337");
    EXPECT_EQ(rows.at(1).at(4), "single 3.3999999521443642e+38");
    EXPECT_EQ(rows.at(1).at(10), "money -5000");
    EXPECT_EQ(rows.at(2), (ShownRow{"false", "null", "null", "null", "null", "null", "null", "null", "null",
                                    "null", "null"}));
    EXPECT_EQ(rows.at(3),
              (ShownRow{"true", "0", "0", "0", "single 0", "0", "''", "''", "date 0", "bytes ", "money 0"}));
    EXPECT_EQ(file.Rows("desc_48"), rows);
    EXPECT_EQ(file.Rows("no_rows"), Rows());
}

// ---- steel shapes

const char* const Shapes[] = {"W",  "M",  "S",  "HP",    "C",   "MC",    "L",
                              "WT", "MT", "ST", "DBL_L", "HSS", "HSS_R", "PIPE"};

// A dash (U+2013) stands for nothing.
std::string ShownCell(const std::string& cell, eColumnType type) {
    if (cell == "\u2013") {
        return "null";
    }
    if (type == eColumnType::Text) {
        return "'" + cell + "'";
    }
    double number = 0;
    std::from_chars(cell.data(), cell.data() + cell.size(), number);
    return test::RealText(number);
}

TEST_F(SampleFiles, SteelShapesAreTheSameAsText) {
    OpenedFile file(platform::RandomAccessFile::Open(test::Utf8(SharedFolder() / "aisc.mdb")));
    std::size_t count = 0;
    for (const std::string shape : Shapes) {
        std::vector<Cells> lines = CellsOf(SharedFolder() / "steel" / (shape + "_shapes.csv"), ',');
        const TableDefinition table = file.Table(shape);
        ASSERT_EQ(table.m_columns.size(), lines.front().size()) << shape;
        lines.erase(lines.begin());
        Rows expected;
        for (const Cells& line : lines) {
            ShownRow& row = expected.emplace_back();
            for (std::size_t i = 0; i < line.size(); ++i) {
                row.push_back(ShownCell(line[i], table.m_columns[i].m_type));
            }
        }
        EXPECT_EQ(test::RowsOf(file.File(), table), expected) << shape;
        count += expected.size();
    }
    EXPECT_EQ(count, 2299U);
    EXPECT_EQ(file.Damage(), Cells());
}

// ---- damage

struct Change {
    std::size_t m_offset;
    // Empty where the file ends there.
    std::string m_bytes;
};

std::string BytesOfHex(const std::string& digits) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    }
    return bytes;
}

std::map<std::string, std::vector<Change>> Damages() {
    std::map<std::string, std::vector<Change>> damages;
    for (const Cells& line : CellsOf(SharedFolder() / "access" / "own" / "corrupt.tsv", '\t')) {
        if (line.front().front() != '#') {
            damages[line[0]].push_back(
                {std::stoul(line[2]), line.size() > 3 ? BytesOfHex(line[3]) : std::string()});
        }
    }
    return damages;
}

// What is left of table "shapes": the numbers of its rows that are lost, of those of which a value is lost,
// and how much was reported. Or the error that there is instead.
struct Left {
    std::vector<std::size_t> m_lostRows;
    std::vector<std::size_t> m_changedRows;
    std::size_t m_reports = 0;
    std::string m_error = "none";

    bool operator==(const Left&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Left& left) {
    return out << "lost " << testing::PrintToString(left.m_lostRows) << ", changed "
               << testing::PrintToString(left.m_changedRows) << ", reports " << left.m_reports << ", error "
               << left.m_error;
}

Left LeftOf(const std::string& bytes, const Rows& whole) {
    Left left;
    left.m_error = test::AccessErrorOf([&] {
        OpenedFile file(std::make_unique<test::MemoryFile>(bytes));
        const Rows rows = file.Rows("shapes");
        std::size_t next = 0;
        for (std::size_t i = 0; i < whole.size(); ++i) {
            // The first column is a key.
            if (next == rows.size() || rows[next][0] != whole[i][0]) {
                left.m_lostRows.push_back(i);
            } else if (rows[next++] != whole[i]) {
                left.m_changedRows.push_back(i);
            }
        }
        EXPECT_EQ(next, rows.size());
        left.m_reports = file.Damage().size();
    });
    return left;
}

TEST_F(SampleFiles, DamageCostsNoRowThatIsWhole) {
    const std::string tooEarly = "table 'shapes', page 16: the table's definition ends too early";
    const std::map<std::string, Left> expected{
        {"bad-cut-in-header", {{}, {}, 0, "The file ends within its header."}},
        // The map of another table is lost.
        {"bad-cut-mid-page", {}},
        {"bad-empty", {{}, {}, 0, "This is not an Access file."}},
        {"bad-index-mask-past-end", {}},
        {"bad-index-not-a-page", {}},
        {"bad-index-out-of-order", {}},
        {"bad-index-prefix-huge", {}},
        {"bad-index-sibling-loop", {}},
        // The row is marked as deleted.
        {"bad-index-stale", {{0}, {}, 0}},
        {"bad-longvalue-length-huge", {{}, {}, 1}},
        {"bad-longvalue-loop", {{}, {0}, 1}},
        {"bad-longvalue-page-outside", {{}, {0}, 1}},
        {"bad-map-out-of-file", {{}, {}, 1}},
        {"bad-page-rows-65535", {{}, {}, 1}},
        {"bad-row-count-wrong", {}},
        {"bad-row-lookup-to-itself", {{2}, {}, 1}},
        {"bad-row-offset-in-header", {{}, {}, 2}},
        {"bad-row-offset-outside", {{}, {}, 2}},
        {"bad-row-var-count", {{2}, {}, 1}},
        {"bad-tdef-columns-60000", {{}, {}, 0, tooEarly}},
        {"bad-tdef-indexes-huge", {{}, {}, 0, tooEarly}},
        {"bad-tdef-length-huge", {}},
        {"bad-tdef-loop", {}},
        {"bad-tdef-name-length", {{}, {}, 0, tooEarly}},
        {"bad-tdef-wrong-type",
         {{}, {}, 0, "table 'shapes', page 16, offset 0: the page is of type 1 instead of 2"}},
        {"bad-version-9", {{}, {}, 0, "The file has an unknown version of the Access format: 9."}},
        {"refuse-msisam", {{}, {}, 0, "This is a Money file, which can't be read."}},
    };
    const std::string original = test::ReadBytes(SharedFolder() / "access" / "own" / "plain4.mdb");
    const Rows whole = RowsOf("plain4.mdb", "shapes");
    std::map<std::string, Left> found;
    for (const auto& [name, changes] : Damages()) {
        std::string bytes = original;
        for (const Change& change : changes) {
            if (change.m_bytes.empty()) {
                bytes.resize(change.m_offset);
            } else {
                bytes.replace(change.m_offset, change.m_bytes.size(), change.m_bytes);
            }
        }
        found[name] = LeftOf(bytes, whole);
        EXPECT_EQ(found[name], expected.at(name)) << name;
    }
    EXPECT_EQ(found.size(), expected.size());
}

}  // namespace
}  // namespace quillet::access
