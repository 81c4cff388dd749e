// One cell of a row.
#pragma once

#include <new>
#include <string>

#include "Quillet/Db_Item.h"
#include "Quillet/base/CComVariant.h"
#include "Quillet/base/CString.h"

class DbFieldDescr;

namespace quillet {
class ColumnStore;
}

// A variant of the column's type, a null flag and the column's index. It is also the base of the field
// descriptor, whose variant is the column's default value.
class QUILLET_API DbFieldValue : public DbItem {
public:
    // Registers with the parent; the index counts from 0 and is -1 for a free-standing value.
    explicit DbFieldValue(DbItem* parent = nullptr, int index = -1);
    // Copies the item part, as DbItem's copy does, the index, the null flag and the value.
    DbFieldValue(const DbFieldValue& other);
    // Copies the null flag and the value; index, parent and change stamps stay. As in every member, nothing
    // is changed when out of memory.
    DbFieldValue& operator=(const DbFieldValue& other);
    ~DbFieldValue() override = default;

    // Works both for cells in their row's block and for separate ones.
    static void* operator new(std::size_t size);
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(DbFieldValue* value, std::destroying_delete_t);
    // For constructors that throw.
    static void operator delete(void* memory);
    static void operator delete(void*, void*) noexcept {}

    uint64 GetSize() const override;

    // Stores v converted back to the type that the value had; if the conversion fails, or the value was empty
    // or null, v is stored unconverted. Marks the value changed; the null flag stays.
    virtual void SetValue(const quillet::CComVariant& v);
    virtual quillet::CComVariant& GetVariant() { return m_value; }
    virtual const quillet::CComVariant& GetVariant() const { return m_value; }
    virtual int GetIndex() const { return m_index; }

    unsigned short GetType() const { return m_value.vt; }
    const quillet::CComVariant& GetValue() const { return m_value; }

    // The flag only: the value and the change stamps stay.
    bool IsNull() const { return m_null; }
    void SetNull(bool null) { m_null = null; }

    // Replaces out by the text form of the value: a text itself, numbers as the platform writes them in the
    // user's locale, "true" and "false", base64 for bytes (carriage return, line feed and blank after every
    // 19 full groups of four characters, never after a padded one), the empty string for every other type.
    void ValueToString(quillet::CString& out) const;

    // Reads the value from text with the field's converter, as rows of a file are read: an empty text is 0
    // for a float, either decimal separator is understood, text that is no number stays a string.
    void ValueFromString(const DbFieldDescr& field, const WCHAR* const& text);
    // Reads the value from text with the platform's conversion to the field's type: an empty text or one with
    // a foreign decimal separator is no number, and text that is none stays a string.
    void ValueFromString(const DbFieldDescr& field, const quillet::CString& text);

protected:
    void SetIndex(int index) { m_index = index; }

private:
    friend class DbTableRow;
    friend class quillet::ColumnStore;

    // The estimates of GetSize for cells that hold a text, and for others.
    static uint64 EstimateOfText(quillet::WideView text);
    static uint64 EstimateOfOther();

    int m_index;
    bool m_null = false;
    // Whether the value is in its row's block of cells.
    bool m_inBlock = false;
    quillet::CComVariant m_value;
};

namespace quillet {

// The text form of a value as ValueToString gives it, appended as UTF-8.
void AppendValueText(const CComVariant& value, std::string& out);

}  // namespace quillet
