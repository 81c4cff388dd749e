// Catalogs driven through the automation interfaces, and calls of their members in a form that tests can
// compare.
#pragma once

#include <Quillet/automation/IQuillet.h>

#include <sstream>
#include <stdexcept>
#include <tuple>
#include <type_traits>

#include "ComHelpers.h"
#include "TestPaths.h"
#include "support/MsxmlDocument.h"
#include "support/TemporaryFolder.h"

namespace quillet::test {

// A system string for the duration of a call.
class Bstr {
public:
    Bstr(const char* text) : m_text(SysAllocString(std::wstring(CString(text).View()).c_str())) {}
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;
    ~Bstr() { SysFreeString(m_text); }

    operator BSTR() const { return m_text; }
    BSTR* Address() { return &m_text; }
    std::string Utf8() const { return m_text == nullptr ? "null" : CString(m_text).ToUtf8(); }

private:
    BSTR m_text;
};

inline std::string ResultText(HRESULT result) {
    std::ostringstream text;
    text << std::hex << static_cast<std::uint32_t>(result);
    return result == S_OK ? "" : "failed with " + text.str() + ' ';
}

inline std::string Printed(long number) {
    return std::to_string(number);
}
inline std::string Printed(VARIANT_BOOL boolean) {
    return boolean == VARIANT_TRUE ? "true" : boolean == VARIANT_FALSE ? "false" : "no boolean";
}
// Takes the string over.
inline std::string Printed(BSTR text) {
    return text == nullptr ? "null" : '\'' + TakeText(text) + '\'';
}
inline std::string Printed(FieldType type) {
    return "field type " + std::to_string(type);
}
inline std::string Printed(TableType type) {
    return "table type " + std::to_string(type);
}
// Takes the value over.
inline std::string Printed(VARIANT value) {
    CComVariant text(value);
    VariantClear(&value);
    const std::string type = std::to_string(text.vt);
    return type + ':' + (SUCCEEDED(text.ChangeType(VT_BSTR)) ? CString(text.Text()).ToUtf8() : "no text");
}

// The type of what a member's last parameter points to.
template <typename... Parameters>
using ResultOf =
    std::remove_pointer_t<std::tuple_element_t<sizeof...(Parameters) - 1, std::tuple<Parameters...>>>;

// A member's result as text, with the code in front if it is not S_OK.
template <typename Interface, typename... Parameters, typename... Arguments>
std::string AnswerOf(Interface* object, HRESULT (STDMETHODCALLTYPE Interface::*member)(Parameters...),
                     const Arguments&... arguments) {
    ResultOf<Parameters...> result{};
    const HRESULT code = (object->*member)(arguments..., &result);
    return ResultText(code) + Printed(result);
}

// The object that a member gives; null, with a test failure, if the call fails.
template <typename Interface, typename... Parameters, typename... Arguments>
auto ObjectOf(Interface* object, HRESULT (STDMETHODCALLTYPE Interface::*member)(Parameters...),
              const Arguments&... arguments) {
    CComPtr<std::remove_pointer_t<ResultOf<Parameters...>>> result;
    EXPECT_EQ((object->*member)(arguments..., Into(result)), S_OK);
    return result;
}

template <typename Interface>
CComPtr<Interface> As(IUnknown* object) {
    CComPtr<Interface> face;
    EXPECT_EQ(object->QueryInterface(__uuidof(Interface), Into(face)), S_OK);
    return face;
}

// Throws if there is no such class.
template <typename Interface>
CComPtr<Interface> Made(const CLSID& classId) {
    CComPtr<Interface> made;
    const HRESULT result =
        CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, __uuidof(Interface), Into(made));
    if (result != S_OK) {
        throw std::runtime_error("An object of a registered class can't be made: " + ResultText(result));
    }
    return made;
}

inline CComPtr<IDbDatabase> MadeDatabase() {
    return Made<IDbDatabase>(__uuidof(DbDatabase));
}

// A thread with COM and a copy of the catalog of steel sections.
class AutomationTest : public testing::Test {
protected:
    AutomationTest() {
        std::filesystem::copy_file(QUILLET_SOURCE_DIR "/examples/catalogs/european-steel.xml", Path());
    }

    std::filesystem::path Path() const { return m_folder / "steel.xml"; }

    CComPtr<IDbDatabase> Opened() const {
        auto catalog = MadeDatabase();
        const auto source = ObjectOf(catalog.Get(), &IDbDatabase::get_Source);
        EXPECT_EQ(source->put_FilePath(Bstr(Utf8(Path()).c_str())), S_OK);
        return catalog;
    }

    // The catalog then counts as unchanged and leaves its own file as it is.
    void SaveElsewhere(IDbDatabase* catalog) const {
        EXPECT_EQ(catalog->Save(Bstr(Utf8(m_folder / "elsewhere.xml").c_str())), S_OK);
    }

    TemporaryFolder m_folder;
    ComApartment m_apartment;
};

}  // namespace quillet::test
