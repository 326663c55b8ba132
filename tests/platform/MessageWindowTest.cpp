#include "platform/messages.h"

#include <gtest/gtest.h>

using namespace zeb::platform;

namespace
{

TEST(MessageWindow, MessagesKeepTheirPostedOrder)
{
    const HWND window = CreateMessageWindow();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(PostWindowMessage(window, 0x8001, 7, -9));
    EXPECT_TRUE(PostWindowMessage(window, 0x8002, 0, 0));
    WindowMessage message = {};
    ASSERT_TRUE(WaitWindowMessage(window, 1000, message));
    EXPECT_EQ(message.message, 0x8001u);
    EXPECT_EQ(message.wParam, 7u);
    EXPECT_EQ(message.lParam, -9);
    ASSERT_TRUE(WaitWindowMessage(window, 1000, message));
    EXPECT_EQ(message.message, 0x8002u);
    EXPECT_FALSE(WaitWindowMessage(window, 0, message));
    DestroyMessageWindow(window);
}

TEST(MessageWindow, ADestroyedWindowTakesNoMessages)
{
    const HWND window = CreateMessageWindow();
    DestroyMessageWindow(window);
    EXPECT_FALSE(PostWindowMessage(window, 0x8001, 0, 0));
    const HWND next = CreateMessageWindow();
    ASSERT_NE(next, nullptr);
    EXPECT_NE(next, window);
    EXPECT_FALSE(PostWindowMessage(window, 0x8001, 0, 0));
    DestroyMessageWindow(window);
    EXPECT_TRUE(PostWindowMessage(next, 0x8002, 0, 0)) << "destroying twice destroys nothing else";
    WindowMessage message = {};
    ASSERT_TRUE(WaitWindowMessage(next, 1000, message));
    EXPECT_EQ(message.message, 0x8002u);
    EXPECT_FALSE(WaitWindowMessage(next, 0, message));
    DestroyMessageWindow(next);
}

} // namespace
