// Changes the import tables of the program, of IQuillet.dll and of the C++ run-time, so that their calls of
// the C library and the automation library come here first.
#include <windows.h>

#include <oleauto.h>

#include <array>
#include <cstdlib>
#include <new>

#include "support/AllocationPlan.h"
#include "support/Allocations.h"

namespace quillet::test {

namespace {

// The replaced functions.
decltype(&::malloc) s_malloc;
decltype(&::calloc) s_calloc;
decltype(&::realloc) s_realloc;
decltype(&::free) s_free;
decltype(&::SysAllocString) s_SysAllocString;
decltype(&::SysAllocStringLen) s_SysAllocStringLen;
decltype(&::SysAllocStringByteLen) s_SysAllocStringByteLen;
decltype(&::SafeArrayCreate) s_SafeArrayCreate;
decltype(&::SafeArrayCreateVector) s_SafeArrayCreateVector;
decltype(&::SafeArrayCopy) s_SafeArrayCopy;
decltype(&::VariantCopy) s_VariantCopy;
decltype(&::VariantChangeType) s_VariantChangeType;
decltype(&::VariantChangeTypeEx) s_VariantChangeTypeEx;
decltype(&::VarBstrFromR4) s_VarBstrFromR4;
decltype(&::VarBstrFromR8) s_VarBstrFromR8;

// All three modules count as ours.
bool MayAllocateHere(std::size_t size = 0) noexcept {
    return MayAllocate(size, nullptr);
}

void* Malloc(std::size_t size) {
    return MayAllocateHere(size) ? Counted(s_malloc(size)) : OutOfMemory();
}

void* Calloc(std::size_t count, std::size_t size) {
    return MayAllocateHere(count * size) ? Counted(s_calloc(count, size)) : OutOfMemory();
}

void* Realloc(void* block, std::size_t size) {
    if (!MayAllocateHere(size)) {
        return OutOfMemory();
    }
    void* const moved = s_realloc(block, size);
    AddLiveBlocks((block == nullptr && moved != nullptr ? 1 : 0) - (block != nullptr && size == 0 ? 1 : 0));
    return moved;
}

void Free(void* block) {
    AddLiveBlocks(block != nullptr ? -1 : 0);
    s_free(block);
}

BSTR WINAPI AllocString(const OLECHAR* text) {
    return text == nullptr || MayAllocateHere() ? s_SysAllocString(text) : nullptr;
}

BSTR WINAPI AllocStringLen(const OLECHAR* text, UINT length) {
    return MayAllocateHere() ? s_SysAllocStringLen(text, length) : nullptr;
}

BSTR WINAPI AllocStringByteLen(LPCSTR bytes, UINT length) {
    return MayAllocateHere() ? s_SysAllocStringByteLen(bytes, length) : nullptr;
}

SAFEARRAY* WINAPI CreateArray(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds) {
    return MayAllocateHere() ? s_SafeArrayCreate(type, dimensions, bounds) : nullptr;
}

SAFEARRAY* WINAPI CreateVector(VARTYPE type, LONG lowerBound, ULONG elements) {
    return MayAllocateHere() ? s_SafeArrayCreateVector(type, lowerBound, elements) : nullptr;
}

HRESULT WINAPI CopyArray(SAFEARRAY* array, SAFEARRAY** copy) {
    return MayAllocateHere() ? s_SafeArrayCopy(array, copy) : E_OUTOFMEMORY;
}

bool HoldsBlock(const VARIANT& value) {
    return value.vt == VT_BSTR || ((value.vt & VT_ARRAY) != 0 && (value.vt & VT_BYREF) == 0);
}

HRESULT WINAPI CopyVariant(VARIANTARG* target, VARIANTARG* source) {
    return !HoldsBlock(*source) || MayAllocateHere() ? s_VariantCopy(target, source) : E_OUTOFMEMORY;
}

bool IsBlock(VARTYPE type) {
    return type == VT_BSTR || (type & VT_ARRAY) != 0;
}

HRESULT WINAPI ChangeVariantType(VARIANTARG* target, VARIANTARG* source, USHORT flags, VARTYPE type) {
    return !IsBlock(type) || MayAllocateHere() ? s_VariantChangeType(target, source, flags, type)
                                               : E_OUTOFMEMORY;
}

HRESULT WINAPI ChangeVariantTypeEx(VARIANTARG* target, VARIANTARG* source, LCID locale, USHORT flags,
                                   VARTYPE type) {
    return !IsBlock(type) || MayAllocateHere() ? s_VariantChangeTypeEx(target, source, locale, flags, type)
                                               : E_OUTOFMEMORY;
}

HRESULT WINAPI BstrFromR4(FLOAT number, LCID locale, ULONG flags, BSTR* text) {
    return MayAllocateHere() ? s_VarBstrFromR4(number, locale, flags, text) : E_OUTOFMEMORY;
}

HRESULT WINAPI BstrFromR8(DOUBLE number, LCID locale, ULONG flags, BSTR* text) {
    return MayAllocateHere() ? s_VarBstrFromR8(number, locale, flags, text) : E_OUTOFMEMORY;
}

struct Replacement {
    const char* name;
    void* replacement;
    void** original;
};

template <typename Function>
Replacement Replaced(const char* name, Function* replacement, Function*& original) {
    return {name, reinterpret_cast<void*>(replacement), reinterpret_cast<void**>(&original)};
}

const std::array<Replacement, 15>& Replacements() {
    static const std::array<Replacement, 15> s_replacements = {{
        Replaced("malloc", &Malloc, s_malloc),
        Replaced("calloc", &Calloc, s_calloc),
        Replaced("realloc", &Realloc, s_realloc),
        Replaced("free", &Free, s_free),
        Replaced("SysAllocString", &AllocString, s_SysAllocString),
        Replaced("SysAllocStringLen", &AllocStringLen, s_SysAllocStringLen),
        Replaced("SysAllocStringByteLen", &AllocStringByteLen, s_SysAllocStringByteLen),
        Replaced("SafeArrayCreate", &CreateArray, s_SafeArrayCreate),
        Replaced("SafeArrayCreateVector", &CreateVector, s_SafeArrayCreateVector),
        Replaced("SafeArrayCopy", &CopyArray, s_SafeArrayCopy),
        Replaced("VariantCopy", &CopyVariant, s_VariantCopy),
        Replaced("VariantChangeType", &ChangeVariantType, s_VariantChangeType),
        Replaced("VariantChangeTypeEx", &ChangeVariantTypeEx, s_VariantChangeTypeEx),
        Replaced("VarBstrFromR4", &BstrFromR4, s_VarBstrFromR4),
        Replaced("VarBstrFromR8", &BstrFromR8, s_VarBstrFromR8),
    }};
    return s_replacements;
}

template <typename T>
T* At(HMODULE module, std::uintptr_t offset) {
    return reinterpret_cast<T*>(reinterpret_cast<std::uintptr_t>(module) + offset);
}

const IMAGE_IMPORT_DESCRIPTOR* FirstImport(HMODULE module) {
    const auto* dos = At<IMAGE_DOS_HEADER>(module, 0);
    const auto* headers = At<IMAGE_NT_HEADERS>(module, static_cast<std::uintptr_t>(dos->e_lfanew));
    const IMAGE_DATA_DIRECTORY& imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    return At<IMAGE_IMPORT_DESCRIPTOR>(module, imports.VirtualAddress);
}

void Write(ULONGLONG& entry, void* replacement) {
    DWORD protection = 0;
    VirtualProtect(&entry, sizeof entry, PAGE_READWRITE, &protection);
    entry = reinterpret_cast<ULONGLONG>(replacement);
    VirtualProtect(&entry, sizeof entry, protection, &protection);
}

// Some functions are imported by ordinal, so functions are identified by address.
void ReplaceImportsFrom(HMODULE exporter, IMAGE_THUNK_DATA64* entry) {
    for (; entry->u1.Function != 0; ++entry) {
        for (const Replacement& replaced : Replacements()) {
            const FARPROC original = GetProcAddress(exporter, replaced.name);
            if (original != nullptr && entry->u1.Function == reinterpret_cast<ULONGLONG>(original)) {
                *replaced.original = reinterpret_cast<void*>(original);
                Write(entry->u1.Function, replaced.replacement);
            }
        }
    }
}

void ReplaceImports(HMODULE importer) {
    for (const auto* import = FirstImport(importer); import->Name != 0; ++import) {
        if (const HMODULE exporter = GetModuleHandleA(At<char>(importer, import->Name))) {
            ReplaceImportsFrom(exporter, At<IMAGE_THUNK_DATA64>(importer, import->FirstThunk));
        }
    }
}

// The run-time allocates memory for a thread's exceptions when the first is thrown, and for the lock of its
// emergency pool when an exception finds no other memory, and ends the process if it gets none. So both
// happen once while there is memory: failing is the number of the exception's allocation.
void Throw(std::size_t failing) {
    const AllocationPlan plan(failing);
    try {
        throw std::bad_alloc();
    } catch (const std::bad_alloc&) {
    }
}

}  // namespace

void InterposeAllocations() {
    static bool s_isDone = false;
    if (s_isDone) {
        return;
    }
    s_isDone = true;
    for (const wchar_t* const name :
         {static_cast<const wchar_t*>(nullptr), L"IQuillet.dll", L"libstdc++-6.dll"}) {
        if (const HMODULE module = GetModuleHandleW(name)) {
            ReplaceImports(module);
        }
    }
    Throw(0);
    Throw(1);
}

std::uintptr_t ThisThread() noexcept {
    return GetCurrentThreadId();
}

bool IsOurs(const void*) noexcept {
    return true;
}

}  // namespace quillet::test
