// Which language the texts of an Access file are written in, by the names of its tables and fields.
#pragma once

#include <cstdint>
#include <vector>

#include "Quillet/base/CComVariant.h"
#include "Quillet/base/CString.h"

class DBACCESS_COLUMN;

// One language: its number, its locale as the C library calls it, and the texts that reveal it in a name.
struct LanguageMapping {
    std::uint32_t m_code = 0;
    const WCHAR* m_locale = nullptr;
    std::vector<quillet::CString> m_markers;
};

// The languages in the order in which they are tried, and the current one, if any. It stays current until a
// name reveals another or Reset is called. The process has one such table, Instance, for imports, which use
// it one at a time.
class QUILLET_API LangMappings {
public:
    LangMappings();
    LangMappings(const LangMappings&) = delete;
    LangMappings& operator=(const LangMappings&) = delete;
    virtual ~LangMappings();

    static LangMappings& Instance();

    // Makes the first language current that has a marker in the name. The name is lowered and the markers are
    // not, so one with a capital letter is never found. If there is none, the current language stays, or
    // becomes the default ("C") if there was none.
    void Select(quillet::CString name);
    // The two halves of Select, for names that recur: Find gives the language that the name reveals, null for
    // none, and SelectFound does the rest.
    const LanguageMapping* Find(quillet::CString name) const;
    void SelectFound(const LanguageMapping* found);
    // Makes no language current.
    void Reset() { m_current = nullptr; }

    // Null if none is current. It lives as long as the table.
    const LanguageMapping* Current() const { return m_current; }
    bool IsDefault(const LanguageMapping* mapping) const { return mapping == &m_default; }

    // Replaces value by that of the column: a boolean (true where the number is exactly 1), a 32-bit integer
    // for both integer codes, a single or double real, a byte array with lower bound 0, a text; empty for any
    // other code. A text that is not empty is made under the current language's character type locale, which
    // is "C" afterwards, unless the default or none is current.
    void Convert(const DBACCESS_COLUMN& column, quillet::CComVariant& value) const;

private:
    LanguageMapping m_default;
    std::vector<LanguageMapping> m_mappings;
    const LanguageMapping* m_current = nullptr;
};
