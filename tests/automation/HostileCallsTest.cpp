// Calls by name with anything a host could send: they succeed or fail as they should, and the server
// survives.
#include <array>
#include <limits>
#include <random>
#include <set>

#include "AutomationHelpers.h"
#include "support/Seed.h"

namespace {

using namespace quillet::test;

class HostileCalls : public AutomationTest {
protected:
    // Relative names refer to files here.
    HostileCalls() : m_before(std::filesystem::current_path()) {
        std::filesystem::current_path(m_folder.Path());
    }
    ~HostileCalls() override { std::filesystem::current_path(m_before); }

private:
    std::filesystem::path m_before;
};

VARIANTARG Reference(VARTYPE type, void* place) {
    VARIANTARG reference;
    VariantInit(&reference);
    reference.vt = static_cast<VARTYPE>(VT_BYREF | type);
    reference.byref = place;
    return reference;
}

// Values that a call may get, and the variables that references among them refer to.
class Values {
public:
    Values() {
        const auto add = [this](const CComVariant& value) { m_values.push_back(value); };
        add(CComVariant());
        add(NullVariant());
        for (const long number :
             {0L, 1L, 2L, 7L, -1L, std::numeric_limits<long>::max(), std::numeric_limits<long>::min()}) {
            add(CComVariant(number));
        }
        for (const double number : {0.5, -1.0, 1e10, 1e300, std::numeric_limits<double>::infinity(),
                                    std::numeric_limits<double>::quiet_NaN()}) {
            add(CComVariant(number));
        }
        for (const char* text : {"", "IPE", "h", "2", "Header", "none", "none.xml", "made.xml", "steel.xml",
                                 "select name from IPE where h > 100", "h > 200", "(((", "[", "'"}) {
            add(CComVariant(text));
        }
        add(CComVariant(CString(std::string(100000, 'x'))));
        add(CComVariant(true));
        add(DateVariant(1e9));
        add(ByteArray("bytes"));
        add(CComVariant(static_cast<IDispatch*>(nullptr)));
        CComVariant missing;
        missing.vt = VT_ERROR;
        missing.scode = DISP_E_PARAMNOTFOUND;
        add(missing);
        CComVariant nullText;
        nullText.vt = VT_BSTR;
        nullText.bstrVal = nullptr;
        add(nullText);
    }
    Values(const Values&) = delete;
    Values& operator=(const Values&) = delete;
    ~Values() { SysFreeString(m_text); }

    template <typename Random>
    VARIANTARG Any(Random& random) {
        const CComVariant& value = m_values[random() % m_values.size()];
        switch (random() % 5) {
            case 0:
                m_variable = value;
                return Reference(VT_VARIANT, &m_variable);
            case 1:
                return Reference(VT_BSTR, &m_text);
            case 2:
                return Reference(VT_I4, &m_number);
            default:
                return value;
        }
    }

private:
    std::vector<CComVariant> m_values;
    CComVariant m_variable;
    BSTR m_text = SysAllocString(L"text");
    LONG m_number = 3;
};

// The errors that a call may return: an argument that can't be converted, an unknown member, a disconnected
// object or an exception of the model (both as an exception for the host).
const std::set<HRESULT> Expected = {S_OK, DISP_E_TYPEMISMATCH, DISP_E_OVERFLOW, DISP_E_BADPARAMCOUNT,
                                    DISP_E_PARAMNOTOPTIONAL, DISP_E_PARAMNOTFOUND, DISP_E_MEMBERNOTFOUND,
                                    DISP_E_BADVARTYPE,
                                    // An invalid date has no text.
                                    E_INVALIDARG, DISP_E_EXCEPTION};

TEST_F(HostileCalls, AnyMemberWithAnyArguments_AnswersOrFailsAndTheServerGoesOn) {
    constexpr int Calls = 20000;
    std::mt19937 random(quillet::test::Seed(7));
    Values values;
    std::array<CComPtr<IDispatch>, 4> catalogs;
    std::vector<CComPtr<IDispatch>> objects;
    std::size_t answered = 0;
    for (int i = 0; i < Calls; ++i) {
        // A fresh catalog from time to time. It replaces one whose objects may live on.
        if (i % 200 == 0) {
            catalogs[static_cast<std::size_t>(i / 200) % catalogs.size()] =
                CComPtr<IDispatch>(Opened().Get());
        }
        const bool isCatalog = objects.empty() || random() % 3 == 0;
        const CComPtr<IDispatch> object =
            isCatalog ? catalogs[random() % catalogs.size()] : objects[random() % objects.size()];
        if (!object) {
            continue;
        }
        const auto member = static_cast<DISPID>(random() % (isCatalog ? 21 : 8));
        std::vector<VARIANTARG> arguments(random() % 4);
        for (VARIANTARG& argument : arguments) {
            argument = values.Any(random);
        }
        // Hosts mostly don't know whether a name is a method or a property.
        constexpr WORD Either = DISPATCH_METHOD | DISPATCH_PROPERTYGET;
        constexpr WORD Kinds[] = {Either,
                                  Either,
                                  Either,
                                  Either,
                                  DISPATCH_METHOD,
                                  DISPATCH_PROPERTYGET,
                                  DISPATCH_PROPERTYPUT,
                                  DISPATCH_PROPERTYPUTREF};
        const WORD kind = Kinds[random() % std::size(Kinds)];
        DISPID put = DISPID_PROPERTYPUT;
        const bool isPut =
            (kind & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0 && !arguments.empty();
        DISPPARAMS parameters{arguments.data(), isPut ? &put : nullptr, static_cast<UINT>(arguments.size()),
                              isPut ? 1U : 0U};
        CComVariant result;
        EXCEPINFO exception{};
        UINT wrong = 0;
        const HRESULT code = object->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters, &result,
                                            &exception, &wrong);
        EXPECT_EQ(Expected.count(code), 1U) << std::hex << code << " of member " << member;
        SysFreeString(exception.bstrSource);
        SysFreeString(exception.bstrDescription);
        SysFreeString(exception.bstrHelpFile);
        answered += code == S_OK ? 1U : 0U;
        if (result.vt == VT_DISPATCH && result.pdispVal != nullptr) {
            objects.emplace_back(result.pdispVal);
        }
        constexpr std::size_t MostObjects = 50;
        if (objects.size() > MostObjects) {
            objects.erase(objects.begin() + static_cast<std::ptrdiff_t>(random() % objects.size()));
        }
    }
    // Hundreds of the calls succeeded.
    EXPECT_GT(answered, 500U);
    catalogs = {};
    objects.clear();
    EXPECT_EQ(AnswerOf(MadeDatabase().Get(), &IDbDatabase::get_TablesCount), "0");
}

}  // namespace
