// Messages without a handler go to standard error.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "Quillet/platform/MessageBox.h"

namespace quillet::test {
namespace {

using platform::MessageHandler;
using platform::SetMessageHandler;
using platform::ShowMessage;

std::string ShownOnStandardError(platform::WideView text, platform::WideView caption) {
    MessageHandler before = SetMessageHandler({});
    testing::internal::CaptureStderr();
    ShowMessage(text, caption);
    std::string shown = testing::internal::GetCapturedStderr();
    SetMessageHandler(std::move(before));
    return shown;
}

TEST(PosixMessageBox, Show_WithoutAHandler_WritesALineInUtf8) {
    EXPECT_EQ(ShownOnStandardError(u"gr\u00F6\u00DFer \u20AC \U0001F600", u"Title"),
              "Title: gr\xC3\xB6\xC3\x9F"
              "er \xE2\x82\xAC \xF0\x9F\x98\x80\n");
}

TEST(PosixMessageBox, Show_WithoutACaption_WritesTheTextAlone) {
    EXPECT_EQ(ShownOnStandardError(u"text", u""), "text\n");
}

TEST(PosixMessageBox, Show_LoneSurrogate_IsReplaced) {
    const WCHAR lone[] = {u'a', 0xD800, u'b'};
    EXPECT_EQ(ShownOnStandardError(platform::WideView(lone, 3), u"c"),
              "c: a\xEF\xBF\xBD"
              "b\n");
}

TEST(PosixMessageBox, SetHandler_Empty_ReturnsAHandlerThatCanBeCalled) {
    MessageHandler before = SetMessageHandler({});
    MessageHandler systems = SetMessageHandler(std::move(before));
    ASSERT_TRUE(systems);
    testing::internal::CaptureStderr();
    systems(u"text", u"caption");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "caption: text\n");
}

}  // namespace
}  // namespace quillet::test
