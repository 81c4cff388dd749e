#include "Quillet/xml/LateBound.h"

#include <iterator>
#include <vector>

#include "Quillet/xml/Node.h"

namespace quillet::xml {

namespace {

// Asking an object for its value would be one more call into it, which may never come back.
bool Convert(CComVariant& value, VARTYPE type) {
    return value.vt != VT_DISPATCH && SUCCEEDED(value.ChangeType(type));
}

}  // namespace

LateMember::LateMember(IDispatch* object, const OLECHAR* name) : m_object(object), m_name(name) {
    // Automation takes the name without const but only reads it.
    LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
    if (FAILED(
            Guarded([&] { return object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &m_id); }))) {
        throw DomError{"The document object model has no member '" + CString(name).ToUtf8() + "'"};
    }
}

CComVariant LateMember::Get(std::initializer_list<CComVariant> arguments) const {
    return Invoke(DISPATCH_PROPERTYGET | DISPATCH_METHOD, arguments);
}

CComVariant LateMember::Call(std::initializer_list<CComVariant> arguments) const {
    return Invoke(DISPATCH_METHOD, arguments);
}

CComVariant LateMember::Invoke(WORD flags, std::initializer_list<CComVariant> arguments) const {
    // The last argument comes first. These are shallow copies: the arguments own what the variants hold.
    std::vector<VARIANTARG> reversed(std::make_reverse_iterator(arguments.end()),
                                     std::make_reverse_iterator(arguments.begin()));
    DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    CComVariant result;
    if (FAILED(Guarded([&] {
            return m_object->Invoke(m_id, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters, &result, nullptr,
                                    nullptr);
        }))) {
        throw DomError{"The document object model refused '" + CString(m_name).ToUtf8() + "'"};
    }
    return result;
}

CComVariant GetProperty(IDispatch* object, const OLECHAR* name) {
    return LateMember(object, name).Get();
}

CComVariant CallMethod(IDispatch* object, const OLECHAR* name, std::initializer_list<CComVariant> arguments) {
    return LateMember(object, name).Call(arguments);
}

CComPtr<IDispatch> AsDispatch(const CComVariant& value) {
    return value.vt == VT_DISPATCH ? CComPtr<IDispatch>(value.pdispVal) : CComPtr<IDispatch>();
}

LONG AsLong(const CComVariant& value) {
    CComVariant number = value;
    return Convert(number, VT_I4) ? number.lVal : 0;
}

std::string AsUtf8(const CComVariant& value) {
    std::string utf8;
    CComVariant text = value;
    if (Convert(text, VT_BSTR)) {
        AppendUtf8(text.Text(), utf8);
    }
    return utf8;
}

}  // namespace quillet::xml
