// A condition on one row.
#pragma once

#include <cstdint>
#include <memory>

#include "Quillet/base/CComVariant.h"
#include "Quillet/base/CString.h"
#include "Quillet/clv/element.h"

class DbTableRow;

namespace quillet {
class CellFilter;
}

// One comparison: of a field with a literal, of a literal with a field, or of two fields. It is a leaf of a
// clause, and its value is the result of the last row that it evaluated; false before the first.
//
// A table descriptor makes its filters (DbTableDescr::AddFilter) and owns them. A filter does not follow the
// structure: it knows its fields by position, so one that outlives a change of the fields compares whatever
// is at those positions then.
class QUILLET_API DbFilter : public clv::expr {
public:
    // One side of the operator: a field by its position (from 0) and variant type, or a literal, whose
    // position is -1.
    struct Operand {
        std::int32_t m_index = -1;
        VARTYPE m_type = VT_EMPTY;
        quillet::CString m_literal;

        bool IsField() const { return m_index >= 0; }
    };

    // A filter that compares nothing and is false for every row.
    DbFilter();
    DbFilter(const DbFilter& other);
    DbFilter& operator=(const DbFilter& other);
    ~DbFilter() override;

    // A filter for the operators <, <=, =, ==, >=, >, != and <>, as DbTableDescr::AddFilter describes it;
    // null where there is none.
    static std::unique_ptr<DbFilter> Create(const Operand& left, const quillet::CString& op,
                                            const Operand& right);

    // Compares what the row holds and keeps the result. False for a row that lacks a field.
    virtual void Evaluate(const DbTableRow& row);

    // The three ways to compare, of which Evaluate takes the one that the filter was made for: a field with a
    // field, a field with a literal, a literal with a field. False where the filter has no such field.
    void EvalRefOpRef(const DbTableRow& row);
    void EvalRefOpVal(const DbTableRow& row);
    void EvalValOpRef(const DbTableRow& row);

private:
    friend class quillet::CellFilter;

    void Keep(const quillet::CComVariant* left, const quillet::CComVariant* right);

    quillet::CComVariant m_leftValue;
    quillet::CComVariant m_rightValue;
    std::int32_t m_leftIndex = -1;
    std::int32_t m_rightIndex = -1;
    // That of the operator; null if there is none.
    bool (*m_comparison)(const quillet::CComVariant& left, const quillet::CComVariant& right) = nullptr;
};
