// Rows of a statement or of a catalog call, one after the other.
#pragma once

#include <memory>

#include "Quillet/base/CException.h"
#include "Quillet/odbc/CDBVariant.h"
#include "Quillet/odbc/Connection.h"
#include "Quillet/odbc/FieldExchange.h"
#include "Quillet/odbc/FieldInfo.h"

namespace quillet::odbc {

class Handle;

// A cursor asks the driver for a keyset. Where the driver has none it takes what there is for reading, and
// refuses to write at its position. Rows are added by a statement of its own. A row of the keyset that was
// deleted since, here or elsewhere, is passed over.
//
// Failures are thrown as DatabaseError, by pointer. Fields count from 0.
class QUILLET_API Cursor : public CObject {
public:
    static const CRuntimeClass classCursor;

    // The type of a cursor whose rows are fetched through their keys.
    static constexpr unsigned int Dynaset = 0;
    // Options.
    static constexpr unsigned int ReadOnly = 4;
    // The rows are only counted: no value is asked for, and none is fetched.
    static constexpr unsigned int WithoutValues = 0x100;

    explicit Cursor(std::shared_ptr<Connection> connection);
    Cursor(const Cursor&) = delete;
    Cursor& operator=(const Cursor&) = delete;
    ~Cursor() override;

    const CRuntimeClass* GetRuntimeClass() const override;

    // Runs the statement, or GetDefaultSQL where it is null, and stands at the first row. False where the
    // connection is not open.
    virtual bool Open(unsigned int type = Dynaset, const WCHAR* sql = nullptr, unsigned int options = 0);
    void Close();

    bool IsOpen() const;
    // Behind the last row, and where nothing is open.
    bool IsEOF() const;
    // A cursor that stands at the first row stays there; one that can only go forward refuses otherwise.
    void MoveFirst();
    // Without effect behind the last row.
    void MoveNext();

    int GetODBCFieldCount() const;
    // That of a field that does not exist is empty.
    const FieldInfo& GetODBCFieldInfo(int field) const;
    // The value in the current row in a C type of ODBC, or in that of the field's SQL type; null for a NULL,
    // behind the last row and where there is no such field.
    void GetFieldValue(int field, CDBVariant& value, short cType = DefaultType);
    static constexpr short DefaultType = 99;

    // Whether rows can be deleted where the cursor stands.
    bool CanDelete() const;
    // Deletes the current row; the cursor stays where it was until it is moved.
    void Delete();

    // Begins a new row: what the slots hold when Update is called. A slot that is not named then is a NULL.
    void AddNew();
    // Writes the row that AddNew began.
    void Update();

    // For derived classes: what a driver manager is given where no connection is at hand.
    virtual CString GetDefaultConnect();
    // What Open runs where it is given no statement.
    virtual CString GetDefaultSQL();
    // Names the slots of the row buffer; this one has none.
    virtual void DoFieldExchange(FieldExchange* exchange);

protected:
    // The table into which Update writes, as a statement names it.
    virtual CString GetTableName() const;

    // Whether the cursor stands at a row once its slots are filled; others are passed over.
    virtual bool TakesRow() const;

    // The two halves of Open, around the call that makes the rows: a statement, and the first row. Null where
    // the connection is not open.
    const Handle* OpenStatement(unsigned int options);
    void OpenRows();

private:
    struct State;

    void BindSlots();
    void BindColumns();
    void Move(bool toFirst);
    void Fetch(bool first);
    void CheckUpdatable() const;

    std::shared_ptr<Connection> m_connection;
    std::unique_ptr<State> m_state;
};

}  // namespace quillet::odbc
