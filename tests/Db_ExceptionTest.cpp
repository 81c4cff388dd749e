#include "Quillet/Db_Exception.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>

#include "Quillet/platform/MessageBox.h"
#include "support/TestHelpers.h"

namespace {

using quillet::CException;
using quillet::CInvalidArgException;
using quillet::CMemoryException;
using quillet::CObject;

constexpr WCHAR Untouched = 0x2603;

struct Buffer {
    Buffer() { std::fill(std::begin(m_units), std::end(m_units), Untouched); }

    std::string Text() const { return CString(static_cast<const WCHAR*>(m_units)).ToUtf8(); }

    WCHAR m_units[16];
};

TEST(DbException, Construct_Default_HasAnEmptyMessage) {
    const DbException exception;
    EXPECT_TRUE(exception.Message().IsEmpty());
}

TEST(DbException, Construct_WithMessage_KeepsItWithoutABanner) {
    const DbException exception(CString("Invalid pointer"));
    EXPECT_EQ(exception.Message().ToUtf8(), "Invalid pointer");
}

TEST(DbException, Construct_WithFileAndLine_FormatsTheReport) {
    const DbException exception("x", 7, "m");
    EXPECT_EQ(exception.Message().ToUtf8(), "Quillet exception thrown\r\nFile: x @ 7\r\nMessage: m");
}

TEST(DbException, Construct_WithFileAndLine_FormatsNothingInsideTheArguments) {
    const DbException exception("%s/%n.cpp", -1, "100%d \u017C\u00F3\u0142w");
    EXPECT_EQ(exception.Message().ToUtf8(),
              "Quillet exception thrown\r\nFile: %s/%n.cpp @ -1\r\nMessage: 100%d \u017C\u00F3\u0142w");
}

TEST(DbException, Construct_WithNullFile_StillReports) {
    const DbException exception(nullptr, 1, "m");
    EXPECT_EQ(exception.Message().ToUtf8(), "Quillet exception thrown\r\nFile:  @ 1\r\nMessage: m");
}

TEST(DbException, Copy_OfAnException_HasTheSameTextAndItsOwnLife) {
    auto original = std::make_unique<DbException>("x", 7, "m");
    const auto copy = std::make_unique<DbException>(*original);
    const std::string text = original->Message().ToUtf8();
    original.reset();
    EXPECT_EQ(copy->Message().ToUtf8(), text);
}

TEST(DbException, GetErrorMessage_RoomEnough_CopiesTheWholeText) {
    const DbException exception(CString("Invalid pointer"));
    Buffer buffer;
    EXPECT_EQ(exception.GetErrorMessage(buffer.m_units, 16, nullptr), 1);
    EXPECT_EQ(buffer.Text(), "Invalid pointer");
}

TEST(DbException, GetErrorMessage_MessageOfCapacityMinusOne_IsCopiedWhole) {
    const DbException exception(CString("1234567"));
    Buffer buffer;
    EXPECT_EQ(exception.GetErrorMessage(buffer.m_units, 8, nullptr), 1);
    EXPECT_EQ(buffer.Text(), "1234567");
    EXPECT_EQ(buffer.m_units[8], Untouched);
}

TEST(DbException, GetErrorMessage_OneCharacterMore_IsCutByOne) {
    const DbException exception(CString("12345678"));
    Buffer buffer;
    EXPECT_EQ(exception.GetErrorMessage(buffer.m_units, 8, nullptr), 1);
    EXPECT_EQ(buffer.Text(), "1234567");
    EXPECT_EQ(buffer.m_units[8], Untouched);
}

TEST(DbException, GetErrorMessage_ShortMessage_AlsoEndsTheBufferWithZero) {
    const DbException exception(CString("ab"));
    Buffer buffer;
    EXPECT_EQ(exception.GetErrorMessage(buffer.m_units, 8, nullptr), 1);
    EXPECT_EQ(buffer.Text(), "ab");
    EXPECT_EQ(buffer.m_units[7], WCHAR(0));
    EXPECT_EQ(buffer.m_units[6], Untouched);
}

TEST(DbException, GetErrorMessage_CapacityOne_GivesOnlyTheZero) {
    const DbException exception(CString("message"));
    Buffer buffer;
    unsigned int helpContext = 5;
    EXPECT_EQ(exception.GetErrorMessage(buffer.m_units, 1, &helpContext), 1);
    EXPECT_EQ(buffer.m_units[0], WCHAR(0));
    EXPECT_EQ(buffer.m_units[1], Untouched);
    EXPECT_EQ(helpContext, 0U);
}

template <typename Call>
std::string ThrownClass(Call call) {
    try {
        call();
    } catch (CException* exception) {
        std::string name = exception->GetRuntimeClass()->m_className;
        exception->Delete();
        return name;
    }
    return "nothing was thrown";
}

TEST(DbException, GetErrorMessage_NullBuffer_ThrowsInvalidArgumentAfterStoringTheHelpContext) {
    const DbException exception(CString("message"));
    unsigned int helpContext = 5;
    EXPECT_EQ(ThrownClass([&] { exception.GetErrorMessage(nullptr, 8, &helpContext); }),
              CInvalidArgException::classCInvalidArgException.m_className);
    EXPECT_EQ(helpContext, 0U);
}

TEST(DbException, GetErrorMessage_ZeroCapacity_ThrowsInvalidArgumentAndLeavesTheBuffer) {
    const DbException exception(CString("message"));
    Buffer buffer;
    EXPECT_EQ(ThrownClass([&] { exception.GetErrorMessage(buffer.m_units + 1, 0, nullptr); }),
              CInvalidArgException::classCInvalidArgException.m_className);
    EXPECT_EQ(buffer.m_units[0], Untouched);
    EXPECT_EQ(buffer.m_units[1], Untouched);
}

TEST(DbException, GetErrorMessage_NonConstForm_GivesTheSameText) {
    DbException exception(CString("message"));
    Buffer buffer;
    CException& base = exception;
    EXPECT_EQ(base.GetErrorMessage(buffer.m_units, 16, nullptr), 1);
    EXPECT_EQ(buffer.Text(), "message");
}

TEST(DbException, Throw_ByPointer_IsCaughtAsTheGeneralException) {
    try {
        throw new DbException("module", 12, "Out of recordset range");
    } catch (CException* caught) {
        WCHAR text[128];
        EXPECT_EQ(caught->GetErrorMessage(text, 128, nullptr), 1);
        EXPECT_EQ(CString(static_cast<const WCHAR*>(text)).ToUtf8(),
                  "Quillet exception thrown\r\nFile: module @ 12\r\nMessage: Out of recordset range");
        caught->Delete();
    }
}

TEST(DbException, RunTimeClass_IsAKindOfTheGeneralException) {
    const DbException exception;
    EXPECT_TRUE(exception.IsKindOf(&CException::classCException));
    EXPECT_TRUE(exception.IsKindOf(&CObject::classCObject));
    EXPECT_FALSE(exception.IsKindOf(&CMemoryException::classCMemoryException));
}

TEST(DbException, InheritedChecks_DoNothing) {
    const DbException exception(CString("message"));
    exception.AssertValid();
    EXPECT_EQ(exception.Message().ToUtf8(), "message");
}

TEST(DbException, ReportError_ShowsTheTextOfGetErrorMessage) {
    std::string shown;
    const auto before = quillet::platform::SetMessageHandler(
        [&](quillet::WideView text, quillet::WideView) { shown = CString(text).ToUtf8(); });
    DbException exception("x", 7, "m");
    EXPECT_EQ(exception.ReportError(), 1);
    quillet::platform::SetMessageHandler(before);
    EXPECT_EQ(shown, "Quillet exception thrown\r\nFile: x @ 7\r\nMessage: m");
}

TEST(CException, GetErrorMessage_ClassWithoutAMessage_IsZeroAndEmptiesTheBuffer) {
    const CException exception;
    Buffer buffer;
    unsigned int helpContext = 5;
    EXPECT_EQ(exception.GetErrorMessage(buffer.m_units, 16, &helpContext), 0);
    EXPECT_EQ(buffer.Text(), "");
    EXPECT_EQ(helpContext, 0U);
}

TEST(CException, GetErrorMessage_PlatformExceptions_CutTheirTextsToTheBuffer) {
    Buffer buffer;
    EXPECT_EQ(CMemoryException().GetErrorMessage(buffer.m_units, 4, nullptr), 1);
    EXPECT_EQ(buffer.Text().size(), 3U);
    EXPECT_EQ(CInvalidArgException().GetErrorMessage(buffer.m_units, 6, nullptr), 1);
    EXPECT_EQ(buffer.Text().size(), 5U);
    EXPECT_EQ(CInvalidArgException().GetErrorMessage(nullptr, 6, nullptr), 0);
    EXPECT_EQ(CInvalidArgException().GetErrorMessage(buffer.m_units, 0, nullptr), 0);
}

TEST(CException, IsKindOf_PlatformExceptions_KnowTheirClasses) {
    EXPECT_TRUE(CMemoryException().IsKindOf(&CException::classCException));
    EXPECT_FALSE(CMemoryException().IsKindOf(&CInvalidArgException::classCInvalidArgException));
    EXPECT_FALSE(CException().IsKindOf(&CMemoryException::classCMemoryException));
    EXPECT_FALSE(CException().IsKindOf(nullptr));
}

}  // namespace
