#include "platform/console.h"
#include "tools/common/Failure.h"
#include "tools/common/Help.h"
#include "tools/zeb/Command.h"

int main(int argc, char** argv)
{
    using namespace zeb::tools;
    zeb::platform::PrepareConsole();

    CLI::App app("Looks after MAPI providers, profiles and stores, and shows what is in them.", "zeb");
    app.require_subcommand(1);
    app.formatter(std::make_shared<HelpFormatter>());
    app.allow_windows_style_options(false); // "/Inbox" is a folder on either system
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
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::ParseError& error)
    {
        return app.exit(error) == 0 ? ExitDone : ExitUsage;
    }
    return RunTool("zeb", action);
}
