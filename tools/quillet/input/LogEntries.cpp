#include "input/LogEntries.h"

#include <algorithm>

namespace quillet::tool {

using Kind = DbLogEntry::Kind;

bool IsFault(const DbLogEntry& entry) {
    return entry.m_kind != Kind::Report && !IsOfQuery(entry);
}

bool IsOfQuery(const DbLogEntry& entry) {
    return entry.m_kind == Kind::QueryRead || entry.m_kind == Kind::QueryReport ||
           entry.m_kind == Kind::QueryFault;
}

bool IsQueryRead(const std::vector<DbLogEntry>& entries) {
    return std::any_of(entries.begin(), entries.end(),
                       [](const DbLogEntry& entry) { return entry.m_kind == Kind::QueryRead; });
}

std::string QueryComplaint(const std::vector<DbLogEntry>& entries) {
    std::string complaint;
    for (const DbLogEntry& entry : entries) {
        if (entry.m_kind != Kind::QueryFault) {
            continue;
        }
        complaint += complaint.empty() ? entry.m_text.ToUtf8() : "; " + entry.Message().ToUtf8();
    }
    // The analyser leaves brackets to the evaluation, which says nothing.
    return complaint.empty() ? "the brackets of the conditions don't match" : complaint;
}

}  // namespace quillet::tool
