// Answers joins of two tables.
#pragma once

#include "Quillet/base/CString.h"

class DbFieldDescr;
class DbTableInfo;

namespace quillet {

class LazyReader;
class Log;
class QueryBuilder;
class Registry;

// Finds the pairs of rows that a condition joins and makes them a table of the database.
class JoinBuilder {
public:
    // The arguments of a join, as DbDatabase's members take them.
    struct Texts {
        CString m_firstTable;
        CString m_secondTable;
        CString m_left;
        CString m_operator;
        CString m_right;
    };

    JoinBuilder(QueryBuilder& queries, LazyReader& reader, Registry& registry, Log& log)
        : m_queries(queries), m_reader(reader), m_registry(registry), m_log(log) {}

    // See the members of DbDatabase.
    CString Inner(const Texts& texts);
    CString Right(const Texts& texts);

private:
    // One of the two tables, by the name that it was asked by, and the position of the field to compare.
    struct Side {
        const DbFieldDescr& Field() const;

        CString m_name;
        DbTableInfo* m_table = nullptr;
        int m_field = -1;
    };

    CString Answer(const Texts& texts, const char* kind, bool withUnmatched);
    // The next three are false, with a line in the log, where there is no such table, no such field, and
    // where the table of that name is no join, or one that the sides depend on.
    bool FindTable(const CString& name, Side& side);
    bool FindField(const CString& name, Side& side);
    bool CanHoldAnswer(const CString& name, const Side& first, const Side& second);
    // The table of the answer, empty.
    DbTableInfo& MakeTable(const CString& name, DbTableInfo& first);

    QueryBuilder& m_queries;
    LazyReader& m_reader;
    Registry& m_registry;
    Log& m_log;
};

}  // namespace quillet
