// The arguments of a call by name, as the type information takes them.
#pragma once

#include <vector>

#include "Quillet/automation/TypeInformation.h"
#include "Quillet/base/CComVariant.h"

namespace quillet::automation {

// Script hosts pass references to variants instead of values, numbers of any type for an index, a value for a
// string that the method changes, and nothing at all for optional arguments. Each argument is converted to
// the type of its parameter before the call. What the method changed is written back to the caller's variable
// afterwards, in the type of that variable.
class InvokeArguments {
public:
    InvokeArguments(const Member& member, const DISPPARAMS& given);
    InvokeArguments(const InvokeArguments&) = delete;
    InvokeArguments& operator=(const InvokeArguments&) = delete;

    // A failure of automation (DISP_E_...) if the arguments don't fit or are too many; throws MethodFailure
    // for an argument that is not a value. wrong receives the position, among those given, of the one that
    // can't be converted.
    HRESULT Convert(UINT& wrong);
    // What was converted; lives as long as this object.
    DISPPARAMS& Get() { return m_parameters; }
    // An argument that the method did not change is not written back.
    void WriteBack();

private:
    // The argument given for a parameter, by its position among those given; -1 if there is none.
    int PositionOf(UINT parameter) const;

    const Member& m_member;
    const DISPPARAMS& m_given;
    // By parameter.
    std::vector<CComVariant> m_values;
    // What the call takes, in reverse: the values themselves, or references to them.
    std::vector<VARIANTARG> m_sent;
    // By parameter: the value before the call, where the method may change it.
    std::vector<LONGLONG> m_originals;
    DISPPARAMS m_parameters{};
    DISPID m_put = DISPID_PROPERTYPUT;
};

}  // namespace quillet::automation
