// What a file holds and the model that was read from it does not.
#pragma once

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "Quillet/Db_LogEntry.h"

class DbItem;

namespace quillet {

// Reading notes here what it leaves out, so that the file is not overwritten without it. Lookups take time in
// the number of omissions, of which a sound file has none.
class Omissions {
public:
    // The entry says in one line what is left out; part, where one is given, is the structure or the rows of
    // a table that lack something.
    void Note(DbLogEntry entry, const DbItem* part = nullptr) { m_list.emplace_back(part, std::move(entry)); }
    void Note(const CString& what) { Note({DbLogEntry::Kind::ReadFault, what}); }
    // A program deletes the contents of the part, and with them its omissions.
    void Forget(const DbItem* part) {
        m_list.erase(std::remove_if(m_list.begin(), m_list.end(),
                                    [&](const auto& omission) { return omission.first == part; }),
                     m_list.end());
    }
    void Clear() { m_list.clear(); }
    // Takes over what tables lack.
    void AppendThoseOfTables(const Omissions& other) {
        std::copy_if(other.m_list.begin(), other.m_list.end(), std::back_inserter(m_list),
                     [](const auto& omission) { return omission.first != nullptr; });
    }

    bool IsEmpty() const { return m_list.empty(); }
    // The first that was noted; without text if there is none.
    DbLogEntry First() const { return m_list.empty() ? DbLogEntry() : m_list.front().second; }

private:
    std::vector<std::pair<const DbItem*, DbLogEntry>> m_list;
};

}  // namespace quillet
