#include "tools/zebview/Menu.h"

#include "tools/zebview/Ids.h"

#include <initializer_list>
#include <iterator>

namespace zeb::view
{
namespace
{

/// A line of a menu; a separator when it has no text.
struct MenuLine
{
    UINT command;
    const WCHAR* text;
};

void AddMenu(HMENU bar, const WCHAR* title, std::initializer_list<MenuLine> lines)
{
    HMENU menu = CreatePopupMenu();
    for (const MenuLine& line : lines)
    {
        AppendMenuW(menu, line.text == nullptr ? MF_SEPARATOR : MF_STRING, line.command, line.text);
    }
    AppendMenuW(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(menu), title);
}

constexpr BYTE Key = FVIRTKEY, Control = FVIRTKEY | FCONTROL, Shift = FVIRTKEY | FSHIFT;

constexpr ACCEL Keys[] = {
    {Control, 'P', CommandProfile},       {Control, 'S', CommandSave},          {Control, 'C', CommandCopy},
    {Control, VK_INSERT, CommandCopy},    {Control, 'A', CommandSelectAll},     {Control, 'F', CommandFilter},
    {Control, 'B', CommandAddressBook},   {Control, 'L', CommandLog},           {Control, '1', CommandMessageTab},
    {Control, '2', CommandPropertiesTab}, {Control, '3', CommandRecipientsTab}, {Control, '4', CommandAttachmentsTab},
    {Key, VK_F5, CommandReload},          {Key, VK_F6, CommandNextPane},        {Shift, VK_F6, CommandPreviousPane}};

} // namespace

HMENU MakeMenu()
{
    HMENU bar = CreateMenu();
    AddMenu(bar, L"&File",
            {{CommandProfile, L"Choose a &profile\tCtrl+P"},
             {CommandSave, L"&Save the attachment...\tCtrl+S"},
             {0, nullptr},
             {CommandExit, L"E&xit\tAlt+F4"}});
    AddMenu(bar, L"&Edit",
            {{CommandCopy, L"&Copy\tCtrl+C"},
             {CommandSelectAll, L"Select &all\tCtrl+A"},
             {0, nullptr},
             {CommandOpenValue, L"&Open the value\tEnter"}});
    AddMenu(bar, L"&View",
            {{CommandMessageTab, L"&Message\tCtrl+1"},
             {CommandPropertiesTab, L"&Properties\tCtrl+2"},
             {CommandRecipientsTab, L"&Recipients\tCtrl+3"},
             {CommandAttachmentsTab, L"&Attachments\tCtrl+4"},
             {0, nullptr},
             {CommandFilter, L"&Filter\tCtrl+F"},
             {CommandAddressBook, L"Address &book\tCtrl+B"},
             {CommandAllFolders, L"A&ll folders of the store"},
             {0, nullptr},
             {CommandLog, L"Lo&g of calls\tCtrl+L"},
             {CommandClearLog, L"&Clear the log"},
             {0, nullptr},
             {CommandReload, L"Rea&d again\tF5"},
             {CommandNextPane, L"&Next pane\tF6"},
             {CommandPreviousPane, L"Pre&vious pane\tShift+F6"}});
    return bar;
}

Accelerators MakeAccelerators()
{
    ACCEL keys[std::size(Keys)];
    std::copy(std::begin(Keys), std::end(Keys), keys);
    return Accelerators(CreateAcceleratorTableW(keys, static_cast<int>(std::size(keys))));
}

} // namespace zeb::view
