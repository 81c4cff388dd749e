// The fixture of tests that hold for both ways of reading.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "support/CatalogHelpers.h"

namespace quillet::test {

// A folder of the test's own, and the catalog "given.xml" in it.
class ReadingTest : public testing::TestWithParam<Reading> {
protected:
    std::filesystem::path File() const { return m_folder / "given.xml"; }
    CString Path(const std::string& name = "given.xml") const { return CString(Utf8(m_folder / name)); }

    std::unique_ptr<DbDatabase> OpenGiven() const { return Open(File(), GetParam()); }
    std::unique_ptr<DbDatabase> OpenXml(const std::string& xml) const {
        WriteBytes(File(), xml);
        return OpenGiven();
    }

    TemporaryFolder m_folder;
};

}  // namespace quillet::test
