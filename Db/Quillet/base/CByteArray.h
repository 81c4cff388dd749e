// A growable array of bytes with the customary members.
#pragma once

#include <cstddef>
#include <vector>

#include "Quillet/platform/Automation.h"

namespace quillet {

// A value type. Positions count from 0; out of range, reading gives 0 and writing has no effect.
class QUILLET_API CByteArray {
public:
    CByteArray() = default;
    // A copy of count bytes; empty if bytes is null.
    CByteArray(const BYTE* bytes, std::size_t count) {
        if (bytes != nullptr) {
            m_bytes.assign(bytes, bytes + count);
        }
    }

    int GetSize() const { return static_cast<int>(m_bytes.size()); }
    bool IsEmpty() const { return m_bytes.empty(); }
    // Truncates the array, or extends it with zeros. A negative size gives an empty array.
    void SetSize(int size) { m_bytes.resize(size < 0 ? 0 : static_cast<std::size_t>(size)); }
    void RemoveAll() { m_bytes.clear(); }
    void Add(BYTE byte) { m_bytes.push_back(byte); }

    // The bytes; valid until the size changes.
    BYTE* GetData() { return m_bytes.data(); }
    const BYTE* GetData() const { return m_bytes.data(); }

    BYTE operator[](int position) const { return Holds(position) ? m_bytes[At(position)] : BYTE{0}; }
    BYTE GetAt(int position) const { return (*this)[position]; }
    void SetAt(int position, BYTE byte) {
        if (Holds(position)) {
            m_bytes[At(position)] = byte;
        }
    }

    friend bool operator==(const CByteArray&, const CByteArray&) = default;

private:
    static std::size_t At(int position) { return static_cast<std::size_t>(position); }
    bool Holds(int position) const { return position >= 0 && At(position) < m_bytes.size(); }

    std::vector<BYTE> m_bytes;
};

}  // namespace quillet

#if !defined(QUILLET_NO_GLOBAL_NAMES)
using quillet::CByteArray;
#endif
