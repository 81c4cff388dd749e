#include "Quillet/platform/RandomAccessFile.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <string>

#include "support/TemporaryFolder.h"

namespace quillet::platform {
namespace {

using test::Utf8;

class RandomAccessFileTest : public testing::Test {
protected:
    void SetUp() override { test::WriteBytes(m_path, "0123456789"); }

    static std::string BytesAt(RandomAccessFile& file, std::uint64_t position, std::size_t size) {
        std::array<std::uint8_t, 64> buffer;
        const auto count = file.ReadAt(position, std::span(buffer).first(size));
        return count ? std::string(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(*count))
                     : "!";
    }

    test::TemporaryFolder m_folder;
    const std::filesystem::path m_path = m_folder / "t\u00E4bles.bin";
};

TEST_F(RandomAccessFileTest, ReadsAtAnyPosition) {
    const auto file = RandomAccessFile::Open(Utf8(m_path));
    ASSERT_TRUE(file);
    EXPECT_EQ(BytesAt(*file, 7, 2), "78");
    EXPECT_EQ(BytesAt(*file, 0, 3), "012");
}

TEST_F(RandomAccessFileTest, GivesFewerBytesOnlyAtTheEnd) {
    const auto file = RandomAccessFile::Open(Utf8(m_path));
    ASSERT_TRUE(file);
    EXPECT_EQ(BytesAt(*file, 8, 5), "89");
    EXPECT_EQ(BytesAt(*file, 10, 5), "");
    EXPECT_EQ(BytesAt(*file, std::uint64_t{1} << 40, 5), "");
}

TEST_F(RandomAccessFileTest, TellsItsSizeAsItIsNow) {
    const auto file = RandomAccessFile::Open(Utf8(m_path));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->Size(), 10U);
    std::filesystem::resize_file(m_path, 3);
    EXPECT_EQ(file->Size(), 3U);
}

TEST_F(RandomAccessFileTest, DoesNotHinderOthers) {
    const auto file = RandomAccessFile::Open(Utf8(m_path));
    ASSERT_TRUE(file);
    test::WriteBytes(m_path, "abcdefghij");
    EXPECT_EQ(BytesAt(*file, 0, 3), "abc");
    EXPECT_TRUE(std::filesystem::remove(m_path));
}

TEST_F(RandomAccessFileTest, SaysWhyAFileCantBeOpened) {
    for (const std::string& path : {Utf8(m_folder / "none"), Utf8(m_folder.Path()), std::string()}) {
        std::string why;
        EXPECT_FALSE(RandomAccessFile::Open(path, &why)) << path;
        EXPECT_NE(why, "") << path;
    }
}

}  // namespace
}  // namespace quillet::platform
