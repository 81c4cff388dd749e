// Late-bound calls: members of an automation object by name.
#pragma once

#include <initializer_list>
#include <string>

#include "Quillet/base/CComVariant.h"
#include "Quillet/base/CException.h"

namespace quillet::xml {

// Calls into a foreign object, which may throw although automation does not allow it. An exception is a
// failure too.
template <typename Call>
HRESULT Guarded(const Call& call) {
    try {
        return call();
    } catch (CException* exception) {
        exception->Delete();
    } catch (...) {
        // The caller learns of it by the failure.
    }
    return E_FAIL;
}

// A member of one object, found by its name once for any number of calls. Objects of one class need not agree
// about the ids of their members, so it must not be used on another object. It holds no reference: its user
// keeps the object alive.
class LateMember {
public:
    // Throws DomError if the object has no such member or throws an exception itself. So do Get and Call.
    LateMember(IDispatch* object, const OLECHAR* name);

    // Reads a property; the arguments are in the order of the call. Throws DomError when the object refuses.
    CComVariant Get(std::initializer_list<CComVariant> arguments = {}) const;
    // Calls a method; throws DomError when the object refuses.
    CComVariant Call(std::initializer_list<CComVariant> arguments) const;

private:
    CComVariant Invoke(WORD flags, std::initializer_list<CComVariant> arguments) const;

    IDispatch* m_object;
    const OLECHAR* m_name;
    DISPID m_id = DISPID_UNKNOWN;
};

// A single call; throws DomError if the object has no such member or refuses.
CComVariant GetProperty(IDispatch* object, const OLECHAR* name);
CComVariant CallMethod(IDispatch* object, const OLECHAR* name, std::initializer_list<CComVariant> arguments);

// The interface that a result holds; null for every other result.
CComPtr<IDispatch> AsDispatch(const CComVariant& value);

// The number that a result holds; 0 if it has none.
LONG AsLong(const CComVariant& value);

// The text of a result in UTF-8; empty if it has none.
std::string AsUtf8(const CComVariant& value);

}  // namespace quillet::xml
