// The units and the material of a catalog, for automation clients.
#pragma once

#include "Quillet/automation/FirstRowObject.h"

namespace quillet::automation {

class CDbProperties final : public FirstRowObject<IDbProperties> {
public:
    explicit CDbProperties(IUnknown* outer) : FirstRowObject(outer) {}

    HRESULT STDMETHODCALLTYPE get_Units(BSTR* pVal) override { return GiveText(UnitsField, pVal); }
    HRESULT STDMETHODCALLTYPE put_Units(BSTR newVal) override { return TakeText(UnitsField, newVal); }
    HRESULT STDMETHODCALLTYPE get_Material(BSTR* pVal) override { return GiveText(MaterialField, pVal); }
    HRESULT STDMETHODCALLTYPE put_Material(BSTR newVal) override { return TakeText(MaterialField, newVal); }
    HRESULT STDMETHODCALLTYPE get_UnitLong(BSTR* pVal) override { return GiveText(UnitLongField, pVal); }
    HRESULT STDMETHODCALLTYPE put_UnitLong(BSTR newVal) override { return TakeText(UnitLongField, newVal); }
    HRESULT STDMETHODCALLTYPE get_UnitSect(BSTR* pVal) override { return GiveText(UnitSectField, pVal); }
    HRESULT STDMETHODCALLTYPE put_UnitSect(BSTR newVal) override { return TakeText(UnitSectField, newVal); }
    HRESULT STDMETHODCALLTYPE get_UnitWeight(BSTR* pVal) override { return GiveText(UnitWeightField, pVal); }
    HRESULT STDMETHODCALLTYPE put_UnitWeight(BSTR newVal) override {
        return TakeText(UnitWeightField, newVal);
    }

private:
    // Positions of the fields.
    enum Field : uint64 { UnitsField = 0, UnitLongField, UnitSectField, UnitWeightField, MaterialField };
};

}  // namespace quillet::automation
