// Whole files with damage: whatever is in a file, reading it ends, takes no more memory than the file is
// worth, and loses nothing that the damage does not touch.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "TestPaths.h"
#include "support/AccessImage.h"
#include "support/AccessMutations.h"
#include "support/AccessReading.h"
#include "support/AccessSample.h"
#include "support/AllocationPlan.h"
#include "support/Seed.h"
#include "support/TemporaryFolder.h"

namespace quillet::access {
namespace {

using test::AccessMutations;
using test::FileImage;
using test::MemoryFile;
using test::PageSet;
using test::TableImage;

// How many changes are tried on each file. All of them take minutes, under the sanitizers more.
std::size_t MutationCount() {
    constexpr std::size_t Few = 13;
    const char* const count = std::getenv("QUILLET_MUTATIONS");
    return count == nullptr ? Few : std::strtoul(count, nullptr, 10);
}

PageSet ChangedPages(const std::string& before, const std::string& after, std::size_t pageSize) {
    PageSet changed;
    for (std::size_t start = 0; start < std::max(before.size(), after.size()); start += pageSize) {
        const bool isSame = start + pageSize <= std::min(before.size(), after.size()) &&
                            before.compare(start, pageSize, after, start, pageSize) == 0;
        if (!isSame) {
            changed.insert(static_cast<PageNumber>(start / pageSize));
        }
    }
    return changed;
}

PageSet InBoth(const PageSet& one, const PageSet& other) {
    PageSet both;
    std::ranges::set_intersection(one, other, std::inserter(both, both.end()));
    return both;
}

// The rows of pages that were not changed are there as before.
void ExpectWholeRows(const TableImage& before, const TableImage& after, const PageSet& changed) {
    for (const auto& [place, digest] : before.m_rows) {
        if (!changed.contains(place.first)) {
            const auto row = after.m_rows.find(place);
            ASSERT_TRUE(row != after.m_rows.end()) << "page " << place.first << ", row " << +place.second;
            ASSERT_EQ(row->second, digest) << "page " << place.first << ", row " << +place.second;
        }
    }
}

// Tables that need no page that was changed are as before, and whole pages of the others.
void ExpectUntouchedRows(const std::string& before, const FileImage& image, const std::string& after,
                         std::size_t pageSize) {
    const PageSet changed = ChangedPages(before, after, pageSize);
    for (const auto& [id, table] : image) {
        const PageSet touched = InBoth(table.m_needed, changed);
        const TableImage now = test::TableOf(after, id);
        if (touched.empty()) {
            ASSERT_EQ(now.m_rows, table.m_rows) << "table " << id;
        } else if (!table.m_hasMovedRows && std::ranges::includes(table.m_rowPages, touched)) {
            ExpectWholeRows(table, now, changed);
        }
    }
}

// Reading ends, and asks for no more than the file is worth: pages are read a few times each, and memory is a
// small multiple of the file and of what is kept of it.
void ExpectBounded(const std::string& bytes) {
    constexpr std::size_t KeptAtMost = std::size_t{4} << 20;
    const auto plan = std::make_shared<MemoryFile::Plan>();
    auto file = std::make_unique<MemoryFile>(bytes, plan);
    const test::AllocationPlan allocations;
    test::ReadEverything(std::move(file));
    EXPECT_LE(allocations.CountedBytes(), 64 * bytes.size() + KeptAtMost);
    EXPECT_LE(static_cast<std::size_t>(plan->m_reads), bytes.size() / 100 + 1000);
}

void TryMutations(const std::string& bytes, unsigned seed) {
    DamageLog log;
    const File whole(std::make_unique<MemoryFile>(bytes), log);
    const std::size_t pageSize = whole.FileHeader().PageLayout().m_pageSize;
    const FileImage image = test::ImageOf(bytes);
    AccessMutations mutations(bytes, pageSize, test::Seed(seed));
    for (std::size_t i = 0; i < MutationCount() && !testing::Test::HasFailure(); ++i) {
        SCOPED_TRACE("mutation " + std::to_string(i));
        const std::string mutated = mutations.Next();
        ExpectBounded(mutated);
        ExpectUntouchedRows(bytes, image, mutated, pageSize);
    }
}

class DamagedMadeFile : public testing::TestWithParam<const Layout*> {};

INSTANTIATE_TEST_SUITE_P(Layouts, DamagedMadeFile, testing::Values(&Jet3Layout, &Jet4Layout),
                         test::LayoutName());

TEST_P(DamagedMadeFile, IsReadWholeBeforeTheDamage) {
    test::OpenedFile file(std::make_unique<MemoryFile>(test::AccessSample(*GetParam())));
    const auto rows = file.Rows("types");
    ASSERT_EQ(rows.size(), 7U);
    EXPECT_EQ(rows[5], rows[0]);
    EXPECT_EQ(file.Rows("wide").size(), 1U);
    EXPECT_EQ(file.Damage(), std::vector<std::string>());
}

TEST_P(DamagedMadeFile, EndsAndLosesNothingElse) {
    TryMutations(test::AccessSample(*GetParam()), 1);
}

// Each single byte of each page that tells where others are.
TEST_P(DamagedMadeFile, EndsWhateverAByteIs) {
    const std::string bytes = test::AccessSample(*GetParam());
    const std::size_t pageSize = GetParam()->m_pageSize;
    for (std::size_t page = 0; page < bytes.size() / pageSize; ++page) {
        for (std::size_t offset = 0; offset < 80; ++offset) {
            for (const char byte : {'\0', '\1', '\x7F', '\xFF'}) {
                std::string changed = bytes;
                changed[page * pageSize + offset] = byte;
                ExpectBounded(changed);
                ASSERT_FALSE(HasFailure()) << "page " << page << ", offset " << offset << ", byte " << +byte;
            }
        }
    }
}

TEST_P(DamagedMadeFile, EndsWhereverItIsCut) {
    const std::string bytes = test::AccessSample(*GetParam());
    for (std::size_t size = 0; size < bytes.size(); size += 97) {
        ExpectBounded(bytes.substr(0, size));
        ASSERT_FALSE(HasFailure()) << size;
    }
}

std::filesystem::path SampleFolder() {
    return std::filesystem::path(QUILLET_SHARED_DATA_DIR) / "access";
}

std::vector<std::filesystem::path> SampleFiles() {
    std::vector<std::filesystem::path> files;
    if (std::filesystem::exists(SampleFolder())) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(SampleFolder())) {
            const auto extension = entry.path().extension();
            if (extension == ".mdb" || extension == ".accdb") {
                files.push_back(entry.path());
            }
        }
    }
    std::ranges::sort(files);
    return files;
}

class DamagedSamples : public testing::Test {
protected:
    void SetUp() override {
        if (!std::filesystem::exists(SampleFolder())) {
            GTEST_SKIP() << "no " << SampleFolder();
        }
    }
};

TEST_F(DamagedSamples, EndAndLoseNothingElse) {
    unsigned seed = 100;
    std::size_t count = 0;
    for (const std::filesystem::path& path : SampleFiles()) {
        SCOPED_TRACE(test::Utf8(path.filename()));
        const std::string bytes = test::ReadBytes(path);
        try {
            MemoryFile file(bytes);
            Header::Read(file);
        } catch (const Error&) {
            // One that is refused is refused or something else after any change.
            AccessMutations mutations(bytes, Jet4Layout.m_pageSize, test::Seed(seed));
            for (std::size_t i = 0; i < MutationCount(); ++i) {
                ExpectBounded(mutations.Next());
            }
            continue;
        }
        TryMutations(bytes, ++seed);
        count += MutationCount();
        ASSERT_FALSE(HasFailure());
    }
    RecordProperty("mutations", std::to_string(count));
}

}  // namespace
}  // namespace quillet::access
