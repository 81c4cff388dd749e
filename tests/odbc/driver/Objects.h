// The objects of the driver's handles.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Database.h"

namespace memory_driver {

// What the last call left to be asked for.
struct Object {
    std::optional<Failure> m_failure;

    // Keeps the warning for the next request of diagnostics.
    SQLRETURN Warn(const char* state, const char* text) {
        m_failure = Failure{state, text};
        return SQL_SUCCESS_WITH_INFO;
    }
};

struct Environment : Object {};

struct Connection : Object {
    Settings m_settings;
    // Null while not connected.
    std::shared_ptr<Database> m_database;

    void Connect(const std::string& connectString);

    // What the driver claims for this connection.
    SQLUINTEGER GetDataExtensions() const;
    // The strongest type of a cursor.
    SQLULEN CursorType() const;
    // What it says of how cursors that write keep out of each other's way.
    SQLULEN Concurrency() const;
    bool IsReadOnly() const;
    bool Has(SQLUSMALLINT function) const;
};

class Statement : public Object {
public:
    explicit Statement(Connection& connection) : m_connection(connection) {}

    SQLRETURN SetAttribute(SQLINTEGER attribute, SQLPOINTER value);
    SQLULEN Attribute(SQLINTEGER attribute) const;

    void Prepare(const std::string& text) { m_text = text; }
    void BindParameter(SQLUSMALLINT number, SQLSMALLINT cType, SQLPOINTER value, SQLLEN* length);
    // Runs what was prepared.
    SQLRETURN Execute();
    void CloseCursor();
    void Unbind() { m_bindings.clear(); }
    void ResetParameters() { m_parameters.clear(); }

    const std::vector<Column>& Columns() const { return m_columns; }
    // Counts from 1.
    const Column& At(SQLUSMALLINT column) const;

    SQLRETURN BindColumn(SQLUSMALLINT column, SQLSMALLINT cType, SQLPOINTER buffer, SQLLEN room,
                         SQLLEN* length);
    SQLRETURN Fetch(SQLSMALLINT orientation);
    SQLRETURN GetData(SQLUSMALLINT column, SQLSMALLINT cType, SQLPOINTER buffer, SQLLEN room, SQLLEN* length);
    SQLRETURN SetPosition(SQLSETPOSIROW row, SQLUSMALLINT operation);

private:
    // A row of the answer: its key, and its values where they were taken when the statement ran.
    struct AnswerRow {
        long m_key = 0;
        std::optional<Cells> m_values;
    };
    struct Binding {
        SQLSMALLINT m_cType = 0;
        SQLPOINTER m_buffer = nullptr;
        SQLLEN m_room = 0;
        SQLLEN* m_length = nullptr;
    };

    Database& Data() const { return *m_connection.m_database; }
    void Log(const std::string& call);
    void SelectRows();
    void SelectCalls();
    void InsertRow(const std::string& names);
    Cell ParameterValue(std::size_t number) const;

    // Null where the cursor is at no row, or at one that is deleted.
    const Cells* CurrentRow() const;
    SQLUSMALLINT LastBound() const;
    // Writes the value from the offset on, and moves the offset.
    SQLRETURN Deliver(const Cell& cell, Column::Type type, const Binding& to, std::size_t& offset);

    Connection& m_connection;
    SQLULEN m_cursorType = SQL_CURSOR_FORWARD_ONLY;
    SQLULEN m_concurrency = SQL_CONCUR_READ_ONLY;
    SQLUSMALLINT* m_rowStatus = nullptr;

    std::string m_text;
    std::vector<Binding> m_parameters;

    std::vector<Column> m_columns;
    std::vector<AnswerRow> m_answer;
    // Reading the list of calls adds none.
    bool m_isOfCalls = false;
    std::ptrdiff_t m_position = -1;
    std::vector<Binding> m_bindings;

    // The column that was asked for last in this row, and how much of it was given.
    SQLUSMALLINT m_gotColumn = 0;
    std::size_t m_gotLength = 0;
};

}  // namespace memory_driver
