#include "framework/App.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

std::string story;

class StoryApp : public CWinApp
{
public:
    BOOL InitInstance() override
    {
        story += "start ";
        return CWinApp::InitInstance();
    }
    int ExitInstance() override
    {
        story += "end";
        return 0;
    }
};

class RefusingApp : public StoryApp
{
public:
    BOOL InitInstance() override { return FALSE; }
};

TEST(WinApp, InstancesStartAndEndTheApp)
{
    story.clear();
    {
        CWinAppInstance<StoryApp> instance;
        EXPECT_TRUE(instance.Started());
        EXPECT_EQ(story, "start ");
        EXPECT_TRUE(instance.Get().IsKindOf(RUNTIME_CLASS(CWinApp)));
    }
    EXPECT_EQ(story, "start end");
}

TEST(WinApp, AFailedStartHasNoEnd)
{
    story.clear();
    {
        const CWinAppInstance<RefusingApp> instance;
        EXPECT_FALSE(instance.Started());
    }
    EXPECT_EQ(story, "");
}

} // namespace
