// Exceptions at the boundary of the automation server.
#include "Quillet/automation/MethodFailure.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "Quillet/Db_Exception.h"
#include "Quillet/base/CComVariant.h"
#include "support/MsxmlDocument.h"

namespace {

using namespace quillet::test;
using quillet::automation::Guarded;
using quillet::automation::MethodFailure;

// The result of a method that throws this way, and the message that its caller gets.
struct Outcome {
    HRESULT m_result = S_OK;
    std::string m_message;
};

template <typename Body>
Outcome OutcomeOf(Body body) {
    const ComApartment apartment;
    SetErrorInfo(0, nullptr);
    Outcome outcome{Guarded(IID_IDispatch, body), "none"};
    IErrorInfo* reported = nullptr;
    if (GetErrorInfo(0, &reported) == S_OK) {
        quillet::CComPtr<IErrorInfo> error;
        error.Attach(reported);
        quillet::CComVariant text;
        text.vt = VT_BSTR;
        EXPECT_EQ(error->GetDescription(&text.bstrVal), S_OK);
        outcome.m_message = TextOf(text);
        GUID source{};
        EXPECT_EQ(error->GetGUID(&source), S_OK);
        EXPECT_TRUE(IsEqualGUID(source, IID_IDispatch));
    }
    return outcome;
}

TEST(Guarded, NothingIsThrown_Succeeds) {
    const Outcome outcome = OutcomeOf([] {});
    EXPECT_EQ(outcome.m_result, S_OK);
    EXPECT_EQ(outcome.m_message, "none");
}

TEST(Guarded, Failure_IsItsResultAndMessage) {
    const Outcome outcome = OutcomeOf([] { throw MethodFailure{DISP_E_TYPEMISMATCH, "z\u0142y"}; });
    EXPECT_EQ(outcome.m_result, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(outcome.m_message, "z\u0142y");
}

TEST(Guarded, ExceptionOfTheModel_IsAFailureWithItsReport) {
    const Outcome outcome = OutcomeOf([] { throw new DbException("file", 7, "what"); });
    EXPECT_EQ(outcome.m_result, E_FAIL);
    EXPECT_EQ(outcome.m_message, "Quillet exception thrown\r\nFile: file @ 7\r\nMessage: what");
}

TEST(Guarded, OtherExceptionByPointer_IsAFailure) {
    const Outcome outcome = OutcomeOf([] { throw new quillet::CInvalidArgException; });
    EXPECT_EQ(outcome.m_result, E_FAIL);
    EXPECT_NE(outcome.m_message, "none");
}

TEST(Guarded, LongMessage_IsCut) {
    const Outcome outcome = OutcomeOf([] { throw new DbException(CString(std::string(100000, 'x'))); });
    EXPECT_EQ(outcome.m_result, E_FAIL);
    EXPECT_EQ(outcome.m_message, std::string(4095, 'x'));
}

TEST(Guarded, MemoryRunsOut_SaysSo) {
    EXPECT_EQ(OutcomeOf([] { throw std::bad_alloc(); }).m_result, E_OUTOFMEMORY);
    EXPECT_EQ(OutcomeOf([] { throw new quillet::CMemoryException; }).m_result, E_OUTOFMEMORY);
}

TEST(Guarded, ExceptionOfTheStandardLibrary_IsAFailureWithItsMessage) {
    const Outcome outcome = OutcomeOf([] { throw std::runtime_error("what"); });
    EXPECT_EQ(outcome.m_result, E_FAIL);
    EXPECT_EQ(outcome.m_message, "what");
}

TEST(Guarded, WhateverElseIsThrown_IsUnexpected) {
    EXPECT_EQ(OutcomeOf([] { throw 7; }).m_result, E_UNEXPECTED);
}

TEST(Check, FailureOfTheSystem_IsThrownWithItsNumber) {
    const Outcome outcome = OutcomeOf([] { quillet::automation::Check(TYPE_E_CANTLOADLIBRARY); });
    EXPECT_EQ(outcome.m_result, TYPE_E_CANTLOADLIBRARY);
    EXPECT_EQ(outcome.m_message, "The system reports 0x80029C4A");
    EXPECT_EQ(OutcomeOf([] { quillet::automation::Check(S_FALSE); }).m_result, S_OK);
}

}  // namespace
