#include "Quillet/Db_Registry.h"

#include <algorithm>
#include <memory>

#include "Quillet/Db_Database.h"
#include "Quillet/Db_Log.h"

namespace quillet {

namespace {

template <typename List, typename Pointer>
bool Holds(const List& list, Pointer pointer) {
    return std::any_of(list.begin(), list.end(), [&](const auto& entry) { return entry.second == pointer; });
}

template <typename List>
void EraseAt(List& list, std::size_t position) {
    list.erase(list.begin() + static_cast<std::ptrdiff_t>(position));
}

// An object that stands in the list under two names is deleted once.
template <typename List>
void DeleteAll(List& list) {
    while (!list.empty()) {
        const auto* const last = list.back().second;
        list.pop_back();
        if (!Holds(list, last)) {
            delete last;
        }
    }
}

}  // namespace

DbTableInfo* DbRegistry::Create(const CString& name, DbTableInfo::eType type, const CString& sql,
                                DbTableInfo* related) {
    return Create(name, type, nullptr, nullptr, sql, related);
}

DbTableInfo* DbRegistry::Create(const CString& name, DbTableInfo::eType type, DbTableDescr* descr,
                                DbTableData* data, const CString& sql, DbTableInfo* related) {
    const std::string nameUtf8 = name.ToUtf8();
    if (Find(name) != nullptr) {
        m_log.Print("Table '%s' already in database, cannot add another '%s' table", nameUtf8.c_str(),
                    nameUtf8.c_str());
        return nullptr;
    }
    if (descr == nullptr) {
        descr = new DbTableDescr(&m_owner);
    }
    if (data == nullptr) {
        data = new DbTableData(&m_owner, descr);
    }
    const std::size_t index = m_descrs.size();
    m_descrs.emplace_back(name, descr);
    m_data.emplace_back(name, data);
    const auto [entry, inserted] =
        m_entries.emplace(Lowered(name), DbTableInfo(name, type, index, sql, descr, data, related));
    static_cast<void>(inserted);
    m_log.Print("Table '%s' created, index = %d, type = %s, sql = '%s'", nameUtf8.c_str(),
                static_cast<int>(index), type == DbTableInfo::Table ? "TABLE" : "QUERY",
                sql.ToUtf8().c_str());
    return &entry->second;
}

void DbRegistry::Delete(DbTableInfo* info) {
    const auto named = [&](const auto& entry) { return entry.second == info->GetData(); };
    if (std::count_if(m_data.begin(), m_data.end(), named) > 1) {
        // The contents live on under another name, and rows that wait to be read may name this one.
        info->GetData()->ParseXmlData();
    }
    const auto place = std::find_if(m_data.begin(), m_data.end(), [&](const auto& pair) {
        return pair.second == info->GetData() && pair.first == info->GetName();
    });
    if (place != m_data.end()) {
        const auto index = static_cast<std::size_t>(place - m_data.begin());
        const DbTableDescr* const descr = m_descrs[index].second;
        const DbTableData* const data = m_data[index].second;
        EraseAt(m_descrs, index);
        EraseAt(m_data, index);
        if (!Holds(m_descrs, descr)) {
            delete descr;
        }
        if (!Holds(m_data, data)) {
            delete data;
        }
    }
    m_entries.erase(Lowered(info->GetName()));
    Renumber();
}

void DbRegistry::DeleteWithRelated(const CString& name) {
    DbTableInfo* const doomed = Find(name);
    if (doomed == nullptr) {
        return;
    }
    // All are found before one is deleted: a query stands on others that may be gone by then.
    std::vector<DbTableInfo*> related;
    for (auto& [key, entry] : m_entries) {
        if (entry.IsRelatedWith(doomed)) {
            related.push_back(&entry);
        }
    }
    for (DbTableInfo* const info : related) {
        Delete(info);
    }
    Delete(doomed);
}

void DbRegistry::Clear() {
    DeleteAll(m_data);
    DeleteAll(m_descrs);
    m_entries.clear();
}

void DbRegistry::Rename(const CString& oldName, const CString& newName) {
    DbTableInfo* const info = Find(oldName);
    const std::size_t index = info->GetIndex();
    if (index < Count()) {
        m_descrs[index].first = newName;
        m_data[index].first = newName;
    }
    info->SetName(newName);
    auto node = m_entries.extract(Lowered(oldName));
    node.key() = Lowered(newName);
    const auto placed = m_entries.insert(std::move(node));
    if (!placed.inserted) {
        // The entry is gone, and queries that stood on it stand on nothing.
        for (auto& [key, entry] : m_entries) {
            if (entry.GetRelated() == &placed.node.mapped()) {
                entry.SetRelated(nullptr);
            }
        }
    }
    m_log.Print("Table '%s' renamed to '%s'", oldName.ToUtf8().c_str(), newName.ToUtf8().c_str());
}

DbTableInfo* DbRegistry::Find(const CString& name) {
    const auto found = m_entries.find(Lowered(name));
    return found == m_entries.end() ? nullptr : &found->second;
}

DbTableInfo* DbRegistry::Find(const DbTableData* data) {
    const auto found = std::find_if(m_entries.begin(), m_entries.end(),
                                    [&](const auto& entry) { return entry.second.GetData() == data; });
    return found == m_entries.end() ? nullptr : &found->second;
}

std::vector<DbTableData*> DbRegistry::DataOf(const DbTableDescr& descr) const {
    std::vector<DbTableData*> found;
    for (std::size_t i = 0; i < Count(); ++i) {
        if (DescrAt(i) == &descr && std::find(found.begin(), found.end(), DataAt(i)) == found.end()) {
            found.push_back(DataAt(i));
        }
    }
    return found;
}

void DbRegistry::Renumber() {
    for (std::size_t i = 0; i < Count(); ++i) {
        if (DbTableInfo* const entry = Find(NameAt(i))) {
            entry->SetIndex(i);
        }
    }
}

}  // namespace quillet
