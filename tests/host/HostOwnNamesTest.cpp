// A host with its own string, variant and exception classes under the library's names.
#define QUILLET_NO_GLOBAL_NAMES

class CString {
public:
    int m_ofTheHost = 7;
};
class CComVariant {};
class CByteArray {};
class CDBVariant {};
class CException {};
class CObject {};

#include <Quillet/IQuillet.h>

#include <gtest/gtest.h>

namespace {

TEST(HostOwnNames, GlobalNamesOff_HostAndLibraryStandSideBySide) {
    DbDatabase database;
    EXPECT_EQ(database.CreateTable("Sections", DbTableInfo::Table)->GetName(), quillet::CString("Sections"));
    EXPECT_EQ(CString().m_ofTheHost, 7);
}

}  // namespace
