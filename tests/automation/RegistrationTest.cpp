// The library registered and unregistered by the system's own program, for all users and for the current
// user: what is written, that clients find it, and that nothing is left.
#include <gmock/gmock.h>

#include <set>

#include "AutomationHelpers.h"
#include "Registry.h"
#include "support/RegexMatchers.h"
#include "support/WindowsProcess.h"

namespace {

using namespace quillet::test;

struct RegisteredClass {
    const char* m_id;
    // Null if the class has no names.
    const char* m_name;
    const char* m_versionedName;
};

constexpr RegisteredClass Classes[] = {
    {"{D9BA1988-7E9D-4FFE-AF8A-E7D8F522A7C7}", "IQuillet.DbDatabase", "IQuillet.DbDatabase.1"},
    {"{BC8BD44C-4FDD-438E-8B3B-876E97EE5E05}", "IQuillet.DbSource", "IQuillet.DbSource.1"},
    {"{7E15803C-1511-4446-BF01-98C07D276878}", "IQuillet.DbTableDescr", "IQuillet.DbTableDescr.1"},
    {"{737F686B-360D-441F-ADE6-37B2CEB96816}", "IQuillet.DbTableData", "IQuillet.DbTableData.1"},
    {"{5D710155-5539-407C-80C5-5012E79089F6}", "IQuillet.DbFieldDescr", "IQuillet.DbFieldDescr.1"},
    {"{B88E804A-6884-4006-8697-3876FE307486}", "IQuillet.DbFieldValue", "IQuillet.DbFieldValue.1"},
    {"{26BF8CDF-EF9A-4F96-B0BA-A62F0CD4CB1F}", "IQuillet.DbTableRow", "IQuillet.DbTableRow.11"},
    {"{742E98B0-B3EF-43A6-9A10-8EA954976EE9}", "IQuillet.DbHeader", "IQuillet.DbHeader.1"},
    {"{BAC243B2-253F-4A8F-AE01-379489FBA37D}", "IQuillet.DbProperties", "IQuillet.DbProperties.1"},
    {"{381F4145-B653-463C-AFF4-5BB7A4216EC2}", nullptr, nullptr},
};

constexpr const char* Interfaces[] = {
    "{A9822CC5-CDD8-47FC-B0BF-12FBAB9170B3}", "{3CD0BA7D-323E-4650-A0B0-7E8776DFFC5E}",
    "{85F13465-5AD1-45FC-B5F3-5AAF821EC112}", "{437288FD-3447-41E6-8CF2-1F9899B1169E}",
    "{BE749381-99AC-4B07-A0DF-FE4D47308F8B}", "{612E2780-CA51-4762-ACB1-25F120959AE3}",
    "{32F9DDCB-766F-4615-ABC8-D0FF86ECA6B1}", "{5AF77755-2DAE-44DB-93DE-41D3DB0F743A}",
    "{80DA0A9A-2B7F-434F-8A70-127BDA62DD1F}", "{8F6F8908-EB9B-4306-8FEA-A24DCEED44A9}",
};

constexpr const char* TypeLibraryId = "{EB8EB6CC-B0FC-4DA8-988D-B5737A0CE5B4}";

constexpr const wchar_t* MachineClasses = L"Software\\Classes";

// Paths are case-insensitive.
std::string Lower(const std::string& text) {
    return CString(text).MakeLower().ToUtf8();
}

// All classes, and everything else that names the library. Elsewhere, system services may write at any time.
RegistryContent ClassesAndOurs(RegistryContent content) {
    std::erase_if(content, [](const auto& entry) {
        const std::string path = Lower(entry.first);
        return path.find("\\classes") == std::string::npos && path.find("iquillet") == std::string::npos &&
               Lower(entry.second).find("iquillet") == std::string::npos;
    });
    return content;
}

RegistryContent ForEverybody() {
    return ClassesAndOurs(ContentOf(HKEY_LOCAL_MACHINE, L"Software"));
}

RegistryContent ForTheUser() {
    return ClassesAndOurs(ContentOf(HKEY_CURRENT_USER, L"Software"));
}

class Registration : public testing::Test {
protected:
    static void SetUpTestSuite() {
        // An aborted test may have left the library registered.
        UnregisterAll();
        // The script host registers its own classes when it is first used.
        ScriptGets();
        s_machine = ForEverybody();
        s_user = ForTheUser();
    }
    // Each test leaves the registry as it was.
    ~Registration() override {
        if (HasFailure()) {
            UnregisterAll();
        }
    }

    static std::filesystem::path Library() {
        return std::filesystem::absolute(QUILLET_LIBRARY).make_preferred();
    }

    // The exit status; 0 on success.
    static int Regsvr32(const std::vector<std::string>& options) {
        std::vector<std::string> arguments = {"regsvr32.exe", "/s"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        arguments.push_back(Utf8(Library()));
        return Run(arguments);
    }

    static void UnregisterAll() {
        Regsvr32({"/u"});
        Regsvr32({"/n", "/u", "/i:user"});
    }

    // The exit status. Output is discarded: system programs started with it would keep a file open.
    static int Run(const std::vector<std::string>& arguments) {
        quillet::platform::WideString line;
        for (const std::string& argument : arguments) {
            line += (line.empty() ? L"" : L" ") + QuotedArgument(WideOf(argument));
        }
        const InheritedFile nowhere(L"NUL", GENERIC_WRITE, OPEN_EXISTING);
        return StartedProcess(line, nowhere, nowhere).Status();
    }

    // What a script gets when it creates a catalog.
    static std::string ScriptGets() {
        const TemporaryFolder folder;
        WriteBytes(folder / "use.vbs",
                   "Set answer = "
                   "CreateObject(\"Scripting.FileSystemObject\").CreateTextFile(WScript.Arguments(0))\r\n"
                   "On Error Resume Next\r\n"
                   "Set catalog = CreateObject(\"IQuillet.DbDatabase\")\r\n"
                   "If Err.Number <> 0 Then answer.Write \"error \" & Err.Number\r\n"
                   "If Err.Number = 0 Then answer.Write \"tables \" & catalog.TablesCount\r\n");
        const std::filesystem::path answer = folder / "answer";
        EXPECT_EQ(Run({"cscript.exe", "//nologo", Utf8(folder / "use.vbs"), Utf8(answer)}), 0);
        return ReadBytes(answer);
    }

    void ExpectAsBefore() const {
        const RegistryContent machine = ForEverybody();
        const RegistryContent user = ForTheUser();
        EXPECT_THAT(Added(s_machine, machine), testing::IsEmpty());
        EXPECT_THAT(Added(machine, s_machine), testing::IsEmpty()) << "is gone";
        EXPECT_THAT(Added(s_user, user), testing::IsEmpty());
        EXPECT_THAT(Added(user, s_user), testing::IsEmpty()) << "is gone";
    }

    // The keys and values that registering must write, below the classes of the machine or of a user.
    static void ExpectRegistered(const RegistryContent& classes) {
        std::map<std::string, std::string> found;
        for (const auto& [path, data] : classes) {
            found.emplace(Lower(path), data);
        }
        const auto expectValue = [&](const std::string& path, const std::string& data) {
            const auto value = found.find(Lower(path));
            ASSERT_NE(value, found.end()) << path;
            EXPECT_EQ(Lower(value->second), Lower(data)) << path;
        };
        const std::string path = Utf8(Library());
        for (const RegisteredClass& entry : Classes) {
            const std::string key = std::string("\\CLSID\\") + entry.m_id;
            expectValue(key + "\\InprocServer32|", path);
            expectValue(key + "\\InprocServer32|ThreadingModel", "both");
            EXPECT_EQ(found.at(Lower(key + "\\InprocServer32|ThreadingModel")), "both");
            if (entry.m_name == nullptr) {
                EXPECT_EQ(found.count(Lower(key + "\\ProgID")), 0U);
                EXPECT_EQ(found.count(Lower(key + "\\VersionIndependentProgID")), 0U);
                continue;
            }
            expectValue(key + "\\ProgID|", entry.m_versionedName);
            expectValue(key + "\\VersionIndependentProgID|", entry.m_name);
            expectValue(std::string("\\") + entry.m_versionedName + "\\CLSID|", entry.m_id);
            expectValue(std::string("\\") + entry.m_name + "\\CLSID|", entry.m_id);
        }
        std::string proxy;
        for (const char* id : Interfaces) {
            const std::string key = std::string("\\Interface\\") + id;
            ASSERT_EQ(found.count(Lower(key + "\\ProxyStubClsid32|")), 1U) << id;
            proxy = found.at(Lower(key + "\\ProxyStubClsid32|"));
            expectValue("\\CLSID\\" + proxy + "\\InProcServer32|", path);
            expectValue(key + "\\TypeLib|", TypeLibraryId);
        }
        expectValue(std::string("\\TypeLib\\") + TypeLibraryId + "\\1.0|", "IQuillet 1.0 Type Library");
        expectValue(std::string("\\TypeLib\\") + TypeLibraryId + "\\1.0\\409\\win64|", path);
    }

    ComApartment m_apartment;
    inline static RegistryContent s_machine;
    inline static RegistryContent s_user;
};

TEST_F(Registration, RegisterUseUnregisterUse_FailsCleanlyAndTheRegistryIsAsBefore) {
    const std::string refused = ScriptGets();
    EXPECT_EQ(refused.substr(0, 5), "error");
    ASSERT_EQ(Regsvr32({}), 0);
    EXPECT_EQ(ScriptGets(), "tables 0");
    EXPECT_TRUE(MadeDatabase());
    EXPECT_EQ(Regsvr32({"/u"}), 0);
    EXPECT_EQ(ScriptGets(), refused);
    void* made = nullptr;
    EXPECT_EQ(CoCreateInstance(__uuidof(DbDatabase), nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &made),
              REGDB_E_CLASSNOTREG);
    ExpectAsBefore();
}

TEST_F(Registration, ForEverybody_WritesClassesNamesInterfacesAndTypeLibrary) {
    ASSERT_EQ(Regsvr32({}), 0);
    ExpectRegistered(ContentOf(HKEY_LOCAL_MACHINE, MachineClasses));
    // Only this, and nothing for the user.
    for (const auto& entry : Added(s_machine, ForEverybody())) {
        EXPECT_THAT(
            Lower(entry.first),
            MatchesPattern(
                R"(\\(wow6432node\\)?classes\\(wow6432node\\)?(clsid\\\{|interface\\\{|typelib\\\{|iquillet\.).*)"));
    }
    EXPECT_THAT(Added(s_user, ForTheUser()), testing::IsEmpty());
    EXPECT_EQ(Regsvr32({"/u"}), 0);
}

TEST_F(Registration, Twice_IsRegisteredOnceAndUnregisteredOnce) {
    ASSERT_EQ(Regsvr32({}), 0);
    const RegistryContent once = ForEverybody();
    EXPECT_EQ(Regsvr32({}), 0);
    const RegistryContent twice = ForEverybody();
    EXPECT_THAT(Added(once, twice), testing::IsEmpty());
    EXPECT_THAT(Added(twice, once), testing::IsEmpty()) << "is gone";
    EXPECT_EQ(Regsvr32({"/u"}), 0);
    ExpectAsBefore();
}

TEST_F(Registration, UnregisteringWhatIsNotRegistered_LeavesTheRegistryAlone) {
    Regsvr32({"/u"});
    ExpectAsBefore();
    Regsvr32({"/n", "/u", "/i:user"});
    ExpectAsBefore();
}

// What the system also writes for 32-bit programs. Wine always writes it for all users.
RegistryContent WithoutThatFor32Bits(RegistryContent content) {
    std::erase_if(content, [](const auto& entry) {
        return Lower(entry.first).find("\\wow6432node\\") != std::string::npos;
    });
    return content;
}

TEST_F(Registration, ForTheCurrentUser_WritesTheSameBelowTheUsersClassesAndNothingElse) {
    ASSERT_EQ(Regsvr32({}), 0);
    const RegistryContent forEverybody = Added(s_machine, ForEverybody());
    ASSERT_EQ(Regsvr32({"/u"}), 0);
    ASSERT_EQ(Regsvr32({"/n", "/i:user"}), 0);
    ExpectRegistered(ContentOf(HKEY_CURRENT_USER, MachineClasses));
    EXPECT_THAT(WithoutThatFor32Bits(Added(s_machine, ForEverybody())), testing::IsEmpty());
    RegistryContent forTheUser = Added(s_user, ForTheUser());
    // The keys of classes, which a user without any does not have.
    const std::set<std::string> folders = {"\\classes", "\\classes\\clsid", "\\classes\\interface",
                                           "\\classes\\typelib"};
    std::erase_if(forTheUser, [&](const auto& entry) { return folders.count(Lower(entry.first)) != 0; });
    EXPECT_THAT(WithoutThatFor32Bits(Added(forEverybody, forTheUser)), testing::IsEmpty());
    EXPECT_THAT(WithoutThatFor32Bits(Added(forTheUser, forEverybody)), testing::IsEmpty()) << "is missing";
    EXPECT_EQ(Regsvr32({"/n", "/u", "/i:user"}), 0);
    ExpectAsBefore();
}

TEST_F(Registration, ForAnythingElse_IsRefused) {
    EXPECT_NE(Regsvr32({"/n", "/i:nobody"}), 0);
    EXPECT_NE(Regsvr32({"/n", "/i"}), 0);
    ExpectAsBefore();
}

}  // namespace
