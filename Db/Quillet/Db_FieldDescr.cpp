#include "Quillet/Db_FieldDescr.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <optional>
#include <utility>

#include "Quillet/platform/NumberText.h"
#include "Quillet/values/Base64.h"
#include "Quillet/xml/Face.h"

using quillet::CComVariant;
using quillet::CString;
using quillet::WideString;
using quillet::WideView;

namespace {

constexpr VARTYPE VT_BYTES = VT_ARRAY | VT_UI1;

struct TypeRow {
    DbFieldDescr::eFieldType m_field;
    VARTYPE m_variant;
    const char* m_word;
};

constexpr std::array<TypeRow, 8> Types = {{
    {DbFieldDescr::Empty, VT_EMPTY, "empty"},
    {DbFieldDescr::Boolean, VT_BOOL, "boolean"},
    {DbFieldDescr::Integer, VT_I2, "integer"},
    {DbFieldDescr::Long, VT_I4, "long"},
    {DbFieldDescr::Float, VT_R4, "float"},
    {DbFieldDescr::Double, VT_R8, "double"},
    {DbFieldDescr::Text, VT_BSTR, "text"},
    {DbFieldDescr::Binary, VT_BYTES, "binary"},
}};

const TypeRow* FindType(VARTYPE type) {
    const auto* found =
        std::find_if(Types.begin(), Types.end(), [&](const TypeRow& row) { return row.m_variant == type; });
    return found == Types.end() ? nullptr : found;
}

struct SafeReplacement {
    const char* m_what;
    const char* m_with;
};

constexpr SafeReplacement SafeReplacements[] = {
    {" ", "_"},   {"/", "_S_"},  {"\\", "_BS_"}, {"<", "_L_"},
    {">", "_G_"}, {"(", "_LP_"}, {")", "_RP_"},  {"*", "_STAR_"},
};

// A text that is no number stays a string.
void ConvertNumber(CComVariant& value, WideView text, VARTYPE type) {
    VARIANT number;
    VariantInit(&number);
    if (SUCCEEDED(quillet::MemoryChecked(quillet::platform::TextToNumber(text, type, &number)))) {
        value.Clear();
        static_cast<VARIANT&>(value) = number;
    } else {
        value.SetText(text);
    }
}

void ToLong(CComVariant& value, const WCHAR* text) {
    ConvertNumber(value, text, VT_I4);
}

void ToBoolean(CComVariant& value, const WCHAR* text) {
    ConvertNumber(value, text, VT_BOOL);
}

// Files written with either decimal separator read alike in every locale.
void ToReal(CComVariant& value, WideView text, VARTYPE type) {
    const WCHAR separator = quillet::platform::DecimalSeparator();
    const WCHAR foreign = separator == '.' ? ',' : '.';
    if (text.empty()) {
        text = OLESTR("0");
    }
    if (text.find(foreign) == WideView::npos) {
        ConvertNumber(value, text, type);
        return;
    }
    WideString normalised(text);
    std::replace(normalised.begin(), normalised.end(), foreign, separator);
    ConvertNumber(value, normalised, type);
}

void ToFloat(CComVariant& value, const WCHAR* text) {
    ToReal(value, text, VT_R4);
}

void ToDouble(CComVariant& value, const WCHAR* text) {
    ToReal(value, text, VT_R8);
}

void ToText(CComVariant& value, const WCHAR* text) {
    value.SetText(text);
}

void ToBytes(CComVariant& value, const WCHAR* text) {
    quillet::DecodeBase64(text, value);
}

std::uint64_t g_renames = 0;

// The number at the beginning of a text: 0 where there is none or it is no variant type.
unsigned short LeadingVariantType(std::string_view text) {
    const std::size_t start = text.find_first_not_of(" \t\r\n");
    unsigned short number = 0;
    if (start != std::string_view::npos) {
        std::from_chars(text.data() + start, text.data() + text.size(), number);
    }
    return number;
}

}  // namespace

DbFieldDescr::DbFieldDescr() = default;

DbFieldDescr::DbFieldDescr(DbItem* parent, int index) : DbFieldValue(parent, index) {
}

DbFieldDescr::DbFieldDescr(const DbFieldDescr& other)
    : DbFieldValue(other),
      m_required(other.m_required),
      m_key(other.m_key),
      m_name(other.m_name),
      m_safeName(other.m_safeName),
      m_safeNameUtf8(other.m_safeNameUtf8),
      m_converter(other.m_converter) {
    ++g_renames;
}

DbFieldDescr& DbFieldDescr::operator=(const DbFieldDescr& other) {
    if (this != &other) {
        CString name = other.m_name;
        CString safeName = other.m_safeName;
        std::string safeNameUtf8 = other.m_safeNameUtf8;
        DbFieldValue::operator=(other);
        ++g_renames;
        m_required = other.m_required;
        m_key = other.m_key;
        m_name = std::move(name);
        m_safeName = std::move(safeName);
        m_safeNameUtf8 = std::move(safeNameUtf8);
        m_converter = other.m_converter;
    }
    return *this;
}

DbFieldDescr::~DbFieldDescr() {
    if (m_life) {
        *m_life = nullptr;
    }
}

const std::shared_ptr<DbFieldDescr*>& DbFieldDescr::LifeToken() {
    if (!m_life) {
        m_life = std::make_shared<DbFieldDescr*>(this);
    }
    return m_life;
}

uint64 DbFieldDescr::GetSize() const {
    constexpr uint64 FlagsEstimate = 2;
    constexpr uint64 UnitEstimate = 2;
    constexpr uint64 StringEstimate = 8;
    return DbFieldValue::GetSize() + FlagsEstimate + UnitEstimate * m_name.View().size() + StringEstimate +
           UnitEstimate * m_safeName.View().size() + StringEstimate;
}

bool DbFieldDescr::Save(IDispatch* document, IDispatch* parent) {
    try {
        quillet::xml::LeafElement field(quillet::xml::Node(document), quillet::xml::Node(parent), "field");
        field.Attribute("name", m_name.View());
        field.Attribute("key", std::string_view(m_key ? "true" : "false"));
        field.Attribute("type", std::string_view(std::to_string(GetType())));
        field.Attribute("required", std::string_view(m_required ? "-1" : "0"));
        field.Append();
        return true;
    } catch (const quillet::xml::DomError&) {
        return false;
    }
}

bool DbFieldDescr::Load(IDispatch* element) {
    try {
        const quillet::xml::Node node(element);
        if (node.IsNull() || !node.IsElement()) {
            return false;
        }
        quillet::xml::AttributeReader attributes(node);
        while (attributes.Next()) {
            if (attributes.Name() == "name") {
                SetName(CString(std::string(attributes.Value())));
            } else if (attributes.Name() == "type") {
                SetType(LeadingVariantType(attributes.Value()));
            } else if (attributes.Name() == "key") {
                m_key = attributes.Value() == "true";
            }
        }
        return true;
    } catch (const quillet::xml::DomError&) {
        return false;
    }
}

CString DbFieldDescr::GetTypeString() const {
    const TypeRow* const type = FindType(GetType());
    return type == nullptr ? "unknown" : type->m_word;
}

std::uint64_t DbFieldDescr::Renames() {
    return g_renames;
}

void DbFieldDescr::SetName(const CString& name) {
    CString newName = name;
    CString safeName = name;
    for (const SafeReplacement& replacement : SafeReplacements) {
        safeName.Replace(replacement.m_what, replacement.m_with);
    }
    // A name with a lone surrogate has no UTF-8 form, and no document takes it.
    std::string safeNameUtf8 = safeName.ToUtf8();
    if (CString(safeNameUtf8) != safeName) {
        safeNameUtf8.clear();
    }
    ++g_renames;
    m_name = std::move(newName);
    m_safeName = std::move(safeName);
    m_safeNameUtf8 = std::move(safeNameUtf8);
    SetChanged();
}

void DbFieldDescr::SetType(unsigned short variantType) {
    SetDefaultValue(variantType, GetVariant());
    SetChanged();
}

void DbFieldDescr::SetKey(bool key) {
    m_key = key;
    SetChanged();
}

void DbFieldDescr::SetDbType(eFieldType type) {
    SetType(FieldTypeToVariantType(type));
}

DbFieldDescr::eFieldType DbFieldDescr::GetDbType() const {
    return VariantTypeToFieldType(GetType());
}

void DbFieldDescr::SetDefaultValue(unsigned short variantType, CComVariant& value) {
    CComVariant defaultValue;
    Converter converter = m_converter;
    switch (variantType) {
        case VT_I2:
        case VT_I4:
            defaultValue.SetNumber(0);
            converter = ToLong;
            break;
        case VT_R4:
            defaultValue.SetNumber(0.0F);
            converter = ToFloat;
            break;
        case VT_R8:
            defaultValue.SetNumber(0.0);
            converter = ToDouble;
            break;
        case VT_DATE:
        case VT_BSTR:
            defaultValue.SetText({});
            converter = ToText;
            break;
        case VT_BOOL:
            defaultValue.SetNumber(false);
            converter = ToBoolean;
            break;
        case VT_BYTES: {
            constexpr BYTE Zero = 0;
            defaultValue.SetBytes(&Zero, 1, 1);
            converter = ToBytes;
            break;
        }
        default:
            break;
    }
    value = std::move(defaultValue);
    m_converter = converter;
}

void DbFieldDescr::Convert(CComVariant& value, const WCHAR* text) const {
    (m_converter == nullptr ? ToText : m_converter)(value, text);
}

VARTYPE DbFieldDescr::ConvertedType() const {
    constexpr std::pair<Converter, VARTYPE> Converters[] = {
        {nullptr, VT_BSTR}, {ToText, VT_BSTR},    {ToLong, VT_I4},     {ToFloat, VT_R4},
        {ToDouble, VT_R8},  {ToBoolean, VT_BOOL}, {ToBytes, VT_EMPTY},
    };
    const auto* const found = std::find_if(std::begin(Converters), std::end(Converters),
                                           [&](const auto& row) { return row.first == m_converter; });
    return found->second;
}

unsigned short DbFieldDescr::FieldTypeToVariantType(eFieldType type) {
    const auto* found =
        std::find_if(Types.begin(), Types.end(), [&](const TypeRow& row) { return row.m_field == type; });
    return found == Types.end() ? static_cast<unsigned short>(VT_EMPTY) : found->m_variant;
}

DbFieldDescr::eFieldType DbFieldDescr::VariantTypeToFieldType(unsigned short type) {
    const TypeRow* const found = FindType(type);
    return found == nullptr ? Empty : found->m_field;
}

DbFieldDescr::eFieldType DbFieldDescr::DbTypeToFieldType(short dbType) {
    constexpr short DaoInteger = 3;
    constexpr short DaoLong = 4;
    constexpr short DaoDouble = 7;
    constexpr short DaoText = 10;
    switch (dbType) {
        case DaoInteger:
            return Integer;
        case DaoLong:
            return Long;
        case DaoDouble:
            return Double;
        case DaoText:
            return Text;
        default:
            return Empty;
    }
}
