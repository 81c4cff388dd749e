// The tables of a database, as its catalog lists them.
#pragma once

#include "Quillet/odbc/Cursor.h"

// A cursor whose rows are tables. What is of another type than the filter asks for (system tables, views,
// queries) is passed over, also where the driver lists it.
class QUILLET_API CTables : public quillet::odbc::Cursor {
public:
    static const quillet::CRuntimeClass classCTables;

    explicit CTables(std::shared_ptr<quillet::odbc::Connection> connection);
    ~CTables() override;

    const quillet::CRuntimeClass* GetRuntimeClass() const override;

    // Asks for the catalog's entries that meet the filters below and stands at the first; the text is not
    // looked at. False where the connection is not open; a failure is thrown as quillet::odbc::DatabaseError,
    // by pointer.
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

    // What Open asks for; an empty one is not asked for. Types stand in single quotes, with commas between
    // them.
    quillet::CString m_qualifierFilter;
    quillet::CString m_ownerFilter;
    quillet::CString m_nameFilter;
    quillet::CString m_typeFilter = "'TABLE'";

protected:
    bool TakesRow() const override;
};
