// Binding of fields to the slots of a row buffer.
#pragma once

#include <cstdint>

#include "Quillet/base/CByteArray.h"
#include "Quillet/base/CString.h"

namespace quillet::odbc {

// A cursor hands one to its DoFieldExchange, which names every slot by one call: when the cursor opens, for
// each row that is read, and for each that is written. A slot is used during that call only.
//
// A slot belongs to the field of that name, or, where the rows have none, to the field at its position.
// Positions count from 0; one that is left out is not bound.
class QUILLET_API FieldExchange {
public:
    FieldExchange() = default;
    FieldExchange(const FieldExchange&) = delete;
    FieldExchange& operator=(const FieldExchange&) = delete;
    virtual ~FieldExchange();

    virtual void Boolean(int position, const CString& name, std::int32_t& slot) = 0;
    // A field of 16 bits.
    virtual void Integer(int position, const CString& name, std::int32_t& slot) = 0;
    virtual void Long(int position, const CString& name, std::int32_t& slot) = 0;
    virtual void Single(int position, const CString& name, float& slot) = 0;
    virtual void Double(int position, const CString& name, double& slot) = 0;
    // Of a longer value the first maximum bytes are read. The maximum given when the cursor opens counts.
    virtual void Binary(int position, const CString& name, CByteArray& slot, int maximum) = 0;
    // Of a longer value the first maximum code units are read. A text is written whole: only the driver may
    // cut or refuse it.
    virtual void Text(int position, const CString& name, CString& slot, int maximum) = 0;
};

}  // namespace quillet::odbc
