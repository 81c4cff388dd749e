// Why the last operation of a kind failed.
#pragma once

#include "Quillet/Db_LogEntry.h"

namespace quillet {

// Can be set even if there is no memory for a text.
class LastError {
public:
    static constexpr const char* OutOfMemory = "out of memory";

    // The kind of what has no other.
    explicit LastError(DbLogEntry::Kind kind) : m_kind(kind) {}

    void Clear() noexcept;
    void Set(const DbLogEntry& entry) noexcept;
    void Set(const CString& text) noexcept;
    // Takes the text of the exception that is being handled, and does not delete it.
    void SetToCurrentException() noexcept;

    bool IsOutOfMemory() const { return m_isOutOfMemory; }
    bool IsSet() const { return m_isOutOfMemory || !m_entry.m_text.IsEmpty(); }
    // The text is empty while nothing is set.
    DbLogEntry Entry() const;
    CString Text() const { return Entry().m_text; }

private:
    const DbLogEntry::Kind m_kind;
    DbLogEntry m_entry;
    bool m_isOutOfMemory = false;
};

}  // namespace quillet
