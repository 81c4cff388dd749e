// A host with the macros that windows.h defines unless they are turned off.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#define min(a, b) (((a) < (b)) ? (a) : (b))
#define max(a, b) (((a) > (b)) ? (a) : (b))

#include <Quillet/IQuillet.h>

#if !defined(min) || !defined(max)
#error The macros of the host are gone
#endif

namespace {

TEST(HostMacros, MinAndMax_StandBesideTheHeaders) {
    DbDatabase database;
    EXPECT_EQ(database.CreateTable("Sections", DbTableInfo::Table)->GetName(), CString("Sections"));
    EXPECT_EQ(max(3, min(5, 4)), 4);
}

}  // namespace
