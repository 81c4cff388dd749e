// How much a source reads at a time, counted by the system.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "Quillet/Db_Source.h"
#include "support/CatalogHelpers.h"

namespace {

using quillet::test::StaticsGuard;
using quillet::test::TemporaryFolder;
using quillet::test::Utf8;
using quillet::test::WriteBytes;

// The number of read calls of this process so far; negative if the system does not count them.
long ReadCalls() {
    std::ifstream counts("/proc/self/io");
    std::string name;
    long count = -1;
    while (counts >> name >> count) {
        if (name == "syscr:") {
            return count;
        }
    }
    return -1;
}

TEST(PosixSource, ExtractXmlNode_AWholeFile_ReadsMaxBufferSizeAtATime) {
    if (ReadCalls() < 0) {
        GTEST_SKIP() << "the system does not count the calls that read";
    }
    const StaticsGuard statics;
    const TemporaryFolder folder;
    constexpr long Size = 1'000'000;
    const std::string text = "<a><b>" + std::string(Size - 14, 'x') + "</b></a>";
    ASSERT_EQ(text.size(), static_cast<std::size_t>(Size));
    WriteBytes(folder / "long.xml", text);
    // Getting the count reads too.
    const long first = ReadCalls();
    const long looking = ReadCalls() - first;
    for (const std::int32_t block : {1000, 16384, 250'000}) {
        DbSource::MaxBufferSize = block;
        DbSource source(nullptr, CString(Utf8(folder / "long.xml")));
        CString node;
        const long before = ReadCalls();
        ASSERT_TRUE(source.ExtractXmlNode("\\a\\b", node));
        const long calls = ReadCalls() - before - looking;
        const long full = (Size + block - 1) / block;
        EXPECT_GE(calls, full) << block;
        // The end of the file is read once more.
        EXPECT_LE(calls, full + 1) << block;
    }
}

}  // namespace
