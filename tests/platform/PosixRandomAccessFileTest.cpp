// What the POSIX port promises of files read at any position.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "Quillet/platform/RandomAccessFile.h"
#include "support/TemporaryFolder.h"

namespace quillet::platform {
namespace {

TEST(PosixRandomAccessFile, PipesAreRefusedWithoutWaiting) {
    const test::TemporaryFolder folder;
    const std::string path = test::Utf8(folder / "pipe");
    ASSERT_EQ(::mkfifo(path.c_str(), S_IRUSR | S_IWUSR), 0);
    std::string why;
    EXPECT_FALSE(RandomAccessFile::Open(path, &why));
    EXPECT_EQ(why, "Illegal seek");
}

}  // namespace
}  // namespace quillet::platform
