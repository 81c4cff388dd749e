// A catalog of one thread used from another: every call goes through the registered proxies and stubs, with
// the same result as a direct call.
#include <atomic>
#include <functional>
#include <thread>

#include "Questionnaire.h"

namespace {

using namespace quillet::test;

class Apartments : public AutomationTest {
protected:
    // Runs the call on a thread with its own apartment, while this thread serves its calls.
    static void RunElsewhere(DWORD apartment, const std::function<void()>& call) {
        const HANDLE done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        std::thread other([&] {
            EXPECT_EQ(CoInitializeEx(nullptr, apartment), S_OK);
            call();
            CoUninitialize();
            SetEvent(done);
        });
        while (MsgWaitForMultipleObjects(1, &done, FALSE, INFINITE, QS_ALLINPUT) != WAIT_OBJECT_0) {
            MSG message;
            while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
                DispatchMessageW(&message);
            }
        }
        other.join();
        CloseHandle(done);
    }

    std::string Copy() const { return Utf8(m_folder / "copy.xml"); }

    std::vector<std::string> AnswersOnTheSpot() const { return AskEverything(Opened().Get(), Copy()); }
};

TEST_F(Apartments, StreamToTheMultithreadedApartment_GivesTheSameAnswers) {
    const auto catalog = Opened();
    IStream* stream = nullptr;
    ASSERT_EQ(CoMarshalInterThreadInterfaceInStream(__uuidof(IDbDatabase), catalog.Get(), &stream), S_OK);
    std::vector<std::string> answers;
    RunElsewhere(COINIT_MULTITHREADED, [&] {
        CComPtr<IDbDatabase> proxy;
        ASSERT_EQ(CoGetInterfaceAndReleaseStream(stream, __uuidof(IDbDatabase), Into(proxy)), S_OK);
        EXPECT_NE(proxy.Get(), catalog.Get());
        answers = AskEverything(proxy.Get(), Copy());
    });
    EXPECT_EQ(answers, AnswersOnTheSpot());
}

TEST_F(Apartments, GlobalTableToAnotherSingleThread_GivesTheSameAnswers) {
    const auto table = Made<IGlobalInterfaceTable>(CLSID_StdGlobalInterfaceTable);
    const auto catalog = Opened();
    DWORD cookie = 0;
    ASSERT_EQ(table->RegisterInterfaceInGlobal(catalog.Get(), __uuidof(IDbDatabase), &cookie), S_OK);
    std::vector<std::string> answers;
    RunElsewhere(COINIT_APARTMENTTHREADED, [&] {
        CComPtr<IDbDatabase> proxy;
        ASSERT_EQ(table->GetInterfaceFromGlobal(cookie, __uuidof(IDbDatabase), Into(proxy)), S_OK);
        EXPECT_NE(proxy.Get(), catalog.Get());
        answers = AskEverything(proxy.Get(), Copy());
    });
    EXPECT_EQ(table->RevokeInterfaceFromGlobal(cookie), S_OK);
    EXPECT_EQ(answers, AnswersOnTheSpot());
}

TEST_F(Apartments, LateBoundFromAnotherThread_GivesTheSameAnswers) {
    const auto catalog = Opened();
    IStream* stream = nullptr;
    ASSERT_EQ(CoMarshalInterThreadInterfaceInStream(IID_IDispatch, catalog.Get(), &stream), S_OK);
    RunElsewhere(COINIT_MULTITHREADED, [&] {
        CComPtr<IDispatch> proxy;
        ASSERT_EQ(CoGetInterfaceAndReleaseStream(stream, IID_IDispatch, Into(proxy)), S_OK);
        EXPECT_EQ(InvokeByName(proxy.Get(), "TableName", {CComVariant(2L)}).Text(), "IPE");
        const auto rows = InvokeByName(proxy.Get(), "TableData", {CComVariant("IPE")}).Object();
        const auto row = InvokeByName(rows.Get(), "Row", {CComVariant("1")}).Object();
        const auto value = InvokeByName(row.Get(), "FieldByName", {CComVariant("name")}).Object();
        EXPECT_EQ(InvokeByName(value.Get(), "Value").Text(), "IPE 100");
        EXPECT_FALSE(InvokeByName(proxy.Get(), "TableName", {CComVariant("two")}).Succeeded());
    });
}

TEST_F(Apartments, RowsFromAnotherThread_AreWalked) {
    const auto catalog = Opened();
    const auto rows = ObjectOf(catalog.Get(), &IDbDatabase::TableDataByName, Bstr("SHS"));
    IStream* stream = nullptr;
    ASSERT_EQ(CoMarshalInterThreadInterfaceInStream(__uuidof(IDbTableData), rows.Get(), &stream), S_OK);
    const auto names = [](IDbTableData* data) {
        std::vector<std::string> found;
        for (long i = 0; i < 93; ++i) {
            const auto row = ObjectOf(data, &IDbTableData::Row, i);
            const auto value = ObjectOf(row.Get(), &IDbTableRow::FieldByIndex, 0L);
            found.push_back(AnswerOf(value.Get(), &IDbFieldValue::get_Value));
        }
        return found;
    };
    std::vector<std::string> elsewhere;
    RunElsewhere(COINIT_MULTITHREADED, [&] {
        CComPtr<IDbTableData> proxy;
        ASSERT_EQ(CoGetInterfaceAndReleaseStream(stream, __uuidof(IDbTableData), Into(proxy)), S_OK);
        elsewhere = names(proxy.Get());
    });
    EXPECT_EQ(elsewhere, names(rows.Get()));
}

}  // namespace
