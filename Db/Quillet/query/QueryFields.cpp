#include "Quillet/query/QueryFields.h"

#include "Quillet/Db_TableDescr.h"
#include "Quillet/query/SqlText.h"
#include "Quillet/values/Names.h"

namespace quillet {

namespace {

constexpr int Unknown = -1;
// In place of a position: more than one field fits.
constexpr int Several = -2;

}  // namespace

int QueryFields::Find(const CString& written) const {
    const int field = m_descr.GetFieldIndex(written);
    return field == Unknown ? FindAltered(written) : field;
}

CString QueryFields::Side(const CString& written) const {
    const int field = m_descr.GetFieldIndex(written) == Unknown ? FindAltered(written) : Unknown;
    return field == Unknown ? written : CString("[") + m_descr.GetField(field).GetName() + "]";
}

int QueryFields::FindAltered(const CString& written) const {
    if (!HoldsOperator(written)) {
        return Unknown;
    }
    if (!m_altered) {
        m_altered.emplace();
        for (std::size_t i = 0; i < m_descr.size(); ++i) {
            const CString& name = m_descr.at(i)->GetName();
            if (HoldsOperator(name)) {
                Note(SpacedName(name, false), static_cast<int>(i));
                Note(SpacedName(name, true), static_cast<int>(i));
            }
        }
    }
    const auto found = m_altered->find(Lowered(WithoutBrackets(written)));
    return found == m_altered->end() || found->second == Several ? Unknown : found->second;
}

void QueryFields::Note(const CString& spaced, int field) const {
    const auto [place, isNew] = m_altered->emplace(Lowered(spaced), field);
    if (!isNew && place->second != field) {
        place->second = Several;
    }
}

}  // namespace quillet
