// The tables of a database, as its catalog lists them.
#pragma once

#include "Quillet/odbc/Cursor.h"

// A cursor whose rows are tables. Entries of other types than the filter asks for (system tables, views,
// queries) are skipped, even if the driver lists them.
class QUILLET_API CTables : public quillet::odbc::Cursor {
public:
    static const quillet::CRuntimeClass classCTables;

    explicit CTables(std::shared_ptr<quillet::odbc::Connection> connection);
    ~CTables() override;

    const quillet::CRuntimeClass* GetRuntimeClass() const override;

    // Asks the catalog for the entries that match the filters below and moves to the first; sql is ignored.
    // False if the connection is not open; a failure is thrown as quillet::odbc::DatabaseError, by pointer.
    bool Open(unsigned int type = Dynaset, const WCHAR* sql = nullptr, unsigned int options = 0) override;

    // "ODBC;"
    quillet::CString GetDefaultConnect() override;
    // "!": there is no statement.
    quillet::CString GetDefaultSQL() override;
    void DoFieldExchange(quillet::odbc::FieldExchange* exchange) override;

    // The current entry.
    quillet::CString m_qualifier;
    quillet::CString m_owner;
    quillet::CString m_name;
    quillet::CString m_type;
    quillet::CString m_remarks;

    // The filters of Open; an empty one does not filter. Types are in single quotes, with commas between
    // them.
    quillet::CString m_qualifierFilter;
    quillet::CString m_ownerFilter;
    quillet::CString m_nameFilter;
    quillet::CString m_typeFilter = "'TABLE'";

protected:
    bool TakesRow() const override;
};
