#include "Quillet/dbaccess/AccessFile.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "Quillet/odbc/DatabaseError.h"
#include "Quillet/platform/DriverManager.h"
#include "Quillet/platform/File.h"

namespace quillet {
namespace {

constexpr char DriverName[] = "{Microsoft Access Driver (*.mdb)}";
constexpr char NewerDriverName[] = "{Microsoft Access Driver (*.mdb, *.accdb)}";

[[noreturn]] void Refuse(const CString& path, const std::string& why) {
    throw new odbc::DatabaseError("HY000", path + ": " + why);
}

// An Access file is a sequence of pages; the first begins with four bytes and the name of its format.
constexpr std::size_t FormatAt = 4;
constexpr std::string_view OlderFormat = "Standard Jet DB";
constexpr std::string_view NewerFormat = "Standard ACE DB";

void CheckAccessFile(const CString& path) {
    std::string why;
    const std::string utf8 = path.ToUtf8();
    // Opening a pipe would block.
    std::error_code ignored;
    const auto kind = std::filesystem::status(std::u8string(utf8.begin(), utf8.end()), ignored).type();
    if (kind == std::filesystem::file_type::fifo || kind == std::filesystem::file_type::character) {
        Refuse(path, "not an Access file");
    }
    const std::unique_ptr<platform::ReadableFile> file = platform::ReadableFile::Open(utf8, &why);
    if (file == nullptr) {
        Refuse(path, why);
    }
    char page[64] = {};
    const std::size_t count = file->Read(page, sizeof(page));
    const std::string_view begin(page, count);
    if (begin.size() < sizeof(page) || (begin.substr(FormatAt, OlderFormat.size()) != OlderFormat &&
                                        begin.substr(FormatAt, NewerFormat.size()) != NewerFormat)) {
        Refuse(path, "not an Access file");
    }
}

}  // namespace

bool IsWithoutDriver(const odbc::DatabaseError& error) {
    return error.State() == "IM002" || error.State() == "IM003" ||
           (error.State() == "01000" && error.Text().Find("Can't open lib") >= 0);
}

CString ConnectString(const CString& format, const CString& path) {
    const bool hasBraces = path.Find("{") >= 0 || path.Find("}") >= 0;
    const bool needsBraces = path.Find(";") >= 0 || path.Find("{") == 0;
    if (needsBraces && hasBraces) {
        Refuse(path, "a path with braces and semicolons can't be told to a database driver");
    }
    const int position = format.Find("%s");
    if (position < 0) {
        return format;
    }
    const CString value = needsBraces ? CString("{") + path + "}" : path;
    return format.Left(position) + value + format.Mid(position + 2);
}

void OpenAccessFile(odbc::Connection& connection, const CString& format, const CString& path,
                    unsigned long options) {
    const bool isDefault = format == DefaultConnectFormat;
    if (isDefault) {
        CheckAccessFile(path);
    }
    const CString driverPath = platform::DriverPath(path.ToUtf8());
    try {
        connection.Open(ConnectString(format, driverPath), options);
    } catch (odbc::DatabaseError* error) {
        const std::unique_ptr<odbc::DatabaseError> first(error);
        if (!isDefault || !IsWithoutDriver(*first)) {
            throw new odbc::DatabaseError(*first);
        }
        CString newer = format;
        newer.Replace(DriverName, NewerDriverName);
        try {
            connection.Open(ConnectString(newer, driverPath), options);
        } catch (odbc::DatabaseError* second) {
            const std::unique_ptr<odbc::DatabaseError> last(second);
            if (!IsWithoutDriver(*last)) {
                throw new odbc::DatabaseError(*last);
            }
            throw new odbc::DatabaseError(first->State(), CString("No ODBC driver named ") + DriverName +
                                                              " or " + NewerDriverName +
                                                              " is installed: " + first->Text());
        }
    }
}

}  // namespace quillet
