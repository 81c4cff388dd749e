#include "Quillet/registry/Registry.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>
#include <unordered_set>
#include <utility>

#include "Quillet/Db_TableData.h"
#include "Quillet/base/Rollback.h"
#include "Quillet/registry/Log.h"
#include "Quillet/registry/Upcalls.h"

namespace quillet {

DbTableInfo* Registry::Create(const CString& name, DbTableInfo::eType type, const CString& sql,
                              DbTableInfo* related) {
    return Create(name, type, nullptr, nullptr, sql, related);
}

DbTableInfo* Registry::Create(const CString& name, DbTableInfo::eType type, DbTableDescr* descr,
                              DbTableData* data, const CString& sql, DbTableInfo* related) {
    return Register(DbTableInfo(name, type, 0, sql, descr, data, related));
}

DbTableInfo* Registry::CreateJoin(const CString& name, DbTableInfo& first) {
    DbTableInfo join(name, DbTableInfo::Query, 0, name, nullptr, nullptr, &first);
    join.m_isJoin = true;
    return Register(std::move(join));
}

DbTableInfo* Registry::Register(DbTableInfo info) {
    // Later look-ups of the texts must not need memory, so the texts are made wide now.
    static_cast<void>(info.m_name.View());
    static_cast<void>(info.m_sql.View());
    Table table{info.m_name, Lowered(info.m_name)};
    const std::string name = info.m_name.ToUtf8();
    if (m_entries.count(table.m_lowered) > 0) {
        m_log.Print(Log::Kind::Refused, Log::Place(info.m_name),
                    "Table '%s' already in database, cannot add another '%s' table", name.c_str(),
                    name.c_str());
        return nullptr;
    }
    std::unique_ptr<DbTableDescr> newDescr;
    if (info.m_descr == nullptr) {
        newDescr = std::make_unique<DbTableDescr>(&m_owner);
        info.m_descr = newDescr.get();
    }
    std::unique_ptr<DbTableData> newData;
    if (info.m_data == nullptr) {
        newData = std::make_unique<DbTableData>(&m_owner, info.m_descr);
        info.m_data = newData.get();
    }
    info.m_index = Count();
    table.m_descr = info.m_descr;
    table.m_data = info.m_data;

    MakeRoomForOne();
    AddUse(table.m_descr, table.m_data);
    Rollback used([&] {
        RemoveUse(table.m_descr, table.m_data);
        RemoveUse(table.m_data);
    });
    const Entries::iterator entry = m_entries.emplace(table.m_lowered, std::move(info)).first;
    Rollback entered([&] { m_entries.erase(entry); });
    IndexQueryText(entry);
    Rollback found([&] { UnindexQueryText(entry); });
    m_log.Print(Log::Kind::Report, Log::Place(entry->second.GetName()),
                "Table '%s' created, index = %d, type = %s, sql = '%s'", name.c_str(),
                static_cast<int>(Count()), entry->second.GetType() == DbTableInfo::Table ? "TABLE" : "QUERY",
                entry->second.GetSql().ToUtf8().c_str());

    // Nothing from here on can fail.
    used.Keep();
    entered.Keep();
    found.Keep();
    static_cast<void>(newDescr.release());
    static_cast<void>(newData.release());
    Use& use = m_uses.find(table.m_data)->second;
    use.m_entry = use.m_tables == 1 ? &entry->second : nullptr;
    table.m_entry = &entry->second;
    m_tables.push_back(std::move(table));
    return &entry->second;
}

void Registry::MakeRoomForOne() {
    constexpr std::size_t FewTables = 8;
    if (m_tables.size() == m_tables.capacity()) {
        m_tables.reserve(std::max(FewTables, m_tables.capacity() * 2));
    }
    m_doomed.reserve(m_tables.capacity() * 2);
}

void Registry::AddUse(DbTableDescr* descr, DbTableData* data) {
    Use& use = m_uses[data];
    ++use.m_tables;
    Rollback used([&] { RemoveUse(data); });
    std::vector<DbTableData*>& followers = m_followers[descr];
    Rollback follows([&] {
        if (followers.empty()) {
            m_followers.erase(descr);
        }
    });
    followers.push_back(data);
    follows.Keep();
    used.Keep();
}

bool Registry::RemoveUse(DbTableDescr* descr, const DbTableData* follower) {
    const auto place = m_followers.find(descr);
    if (place == m_followers.end()) {
        return false;
    }
    // Of equal followers the last one is removed.
    std::vector<DbTableData*>& followers = place->second;
    const auto last = std::find(followers.rbegin(), followers.rend(), follower);
    if (last != followers.rend()) {
        followers.erase(std::prev(last.base()));
    }
    if (!followers.empty()) {
        return false;
    }
    m_followers.erase(place);
    return true;
}

bool Registry::RemoveUse(DbTableData* data) {
    const auto use = m_uses.find(data);
    if (use == m_uses.end() || --use->second.m_tables > 0) {
        return false;
    }
    m_uses.erase(use);
    return true;
}

std::size_t Registry::UsesOf(const DbTableDescr* descr) const {
    const auto followers = m_followers.find(descr);
    return followers == m_followers.end() ? 0 : followers->second.size();
}

std::size_t Registry::UsesOf(const DbTableData* data) const {
    const auto use = m_uses.find(data);
    return use == m_uses.end() ? 0 : use->second.m_tables;
}

void Registry::Drop(Table& table) {
    DbTableDescr* const descr = std::exchange(table.m_descr, nullptr);
    DbTableData* const data = std::exchange(table.m_data, nullptr);
    if (RemoveUse(descr, data)) {
        m_doomed.push_back(descr);
    }
    if (RemoveUse(data)) {
        m_doomed.push_back(data);
    }
}

void Registry::DeleteDoomed() {
    // For a few, searching the database's items for each is faster than looking at all items.
    constexpr std::size_t Few = 8;
    if (m_doomed.size() > Few) {
        Upcalls::Detach(m_owner, m_doomed);
    }
    for (const DbItem* const item : m_doomed) {
        delete item;
    }
    m_doomed.clear();
}

void Registry::IndexQueryText(Entries::iterator query) {
    if (query->second.GetType() == DbTableInfo::Query && !query->second.IsJoin()) {
        const auto named = m_queries.try_emplace(query->second.GetSql()).first;
        Rollback added([&] {
            if (named->second.empty()) {
                m_queries.erase(named);
            }
        });
        named->second.emplace(query->first, &query->second);
        added.Keep();
    }
}

void Registry::UnindexQueryText(Entries::iterator query) {
    const auto named = m_queries.find(query->second.GetSql());
    if (named != m_queries.end() && named->second.erase(query->first) > 0 && named->second.empty()) {
        m_queries.erase(named);
    }
}

// The position in the list; Count if it is not there.
std::size_t Registry::IndexOf(const DbTableInfo& info) const {
    const auto isHere = [&](const Table& table) {
        return table.m_data == info.GetData() && table.m_name == info.GetName();
    };
    if (info.GetIndex() < Count() && isHere(m_tables[info.GetIndex()])) {
        return info.GetIndex();
    }
    return static_cast<std::size_t>(std::find_if(m_tables.begin(), m_tables.end(), isHere) -
                                    m_tables.begin());
}

// Each entry is looked at once: whether it depends on doomed follows from its source.
std::vector<DbTableInfo*> Registry::DependentsOf(DbTableInfo& doomed) {
    const bool isAlone = std::none_of(m_entries.begin(), m_entries.end(), [&](const auto& entry) {
        return entry.second.GetRelated() == &doomed;
    });
    if (isAlone) {
        return {};
    }
    std::unordered_map<const DbTableInfo*, bool> known;
    std::vector<DbTableInfo*> dependents;
    for (auto& [key, entry] : m_entries) {
        std::vector<const DbTableInfo*> path;
        bool depends = false;
        for (const DbTableInfo* at = &entry; at != nullptr; at = at->GetRelated()) {
            const auto found = known.find(at);
            if (found != known.end() || at->GetType() != DbTableInfo::Query) {
                depends = found != known.end() && found->second;
                break;
            }
            path.push_back(at);
            depends = at->GetRelated() == &doomed;
            if (depends) {
                break;
            }
        }
        for (const DbTableInfo* const at : path) {
            known.emplace(at, depends);
        }
        if (depends) {
            dependents.push_back(&entry);
        }
    }
    return dependents;
}

void Registry::DeleteWithRelated(const CString& name) {
    DbTableInfo* const doomed = Find(name);
    if (doomed == nullptr) {
        return;
    }
    std::vector<DbTableInfo*> all = DependentsOf(*doomed);
    all.push_back(doomed);
    Delete(all);
}

std::size_t Registry::DeleteQueries() {
    std::vector<DbTableInfo*> queries;
    for (auto& [key, entry] : m_entries) {
        if (entry.GetType() == DbTableInfo::Query) {
            queries.push_back(&entry);
        }
    }
    Delete(queries);
    return queries.size();
}

void Registry::Delete(const std::vector<DbTableInfo*>& doomed) {
    std::vector<std::size_t> places;
    std::vector<Entries::iterator> entries;
    for (const DbTableInfo* const info : doomed) {
        if (UsesOf(info->GetData()) > 1) {
            // The contents live on under another name, and rows that wait to be read may name this one.
            info->GetData()->ParseXmlData();
        }
        const std::size_t place = IndexOf(*info);
        if (place < Count()) {
            places.push_back(place);
        }
        const auto entry = m_entries.find(Lowered(info->GetName()));
        if (entry != m_entries.end()) {
            entries.push_back(entry);
        }
    }
    // A host may have assigned one entry to another, so that two have one name.
    std::sort(places.begin(), places.end());
    places.erase(std::unique(places.begin(), places.end()), places.end());
    const auto isBefore = [](Entries::iterator left, Entries::iterator right) {
        return std::less<const DbTableInfo*>()(&left->second, &right->second);
    };
    std::sort(entries.begin(), entries.end(), isBefore);
    entries.erase(std::unique(entries.begin(), entries.end()), entries.end());

    // Nothing from here on can fail.
    for (const std::size_t place : places) {
        Drop(m_tables[place]);
    }
    const auto isGone = [](const Table& table) { return table.m_data == nullptr; };
    m_tables.erase(std::remove_if(m_tables.begin(), m_tables.end(), isGone), m_tables.end());
    const bool isPlain =
        places.size() == entries.size() && m_tables.size() + entries.size() == m_entries.size();
    for (const Entries::iterator entry : entries) {
        if (!isPlain) {
            Forget(entry->second);
        }
        UnindexQueryText(entry);
        m_entries.erase(entry);
    }
    if (!places.empty()) {
        RenumberFrom(isPlain ? places.front() : 0);
    }
    DeleteDoomed();
}

void Registry::Forget(const DbTableInfo& entry) {
    for (Table& table : m_tables) {
        if (table.m_entry == &entry) {
            table.m_entry = nullptr;
        }
    }
    for (auto& [data, use] : m_uses) {
        if (use.m_entry == &entry) {
            use.m_entry = nullptr;
        }
    }
}

void Registry::Clear() {
    m_queries.clear();
    m_entries.clear();
    for (std::size_t index = Count(); index-- > 0;) {
        Drop(m_tables[index]);
    }
    m_tables.clear();
    DeleteDoomed();
}

void Registry::Rename(const CString& oldName, const CString& newName) {
    const auto place = m_entries.find(Lowered(oldName));
    DbTableInfo& info = place->second;
    CString name(newName.View());
    Table renamed{name, Lowered(name)};
    CString entryKey = renamed.m_lowered;
    CString queryKey = renamed.m_lowered;
    m_log.Print(Log::Kind::Report, Log::Place(name), "Table '%s' renamed to '%s'", oldName.ToUtf8().c_str(),
                newName.ToUtf8().c_str());

    // Nothing from here on can fail.
    const std::size_t index = info.GetIndex();
    if (index >= Count() || m_tables[index].m_entry != &info) {
        Forget(info);
    }
    if (index < Count()) {
        Table& table = m_tables[index];
        std::swap(table.m_name, renamed.m_name);
        std::swap(table.m_lowered, renamed.m_lowered);
        table.m_entry = table.m_entry == &info ? &info : nullptr;
    }
    std::swap(info.m_name, name);
    const auto text = m_queries.find(info.GetSql());
    Queries::node_type query =
        text == m_queries.end() ? Queries::node_type() : text->second.extract(place->first);
    auto node = m_entries.extract(place);
    node.key() = std::move(entryKey);
    const auto placed = m_entries.insert(std::move(node));
    if (placed.inserted) {
        if (!query.empty()) {
            query.key() = std::move(queryKey);
            text->second.insert(std::move(query));
        }
        return;
    }
    // The entry is gone, and queries that depended on it have no source.
    Forget(info);
    if (!query.empty() && text->second.empty()) {
        m_queries.erase(text);
    }
    for (auto& [key, entry] : m_entries) {
        if (entry.GetRelated() == &info) {
            entry.SetRelated(nullptr);
        }
    }
}

DbTableInfo* Registry::Find(const CString& name) {
    const auto found = m_entries.find(Lowered(name));
    return found == m_entries.end() ? nullptr : &found->second;
}

// The first, by lowered name, of the entries that show the contents.
DbTableInfo* Registry::Find(const DbTableData* data) {
    const auto use = m_uses.find(data);
    if (use != m_uses.end() && use->second.m_tables == 1 && use->second.m_entry != nullptr &&
        use->second.m_entry->GetData() == data) {
        return use->second.m_entry;
    }
    const auto found = std::find_if(m_entries.begin(), m_entries.end(),
                                    [&](const auto& entry) { return entry.second.GetData() == data; });
    return found == m_entries.end() ? nullptr : &found->second;
}

DbTableInfo* Registry::FindQuery(const CString& sql) {
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

bool Registry::IsShared(const DbTableInfo& info) const {
    return UsesOf(info.GetDescr()) > 1 || UsesOf(info.GetData()) > 1;
}

void Registry::Renew(DbTableInfo& query, DbTableInfo& source) {
    std::vector<std::unique_ptr<DbFilter>> filters = query.GetDescr()->TakeAllFilters();
    {
        const Rollback giveBack([&] { query.GetDescr()->GiveAllFilters(std::move(filters)); });
        query.Clear();
    }
    query.SetRelated(&source);
}

std::vector<DbTableData*> Registry::DataOf(const DbTableDescr& descr) const {
    std::vector<DbTableData*> found;
    const auto followers = m_followers.find(&descr);
    if (followers == m_followers.end()) {
        return found;
    }
    if (followers->second.size() == 1) {
        return followers->second;
    }
    std::unordered_set<const DbTableData*> seen;
    for (DbTableData* const data : followers->second) {
        if (seen.insert(data).second) {
            found.push_back(data);
        }
    }
    return found;
}

void Registry::RenumberFrom(std::size_t index) {
    for (; index < Count(); ++index) {
        const Table& table = m_tables[index];
        if (table.m_entry != nullptr) {
            table.m_entry->SetIndex(index);
            continue;
        }
        const auto entry = m_entries.find(table.m_lowered);
        if (entry != m_entries.end()) {
            entry->second.SetIndex(index);
        }
    }
}

}  // namespace quillet
