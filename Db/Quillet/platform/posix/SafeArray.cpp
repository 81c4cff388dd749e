// One-dimensional arrays of bytes. Descriptor and bytes share one zeroed block.
#include <cstdlib>
#include <cstring>
#include <limits>

#include "Quillet/platform/Automation.h"

namespace {

constexpr USHORT FeatureHasType = 0x0080;

}  // namespace

SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG elements) {
    if (type != VT_UI1) {
        return nullptr;
    }
    void* block = std::calloc(1, sizeof(SAFEARRAY) + std::size_t{elements});
    if (block == nullptr) {
        return nullptr;
    }
    auto* array = static_cast<SAFEARRAY*>(block);
    array->cDims = 1;
    array->fFeatures = FeatureHasType;
    array->cbElements = 1;
    array->pvData = array + 1;
    array->rgsabound[0] = {elements, lowerBound};
    return array;
}

SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dimensions, const SAFEARRAYBOUND* bounds) {
    if (dimensions != 1 || bounds == nullptr) {
        return nullptr;
    }
    return SafeArrayCreateVector(type, bounds->lLbound, bounds->cElements);
}

HRESULT SafeArrayDestroy(SAFEARRAY* array) {
    if (array == nullptr) {
        return S_OK;
    }
    if (array->cLocks != 0) {
        return DISP_E_ARRAYISLOCKED;
    }
    std::free(array);
    return S_OK;
}

HRESULT SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy) {
    if (copy == nullptr) {
        return E_INVALIDARG;
    }
    *copy = nullptr;
    if (array == nullptr) {
        return S_OK;
    }
    const SAFEARRAYBOUND& bound = array->rgsabound[0];
    SAFEARRAY* made = SafeArrayCreateVector(VT_UI1, bound.lLbound, bound.cElements);
    if (made == nullptr) {
        return E_OUTOFMEMORY;
    }
    std::memcpy(made->pvData, array->pvData, bound.cElements);
    *copy = made;
    return S_OK;
}

UINT SafeArrayGetDim(SAFEARRAY* array) {
    return array == nullptr ? 0 : array->cDims;
}

HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
    if (array == nullptr || bound == nullptr) {
        return E_INVALIDARG;
    }
    if (dimension != 1) {
        return DISP_E_BADINDEX;
    }
    *bound = array->rgsabound[0].lLbound;
    return S_OK;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
    const HRESULT result = SafeArrayGetLBound(array, dimension, bound);
    if (SUCCEEDED(result)) {
        *bound = static_cast<LONG>(LONGLONG{*bound} + array->rgsabound[0].cElements - 1);
    }
    return result;
}

HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data) {
    if (array == nullptr || data == nullptr) {
        return E_INVALIDARG;
    }
    if (array->cLocks == std::numeric_limits<ULONG>::max()) {
        return E_UNEXPECTED;
    }
    ++array->cLocks;
    *data = array->pvData;
    return S_OK;
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* array) {
    if (array == nullptr) {
        return E_INVALIDARG;
    }
    if (array->cLocks == 0) {
        return E_UNEXPECTED;
    }
    --array->cLocks;
    return S_OK;
}
