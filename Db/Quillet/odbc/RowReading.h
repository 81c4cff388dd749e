// Fills the slots of a row buffer from the current row.
#pragma once

#include <vector>

#include "Quillet/odbc/FieldExchange.h"
#include "Quillet/odbc/FieldReader.h"
#include "Quillet/odbc/SlotBindings.h"

namespace quillet::odbc {

// A slot whose field is NULL becomes zero or empty.
class RowReading : public FieldExchange {
public:
    RowReading(const Handle& statement, const std::vector<SlotBinding>& bindings,
               std::vector<FieldReader>& readers)
        : m_statement(statement), m_bindings(bindings), m_readers(readers) {}

    void Boolean(int position, const CString& name, std::int32_t& slot) override;
    void Integer(int position, const CString& name, std::int32_t& slot) override;
    void Long(int position, const CString& name, std::int32_t& slot) override;
    void Single(int position, const CString& name, float& slot) override;
    void Double(int position, const CString& name, double& slot) override;
    void Binary(int position, const CString& name, CByteArray& slot, int maximum) override;
    void Text(int position, const CString& name, CString& slot, int maximum) override;

private:
    // Reads the slot's value into m_value and returns its binding; null if nothing is bound at the position.
    const SlotBinding* Read(int position);

    const Handle& m_statement;
    const std::vector<SlotBinding>& m_bindings;
    std::vector<FieldReader>& m_readers;
    CDBVariant m_value;
};

}  // namespace quillet::odbc
