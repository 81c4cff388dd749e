// What the tests of the automation server share.
#pragma once

#include <gtest/gtest.h>
#include <objbase.h>

#include <string>

#include "Quillet/base/CComVariant.h"

namespace quillet::test {

// The address that a call writes a counted pointer to; the smart pointer takes ownership after the call.
template <typename Interface>
class Receiver {
public:
    explicit Receiver(CComPtr<Interface>& target) : m_target(target) {}
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;
    ~Receiver() { m_target.Attach(m_received); }

    operator Interface**() { return &m_received; }
    operator void**() { return reinterpret_cast<void**>(&m_received); }

private:
    CComPtr<Interface>& m_target;
    Interface* m_received = nullptr;
};

template <typename Interface>
Receiver<Interface> Into(CComPtr<Interface>& target) {
    return Receiver<Interface>(target);
}

// Takes the string over.
inline std::string TakeText(BSTR text) {
    const std::string taken = text == nullptr ? "" : CString(text).ToUtf8();
    SysFreeString(text);
    return taken;
}

inline std::string GuidText(const GUID& id) {
    OLECHAR text[40] = {};
    StringFromGUID2(id, text, 40);
    return CString(text).ToUtf8();
}

}  // namespace quillet::test
