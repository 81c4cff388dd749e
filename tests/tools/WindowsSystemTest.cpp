// The command line's messages for files that another program has open exclusively.
#include <gtest/gtest.h>

#include "support/ToolTest.h"
#include "support/WindowsHandle.h"

namespace {

using quillet::test::WindowsHandle;

class WindowsSystem : public quillet::test::ToolTest {};

TEST_F(WindowsSystem, FileThatMayNotBeRead_SaysWhy) {
    const std::string file = CopyExample("materials.xml");
    const WindowsHandle holder(m_folder / "materials.xml", GENERIC_READ, 0);
    EXPECT_EQ(Failure({"info", file}), file + ": " + WhyUnreadable(file));
}

TEST_F(WindowsSystem, FileThatMayNotBeReplaced_IsReadAndStays) {
    const std::string file = CopyExample("materials.xml");
    const std::string before = Read("materials.xml");
    const std::string info = Output({"info", file});
    const WindowsHandle holder(m_folder / "materials.xml", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
    EXPECT_EQ(Output({"info", file}), info);
    EXPECT_EQ(Failure({"drop", file, "Steel"}).find(file + ": not saved: "), 0U);
    EXPECT_EQ(Read("materials.xml"), before);
    EXPECT_EQ(quillet::test::NamesIn(m_folder.Path()).size(), 3U) << "the catalog and what was printed";
}

}  // namespace
