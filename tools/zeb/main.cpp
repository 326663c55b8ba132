#include "platform/arguments.h"
#include "platform/console.h"
#include "platform/interrupt.h"
#include "tools/common/CommandLine.h"
#include "tools/common/Failure.h"
#include "tools/zeb/Command.h"

int main(int argc, char** argv)
{
    using namespace zeb::tools;
    zeb::platform::PrepareConsole();
    // Commands that write item by item stop by themselves instead and report their progress.
    zeb::platform::EndOnInterrupt("zeb: interrupted\n");

    CLI::App app("Manages MAPI providers, profiles and stores, and shows their contents.", "zeb");
    PrepareCommandLine(app);
    Action action;
    AddDoctor(app, action);
    AddProvider(app, action);
    AddProfile(app, action);
    AddStore(app, action);
    AddFolders(app, action);
    AddInbox(app, action);
    AddFind(app, action);
    AddWatch(app, action);
    AddShow(app, action);
    AddMessageCommands(app, action);
    AddFolderCommands(app, action);
    AddLoad(app, action);
    AddAddressBook(app, action);
    AddSave(app, action);
    AddNames(app, action);
    if (const auto code = ReadCommandLine(app, zeb::platform::Arguments(argc, argv)))
    {
        return *code;
    }
    return RunTool("zeb", action);
}
