#include "platform/arguments.h"
#include "tools/common/CommandLine.h"
#include "tools/common/Failure.h"
#include "tools/zebview/MainWindow.h"

#include <commctrl.h>

namespace
{

void PrepareControls()
{
    INITCOMMONCONTROLSEX controls{};
    controls.dwSize = sizeof controls;
    controls.dwICC = ICC_LISTVIEW_CLASSES | ICC_TREEVIEW_CLASSES | ICC_TAB_CLASSES;
    InitCommonControlsEx(&controls);
}

int RunMessages(zeb::view::MainWindow& window)
{
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0)
    {
        if (!window.Translate(message))
        {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    return static_cast<int>(message.wParam);
}

int ShowWindowOf(const std::string& profile)
{
    PrepareControls();
    zeb::view::CallLog log;
    zeb::view::MainWindow window(log, profile);
    return RunMessages(window);
}

} // namespace

int main(int argc, char** argv)
{
    using namespace zeb::tools;
    CommandLine line("zebview", "Shows the folders, messages and address book of a profile in a window.");
    const Command app = line.Root();
    std::string profile;
    app.AddOption("--profile", profile, "The profile to open; without it the default profile").Type("NAME");
    app.Runs([&] { return ShowWindowOf(profile); });
    return line.Run(zeb::platform::Arguments(argc, argv));
}
