// The arguments of a call by name, as the type information takes them.
#pragma once

#include <vector>

#include "Quillet/automation/TypeInformation.h"
#include "Quillet/base/CComVariant.h"

namespace quillet::automation {

// Script hosts send references to variants where a value is meant, numbers of any type for an index, a value
// for a string that the method changes, and nothing at all for what can be left out. Each argument is brought
// to the type of its parameter before the call; what the method changed goes back afterwards to where the
// caller has it, in the type that the caller has there.
class InvokeArguments {
public:
    InvokeArguments(const Member& member, const DISPPARAMS& given);
    InvokeArguments(const InvokeArguments&) = delete;
    InvokeArguments& operator=(const InvokeArguments&) = delete;

    // A failure of automation (DISP_E_...) where the arguments don't fit, or are more than there are places
    // for; Failure is thrown for what is no value. wrong receives the position among those given
    // of the one that can't be converted.
    HRESULT Convert(UINT& wrong);
    // What was converted; lives as long as this object.
    DISPPARAMS& Get() { return m_parameters; }
    // What the method left as it was stays with the caller as it is.
    void WriteBack();

private:
    // The argument given for a parameter, by its position among those given; -1 where there is none.
    int PositionOf(UINT parameter) const;

    const Member& m_member;
    const DISPPARAMS& m_given;
    // By parameter.
    std::vector<CComVariant> m_values;
    // What the call takes, in reverse: the values themselves, or references to them.
    std::vector<VARIANTARG> m_sent;
    // By parameter: what stood where the method may change it.
    std::vector<LONGLONG> m_before;
    DISPPARAMS m_parameters{};
    DISPID m_put = DISPID_PROPERTYPUT;
};

}  // namespace quillet::automation
