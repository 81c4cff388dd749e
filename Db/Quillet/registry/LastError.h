// Why the last operation of a kind failed.
#pragma once

#include "Quillet/base/CString.h"

namespace quillet {

// Can be set when there is no memory for a text.
class LastError {
public:
    static constexpr const char* OutOfMemory = "out of memory";

    void Clear() noexcept;
    void Set(const CString& text) noexcept;
    // The exception that is being handled; nothing is deleted.
    void SetToCurrentException() noexcept;

    bool IsOutOfMemory() const { return m_isOutOfMemory; }
    bool IsSet() const { return m_isOutOfMemory || !m_text.IsEmpty(); }
    // Empty while nothing is set.
    CString Text() const;

private:
    CString m_text;
    bool m_isOutOfMemory = false;
};

}  // namespace quillet
