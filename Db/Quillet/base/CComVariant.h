// Smart wrappers of automation types: a variant, a system string and an interface pointer that clean up after
// themselves.
#pragma once

#include <new>
#include <type_traits>
#include <utility>

#include "Quillet/base/CString.h"
#include "Quillet/platform/Automation.h"

namespace quillet {

class CComVariant;

// Passes on the result of a platform function. Throws std::bad_alloc for E_OUTOFMEMORY, so that no caller
// mistakes it for a refusal.
inline HRESULT MemoryChecked(HRESULT result) {
    if (result == E_OUTOFMEMORY) {
        throw std::bad_alloc();
    }
    return result;
}

// Any type of number, or a boolean.
template <typename Value>
concept PlainNumber = std::is_arithmetic_v<Value> && !SingleCharacter<Value>;

// Equal if both are null, or of one type and equal by Order.
QUILLET_API bool operator==(const CComVariant& left, const CComVariant& right);
// Less by Order; false if either side is null or the types have no order.
QUILLET_API bool operator<(const CComVariant& left, const CComVariant& right);

// A VARIANT that owns what it holds. Conversions use the user's default locale. Out of memory, every member
// throws std::bad_alloc and leaves the value as it was.
class QUILLET_API CComVariant : public VARIANT {
public:
    CComVariant() : VARIANT() {}
    // A deep copy.
    CComVariant(const VARIANT& other) : VARIANT() { CopyFrom(other); }
    CComVariant(const CComVariant& other) : VARIANT() { CopyFrom(other); }
    CComVariant(CComVariant&& other) noexcept : VARIANT(other) { other.Reset(); }
    // A boolean, an integer or a float of the C++ type's size and sign. A single character is none of them.
    template <PlainNumber Number>
    CComVariant(Number number) : VARIANT() {
        SetNumber(number);
    }
    CComVariant(const CString& text);
    CComVariant(const WCHAR* text) : CComVariant(CString(text)) {}
    // UTF-8.
    CComVariant(const char* text) : CComVariant(CString(text)) {}
    // UTF-8, or UTF-16 in a string of wide characters.
    template <typename Unit,
              typename = std::enable_if_t<std::is_constructible_v<CString, std::basic_string<Unit>>>>
    CComVariant(const std::basic_string<Unit>& text) : CComVariant(CString(text)) {}
    // Adds a reference.
    CComVariant(IDispatch* dispatch);
    ~CComVariant() { Clear(); }

    CComVariant& operator=(const CComVariant& other);
    CComVariant& operator=(CComVariant&& other) noexcept;

    // Back to empty.
    HRESULT Clear() {
        if (!OwnsMemory()) {
            Reset();
            return S_OK;
        }
        const HRESULT result = VariantClear(this);
        if (SUCCEEDED(result)) {
            Reset();
        }
        return result;
    }

    // Whether the value holds a string, an array or an interface, and not just bits.
    bool OwnsMemory() const { return vt > VT_DATE && vt != VT_BOOL; }

    // Converts in place; on failure the value stays as it was.
    HRESULT ChangeType(VARTYPE type) { return vt == type ? S_OK : ConvertTo(type); }

    // The text of a string; empty for every other type.
    WideView Text() const {
        return vt == VT_BSTR && bstrVal != nullptr ? WideView(bstrVal, SysStringLen(bstrVal)) : WideView();
    }

    // Replaces the value by a string.
    void SetText(WideView text);

    // Replaces the value by a byte array with the given lower bound.
    void SetBytes(const BYTE* bytes, ULONG count, LONG lowerBound);

    template <typename Number>
    void SetNumber(Number number) {
        Clear();
        if constexpr (std::is_same_v<Number, bool>) {
            vt = VT_BOOL;
            boolVal = number ? VARIANT_TRUE : VARIANT_FALSE;
        } else if constexpr (std::is_same_v<Number, float>) {
            vt = VT_R4;
            fltVal = number;
        } else if constexpr (std::is_floating_point_v<Number>) {
            vt = VT_R8;
            dblVal = static_cast<double>(number);
        } else if constexpr (sizeof(Number) == 1) {
            vt = std::is_signed_v<Number> ? VT_I1 : VT_UI1;
            bVal = static_cast<BYTE>(number);
        } else if constexpr (sizeof(Number) == 2) {
            vt = std::is_signed_v<Number> ? VT_I2 : VT_UI2;
            iVal = static_cast<SHORT>(number);
        } else if constexpr (sizeof(Number) == 4) {
            vt = std::is_signed_v<Number> ? VT_I4 : VT_UI4;
            lVal = static_cast<LONG>(number);
        } else {
            vt = std::is_signed_v<Number> ? VT_I8 : VT_UI8;
            llVal = static_cast<LONGLONG>(number);
        }
    }

    friend bool operator!=(const CComVariant& left, const CComVariant& right) { return !(left == right); }
    friend bool operator>(const CComVariant& left, const CComVariant& right) { return right < left; }

private:
    void Reset() {
        vt = VT_EMPTY;
        llVal = 0;
    }
    // Whether a copy of the bits is a copy of the value.
    static bool IsBits(const VARIANT& value) { return value.vt <= VT_R8 || value.vt == VT_BOOL; }
    // The value must be empty, and stays empty if the platform does not know the other's type.
    void CopyFrom(const VARIANT& other) {
        if (IsBits(other)) {
            static_cast<VARIANT&>(*this) = other;
        } else {
            // The SDK takes the source without const but only reads it.
            MemoryChecked(VariantCopy(this, const_cast<VARIANT*>(&other)));
        }
    }
    HRESULT ConvertTo(VARTYPE type);
};

// A copy of the value that a reference refers to; any other value as it is. Empty for a null reference and
// for one of an unknown kind.
QUILLET_API CComVariant Dereferenced(const CComVariant& value);

// The platform's comparison of two values: VARCMP_LT, VARCMP_EQ, VARCMP_GT, VARCMP_NULL if either side is
// null, or a failure for types that have no order. Unsigned and one-byte integers of one type, which the
// platform does not compare, are ordered as numbers.
QUILLET_API HRESULT Order(const CComVariant& left, const CComVariant& right);

// Equal as text ignoring case, when left is a string; otherwise operator==. This is how cells are found
// equal.
bool EqualIgnoringCase(const CComVariant& left, const CComVariant& right);

// A reference-counted interface pointer.
template <typename Interface>
class CComPtr {
public:
    CComPtr() = default;
    CComPtr(Interface* pointer) : m_pointer(pointer) {
        if (m_pointer != nullptr) {
            m_pointer->AddRef();
        }
    }
    CComPtr(const CComPtr& other) : CComPtr(other.m_pointer) {}
    CComPtr(CComPtr&& other) noexcept : m_pointer(std::exchange(other.m_pointer, nullptr)) {}
    ~CComPtr() {
        if (m_pointer != nullptr) {
            m_pointer->Release();
        }
    }
    CComPtr& operator=(CComPtr other) noexcept {
        std::swap(m_pointer, other.m_pointer);
        return *this;
    }

    // Takes over a reference that the caller holds.
    void Attach(Interface* pointer) {
        CComPtr old;
        old.m_pointer = std::exchange(m_pointer, pointer);
    }

    Interface* Get() const { return m_pointer; }
    Interface* operator->() const { return m_pointer; }
    explicit operator bool() const { return m_pointer != nullptr; }

private:
    Interface* m_pointer = nullptr;
};

}  // namespace quillet

#if !defined(QUILLET_NO_GLOBAL_NAMES)
using quillet::CComPtr;
using quillet::CComVariant;
#endif
