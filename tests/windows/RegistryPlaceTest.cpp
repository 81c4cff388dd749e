// Where the library registers itself by default.
#include <array>

#include "Server.h"

namespace {

using namespace quillet::test;

constexpr const WCHAR* Classes = L"Software\\Classes";
constexpr const WCHAR* Registered[] = {
    L"Software\\Classes\\IQuillet.DbDatabase\\CLSID", L"Software\\Classes\\IQuillet.DbTableRow.11\\CLSID",
    L"Software\\Classes\\CLSID\\{D9BA1988-7E9D-4FFE-AF8A-E7D8F522A7C7}\\InprocServer32",
    L"Software\\Classes\\TypeLib\\{EB8EB6CC-B0FC-4DA8-988D-B5737A0CE5B4}",
    L"Software\\Classes\\Interface\\{A9822CC5-CDD8-47FC-B0BF-12FBAB9170B3}\\ProxyStubClsid32"};

bool IsThere(HKEY root, const WCHAR* path) {
    HKEY key = nullptr;
    const bool opened = RegOpenKeyExW(root, path, 0, KEY_READ, &key) == ERROR_SUCCESS;
    if (opened) {
        RegCloseKey(key);
    }
    return opened;
}

// During its lifetime, nobody may write to the classes of all users. Wine gives every process all rights, so
// they are removed from the key itself; this is never done on real Windows.
class WithoutRights {
public:
    WithoutRights() {
        EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, Classes, 0, KEY_ALL_ACCESS, &m_key), ERROR_SUCCESS);
        auto size = static_cast<DWORD>(m_before.size());
        EXPECT_EQ(RegGetKeySecurity(m_key, DACL_SECURITY_INFORMATION, m_before.data(), &size), ERROR_SUCCESS);
        std::array<BYTE, SECURITY_MAX_SID_SIZE> everybody;
        auto sidSize = static_cast<DWORD>(everybody.size());
        EXPECT_NE(CreateWellKnownSid(WinWorldSid, nullptr, everybody.data(), &sidSize), FALSE);
        alignas(ACL) std::array<BYTE, 256> memory;
        auto* const list = reinterpret_cast<ACL*>(memory.data());
        EXPECT_NE(InitializeAcl(list, static_cast<DWORD>(memory.size()), ACL_REVISION), FALSE);
        EXPECT_NE(AddAccessAllowedAce(list, ACL_REVISION, KEY_READ, everybody.data()), FALSE);
        SECURITY_DESCRIPTOR readOnly;
        EXPECT_NE(InitializeSecurityDescriptor(&readOnly, SECURITY_DESCRIPTOR_REVISION), FALSE);
        EXPECT_NE(SetSecurityDescriptorDacl(&readOnly, TRUE, list, FALSE), FALSE);
        EXPECT_EQ(RegSetKeySecurity(m_key, DACL_SECURITY_INFORMATION, &readOnly), ERROR_SUCCESS);
    }
    WithoutRights(const WithoutRights&) = delete;
    WithoutRights& operator=(const WithoutRights&) = delete;
    ~WithoutRights() {
        EXPECT_EQ(RegSetKeySecurity(m_key, DACL_SECURITY_INFORMATION, m_before.data()), ERROR_SUCCESS);
        RegCloseKey(m_key);
    }

    static bool IsPossible() {
        return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
    }

private:
    HKEY m_key = nullptr;
    alignas(SECURITY_DESCRIPTOR) std::array<BYTE, 4096> m_before{};
};

HRESULT CallEntryPoint(const char* entryPoint) {
    return EntryPoint<HRESULT STDAPICALLTYPE()>(entryPoint)();
}

TEST(RegistryPlace, WithoutAdministratorsRights_IsTheCurrentUsers) {
    if (!WithoutRights::IsPossible()) {
        GTEST_SKIP() << "The rights of this process can't be taken away";
    }
    const WithoutRights rights;
    EXPECT_EQ(CallEntryPoint("DllRegisterServer"), S_OK);
    for (const WCHAR* const path : Registered) {
        EXPECT_TRUE(IsThere(HKEY_CURRENT_USER, path)) << CString(path);
        EXPECT_FALSE(IsThere(HKEY_LOCAL_MACHINE, path)) << CString(path);
    }
    EXPECT_EQ(CallEntryPoint("DllUnregisterServer"), S_OK);
    for (const WCHAR* const path : Registered) {
        EXPECT_FALSE(IsThere(HKEY_CURRENT_USER, path)) << CString(path);
    }
    // Nor are the keys left that a user without classes does not have.
    for (const WCHAR* const folder :
         {L"Software\\Classes\\CLSID", L"Software\\Classes\\Interface", L"Software\\Classes\\TypeLib"}) {
        EXPECT_FALSE(IsThere(HKEY_CURRENT_USER, folder)) << CString(folder);
    }
}

TEST(RegistryPlace, Install_ForSomebodyElseThanTheUser_IsRefused) {
    auto* const install = EntryPoint<HRESULT STDAPICALLTYPE(BOOL, LPCWSTR)>("DllInstall");
    EXPECT_EQ(install(TRUE, nullptr), E_INVALIDARG);
    EXPECT_EQ(install(TRUE, L"everybody"), E_INVALIDARG);
    EXPECT_FALSE(IsThere(HKEY_CURRENT_USER, Registered[0]));
}

}  // namespace
