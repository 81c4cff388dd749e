// Late-bound calls: members of an automation object by name.
#pragma once

#include <initializer_list>
#include <string>

#include "base/CComVariant.h"

namespace quillet::xml {

// Reads a property; arguments stand in the order of the call. Throws DomError when the object refuses.
CComVariant GetProperty(IDispatch* object, const CString& name,
                        std::initializer_list<CComVariant> arguments = {});

// Calls a method; throws DomError when the object refuses.
CComVariant CallMethod(IDispatch* object, const CString& name, std::initializer_list<CComVariant> arguments);

// The interface that a result holds; null for every other result.
CComPtr<IDispatch> AsDispatch(const CComVariant& value);

// The text of a result in UTF-8; empty where it has none.
std::string AsUtf8(const CComVariant& value);

}  // namespace quillet::xml
