// What the type library says of an interface, in the form that calls by name need.
#pragma once

#include <memory>
#include <vector>

#include "Quillet/base/CComVariant.h"
#include "Quillet/platform/Automation.h"

namespace quillet::automation {

// A parameter as its caller sees it.
struct Parameter {
    // A variant type; VT_VARIANT for any.
    VARTYPE m_type = VT_EMPTY;
    // Whether the method changes it.
    bool m_isReference = false;
};

struct Member {
    DISPID m_id = DISPID_UNKNOWN;
    INVOKEKIND m_kind = INVOKE_FUNC;
    // Without the result.
    std::vector<Parameter> m_parameters;
};

// May be used from any thread.
class TypeInformation {
public:
    explicit TypeInformation(CComPtr<ITypeInfo> information);

    // The information on an interface of the library, read once. Throws MethodFailure if the library's
    // resource can't be read.
    static std::shared_ptr<const TypeInformation> Of(REFIID interfaceId);
    // Forgets what was read.
    static void ForgetAll();

    ITypeInfo* Get() const { return m_information.Get(); }
    // The member that a call with these flags (DISPATCH_METHOD and the like) means; null if there is none.
    const Member* Find(DISPID id, WORD flags) const;

private:
    CComPtr<ITypeInfo> m_information;
    std::vector<Member> m_members;
};

// The type library in the library's own file. Throws MethodFailure.
CComPtr<ITypeLib> OwnTypeLibrary();

}  // namespace quillet::automation
