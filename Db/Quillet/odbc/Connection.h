// A connection to one database.
#pragma once

#include <memory>

#include "Quillet/base/CString.h"

namespace quillet::odbc {

class Handle;

// Failures are thrown as DatabaseError, by pointer.
class QUILLET_API Connection {
public:
    // Option bits.
    enum eOptions : unsigned long {
        // Nobody else may open the file; only drivers that know the attribute Exclusive respect it.
        Exclusive = 1,
        // Nothing is written through this connection, whatever its driver would allow.
        ReadOnly = 2,
        UseCursorLibrary = 4,
        // The driver shows no dialog to ask for what the connect string lacks.
        NoDialog = 8
    };

    Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    // Closes what is open and opens the connection of the connect string.
    void Open(const CString& connectString, unsigned long options);
    // Closes as soon as no cursor uses the connection any more.
    void Close();

    bool IsOpen() const;
    bool IsReadOnly() const { return m_readOnly; }

    // Runs a statement that gives no rows. Refused on a connection that is read-only or not open.
    void ExecuteSql(const CString& statement);

    // Whether rows are fetched into bound columns. Drivers without scrolling calls are asked column by
    // column: they end the table at a value that they can't deliver into a bound column.
    bool CanBindColumns() const { return m_canBindColumns; }
    // Whether any column may be asked for once the bound ones were fetched, not only those after the last
    // bound one.
    bool CanGetAnyColumn() const { return m_canGetAnyColumn; }
    // Whether there is a call that changes the row at the position of a cursor.
    bool CanWriteAtPosition() const { return m_canWriteAtPosition; }

    // Whether the driver says that it can write to this database. The known drivers that don't say so can't.
    bool CanWrite() const { return !m_readOnly && m_canWrite; }

    // The handle that statements and transactions belong to. Throws if nothing is open. As long as it is
    // held, the database stays connected, even if this object is closed.
    std::shared_ptr<const Handle> Session() const;
    // Throws if nothing may be written.
    void CheckWritable() const;

private:
    void AskTheDriver(const Handle& connection);

    struct Handles;

    std::shared_ptr<Handles> m_handles;
    bool m_readOnly = false;
    bool m_canBindColumns = false;
    bool m_canGetAnyColumn = false;
    bool m_canWriteAtPosition = false;
    bool m_canWrite = false;
};

}  // namespace quillet::odbc
