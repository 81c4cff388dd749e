#include "Quillet/Db_Registry.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <unordered_set>

#include "Quillet/Db_Database.h"
#include "Quillet/Db_Log.h"

namespace quillet {

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
    Use(descr, data);
    const Entries::iterator entry =
        m_entries.emplace(Lowered(name), DbTableInfo(name, type, index, sql, descr, data, related)).first;
    AddText(entry);
    m_log.Print("Table '%s' created, index = %d, type = %s, sql = '%s'", nameUtf8.c_str(),
                static_cast<int>(index), type == DbTableInfo::Table ? "TABLE" : "QUERY",
                sql.ToUtf8().c_str());
    return &entry->second;
}

DbTableInfo* DbRegistry::CreateJoin(const CString& name, DbTableInfo& first) {
    DbTableInfo* const join = Create(name, DbTableInfo::Query, name, &first);
    if (join != nullptr) {
        RemoveText(m_entries.find(Lowered(name)));
        join->m_isJoin = true;
    }
    return join;
}

void DbRegistry::Use(DbTableDescr* descr, DbTableData* data) {
    ++m_uses[descr];
    ++m_uses[data];
    m_followers[descr].push_back(data);
}

bool DbRegistry::DropUse(const void* object) {
    const auto use = m_uses.find(object);
    if (--use->second > 0) {
        return false;
    }
    m_uses.erase(use);
    return true;
}

std::size_t DbRegistry::UsesOf(const void* object) const {
    const auto use = m_uses.find(object);
    return use == m_uses.end() ? 0 : use->second;
}

// The place in the lists becomes null.
void DbRegistry::Drop(std::size_t index) {
    const DbTableDescr* const descr = std::exchange(m_descrs[index].second, nullptr);
    const DbTableData* const data = std::exchange(m_data[index].second, nullptr);
    std::vector<DbTableData*>& followers = m_followers[descr];
    // Of all tables the last goes first.
    followers.erase(std::prev(std::find(followers.rbegin(), followers.rend(), data).base()));
    if (DropUse(descr)) {
        m_followers.erase(descr);
        delete descr;
    }
    if (DropUse(data)) {
        delete data;
    }
}

void DbRegistry::AddText(Entries::iterator query) {
    if (query->second.GetType() == DbTableInfo::Query && !query->second.IsJoin()) {
        m_queries[query->second.GetSql()].emplace(query->first, &query->second);
    }
}

void DbRegistry::RemoveText(Entries::iterator query) {
    const auto named = m_queries.find(query->second.GetSql());
    if (named != m_queries.end() && named->second.erase(query->first) > 0 && named->second.empty()) {
        m_queries.erase(named);
    }
}

// The place in the lists; their end where it is not there.
std::size_t DbRegistry::IndexOf(const DbTableInfo& info) const {
    const auto isHere = [&](const auto& pair) {
        return pair.second == info.GetData() && pair.first == info.GetName();
    };
    if (info.GetIndex() < Count() && isHere(m_data[info.GetIndex()])) {
        return info.GetIndex();
    }
    return static_cast<std::size_t>(std::find_if(m_data.begin(), m_data.end(), isHere) - m_data.begin());
}

// Each entry is looked at once: what is known of the one below is known of it.
std::vector<DbTableInfo*> DbRegistry::StandingOn(DbTableInfo& doomed) {
    std::unordered_map<const DbTableInfo*, bool> known;
    std::vector<DbTableInfo*> standing;
    for (auto& [key, entry] : m_entries) {
        std::vector<const DbTableInfo*> path;
        bool stands = false;
        for (const DbTableInfo* at = &entry; at != nullptr; at = at->GetRelated()) {
            const auto found = known.find(at);
            if (found != known.end() || at->GetType() != DbTableInfo::Query) {
                stands = found != known.end() && found->second;
                break;
            }
            path.push_back(at);
            stands = at->GetRelated() == &doomed;
            if (stands) {
                break;
            }
        }
        for (const DbTableInfo* const at : path) {
            known.emplace(at, stands);
        }
        if (stands) {
            standing.push_back(&entry);
        }
    }
    return standing;
}

void DbRegistry::DeleteWithRelated(const CString& name) {
    DbTableInfo* const doomed = Find(name);
    if (doomed == nullptr) {
        return;
    }
    std::vector<DbTableInfo*> all = StandingOn(*doomed);
    all.push_back(doomed);
    for (const DbTableInfo* const info : all) {
        if (UsesOf(info->GetData()) > 1) {
            // The contents live on under another name, and rows that wait to be read may name this one.
            info->GetData()->ParseXmlData();
        }
    }
    for (const DbTableInfo* const info : all) {
        const std::size_t index = IndexOf(*info);
        if (index < Count()) {
            Drop(index);
        }
        const auto entry = m_entries.find(Lowered(info->GetName()));
        if (entry != m_entries.end()) {
            RemoveText(entry);
            m_entries.erase(entry);
        }
    }
    const auto isGone = [](const auto& pair) { return pair.second == nullptr; };
    m_descrs.erase(std::remove_if(m_descrs.begin(), m_descrs.end(), isGone), m_descrs.end());
    m_data.erase(std::remove_if(m_data.begin(), m_data.end(), isGone), m_data.end());
    Renumber();
}

void DbRegistry::Clear() {
    for (std::size_t index = Count(); index-- > 0;) {
        Drop(index);
    }
    m_descrs.clear();
    m_data.clear();
    m_queries.clear();
    m_entries.clear();
}

void DbRegistry::Rename(const CString& oldName, const CString& newName) {
    DbTableInfo* const info = Find(oldName);
    const std::size_t index = info->GetIndex();
    if (index < Count()) {
        m_descrs[index].first = newName;
        m_data[index].first = newName;
    }
    const auto place = m_entries.find(Lowered(oldName));
    RemoveText(place);
    info->SetName(newName);
    auto node = m_entries.extract(place);
    node.key() = Lowered(newName);
    const auto placed = m_entries.insert(std::move(node));
    if (placed.inserted) {
        AddText(placed.position);
    } else {
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

DbTableInfo* DbRegistry::FindQuery(const CString& sql) {
    const auto queries = m_queries.find(sql);
    if (queries == m_queries.end()) {
        return nullptr;
    }
    // A host may have assigned another entry to one of them.
    const auto isStill = [&](const auto& query) {
        return query.second->GetType() == DbTableInfo::Query && query.second->GetSql() == sql;
    };
    const auto found = std::find_if(queries->second.begin(), queries->second.end(), isStill);
    return found == queries->second.end() ? nullptr : found->second;
}

bool DbRegistry::IsShared(const DbTableInfo& info) const {
    return UsesOf(info.GetDescr()) > 1 || UsesOf(info.GetData()) > 1;
}

void DbRegistry::Renew(DbTableInfo& query, DbTableInfo& source) {
    std::vector<std::unique_ptr<DbFilter>> filters = query.GetDescr()->TakeAllFilters();
    query.Clear();
    for (std::unique_ptr<DbFilter>& filter : filters) {
        query.GetDescr()->AppendFilter(std::move(filter));
    }
    query.SetRelated(&source);
}

std::vector<DbTableData*> DbRegistry::DataOf(const DbTableDescr& descr) const {
    std::vector<DbTableData*> found;
    const auto followers = m_followers.find(&descr);
    if (followers == m_followers.end()) {
        return found;
    }
    std::unordered_set<const DbTableData*> seen;
    for (DbTableData* const data : followers->second) {
        if (seen.insert(data).second) {
            found.push_back(data);
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
