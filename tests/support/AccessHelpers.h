// Helpers for tests of Access files: the available drivers, files of the driver that can write, the messages
// shown.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Quillet/IQuillet.h"
#include "Quillet/odbc/Connection.h"
#include "Quillet/odbc/Cursor.h"
#include "Quillet/platform/DriverManager.h"
#include "TestPaths.h"
#include "support/RecordHelpers.h"
#include "support/TemporaryFolder.h"

namespace quillet::test {

// Which drivers the test program was given: "all", "newer" (Access under its newer name only) or "none" (none
// for Access); empty if it was not set.
inline std::string DriversAtHand() {
    const char* drivers = std::getenv("QUILLET_ODBC_DRIVERS");
    return drivers == nullptr ? "" : drivers;
}

// Collects messages during its lifetime instead of showing them.
class ShownMessages {
public:
    ShownMessages()
        : m_before(platform::SetMessageHandler([this](WideView text, WideView caption) {
              m_texts.push_back(CString(text).ToUtf8());
              m_captions.push_back(CString(caption).ToUtf8());
          })) {}
    ShownMessages(const ShownMessages&) = delete;
    ShownMessages& operator=(const ShownMessages&) = delete;
    ~ShownMessages() { platform::SetMessageHandler(m_before); }

    std::vector<std::string> m_texts;
    std::vector<std::string> m_captions;

private:
    platform::MessageHandler m_before;
};

// Sets another connect string during its lifetime.
class ConnectFormat {
public:
    explicit ConnectFormat(const CString& format)
        : m_before(std::exchange(DBACCESS::m_connectFormat, format)) {}
    ConnectFormat(const ConnectFormat&) = delete;
    ConnectFormat& operator=(const ConnectFormat&) = delete;
    ~ConnectFormat() { DBACCESS::m_connectFormat = m_before; }

private:
    const CString m_before;
};

inline constexpr char SqliteFormat[] = "Database=%s;Timeout=200;Driver={SQLite3}";

inline std::filesystem::path SharedDatabase(const std::string& name) {
    return std::filesystem::path(QUILLET_SHARED_DATA_DIR) / name;
}

// Tests that need drivers.
class DriverTest : public testing::Test {
protected:
    void SetUp() override {
        if (DriversAtHand() != "all") {
            GTEST_SKIP() << "no drivers were given in QUILLET_ODBC_DRIVERS";
        }
    }
};

// Tests that read one of the shared files.
class SharedFileTest : public DriverTest {
protected:
    explicit SharedFileTest(const std::string& name) : m_path(SharedDatabase(name)) {}
    void SetUp() override {
        DriverTest::SetUp();
        if (!IsSkipped() && !std::filesystem::exists(m_path)) {
            GTEST_SKIP() << "no " << m_path;
        }
    }
    CString File() const { return CString(Utf8(m_path)); }

    const std::filesystem::path m_path;
    TemporaryFolder m_folder;
    ShownMessages m_messages;
};

// Tests over a file of the driver that can write. DBACCESS opens such files while the test runs.
class WritingTest : public DriverTest {
protected:
    std::string File(const std::string& name = "tables.db") const { return Utf8(m_folder / name); }
    DBACCESS Open(unsigned long options = DBACCESS::NoDialog) const {
        return DBACCESS(CString(File()).GetString(), options);
    }
    std::shared_ptr<odbc::Connection> Connect() const {
        auto connection = std::make_shared<odbc::Connection>();
        CString text = SqliteFormat;
        text.Replace("%s", platform::DriverPath(File()));
        connection->Open(text, odbc::Connection::NoDialog);
        return connection;
    }
    void Execute(const CString& statement) const { Connect()->ExecuteSql(statement); }

    // The first column of the statement's result, as texts; "NULL" for a NULL.
    std::vector<std::string> Answers(const CString& statement) const {
        odbc::Cursor cursor(Connect());
        std::vector<std::string> values;
        for (cursor.Open(odbc::Cursor::Dynaset, statement.GetString()); !cursor.IsEOF(); cursor.MoveNext()) {
            CDBVariant value;
            cursor.GetFieldValue(0, value, -8);
            values.push_back(value.IsNull() ? "NULL" : value.GetString()->ToUtf8());
        }
        return values;
    }

    TemporaryFolder m_folder;
    ConnectFormat m_format{SqliteFormat};
    ShownMessages m_messages;
};

// The text of an error thrown by pointer, which is deleted; empty if nothing is thrown.
template <typename Call>
std::string ErrorOf(Call call) {
    try {
        call();
    } catch (odbc::DatabaseError* error) {
        const std::string text = error->Text().ToUtf8();
        error->Delete();
        return text;
    }
    return "";
}

}  // namespace quillet::test
