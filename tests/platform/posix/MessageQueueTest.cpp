// Window handles as file descriptors, which the system reuses.
#include "platform/messages.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

using namespace zeb::platform;

namespace
{

bool IsOpen(int descriptor)
{
    return fcntl(descriptor, F_GETFD) >= 0;
}

TEST(MessageQueue, PostsIgnoreReusedDescriptors)
{
    const HWND window = CreateMessageWindow();
    DestroyMessageWindow(window);
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
    EXPECT_FALSE(PostWindowMessage(window, 0x8001, 1, 2));
    char byte = 0;
    EXPECT_EQ(read(ends[0], &byte, 1), -1) << "the pipe is empty";
    WindowMessage message = {};
    ASSERT_EQ(write(ends[1], "foreign bytes, as many as a message has", 40), 40);
    EXPECT_FALSE(WaitWindowMessage(window, 0, message)) << "nor does it read what is another's";
    close(ends[0]);
    close(ends[1]);
}

TEST(MessageQueue, DestroyingTwiceClosesNoForeignDescriptor)
{
    const HWND window = CreateMessageWindow();
    DestroyMessageWindow(window);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    DestroyMessageWindow(window);
    EXPECT_TRUE(IsOpen(ends[0]));
    EXPECT_TRUE(IsOpen(ends[1]));
    close(ends[0]);
    close(ends[1]);
}

} // namespace
