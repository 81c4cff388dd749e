// References to automation objects: a client that releases what it was given leaves nothing behind.
#include "Questionnaire.h"
#include "support/OuterObject.h"

namespace {

using namespace quillet::test;

class References : public AutomationTest {
protected:
    References() {
        m_library = GetModuleHandleW(L"IQuillet.dll");
        m_canUnload = reinterpret_cast<CanUnload*>(
            reinterpret_cast<void*>(GetProcAddress(m_library, "DllCanUnloadNow")));
    }

    HRESULT CanUnloadNow() const { return m_canUnload(); }

private:
    using CanUnload = HRESULT STDAPICALLTYPE();

    HMODULE m_library;
    CanUnload* m_canUnload;
};

// Objects given to a client, each with one reference. It counts the references that it was given and those
// that it released.
class Client {
public:
    template <typename Interface>
    Interface* Take(CComPtr<Interface> object) {
        EXPECT_TRUE(object);
        object->AddRef();
        m_held.push_back(object.Get());
        ++m_given;
        return object.Get();
    }

    void GiveAllBack(bool lastFirst) {
        while (!m_held.empty()) {
            const auto next = lastFirst ? m_held.end() - 1 : m_held.begin();
            IUnknown* const object = *next;
            m_held.erase(next);
            object->Release();
            ++m_givenBack;
        }
    }

    std::size_t m_given = 0;
    std::size_t m_givenBack = 0;

private:
    std::vector<IUnknown*> m_held;
};

void TakeOneOfEach(IDbDatabase* catalog, Client& client) {
    client.Take(ObjectOf(catalog, &IDbDatabase::get_Source));
    client.Take(ObjectOf(catalog, &IDbDatabase::get_Header));
    client.Take(ObjectOf(catalog, &IDbDatabase::get_Properties));
    client.Take(ObjectOf(catalog, &IDbDatabase::TableInfoByName, Bstr("IPE")));
    IDbTableDescr* const fields = client.Take(ObjectOf(catalog, &IDbDatabase::TableDescrByName, Bstr("IPE")));
    client.Take(ObjectOf(fields, &IDbTableDescr::FieldByIndex, 0L));
    IDbTableData* const rows = client.Take(ObjectOf(catalog, &IDbDatabase::TableDataByIndex, 2L));
    IDbTableRow* const row = client.Take(ObjectOf(rows, &IDbTableData::Row, 0L));
    client.Take(ObjectOf(row, &IDbTableRow::FieldByIndex, 0L));
    client.Take(ObjectOf(row, &IDbTableRow::FieldByName, Bstr("h")));
    client.Take(ObjectOf(catalog, &IDbDatabase::TableData, CComVariant("HEA")));
    client.Take(ObjectOf(catalog, &IDbDatabase::TableDescr, CComVariant(3L)));
}

TEST_F(References, EveryObjectInEitherOrder_LeavesNoneBehind) {
    EXPECT_EQ(CanUnloadNow(), S_OK);
    for (const bool lastFirst : {true, false}) {
        Client client;
        for (int i = 0; i < 50; ++i) {
            IDbDatabase* const catalog = client.Take(Opened());
            TakeOneOfEach(catalog, client);
        }
        EXPECT_EQ(CanUnloadNow(), S_FALSE);
        client.GiveAllBack(lastFirst);
        EXPECT_EQ(client.m_given, 50U * 13U);
        EXPECT_EQ(client.m_givenBack, client.m_given);
        EXPECT_EQ(CanUnloadNow(), S_OK) << (lastFirst ? "last first" : "first first");
    }
}

TEST_F(References, LastReference_EndsTheObject) {
    IDbDatabase* catalog = nullptr;
    ASSERT_EQ(CoCreateInstance(__uuidof(DbDatabase), nullptr, CLSCTX_INPROC_SERVER, __uuidof(IDbDatabase),
                               reinterpret_cast<void**>(&catalog)),
              S_OK);
    EXPECT_EQ(catalog->AddRef(), 2U);
    EXPECT_EQ(catalog->Release(), 1U);
    EXPECT_EQ(CanUnloadNow(), S_FALSE);
    EXPECT_EQ(catalog->Release(), 0U);
    EXPECT_EQ(CanUnloadNow(), S_OK);
}

TEST_F(References, EveryMember_LeavesNoneBehind) {
    for (int i = 0; i < 3; ++i) {
        AskEverything(Opened().Get(), Utf8(m_folder / "copy.xml"));
        EXPECT_EQ(CanUnloadNow(), S_OK);
    }
}

TEST_F(References, ObjectsThatOutliveTheirCatalog_FailAndAreReleased) {
    auto catalog = Opened();
    const auto rows = ObjectOf(catalog.Get(), &IDbDatabase::TableDataByName, Bstr("IPE"));
    const auto fields = ObjectOf(catalog.Get(), &IDbDatabase::TableDescrByName, Bstr("IPE"));
    const auto row = ObjectOf(rows.Get(), &IDbTableData::Row, 0L);
    const auto value = ObjectOf(row.Get(), &IDbTableRow::FieldByIndex, 0L);
    const auto field = ObjectOf(fields.Get(), &IDbTableDescr::FieldByIndex, 0L);
    const auto source = ObjectOf(catalog.Get(), &IDbDatabase::get_Source);
    const auto header = ObjectOf(catalog.Get(), &IDbDatabase::get_Header);
    const auto properties = ObjectOf(catalog.Get(), &IDbDatabase::get_Properties);
    const auto info = ObjectOf(catalog.Get(), &IDbDatabase::TableInfoByName, Bstr("IPE"));
    catalog = {};
    const std::string failed = "failed with ";
    for (const std::string& answer :
         {AnswerOf(rows.Get(), &IDbTableData::get_RowsCount),
          AnswerOf(fields.Get(), &IDbTableDescr::get_FieldsCount),
          AnswerOf(row.Get(), &IDbTableRow::get_FieldsCount),
          AnswerOf(value.Get(), &IDbFieldValue::get_Value), AnswerOf(value.Get(), &IDbFieldValue::get_Index),
          AnswerOf(field.Get(), &IDbFieldDescr::get_Name), AnswerOf(field.Get(), &IDbFieldDescr::get_Type),
          AnswerOf(source.Get(), &IDbSource::get_FilePath), AnswerOf(header.Get(), &IDbHeader::get_Title),
          AnswerOf(properties.Get(), &IDbProperties::get_Units), AnswerOf(info.Get(), &IDbTableInfo::get_sql),
          AnswerOf(info.Get(), &IDbTableInfo::get_Type)}) {
        EXPECT_EQ(answer.substr(0, failed.size()), failed) << answer;
    }
    EXPECT_EQ(CanUnloadNow(), S_FALSE);
}

TEST_F(References, NothingIsLeftBehindTheTestBefore) {
    EXPECT_EQ(CanUnloadNow(), S_OK);
}

TEST_F(References, LockedServer_StaysLoaded) {
    CComPtr<IClassFactory> factory;
    ASSERT_EQ(CoGetClassObject(__uuidof(DbDatabase), CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                               Into(factory)),
              S_OK);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(CanUnloadNow(), S_FALSE);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    EXPECT_EQ(CanUnloadNow(), S_FALSE);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    factory = {};
    EXPECT_EQ(CanUnloadNow(), S_OK);
}

TEST_F(References, PartOfAnotherObject_LeavesCountingToIt) {
    OuterObject outer;
    for (const CLSID& classId : {__uuidof(DbDatabase), __uuidof(DbTableRow), __uuidof(DbHeader),
                                 __uuidof(DbProperties), __uuidof(DbTableInfo)}) {
        outer.m_references = 0;
        void* inner = nullptr;
        ASSERT_EQ(CoCreateInstance(classId, &outer, CLSCTX_INPROC_SERVER, IID_IUnknown, &inner), S_OK);
        outer.m_inner = static_cast<IUnknown*>(inner);
        {
            const auto dispatch = As<IDispatch>(&outer);
            EXPECT_EQ(outer.m_references, 1U);
            EXPECT_EQ(As<IUnknown>(dispatch.Get()).Get(), &outer);
        }
        EXPECT_EQ(outer.m_references, 0U);
        EXPECT_EQ(outer.m_inner->Release(), 0U);
        outer.m_inner = nullptr;
        EXPECT_EQ(CanUnloadNow(), S_OK);
    }
}

TEST_F(References, PartOfAnotherObject_HasToBeAskedForItsIdentity) {
    OuterObject outer;
    void* inner = nullptr;
    EXPECT_TRUE(FAILED(
        CoCreateInstance(__uuidof(DbDatabase), &outer, CLSCTX_INPROC_SERVER, __uuidof(IDbDatabase), &inner)));
    EXPECT_EQ(inner, nullptr);
    EXPECT_EQ(CanUnloadNow(), S_OK);
}

}  // namespace
