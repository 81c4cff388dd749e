// Messages and their handler.
#include "Quillet/platform/MessageBox.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace quillet::test {
namespace {

using platform::MessageHandler;
using platform::SetMessageHandler;
using platform::ShowMessage;
using platform::WideString;
using platform::WideView;

// Restores the previous handler.
class Message : public testing::Test {
protected:
    Message()
        : m_before(SetMessageHandler(
              [this](WideView text, WideView caption) { m_shown.emplace_back(text, caption); })) {}
    ~Message() override { SetMessageHandler(std::move(m_before)); }

    std::vector<std::pair<WideString, WideString>> m_shown;

private:
    MessageHandler m_before;
};

TEST_F(Message, Show_WithAHandler_HandsOverTextAndCaption) {
    ShowMessage(OLESTR("the text"), OLESTR("the caption"));
    ASSERT_EQ(m_shown.size(), 1U);
    EXPECT_EQ(m_shown[0].first, OLESTR("the text"));
    EXPECT_EQ(m_shown[0].second, OLESTR("the caption"));
}

TEST_F(Message, SetHandler_Another_GetsTheMessagesAndReturnsTheFirst) {
    int count = 0;
    MessageHandler first = SetMessageHandler([&count](WideView, WideView) { ++count; });
    ShowMessage(OLESTR("one"), OLESTR(""));
    EXPECT_EQ(count, 1);
    EXPECT_TRUE(m_shown.empty());

    SetMessageHandler(std::move(first));
    ShowMessage(OLESTR("two"), OLESTR(""));
    EXPECT_EQ(count, 1);
    EXPECT_EQ(m_shown.size(), 1U);
}

TEST_F(Message, SetHandler_FromWithinAHandler_CountsFromTheNextMessage) {
    int later = 0;
    SetMessageHandler([this, &later](WideView text, WideView caption) {
        SetMessageHandler([&later](WideView, WideView) { ++later; });
        m_shown.emplace_back(text, caption);
    });
    ShowMessage(OLESTR("one"), OLESTR(""));
    EXPECT_EQ(m_shown.size(), 1U);
    EXPECT_EQ(later, 0);
    ShowMessage(OLESTR("two"), OLESTR(""));
    EXPECT_EQ(m_shown.size(), 1U);
    EXPECT_EQ(later, 1);
}

}  // namespace
}  // namespace quillet::test
