// Why the last operation of a kind failed.
#pragma once

#include "Quillet/base/CString.h"

namespace quillet {

// Can be set even if there is no memory for a text.
class LastError {
public:
    static constexpr const char* OutOfMemory = "out of memory";

    void Clear() noexcept;
    void Set(const CString& text) noexcept;
    // Takes the text of the exception that is being handled, and does not delete it.
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
