// One column of a table.
#pragma once

#include <memory>
#include <string>

#include "Quillet/Db_FieldValue.h"

namespace quillet {
class CellParser;
class RowScanner;
}  // namespace quillet

// A field value whose variant is the column's default and whose variant type is the column's type; its index
// is the field's position in the table.
class QUILLET_API DbFieldDescr : public DbFieldValue {
public:
    enum eFieldType : std::int32_t {
        Empty = 0,
        Boolean = 1,
        Integer = 2,
        Long = 3,
        Float = 4,
        Double = 5,
        Text = 6,
        Binary = 7
    };

    // Fills a variant from text.
    using Converter = void (*)(quillet::CComVariant& value, const WCHAR* text);

    // A field without type and name. The parent, if there is one, lists it as its child.
    DbFieldDescr();
    DbFieldDescr(DbItem* parent, int index);
    // Copies the item part as DbItem's copy does, and what assignment copies.
    DbFieldDescr(const DbFieldDescr& other);
    // Copies default value, null flag, key and required flags, names and converter.
    DbFieldDescr& operator=(const DbFieldDescr& other);
    ~DbFieldDescr() override;

    uint64 GetSize() const override;

    // Appends <field name key type required> to parent. False when the document refuses or throws; only our
    // own std::bad_alloc is thrown. The same holds for Load.
    virtual bool Save(IDispatch* document, IDispatch* parent);
    // Reads "name", "type" (a variant type in decimal) and "key" ("true"); other attributes are ignored, so a
    // field that was read is never required.
    virtual bool Load(IDispatch* element);
    // "empty", "boolean", "integer", "long", "float", "double", "text", "binary"; "unknown" for other types.
    virtual quillet::CString GetTypeString() const;

    const quillet::CString& GetName() const { return m_name; }
    // The name under which rows are saved: a blank is replaced by _ , / by _S_, \ by _BS_, < by _L_, > by
    // _G_, ( by _LP_, ) by _RP_ and * by _STAR_. Nothing else is replaced, so the result may be no valid name
    // in a document, and two names may give the same one: the log of the save that fails names both.
    const quillet::CString& GetSafeName() const { return m_safeName; }
    // Names the field and stamps it. A table's lookup by name keeps the name that the field had when the
    // lookup was built: it knows a new name only after the next field is created or deleted. Rename before
    // the first lookup, or use positions.
    void SetName(const quillet::CString& name);

    // Sets the default value and the converter of a variant type. VT_I2 gives a 32-bit integer and VT_DATE a
    // text; an unknown type gives an empty default, keeps the converter, and is saved as 0.
    void SetType(unsigned short variantType);
    void SetDbType(eFieldType type);
    eFieldType GetDbType() const;

    bool IsKey() const { return m_key; }
    void SetKey(bool key);
    bool IsRequired() const { return m_required; }

    // As SetType, with the default value stored in value.
    void SetDefaultValue(unsigned short variantType, quillet::CComVariant& value);

    // Fills value from text by the field's converter; a field without one keeps the text as it is.
    void Convert(quillet::CComVariant& value, const WCHAR* text) const;

    // Conversions between the three sets of types; a type without counterpart gives 0 and Empty.
    static unsigned short FieldTypeToVariantType(eFieldType type);
    static eFieldType VariantTypeToFieldType(unsigned short type);
    // From the data type numbers of an Access database.
    static eFieldType DbTypeToFieldType(short dbType);

    // The safe name in UTF-8, for writers that need it row after row; empty where it has no such form.
    const std::string& SafeNameUtf8() const { return m_safeNameUtf8; }

    // Points to this object as long as it lives, and to null afterwards. A copy has its own token.
    const std::shared_ptr<DbFieldDescr*>& LifeToken();

private:
    friend class DbTableDescr;
    friend class quillet::CellParser;
    friend class quillet::RowScanner;

    // The type of the values that Convert gives: VT_BSTR where it keeps every text as it is, and VT_EMPTY for
    // bytes.
    VARTYPE ConvertedType() const;

    // Grows with every name that a field of the process gets.
    static std::uint64_t Renames();

    // Made when it is first asked for.
    std::shared_ptr<DbFieldDescr*> m_life;
    bool m_required = false;
    bool m_key = false;
    quillet::CString m_name;
    quillet::CString m_safeName;
    std::string m_safeNameUtf8;
    Converter m_converter = nullptr;
};
