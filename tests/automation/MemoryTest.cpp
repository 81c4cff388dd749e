// The memory that a script host needs to walk through many rows: no more for the second walk than for the
// first.
#include "AutomationHelpers.h"
#include "support/WindowsProcess.h"

// After the header that it depends on.
#include <psapi.h>

namespace {

using namespace quillet::test;

constexpr long Rows = 10000;

class Memory : public AutomationTest {
protected:
    // A table of that many rows with a text and two numbers.
    std::string ManyRows() const {
        const auto catalog = MadeDatabase();
        const std::string path = Utf8(m_folder / "many.xml");
        EXPECT_EQ(catalog->Create(Bstr(path.c_str())), S_OK);
        EXPECT_EQ(catalog->CreateTable(Bstr("Many")), S_OK);
        const auto fields = ObjectOf(catalog.Get(), &IDbDatabase::TableDescrByName, Bstr("Many"));
        EXPECT_EQ(fields->CreateField(Bstr("name"), FieldType::Text), S_OK);
        EXPECT_EQ(fields->CreateField(Bstr("a"), FieldType::Double), S_OK);
        EXPECT_EQ(fields->CreateField(Bstr("b"), FieldType::Long), S_OK);
        const auto rows = ObjectOf(catalog.Get(), &IDbDatabase::TableDataByName, Bstr("Many"));
        for (long i = 0; i < Rows; ++i) {
            const auto row = ObjectOf(rows.Get(), &IDbTableData::AddRow);
            const std::string name =
                "a name that is long enough to need memory of its own, " + std::to_string(i);
            for (const auto& [field, value] : {std::pair<long, CComVariant>{0, CComVariant(name.c_str())},
                                               std::pair<long, CComVariant>{1, CComVariant(0.5 * i)},
                                               std::pair<long, CComVariant>{2, CComVariant(i)}}) {
                EXPECT_EQ(ObjectOf(row.Get(), &IDbTableRow::FieldByIndex, field)->put_Value(value), S_OK);
            }
        }
        EXPECT_EQ(catalog->Save(Bstr(path.c_str())), S_OK);
        return path;
    }
};

// The private bytes of the process.
std::size_t PrivateBytes(HANDLE process) {
    PROCESS_MEMORY_COUNTERS counters{};
    EXPECT_NE(GetProcessMemoryInfo(process, &counters, sizeof counters), 0);
    return counters.PagefileUsage;
}

TEST_F(Memory, TenThousandRowsWalkedAgainFromScript_NeedNoMore) {
    const std::string catalog = ManyRows();
    const std::filesystem::path marker = m_folder / "walked";
    std::filesystem::copy_file(QUILLET_SOURCE_DIR "/tests/windows/walk.vbs", m_folder / "walk.vbs");
    quillet::platform::WideString line;
    for (const std::string& argument :
         {std::string("cscript.exe"), std::string("//nologo"), Utf8(m_folder / "walk.vbs"), catalog,
          std::string("Many"), Utf8(marker)}) {
        line += (line.empty() ? L"" : L" ") + QuotedArgument(WideOf(argument));
    }
    std::vector<std::size_t> used;
    {
        // The script writes its counts to the marker file: system programs started with it would keep a file
        // that it prints to open.
        const InheritedFile nowhere(L"NUL", GENERIC_WRITE, OPEN_EXISTING);
        const StartedProcess script(line, nowhere, nowhere);
        while (used.size() < 3 && script.IsRunning()) {
            const std::size_t now = PrivateBytes(script.Handle());
            std::error_code stillOpen;
            if (ReadBytes(marker) == "10000 rows, 1244450 letters" &&
                std::filesystem::remove(marker, stillOpen)) {
                used.push_back(now);
            }
            Sleep(5);
        }
        EXPECT_EQ(script.Status(), 0);
    }
    ASSERT_EQ(used.size(), 3U);
    // Eight bytes a row would be noticed.
    constexpr std::size_t Noise = 64 * 1024;
    EXPECT_LE(used[2], used[1] + Noise) << used[0] << ' ' << used[1] << ' ' << used[2];
}

}  // namespace
