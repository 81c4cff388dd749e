#include "Quillet/dbaccess/LangMappings.h"

#include <algorithm>

#include "Quillet/dbaccess/ColumnConversion.h"

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
    quillet::ColumnConversion(*this).Convert(column, value);
}
