// Late-bound calls: members of an automation object by name.
#pragma once

#include <initializer_list>
#include <string>

#include "Quillet/base/CComVariant.h"
#include "Quillet/base/CException.h"

namespace quillet::xml {

// Calls into an object of somebody else, which may throw although no interface of automation allows it: that
// is a failure too.
template <typename Call>
HRESULT Guarded(const Call& call) {
    try {
        return call();
    } catch (CException* exception) {
        exception->Delete();
    } catch (...) {
        // Whoever called learns of it by the failure.
    }
    return E_FAIL;
}

// A member of one object, found by its name once for any number of calls. Objects of one class need not agree
// about the ids of their members, so it serves no other object. It counts no reference: whoever makes it
// keeps the object.
class LateMember {
public:
    // Throws DomError where the object has no such member, or throws itself; the same for both calls.
    LateMember(IDispatch* object, const OLECHAR* name);

    // Reads a property; arguments stand in the order of the call. Throws DomError when the object refuses.
    CComVariant Get(std::initializer_list<CComVariant> arguments = {}) const;
    // Calls a method; throws DomError when the object refuses.
    CComVariant Call(std::initializer_list<CComVariant> arguments) const;

private:
    CComVariant Invoke(WORD flags, std::initializer_list<CComVariant> arguments) const;

    IDispatch* m_object;
    const OLECHAR* m_name;
    DISPID m_id = DISPID_UNKNOWN;
};

// A single call; throws DomError where the object has no such member or refuses.
CComVariant GetProperty(IDispatch* object, const OLECHAR* name);
CComVariant CallMethod(IDispatch* object, const OLECHAR* name, std::initializer_list<CComVariant> arguments);

// The interface that a result holds; null for every other result.
CComPtr<IDispatch> AsDispatch(const CComVariant& value);

// The number that a result holds; 0 where it has none.
LONG AsLong(const CComVariant& value);

// The text of a result in UTF-8; empty where it has none.
std::string AsUtf8(const CComVariant& value);

}  // namespace quillet::xml
