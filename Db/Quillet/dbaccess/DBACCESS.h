// Whole tables of an Access file, read and written through ODBC.
#pragma once

#include <memory>
#include <vector>

#include "Quillet/base/CString.h"

class DBACCESS_COLUMN;
class DBACCESS_RECORD;
class DBACCESS_VECTOR;

namespace quillet {
class CDBVariant;
}

namespace quillet::odbc {
class Connection;
}

// One ODBC connection to one file. The constructor opens it; a failure to open is silent, and every later
// call then returns false or 0. Copies share the connection, which closes with the last of them.
class QUILLET_API DBACCESS {
public:
    // Option bits of a connection.
    static constexpr unsigned long Exclusive = 1;
    static constexpr unsigned long ReadOnly = 2;
    static constexpr unsigned long UseCursorLibrary = 4;
    static constexpr unsigned long NoDialog = 8;

    // Whether GetTableData describes a table without rows by one record of its columns. False at first.
    static bool m_forceExtractTableDefiniton;
    // The connect string for the driver manager, with the path of the file in place of %s:
    // "DBQ=%s;Driver={Microsoft Access Driver (*.mdb)}" at first. As long as it is unchanged, a file that
    // can't be an Access file is refused without asking the driver, and if no driver has this name, the
    // driver's newer name, "Microsoft Access Driver (*.mdb, *.accdb)", is tried next.
    static quillet::CString m_connectFormat;

    // Opens the file for reading, without any dialog: the option bits ReadOnly and NoDialog.
    explicit DBACCESS(const WCHAR* path);
    // Opens the file with the option bits given.
    DBACCESS(const WCHAR* path, unsigned long options);
    // Shares the connection.
    DBACCESS(const DBACCESS& other);
    DBACCESS& operator=(const DBACCESS& other);
    virtual ~DBACCESS();

    // Releases the connection; no effect if there is none.
    void Close();

    // Whether the file was opened and not closed since.
    bool IsOpen() const;
    // Why the file could not be opened, in the words of the driver or the driver manager; empty if it was
    // opened.
    const quillet::CString& GetOpenError() const;
    // Whether the file could not be opened because no driver of the name is installed.
    bool IsDriverMissing() const { return m_driverMissing; }
    // Whether the file is open for writing, by a driver that says it can write.
    bool CanUpdate() const;

    // Appends the names of the user's tables (no system tables, views or queries) in the order of the
    // catalog. False after a database error; names found before the error stay.
    bool GetTables(std::vector<quillet::CString>& names);

    // Replaces rows by all rows of the table. The flag m_noRows of rows says whether the table had none; then
    // rows is empty, or contains one record that describes the columns if m_forceExtractTableDefiniton is
    // set. A NULL becomes a zero of the column's type, or an empty text. False if the table can't be opened
    // or a database error ended the reading.
    bool GetTableData(quillet::CString table, DBACCESS_VECTOR& rows);

    // Replaces all rows of the table. A missing table is created with the columns of the first record;
    // without a record, or if it has no columns, the result is false and nothing is created. Columns are
    // written by position, with the types of the first row of the table, or of the records if the table has
    // none. A database error is shown in a message box and gives false; rows written before it stay.
    bool SetTableData(quillet::CString table, const DBACCESS_VECTOR& rows);

    // The first row, with the table's columns by name in their order. True for a table without rows too;
    // record then stays unchanged. False if the table can't be opened, and after a database error.
    bool GetRecordset(quillet::CString table, DBACCESS_RECORD& record);

    // How many rows the table has; 0 if it can't be opened. After a database error, how many were counted.
    int GetRecordsetsNumber(quillet::CString table);

    // How many rows the table has as the driver counts them in a query; -1 if it does not say. A driver that
    // silently skips rows of a damaged file delivers fewer.
    int GetStatedRowsNumber(quillet::CString table);

private:
    static DBACCESS_COLUMN getDBColumnFromDbVariant(const quillet::CDBVariant& value);

    // Part of the object's layout; always empty.
    quillet::CString m_reserved;
    std::shared_ptr<quillet::odbc::Connection> m_connection;
    quillet::CString m_openError;
    bool m_driverMissing = false;
};
