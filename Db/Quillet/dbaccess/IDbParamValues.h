// Named double parameters.
#pragma once

#include "Quillet/base/CString.h"

// A host that implements it overrides the two virtual members. If its own callers pass other names than wide
// text, it adds "using IDbParamValues::SetParam;" and "using IDbParamValues::GetParam;".
class QUILLET_API IDbParamValues {
public:
    IDbParamValues() = default;
    virtual ~IDbParamValues() = default;

    // Stores the value under the name, which is empty for null; returns this object.
    virtual IDbParamValues& SetParam(const WCHAR* name, double value) = 0;
    // False for an unknown name; value then stays unchanged.
    virtual bool GetParam(const WCHAR* name, double& value) = 0;

    // The same for a name in any other form of text; narrow text is UTF-8.
    IDbParamValues& SetParam(const quillet::CString& name, double value) {
        return SetParam(name.GetString(), value);
    }
    bool GetParam(const quillet::CString& name, double& value) { return GetParam(name.GetString(), value); }

protected:
    IDbParamValues(const IDbParamValues&) = default;
    IDbParamValues& operator=(const IDbParamValues&) = default;
};
