// Loads the library that holds the provider's address book, and ends ("exit"), unloads it first ("unload"), or lets
// it unload the provider with everything open ("abandon").
#include "platform/module.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>

int main(int count, char** arguments)
{
    if (count != 3)
    {
        return 2;
    }
    const std::string folder = zeb::platform::OwnFolder();
    const zeb::platform::ModuleHandle holder = zeb::platform::LoadModule(folder + ZEB_WAB_HOLDER, 0);
    using Hold = int (*)(const char*, const char*);
    const auto hold = reinterpret_cast<Hold>(holder ? zeb::platform::FindExport(holder, "HoldWab") : nullptr);
    if (!hold)
    {
        return 3;
    }
    if (const int failed = hold((folder + ZEB_STORE_LIBRARY).c_str(), arguments[2]))
    {
        std::fprintf(stderr, "step %d failed\n", failed);
        return 4;
    }
    // The provider's thread is at work by then.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    if (std::strcmp(arguments[1], "unload") == 0)
    {
        zeb::platform::UnloadModule(holder);
    }
    if (std::strcmp(arguments[1], "abandon") == 0)
    {
        reinterpret_cast<void (*)()>(zeb::platform::FindExport(holder, "AbandonWab"))();
        // A thread that is left would run into what is not there any more.
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return 0;
}
