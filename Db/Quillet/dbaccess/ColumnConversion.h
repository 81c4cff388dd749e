// The values of an Access file's columns as variants.
#pragma once

#include <memory>

#include "Quillet/base/CComVariant.h"

class DBACCESS_COLUMN;
class LangMappings;
struct LanguageMapping;

namespace quillet {

namespace platform {
class CharacterLocale;
}

// Converts many columns without resetting the locale between texts of one language, which would take far
// longer than a conversion. It is reset at the end. The languages must live as long as this object.
class ColumnConversion {
public:
    explicit ColumnConversion(const LangMappings& mappings);
    ColumnConversion(const ColumnConversion&) = delete;
    ColumnConversion& operator=(const ColumnConversion&) = delete;
    ~ColumnConversion();

    // As LangMappings::Convert, under the language that is current then.
    void Convert(const DBACCESS_COLUMN& column, CComVariant& value);

private:
    void EnterLocale();

    const LangMappings& m_mappings;
    // The language whose locale is set; null for none.
    const LanguageMapping* m_entered = nullptr;
    std::unique_ptr<platform::CharacterLocale> m_locale;
};

}  // namespace quillet
