// What is written together.
#pragma once

#include "Quillet/odbc/Connection.h"

namespace quillet::odbc {

// From its construction to its end, everything written through the connection goes to the file in one step:
// drivers are much faster if they need not flush row by row. Nothing is rolled back: rows written before an
// error stay. If the driver knows no transactions, each row goes to the file by itself.
class Transaction {
public:
    // A connection that is not open is refused with a DatabaseError, thrown by pointer.
    explicit Transaction(const Connection& connection);
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    // Commits; a failure is not reported.
    ~Transaction();

    // Commits and reports a failure as DatabaseError, by pointer.
    void Commit();

private:
    const std::shared_ptr<const Handle> m_session;
    bool m_isOpen = false;
};

}  // namespace quillet::odbc
