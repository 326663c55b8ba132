// What a host that includes the library keeps of Windows' own names. Some platforms'
// headers have this one, in the same words.
#define small char

#include "zebapi/ZebAPI.h"

#include <gtest/gtest.h>

#include <string>

#define ZEB_TEXT_OF(name) #name
#define ZEB_EXPANDED(name) ZEB_TEXT_OF(name)

TEST(HostMacros, WindowsNamesStayTheHosts)
{
    EXPECT_EQ(std::string(ZEB_EXPANDED(GetMessage)).substr(0, 11), "GetMessageA");
    EXPECT_EQ(std::string(ZEB_EXPANDED(small)), "char");
}
