#include "platform/arguments.h"
#include "platform/console.h"
#include "platform/interrupt.h"
#include "tools/common/CommandLine.h"
#include "tools/common/Lister.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/ShellCandidates.h"
#include "tools/zeb/Versions.h"

using namespace zeb::tools;

int main(int argc, char** argv)
{
    zeb::platform::PrepareConsole();
    // Commands that write item by item stop by themselves instead and report their progress.
    zeb::platform::EndOnInterrupt("zeb: interrupted\n");

    CommandLine line("zeb", "Manages MAPI providers, profiles and stores, and shows their contents.");
    line.OnFailure([](const ToolFailure& failure, bool json) { ReportFailure("zeb", failure, json); });
    const Command app = line.Root();
    AddDoctor(app);
    AddProvider(app);
    AddProfile(app);
    AddStore(app);
    AddFolders(app);
    AddInbox(app);
    AddFind(app);
    AddWatch(app);
    AddRead(app);
    AddShow(app);
    AddAttachments(app);
    AddMessageCommands(app);
    AddFolderCommands(app);
    AddLoad(app);
    AddAddressBook(app);
    AddSave(app);
    AddExport(app);
    AddNames(app);
    line.AddShellCommands(ShellCandidates);
    line.AddManualPage({{"PAGER", "The program that shows long texts on a terminal."}});
    line.DescribeVersion(VersionDetails);
    return line.Run(zeb::platform::Arguments(argc, argv));
}
