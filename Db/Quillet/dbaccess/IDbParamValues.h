// Named double parameters.
#pragma once

#include "base/CString.h"

class QUILLET_API IDbParamValues {
public:
    IDbParamValues() = default;
    virtual ~IDbParamValues() = default;

    // Stores the value under the name; returns this object.
    virtual IDbParamValues& SetParam(const quillet::CString& name, double value) = 0;
    // False for an unknown name; value stays as it was then.
    virtual bool GetParam(const quillet::CString& name, double& value) = 0;

protected:
    IDbParamValues(const IDbParamValues&) = default;
    IDbParamValues& operator=(const IDbParamValues&) = default;
};
