// What the system's component loader asks of the library.
#include "Server.h"
#include "support/OuterObject.h"

namespace {

using namespace quillet::test;

class ClassObjects : public testing::Test {
protected:
    ~ClassObjects() override { EXPECT_EQ(CanUnloadNow(), S_OK); }

    ComApartment m_apartment;
};

// The class that makes proxies and stubs of all interfaces has the identifier of one of them.
constexpr CLSID ProxyFactory = {0x8F6F8908, 0xEB9B, 0x4306, {0x8F, 0xEA, 0xA2, 0x4D, 0xCE, 0xED, 0x44, 0xA9}};

CComPtr<IUnknown> FactoryOf(REFCLSID classId, REFIID interfaceId = IID_IClassFactory) {
    void* factory = nullptr;
    EXPECT_EQ(GetClassObject(classId, interfaceId, &factory), S_OK);
    CComPtr<IUnknown> owned;
    owned.Attach(static_cast<IUnknown*>(factory));
    return owned;
}

TEST_F(ClassObjects, EachClassThatClientsMake_MakesObjectsOfItsInterface) {
    const std::pair<CLSID, IID> classes[] = {{__uuidof(DbDatabase), __uuidof(IDbDatabase)},
                                             {__uuidof(DbTableRow), __uuidof(IDbTableRow)},
                                             {__uuidof(DbHeader), __uuidof(IDbHeader)},
                                             {__uuidof(DbProperties), __uuidof(IDbProperties)},
                                             {__uuidof(DbTableInfo), __uuidof(IDbTableInfo)}};
    for (const auto& [classId, interfaceId] : classes) {
        const auto factory = FactoryOf(classId);
        void* made = nullptr;
        ASSERT_EQ(static_cast<IClassFactory*>(factory.Get())->CreateInstance(nullptr, interfaceId, &made),
                  S_OK);
        static_cast<IUnknown*>(made)->Release();
        ASSERT_EQ(static_cast<IClassFactory*>(factory.Get())->CreateInstance(nullptr, IID_IUnknown, &made),
                  S_OK);
        static_cast<IUnknown*>(made)->Release();
        EXPECT_EQ(static_cast<IClassFactory*>(factory.Get())->CreateInstance(nullptr, IID_IPersist, &made),
                  E_NOINTERFACE);
        EXPECT_EQ(made, nullptr);
        EXPECT_EQ(static_cast<IClassFactory*>(factory.Get())->CreateInstance(nullptr, interfaceId, nullptr),
                  E_POINTER);
    }
}

TEST_F(ClassObjects, ClassesThatOnlyParentsHandOut_AreNotAvailable) {
    for (const CLSID& classId : {__uuidof(DbSource), __uuidof(DbTableDescr), __uuidof(DbTableData),
                                 __uuidof(DbFieldDescr), __uuidof(DbFieldValue)}) {
        void* factory = &m_apartment;
        EXPECT_EQ(GetClassObject(classId, IID_IClassFactory, &factory), CLASS_E_CLASSNOTAVAILABLE);
        EXPECT_EQ(factory, nullptr);
    }
}

TEST_F(ClassObjects, UnknownClass_IsNotAvailable) {
    void* factory = &m_apartment;
    EXPECT_EQ(GetClassObject(IID_IUnknown, IID_IClassFactory, &factory), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(factory, nullptr);
}

TEST_F(ClassObjects, NullForTheResult_IsRefused) {
    EXPECT_EQ(GetClassObject(__uuidof(DbDatabase), IID_IClassFactory, nullptr), E_POINTER);
    EXPECT_EQ(FactoryOf(__uuidof(DbDatabase))->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
}

TEST_F(ClassObjects, AnotherInterfaceOfAClassObject_IsRefused) {
    void* factory = &m_apartment;
    EXPECT_EQ(GetClassObject(__uuidof(DbDatabase), IID_IDispatch, &factory), E_NOINTERFACE);
    EXPECT_EQ(factory, nullptr);
}

TEST_F(ClassObjects, CanUnload_NotWhileAClassObjectALockOrAnObjectIsHeld) {
    EXPECT_EQ(CanUnloadNow(), S_OK);
    auto factory = FactoryOf(__uuidof(DbDatabase));
    EXPECT_EQ(CanUnloadNow(), S_FALSE);
    EXPECT_EQ(static_cast<IClassFactory*>(factory.Get())->LockServer(TRUE), S_OK);
    const auto locked = factory;
    factory = {};
    EXPECT_EQ(static_cast<IClassFactory*>(locked.Get())->LockServer(FALSE), S_OK);
    auto object = NewObject(__uuidof(DbHeader));
    EXPECT_EQ(CanUnloadNow(), S_FALSE);
    object = {};
    EXPECT_EQ(CanUnloadNow(), S_FALSE);
}

TEST_F(ClassObjects, UnlockedMoreOftenThanLocked_AHeldClassObjectKeepsTheLibrary) {
    const auto held = FactoryOf(__uuidof(DbDatabase));
    auto* const factory = static_cast<IClassFactory*>(held.Get());
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    EXPECT_EQ(CanUnloadNow(), S_FALSE);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
}

TEST_F(ClassObjects, Proxies_HaveAClassObjectThatMakesThemForEachInterface) {
    const auto factory = FactoryOf(ProxyFactory, IID_IPSFactoryBuffer);
    EXPECT_EQ(CanUnloadNow(), S_FALSE);
    OuterObject outer;
    for (const IID& interfaceId :
         {__uuidof(IDbDatabase), __uuidof(IDbSource), __uuidof(IDbTableDescr), __uuidof(IDbFieldDescr),
          __uuidof(IDbTableData), __uuidof(IDbTableRow), __uuidof(IDbFieldValue), __uuidof(IDbHeader),
          __uuidof(IDbProperties), __uuidof(IDbTableInfo)}) {
        IRpcProxyBuffer* proxy = nullptr;
        void* face = nullptr;
        ASSERT_EQ(
            static_cast<IPSFactoryBuffer*>(factory.Get())->CreateProxy(&outer, interfaceId, &proxy, &face),
            S_OK);
        static_cast<IUnknown*>(face)->Release();
        proxy->Release();
    }
    const auto object = NewObject(__uuidof(DbDatabase));
    IRpcStubBuffer* stub = nullptr;
    ASSERT_EQ(
        static_cast<IPSFactoryBuffer*>(factory.Get())->CreateStub(__uuidof(IDbDatabase), object.Get(), &stub),
        S_OK);
    stub->Disconnect();
    stub->Release();
    EXPECT_EQ(
        static_cast<IPSFactoryBuffer*>(factory.Get())->CreateStub(__uuidof(DbDatabase), object.Get(), &stub),
        E_NOINTERFACE);
}

TEST_F(ClassObjects, Aggregated_IdentityAndCountingAreTheOuterObjects) {
    OuterObject outer;
    const auto factory = FactoryOf(__uuidof(DbDatabase));
    void* made = nullptr;
    EXPECT_EQ(
        static_cast<IClassFactory*>(factory.Get())->CreateInstance(&outer, __uuidof(IDbDatabase), &made),
        CLASS_E_NOAGGREGATION);
    EXPECT_EQ(made, nullptr);
    ASSERT_EQ(static_cast<IClassFactory*>(factory.Get())->CreateInstance(&outer, IID_IUnknown, &made), S_OK);
    CComPtr<IUnknown> part;
    part.Attach(static_cast<IUnknown*>(made));
    outer.m_inner = part.Get();
    EXPECT_EQ(outer.m_references, 0U);

    void* face = nullptr;
    ASSERT_EQ(outer.QueryInterface(__uuidof(IDbDatabase), &face), S_OK);
    auto* const database = static_cast<IDbDatabase*>(face);
    EXPECT_EQ(outer.m_references, 1U);
    void* identity = nullptr;
    EXPECT_EQ(database->QueryInterface(IID_IUnknown, &identity), S_OK);
    EXPECT_EQ(identity, static_cast<IUnknown*>(&outer));
    outer.Release();
    long count = -1;
    EXPECT_EQ(database->get_TablesCount(&count), S_OK);
    EXPECT_EQ(count, 0);
    database->Release();
    EXPECT_EQ(outer.m_references, 0U);
    // The part's own IUnknown is another one.
    EXPECT_EQ(part->QueryInterface(IID_IUnknown, &identity), S_OK);
    EXPECT_EQ(identity, part.Get());
    part->Release();
}

}  // namespace
