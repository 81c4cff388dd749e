// Opens a catalog, walks through its tables, fields and rows, runs a query, finds and edits rows, and saves a
// copy: the same as the scripts in this folder, in a program that calls the interfaces' members directly.
//
//   catalog.exe CATALOG.xml COPY.xml
#include <Quillet/automation/IQuillet.h>
#include <objbase.h>
#include <oleauto.h>

#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>

namespace {

// ---- Helpers around automation types

std::string Narrow(const wchar_t* text, UINT length) {
    const int size =
        WideCharToMultiByte(CP_UTF8, 0, text, static_cast<int>(length), nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(size), ' ');
    WideCharToMultiByte(CP_UTF8, 0, text, static_cast<int>(length), narrow.data(), size, nullptr, nullptr);
    return narrow;
}

// A system string that frees itself.
class String {
public:
    String(const wchar_t* text) : m_text(SysAllocString(text)) {}
    String(const String&) = delete;
    String& operator=(const String&) = delete;
    ~String() { SysFreeString(m_text); }

    operator BSTR() const { return m_text; }
    BSTR* Address() { return &m_text; }

private:
    BSTR m_text;
};

struct Releaser {
    void operator()(IUnknown* object) const { object->Release(); }
};
template <typename Interface>
using Held = std::unique_ptr<Interface, Releaser>;

// A failure comes with the message of the library.
void Check(HRESULT result) {
    if (SUCCEEDED(result)) {
        return;
    }
    IErrorInfo* error = nullptr;
    std::string message = "The call failed";
    if (GetErrorInfo(0, &error) == S_OK) {
        BSTR text = nullptr;
        error->GetDescription(&text);
        message = Narrow(text, SysStringLen(text));
        SysFreeString(text);
        error->Release();
    }
    throw std::runtime_error(message);
}

// Results as C++ values. They take ownership of what the caller must free.
long Taken(long number) {
    return number;
}
bool Taken(VARIANT_BOOL boolean) {
    return boolean != VARIANT_FALSE;
}
std::string Taken(BSTR text) {
    std::string taken = Narrow(text, SysStringLen(text));
    SysFreeString(text);
    return taken;
}
std::string Taken(VARIANT value) {
    VARIANT text;
    VariantInit(&text);
    const HRESULT result = VariantChangeType(&text, &value, 0, VT_BSTR);
    VariantClear(&value);
    Check(result);
    return Taken(text.bstrVal);
}
template <typename Interface>
Held<Interface> Taken(Interface* object) {
    return Held<Interface>(object);
}

// Calls a member whose last parameter is its result.
template <typename Interface, typename... Parameters, typename... Arguments>
auto Ask(const Held<Interface>& object, HRESULT (STDMETHODCALLTYPE Interface::*member)(Parameters...),
         const Arguments&... arguments) {
    using ResultAddress = std::tuple_element_t<sizeof...(Arguments), std::tuple<Parameters...>>;
    std::remove_pointer_t<ResultAddress> result{};
    Check((object.get()->*member)(arguments..., &result));
    return Taken(result);
}

// ---- Helpers for repeated calls

Held<IDbDatabase> Open(const wchar_t* path) {
    void* made = nullptr;
    Check(
        CoCreateInstance(__uuidof(DbDatabase), nullptr, CLSCTX_INPROC_SERVER, __uuidof(IDbDatabase), &made));
    Held<IDbDatabase> catalog(static_cast<IDbDatabase*>(made));
    Check(Ask(catalog, &IDbDatabase::get_Source)->put_FilePath(String(path)));
    return catalog;
}

std::string Value(const Held<IDbTableRow>& row, const wchar_t* field) {
    return Ask(Ask(row, &IDbTableRow::FieldByName, String(field)), &IDbFieldValue::get_Value);
}

void SetValue(const Held<IDbTableRow>& row, const wchar_t* field, VARIANT value) {
    Check(Ask(row, &IDbTableRow::FieldByName, String(field))->put_Value(value));
}

void SetText(const Held<IDbTableRow>& row, const wchar_t* field, const String& text) {
    VARIANT value;
    value.vt = VT_BSTR;
    value.bstrVal = text;
    SetValue(row, field, value);
}

void SetNumber(const Held<IDbTableRow>& row, const wchar_t* field, double number) {
    VARIANT value;
    value.vt = VT_R8;
    value.dblVal = number;
    SetValue(row, field, value);
}

long Find(const Held<IDbDatabase>& catalog, FindMode mode, const wchar_t* where) {
    return Ask(catalog, &IDbDatabase::Find, mode, String(L"IPE"), String(where));
}

std::string Title(const Held<IDbDatabase>& catalog) {
    return Ask(Ask(catalog, &IDbDatabase::get_Header), &IDbHeader::get_Title);
}

// ---- The tour

void Walk(const Held<IDbDatabase>& catalog) {
    std::cout << Title(catalog) << ", "
              << Ask(Ask(catalog, &IDbDatabase::get_Properties), &IDbProperties::get_Material) << '\n';
    const long count = Ask(catalog, &IDbDatabase::get_TablesCount);
    for (long i = 0; i < count; ++i) {
        const auto descr = Ask(catalog, &IDbDatabase::TableDescrByIndex, i);
        const auto data = Ask(catalog, &IDbDatabase::TableDataByIndex, i);
        std::cout << Ask(catalog, &IDbDatabase::TableName, i) << ": "
                  << Ask(descr, &IDbTableDescr::get_FieldsCount) << " fields, "
                  << Ask(data, &IDbTableData::get_RowsCount) << " rows\n";
    }

    const auto fields = Ask(catalog, &IDbDatabase::TableDescrByName, String(L"IPE"));
    for (long i = 0; i < 3; ++i) {
        const auto field = Ask(fields, &IDbTableDescr::FieldByIndex, i);
        std::cout << "field " << Ask(field, &IDbFieldDescr::get_Index) << " is "
                  << Ask(field, &IDbFieldDescr::get_Name) << ", a "
                  << Ask(field, &IDbFieldDescr::get_TypeName) << '\n';
    }

    const auto rows = Ask(catalog, &IDbDatabase::TableDataByName, String(L"IPE"));
    for (long i = 0; i < 3; ++i) {
        // A row has one value object, which shows the field requested last: take the value before you ask for
        // the next one.
        const auto row = Ask(rows, &IDbTableData::Row, i);
        std::cout << Value(row, L"name") << ": " << Value(row, L"h") << " mm, "
                  << Ask(Ask(row, &IDbTableRow::FieldByIndex, 6L), &IDbFieldValue::get_Value) << " cm2\n";
    }
}

void AskQueries(const Held<IDbDatabase>& catalog) {
    String answer(L"");
    if (Ask(catalog, &IDbDatabase::Query, String(L"select name, Iy from HEA where h > 700 order by Iy desc"),
            answer.Address())) {
        const auto rows = Ask(catalog, &IDbDatabase::TableDataByName, answer);
        const long count = Ask(rows, &IDbTableData::get_RowsCount);
        for (long i = 0; i < count; ++i) {
            const auto row = Ask(rows, &IDbTableData::Row, i);
            std::cout << "answer: " << Value(row, L"name") << ", " << Value(row, L"Iy") << " cm4\n";
        }
        std::cout << "asked: "
                  << Ask(Ask(catalog, &IDbDatabase::TableInfoByName, answer), &IDbTableInfo::get_sql) << '\n';
    }
    if (!Ask(catalog, &IDbDatabase::Query, String(L"select name from nowhere"), answer.Address())) {
        std::cout << "no answer from a table that there is not\n";
    }
}

void FindRows(const Held<IDbDatabase>& catalog) {
    const wchar_t* const where = L"Wply > 1000 and h < 500";
    const auto rows = Ask(catalog, &IDbDatabase::TableDataByName, String(L"IPE"));
    for (long position = Find(catalog, First, where); position >= 0; position = Find(catalog, Next, where)) {
        std::cout << "found: " << Value(Ask(rows, &IDbTableData::Row, position), L"name") << '\n';
    }
}

void Edit(const Held<IDbDatabase>& catalog) {
    const auto rows = Ask(catalog, &IDbDatabase::TableDataByName, String(L"IPE"));
    const auto found = Ask(rows, &IDbTableData::Row, Find(catalog, First, L"name = 'IPE 300'"));
    SetText(found, L"name", L"IPE 300 cut");
    SetNumber(found, L"h", 290.5);

    const auto added = Ask(rows, &IDbTableData::AddRow);
    SetText(added, L"name", L"IPE 300 welded");
    SetNumber(added, L"h", 300);
    Check(rows->RemoveRow(0));

    Check(catalog->CreateTable(String(L"Plates")));
    const auto fields = Ask(catalog, &IDbDatabase::TableDescrByName, String(L"Plates"));
    Check(fields->CreateField(String(L"name"), FieldType::Text));
    Check(fields->CreateField(String(L"t"), FieldType::Double));
    const auto plate =
        Ask(Ask(catalog, &IDbDatabase::TableDataByName, String(L"Plates")), &IDbTableData::AddRow);
    SetText(plate, L"name", L"PL 10");
    SetNumber(plate, L"t", 10);
    Check(catalog->DeleteTable(String(L"SHS")));
    Check(Ask(catalog, &IDbDatabase::get_Header)->put_Title(String(L"My sections")));
}

void ShowCopy(const Held<IDbDatabase>& copy) {
    const auto rows = Ask(copy, &IDbDatabase::TableDataByName, String(L"IPE"));
    const long count = Ask(rows, &IDbTableData::get_RowsCount);
    const long tables = Ask(copy, &IDbDatabase::get_TablesCount);
    std::cout << Title(copy) << ": " << tables << " tables, " << count << " sections\n";
    for (const long position : {Find(copy, First, L"name = 'IPE 300 cut'"), count - 1}) {
        const auto row = Ask(rows, &IDbTableData::Row, position);
        std::cout << Value(row, L"name") << " is " << Value(row, L"h") << " mm high\n";
    }
    const auto plates = Ask(copy, &IDbDatabase::TableDataByName, String(L"Plates"));
    std::cout << Ask(copy, &IDbDatabase::TableName, tables - 1) << ": "
              << Value(Ask(plates, &IDbTableData::Row, 0L), L"t") << " mm\n";
}

int Run(const wchar_t* path, const wchar_t* copyPath) {
    try {
        const auto catalog = Open(path);
        Walk(catalog);
        AskQueries(catalog);
        FindRows(catalog);
        Edit(catalog);
        Check(catalog->Save(String(copyPath)));
        const auto copy = Open(copyPath);
        ShowCopy(copy);
        try {
            Check(Ask(copy, &IDbDatabase::get_Source)->put_FilePath(String(L"no such file.xml")));
        } catch (const std::runtime_error& error) {
            const std::string message = error.what();
            const std::size_t place = message.find("Message:");
            std::cout << "error: " << message.substr(place == std::string::npos ? 0 : place) << '\n';
        }
        return 0;
    } catch (const std::runtime_error& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
    if (argc != 3) {
        std::cerr << "usage: catalog CATALOG.xml COPY.xml\n";
        return 2;
    }
    if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {
        return 1;
    }
    const int status = Run(argv[1], argv[2]);
    CoUninitialize();
    return status;
}
