#include "Quillet/automation/InvokeArguments.h"

#include "Quillet/automation/Results.h"

namespace quillet::automation {

namespace {

bool IsMissing(const VARIANT& value) {
    return value.vt == VT_ERROR && value.scode == DISP_E_PARAMNOTFOUND;
}

bool IsReference(const VARIANT& value) {
    return (value.vt & VT_BYREF) != 0;
}

// A variable of another type stays unchanged. The reference was checked when its value was read, so it is not
// null.
void StoreThrough(const VARIANT& reference, const CComVariant& value) {
    const auto type = static_cast<VARTYPE>(reference.vt & ~VT_BYREF);
    if (type == VT_VARIANT && IsReference(*reference.pvarVal)) {
        // The variable refers to another one.
        StoreThrough(*reference.pvarVal, value);
    } else if (type == VT_VARIANT) {
        Check(VariantCopy(reference.pvarVal, const_cast<CComVariant*>(&value)));
    } else if (type == VT_BSTR && value.vt == VT_BSTR) {
        BSTR const copy = NewBStr(CString(value.Text()));
        SysFreeString(*reference.pbstrVal);
        *reference.pbstrVal = copy;
    }
}

}  // namespace

InvokeArguments::InvokeArguments(const Member& member, const DISPPARAMS& given)
    : m_member(member), m_given(given) {
}

int InvokeArguments::PositionOf(UINT parameter) const {
    const bool isPut = m_member.m_kind != INVOKE_FUNC && m_member.m_kind != INVOKE_PROPERTYGET;
    const auto last = static_cast<UINT>(m_member.m_parameters.size() - 1);
    for (UINT i = 0; i < m_given.cNamedArgs; ++i) {
        const DISPID name = m_given.rgdispidNamedArgs[i];
        if (name == static_cast<DISPID>(parameter) ||
            (name == DISPID_PROPERTYPUT && isPut && parameter == last)) {
            return static_cast<int>(i);
        }
    }
    const UINT unnamed = m_given.cArgs - m_given.cNamedArgs;
    return parameter < unnamed ? static_cast<int>(m_given.cArgs - 1 - parameter) : -1;
}

HRESULT InvokeArguments::Convert(UINT& wrong) {
    const auto count = static_cast<UINT>(m_member.m_parameters.size());
    if ((m_given.cArgs != 0 && m_given.rgvarg == nullptr) ||
        (m_given.cNamedArgs != 0 && m_given.rgdispidNamedArgs == nullptr)) {
        return E_INVALIDARG;
    }
    if (m_given.cArgs > count || m_given.cNamedArgs > m_given.cArgs) {
        return DISP_E_BADPARAMCOUNT;
    }
    m_values.resize(count);
    m_sent.resize(count);
    m_originals.resize(count);
    UINT used = 0;
    for (UINT i = 0; i < count; ++i) {
        const Parameter& parameter = m_member.m_parameters[i];
        const int position = PositionOf(i);
        CComVariant& value = m_values[i];
        if (position >= 0) {
            value = GivenValue(m_given.rgvarg[position]);
            ++used;
        }
        if (parameter.m_isReference && (position < 0 || IsMissing(value) || value.vt == VT_NULL)) {
            // A null or omitted argument begins as an empty text.
            value.Clear();
        } else if (position < 0) {
            return DISP_E_BADPARAMCOUNT;
        } else if (parameter.m_type != VT_VARIANT && IsMissing(value)) {
            wrong = static_cast<UINT>(position);
            return DISP_E_PARAMNOTOPTIONAL;
        }
        if (parameter.m_type != VT_VARIANT) {
            const HRESULT converted = value.ChangeType(parameter.m_type);
            if (FAILED(converted)) {
                wrong = position < 0 ? 0 : static_cast<UINT>(position);
                return converted;
            }
        }
        VARIANTARG& sent = m_sent[count - 1 - i];
        sent = value;
        if (parameter.m_isReference) {
            sent.vt = static_cast<VARTYPE>(value.vt | VT_BYREF);
            // The values of all types begin at the same address.
            sent.byref = &value.llVal;
            m_originals[i] = value.llVal;
        }
    }
    if (used != m_given.cArgs) {
        return DISP_E_PARAMNOTFOUND;
    }
    const bool isPut = m_member.m_kind != INVOKE_FUNC && m_member.m_kind != INVOKE_PROPERTYGET;
    m_parameters = {m_sent.data(), isPut ? &m_put : nullptr, count, isPut ? 1U : 0U};
    return S_OK;
}

void InvokeArguments::WriteBack() {
    for (UINT i = 0; i < m_member.m_parameters.size(); ++i) {
        const int position = PositionOf(i);
        if (!m_member.m_parameters[i].m_isReference || position < 0 || m_values[i].llVal == m_originals[i]) {
            continue;
        }
        const VARIANT& given = m_given.rgvarg[position];
        if (IsReference(given)) {
            StoreThrough(given, m_values[i]);
        }
    }
}

}  // namespace quillet::automation
