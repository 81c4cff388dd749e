// Values from the bytes of a row, by the types of its columns.
#pragma once

#include "Quillet/access/LongValueReader.h"
#include "Quillet/access/RowFields.h"
#include "Quillet/access/TableDefinition.h"
#include "Quillet/access/Value.h"

namespace quillet::access {

class ValueReader {
public:
    ValueReader(Pager& pager, const TextDecoder& texts) : m_longValues(pager), m_texts(texts) {}

    // Reads the column of a row. Texts and bytes of the value stay until the next call, or until the row's
    // page goes. Throws Error, and the value is Null, if it can't be read.
    void Read(const RowFields& row, const Column& column, Value& value);

    // Whether the last value was a long one of which a part is missing.
    bool IsShort() const { return m_isShort; }

private:
    void Decode(const Column& column, ByteView bytes, Value& value);
    void DecodeText(ByteView bytes, Value& value);

    LongValueReader m_longValues;
    const TextDecoder& m_texts;
    WideString m_text;
    bool m_isShort = false;
};

}  // namespace quillet::access
