#include "Quillet/dbaccess/ColumnConversion.h"

#include "Quillet/dbaccess/DBACCESS_COLUMN.h"
#include "Quillet/dbaccess/LangMappings.h"
#include "Quillet/platform/CharacterLocale.h"

namespace quillet {

ColumnConversion::ColumnConversion(const LangMappings& mappings) : m_mappings(mappings) {
}

ColumnConversion::~ColumnConversion() = default;

void ColumnConversion::EnterLocale() {
    const LanguageMapping* const current = m_mappings.Current();
    if (current != nullptr && current != m_entered && !m_mappings.IsDefault(current)) {
        // The locale is reset before the next one is set.
        m_locale.reset();
        m_locale = std::make_unique<platform::CharacterLocale>(current->m_locale);
        m_entered = current;
    }
}

void ColumnConversion::Convert(const DBACCESS_COLUMN& column, CComVariant& value) {
    switch (column.m_type) {
        case DBACCESS_COLUMN::Boolean:
            value.SetNumber(column.m_bool == 1);
            break;
        case DBACCESS_COLUMN::Integer:
            value.SetNumber(column.m_int);
            break;
        case DBACCESS_COLUMN::Long:
            value.SetNumber(column.m_long);
            break;
        case DBACCESS_COLUMN::Float:
            value.SetNumber(column.m_float);
            break;
        case DBACCESS_COLUMN::Double:
            value.SetNumber(column.m_double);
            break;
        case DBACCESS_COLUMN::Binary:
            value.SetBytes(column.m_binary.GetData(), static_cast<ULONG>(column.m_binary.GetSize()), 0);
            break;
        case DBACCESS_COLUMN::Text:
            if (!column.m_text.IsEmpty()) {
                EnterLocale();
            }
            value.SetText(column.m_text.View());
            break;
        default:
            value.Clear();
            break;
    }
}

}  // namespace quillet
