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

// A cursor asks the driver for a keyset. If the driver has none, the cursor reads with what there is, and
// refuses to write at its position. Rows are added by a separate statement. A row of the keyset that was
// deleted since, here or elsewhere, is skipped.
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

    // Runs the statement, or that of GetDefaultSQL if it is null, and moves to the first row. False if the
    // connection is not open.
    virtual bool Open(unsigned int type = Dynaset, const WCHAR* sql = nullptr, unsigned int options = 0);
    void Close();

    bool IsOpen() const;
    // True after the last row, and if nothing is open.
    bool IsEOF() const;
    // A cursor at the first row stays there; at any other, one that can only go forward refuses.
    void MoveFirst();
    // No effect after the last row.
    void MoveNext();

    int GetODBCFieldCount() const;
    // Empty for a field that does not exist.
    const FieldInfo& GetODBCFieldInfo(int field) const;
    // The value in the current row in a C type of ODBC, or in that of the field's SQL type; null for a NULL,
    // after the last row and if there is no such field.
    void GetFieldValue(int field, CDBVariant& value, short cType = DefaultType);
    static constexpr short DefaultType = 99;

    // Whether rows can be deleted at the cursor's position.
    bool CanDelete() const;
    // Deletes the current row; the cursor stays at its place until it is moved.
    void Delete();

    // Begins a new row: Update writes what the slots contain when it is called. A slot that is not named then
    // is a NULL.
    void AddNew();
    // Writes the row that AddNew began.
    void Update();

    // For derived classes: the connect string to use without a connection.
    virtual CString GetDefaultConnect();
    // The statement that Open runs if it is given none.
    virtual CString GetDefaultSQL();
    // Names the slots of the row buffer; this one has none.
    virtual void DoFieldExchange(FieldExchange* exchange);

protected:
    // The table into which Update writes, as a statement names it.
    virtual CString GetTableName() const;

    // Whether the cursor accepts the current row, whose slots are filled; others are skipped.
    virtual bool TakesRow() const;

    // The two halves of Open, around the call that produces the rows: a statement, and the first row. Null if
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
