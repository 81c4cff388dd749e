#include "xml/LateBound.h"

#include <algorithm>
#include <vector>

#include "xml/Node.h"

namespace quillet::xml {

namespace {

CComVariant Invoke(IDispatch* object, const CString& name, WORD flags,
                   std::initializer_list<CComVariant> arguments) {
    WideString memberName(name.View());
    LPOLESTR memberNames[] = {memberName.data()};
    DISPID member = DISPID_UNKNOWN;
    if (FAILED(object->GetIDsOfNames(IID_NULL, memberNames, 1, LOCALE_USER_DEFAULT, &member))) {
        throw DomError{"The document object model has no member '" + name.ToUtf8() + "'"};
    }
    // Automation takes the last argument first.
    std::vector<CComVariant> reversed(arguments);
    std::reverse(reversed.begin(), reversed.end());
    std::vector<VARIANTARG> raw(reversed.begin(), reversed.end());
    DISPPARAMS parameters{raw.data(), nullptr, static_cast<UINT>(raw.size()), 0};
    CComVariant result;
    if (FAILED(object->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters, &result, nullptr,
                              nullptr))) {
        throw DomError{"The document object model refused '" + name.ToUtf8() + "'"};
    }
    return result;
}

}  // namespace

CComVariant GetProperty(IDispatch* object, const CString& name,
                        std::initializer_list<CComVariant> arguments) {
    return Invoke(object, name, DISPATCH_PROPERTYGET | DISPATCH_METHOD, arguments);
}

CComVariant CallMethod(IDispatch* object, const CString& name, std::initializer_list<CComVariant> arguments) {
    return Invoke(object, name, DISPATCH_METHOD, arguments);
}

CComPtr<IDispatch> AsDispatch(const CComVariant& value) {
    return value.vt == VT_DISPATCH ? CComPtr<IDispatch>(value.pdispVal) : CComPtr<IDispatch>();
}

std::string AsUtf8(const CComVariant& value) {
    CComVariant text = value;
    return SUCCEEDED(text.ChangeType(VT_BSTR)) ? CString(text.Text()).ToUtf8() : std::string();
}

}  // namespace quillet::xml
