#include "Quillet/access/Error.h"

namespace quillet::access {
namespace {

std::string Described(const std::string& text, const Place& place) {
    std::string where;
    if (!place.m_table.empty()) {
        where += "table '" + place.m_table + "', ";
    }
    if (place.m_page) {
        where += "page " + std::to_string(*place.m_page) + ", ";
    }
    if (place.m_offset) {
        where += "offset " + std::to_string(*place.m_offset) + ", ";
    }
    if (!where.empty()) {
        where.replace(where.size() - 2, 1, ":");
    }
    return where + text;
}

}  // namespace

Error::Error(eKind kind, const std::string& text, const Place& place)
    : std::runtime_error(Described(text, place)), m_kind(kind), m_text(text), m_place(place) {
}

Error Error::InTable(const std::string& table) const {
    Place place = m_place;
    place.m_table = table;
    return {m_kind, m_text, place};
}

void DamageLog::Add(const Error& error) {
    ++m_count;
    if (m_first.size() < MostKept) {
        m_first.push_back(error);
    }
}

}  // namespace quillet::access
