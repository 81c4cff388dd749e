#include "Quillet/dbaccess/LangMappings.h"

#include <algorithm>

#include "Quillet/dbaccess/DBACCESS_COLUMN.h"
#include "Quillet/platform/CharacterLocale.h"

using quillet::CComVariant;
using quillet::CString;
using quillet::WideView;

namespace {

constexpr std::uint32_t DefaultCode = 1;

// Names of description columns, language numbers, and names of catalog files.
std::vector<LanguageMapping> Languages() {
    return {
        {1, OLESTR("english"), {"001", "desc_01", "desc001"}},
        {33,
         OLESTR("french"),
         {"033", "Desc033", "desc033", "desc_33", "Cfr0", "Cfr099", "CMA0", "charge33", "002F", "ZQEXkit",
          "WODAKkit"}},
        {34, OLESTR("spanish"), {"034", "Desc034", "desc034", "desc_34"}},
        {35, OLESTR("portuguese"), {"035", "desc_35", "desc035"}},
        {39, OLESTR("italian"), {"039", "Desc_39", "desc039"}},
        {40, OLESTR("romanian"), {"040", "Desc_40", "desc040", "TIBEHkit"}},
        {48, OLESTR("polish"), {"048", "desc_48", "Desc048", "Q_DWF", "K_DW4417", "vqmskit", "vqtakit"}},
        {70,
         OLESTR("russian"),
         {"070", "desc_70", "desc070", "Desc070", "Q_ZARO", "HEMYkit", "HEMYXkit", "NUAkit", "BIkit",
          "rod_ZARO", "XFEL079", "XFEL070A", "XFEL070B", "XFEL070C"}},
    };
}

}  // namespace

LangMappings::LangMappings() : m_default{DefaultCode, OLESTR("C"), {}}, m_mappings(Languages()) {
}

LangMappings::~LangMappings() = default;

LangMappings& LangMappings::Instance() {
    static LangMappings instance;
    return instance;
}

void LangMappings::Select(CString name) {
    SelectFound(Find(std::move(name)));
}

const LanguageMapping* LangMappings::Find(CString name) const {
    const WideView lowered = name.MakeLower().View();
    const auto isIn = [lowered](const CString& marker) {
        return lowered.find(marker.View()) != WideView::npos;
    };
    const auto found =
        std::find_if(m_mappings.begin(), m_mappings.end(), [&](const LanguageMapping& mapping) {
            return std::any_of(mapping.m_markers.begin(), mapping.m_markers.end(), isIn);
        });
    return found == m_mappings.end() ? nullptr : &*found;
}

void LangMappings::SelectFound(const LanguageMapping* found) {
    if (found != nullptr) {
        m_current = found;
    } else if (m_current == nullptr) {
        m_current = &m_default;
    }
}

void LangMappings::Convert(const DBACCESS_COLUMN& column, CComVariant& value) const {
    Run(*this).Convert(column, value);
}

LangMappings::Run::Run(const LangMappings& mappings) : m_mappings(mappings) {
}

LangMappings::Run::~Run() = default;

void LangMappings::Run::EnterLocale() {
    const LanguageMapping* const current = m_mappings.m_current;
    if (current != nullptr && current != m_entered && !m_mappings.IsDefault(current)) {
        // The locale is reset before the next one is set.
        m_locale.reset();
        m_locale = std::make_unique<quillet::platform::CharacterLocale>(current->m_locale);
        m_entered = current;
    }
}

void LangMappings::Run::Convert(const DBACCESS_COLUMN& column, CComVariant& value) {
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
