// Drives a window of another process: reads one request a line (JSON) from standard input, and answers each with a line.
//
//     driver DESKTOP        the desktop that the window is on
#include "tests/zebview/Remote.h"

#include <commctrl.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdio>
#include <functional>
#include <iostream>
#include <map>
#include <string>

namespace
{

using Json = nlohmann::json;
using namespace zeb::test;

HWND g_main = nullptr;

HWND Control(const Json& request)
{
    HWND control = GetDlgItem(g_main, request.at("id").get<int>());
    if (control == nullptr)
    {
        throw std::runtime_error("the window has no control " + request.at("id").dump());
    }
    return control;
}

double Milliseconds(std::chrono::steady_clock::time_point since)
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - since).count();
}

/// Waits until a control has nothing to draw.
void WaitUntilDrawn(HWND window)
{
    const auto begin = std::chrono::steady_clock::now();
    while (GetUpdateRect(window, nullptr, FALSE) && Milliseconds(begin) < 60'000)
    {
        Sleep(1);
    }
}

Json WaitForWindow(const Json& request)
{
    const std::wstring name = Wide(request.at("class").get<std::string>());
    for (int tries = 0; tries < 600 && (g_main = FindWindowW(name.c_str(), nullptr)) == nullptr; ++tries)
    {
        Sleep(50);
    }
    // Answers when it has done what it does at first.
    SendMessageW(g_main, WM_NULL, 0, 0);
    return {{"found", g_main != nullptr}};
}

Json ReadText(const Json& request)
{
    return {{"text", TextOf(request.contains("id") ? Control(request) : g_main)}};
}

std::string Cell(HWND list, int row, int column)
{
    LVITEMW item{};
    item.iSubItem = column;
    return Utf8(SendWithText(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), item, &LVITEMW::pszText));
}

Json Columns(HWND list)
{
    HWND header = reinterpret_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0));
    Json columns = Json::array();
    const auto count = static_cast<int>(SendMessageW(header, HDM_GETITEMCOUNT, 0, 0));
    for (int i = 0; i < count; ++i)
    {
        HDITEMW item{};
        item.mask = HDI_TEXT | HDI_FORMAT | HDI_WIDTH;
        const std::string title =
            Utf8(SendWithText(header, HDM_GETITEMW, static_cast<WPARAM>(i), item, &HDITEMW::pszText));
        const char* sorted = (item.fmt & HDF_SORTUP) != 0 ? "up" : (item.fmt & HDF_SORTDOWN) != 0 ? "down" : "";
        columns.push_back({{"title", title}, {"sorted", sorted}, {"width", item.cxy}});
    }
    return columns;
}

Json ReadList(const Json& request)
{
    HWND list = Control(request);
    const auto total = static_cast<int>(SendMessageW(list, LVM_GETITEMCOUNT, 0, 0));
    const int from = request.value("from", 0);
    const int end = std::min(total, from + request.value("count", 100));
    const Json columns = Columns(list);
    Json rows = Json::array();
    for (int row = from; row < end; ++row)
    {
        Json cells = Json::array();
        for (int column = 0; column < static_cast<int>(columns.size()); ++column)
        {
            cells.push_back(Cell(list, row, column));
        }
        rows.push_back(cells);
    }
    const LRESULT selected = SendMessageW(list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED);
    return {{"columns", columns}, {"total", total}, {"rows", rows}, {"selected", selected}};
}

HTREEITEM NextItem(HWND tree, UINT relation, HTREEITEM item)
{
    return reinterpret_cast<HTREEITEM>(SendMessageW(tree, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

std::string Label(HWND tree, HTREEITEM handle)
{
    TVITEMW item{};
    item.mask = TVIF_TEXT | TVIF_HANDLE;
    item.hItem = handle;
    return Utf8(SendWithText(tree, TVM_GETITEMW, 0, item, &TVITEMW::pszText));
}

Json Items(HWND tree, HTREEITEM first)
{
    Json items = Json::array();
    for (HTREEITEM item = first; item != nullptr; item = NextItem(tree, TVGN_NEXT, item))
    {
        items.push_back({{"text", Label(tree, item)}, {"items", Items(tree, NextItem(tree, TVGN_CHILD, item))}});
    }
    return items;
}

Json ReadTree(const Json& request)
{
    HWND tree = Control(request);
    HTREEITEM caret = NextItem(tree, TVGN_CARET, nullptr);
    return {{"items", Items(tree, NextItem(tree, TVGN_ROOT, nullptr))},
            {"selected", caret == nullptr ? "" : Label(tree, caret)}};
}

/// The first item whose label begins with a text.
HTREEITEM FindItem(HWND tree, HTREEITEM first, const std::string& label)
{
    for (HTREEITEM item = first; item != nullptr; item = NextItem(tree, TVGN_NEXT, item))
    {
        if (Label(tree, item).compare(0, label.size(), label) == 0)
        {
            return item;
        }
        if (HTREEITEM below = FindItem(tree, NextItem(tree, TVGN_CHILD, item), label))
        {
            return below;
        }
    }
    return nullptr;
}

/// Selects an item and waits until a list shows its rows.
Json SelectItem(const Json& request)
{
    HWND tree = Control(request);
    HTREEITEM item = FindItem(tree, NextItem(tree, TVGN_ROOT, nullptr), request.at("label").get<std::string>());
    if (item == nullptr)
    {
        throw std::runtime_error("the tree has no item " + request.at("label").dump());
    }
    const auto begin = std::chrono::steady_clock::now();
    SendMessageW(tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
    WaitUntilDrawn(GetDlgItem(g_main, request.at("list").get<int>()));
    return {{"milliseconds", Milliseconds(begin)}};
}

Json SelectRow(const Json& request)
{
    LVITEMW item{};
    item.state = item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    SendStructure(Control(request), LVM_SETITEMSTATE, request.at("row").get<WPARAM>(), item);
    return Json::object();
}

void ClickAt(HWND window, int x, int y, bool isDouble)
{
    const LPARAM place = MAKELPARAM(x, y);
    PostMessageW(window, WM_LBUTTONDOWN, MK_LBUTTON, place);
    PostMessageW(window, WM_LBUTTONUP, 0, place);
    if (isDouble)
    {
        PostMessageW(window, WM_LBUTTONDBLCLK, MK_LBUTTON, place);
        PostMessageW(window, WM_LBUTTONUP, 0, place);
    }
}

Json ClickHeader(const Json& request)
{
    HWND header = reinterpret_cast<HWND>(SendMessageW(Control(request), LVM_GETHEADER, 0, 0));
    RECT place{};
    SendStructure(header, HDM_GETITEMRECT, request.at("column").get<WPARAM>(), place);
    ClickAt(header, place.left + 10, (place.top + place.bottom) / 2, false);
    return Json::object();
}

Json ClickRow(const Json& request)
{
    HWND list = Control(request);
    const auto row = request.at("row").get<WPARAM>();
    SendMessageW(list, LVM_ENSUREVISIBLE, row, FALSE);
    RECT place{};
    place.left = LVIR_LABEL;
    SendStructure(list, LVM_GETITEMRECT, row, place);
    ClickAt(list, place.left + 5, (place.top + place.bottom) / 2, request.value("double", false));
    return Json::object();
}

Json ReadTabs(const Json& request)
{
    HWND tabs = Control(request);
    Json titles = Json::array();
    const auto count = static_cast<int>(SendMessageW(tabs, TCM_GETITEMCOUNT, 0, 0));
    for (int i = 0; i < count; ++i)
    {
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        titles.push_back(Utf8(SendWithText(tabs, TCM_GETITEMW, static_cast<WPARAM>(i), item, &TCITEMW::pszText)));
    }
    return {{"titles", titles}, {"selected", SendMessageW(tabs, TCM_GETCURSEL, 0, 0)}};
}

Json ReadCombo(const Json& request)
{
    HWND combo = Control(request);
    Json items = Json::array();
    const auto count = static_cast<int>(SendMessageW(combo, CB_GETCOUNT, 0, 0));
    for (int i = 0; i < count; ++i)
    {
        WCHAR text[512] = L"";
        SendMessageW(combo, CB_GETLBTEXT, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(text));
        items.push_back(Utf8(text));
    }
    return {{"items", items}, {"selected", SendMessageW(combo, CB_GETCURSEL, 0, 0)}};
}

void SendKey(WORD key, DWORD flags)
{
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    (flags & KEYEVENTF_UNICODE ? input.ki.wScan : input.ki.wVk) = key;
    input.ki.dwFlags = flags;
    if (SendInput(1, &input, sizeof input) != 1)
    {
        throw std::runtime_error("input is blocked");
    }
}

/// Presses keys one after another and lets go of them in the opposite order.
Json PressKeys(const Json& request)
{
    SetForegroundWindow(GetLastActivePopup(g_main));
    const auto keys = request.at("keys").get<std::vector<WORD>>();
    for (const WORD key : keys)
    {
        SendKey(key, 0);
    }
    for (auto key = keys.rbegin(); key != keys.rend(); ++key)
    {
        SendKey(*key, KEYEVENTF_KEYUP);
    }
    return Json::object();
}

Json TypeText(const Json& request)
{
    SetForegroundWindow(g_main);
    for (const WCHAR unit : Wide(request.at("text").get<std::string>()))
    {
        SendKey(unit, KEYEVENTF_UNICODE);
        SendKey(unit, KEYEVENTF_UNICODE | KEYEVENTF_KEYUP);
    }
    return Json::object();
}

Json PostCommand(const Json& request)
{
    PostMessageW(g_main, WM_COMMAND, request.at("command").get<WPARAM>(), 0);
    return Json::object();
}

Json ReadFocus(const Json&)
{
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(GetWindowThreadProcessId(g_main, nullptr), &info);
    return {{"id", info.hwndFocus == nullptr ? 0 : GetDlgCtrlID(info.hwndFocus)},
            {"menu", (info.flags & GUI_INMENUMODE) != 0}};
}

/// The windows of a class with the text of their first control.
Json ReadWindows(const Json& request)
{
    Json windows = Json::array();
    const std::wstring name = Wide(request.at("class").get<std::string>());
    for (HWND window = nullptr; (window = FindWindowExW(nullptr, window, name.c_str(), nullptr)) != nullptr;)
    {
        windows.push_back({{"title", TextOf(window)}, {"text", TextOf(GetWindow(window, GW_CHILD))}});
    }
    return {{"windows", windows}};
}

BOOL CALLBACK FindEdit(HWND window, LPARAM found)
{
    WCHAR name[32] = L"";
    GetClassNameW(window, name, 32);
    if (lstrcmpiW(name, L"Edit") != 0 || !IsWindowVisible(window))
    {
        return TRUE;
    }
    *reinterpret_cast<HWND*>(found) = window;
    return FALSE;
}

/// Puts a text into the edit control of the dialog and presses its button.
Json AnswerDialog(const Json& request)
{
    HWND dialog = nullptr, edit = nullptr;
    for (int tries = 0; tries < 600 && edit == nullptr; ++tries)
    {
        Sleep(50);
        dialog = FindWindowW(L"#32770", nullptr);
        if (dialog != nullptr && IsWindowVisible(dialog))
        {
            EnumChildWindows(dialog, &FindEdit, reinterpret_cast<LPARAM>(&edit));
        }
    }
    if (edit == nullptr)
    {
        throw std::runtime_error("there is no dialog with an edit control");
    }
    const std::string before = TextOf(edit);
    const std::wstring text = Wide(request.at("text").get<std::string>());
    SendMessageW(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
    PostMessageW(dialog, WM_COMMAND, IDOK, 0);
    return {{"before", before}};
}

Json ChangeDpi(const Json& request)
{
    RECT place{};
    GetWindowRect(g_main, &place);
    SendStructure(g_main, 0x02E0, MAKEWPARAM(request.at("dpi").get<int>(), request.at("dpi").get<int>()), place);
    return Json::object();
}

Json MeasureControl(const Json& request)
{
    RECT place{};
    GetWindowRect(Control(request), &place);
    return {{"left", place.left},
            {"width", place.right - place.left},
            {"height", place.bottom - place.top},
            {"top", place.top},
            {"visible", IsWindowVisible(Control(request)) != FALSE}};
}

/// Scrolls a list by a key, and measures until it is drawn.
Json Scroll(const Json& request)
{
    HWND list = Control(request);
    Json times = Json::array();
    for (int i = 0; i < request.at("times").get<int>(); ++i)
    {
        const auto begin = std::chrono::steady_clock::now();
        SendMessageW(list, WM_KEYDOWN, request.at("key").get<WPARAM>(), 0);
        WaitUntilDrawn(list);
        times.push_back(Milliseconds(begin));
    }
    return {{"milliseconds", times}, {"top", SendMessageW(list, LVM_GETTOPINDEX, 0, 0)}};
}

Json CloseMain(const Json&)
{
    PostMessageW(g_main, WM_CLOSE, 0, 0);
    for (int tries = 0; tries < 600 && IsWindow(g_main); ++tries)
    {
        Sleep(20);
    }
    return {{"open", IsWindow(g_main) != FALSE}};
}

const std::map<std::string, std::function<Json(const Json&)>> Requests = {
    {"wait", &WaitForWindow},  {"text", &ReadText},        {"list", &ReadList},       {"tree", &ReadTree},
    {"choose", &SelectItem},   {"select", &SelectRow},     {"header", &ClickHeader},  {"click", &ClickRow},
    {"tabs", &ReadTabs},       {"combo", &ReadCombo},      {"press", &PressKeys},     {"type", &TypeText},
    {"command", &PostCommand}, {"focus", &ReadFocus},      {"windows", &ReadWindows}, {"dialog", &AnswerDialog},
    {"dpi", &ChangeDpi},       {"place", &MeasureControl}, {"scroll", &Scroll},       {"close", &CloseMain}};

std::string Answer(const std::string& line)
{
    try
    {
        const Json request = Json::parse(line);
        return Requests.at(request.at("do").get<std::string>())(request).dump(-1, ' ', true);
    }
    catch (const std::exception& error)
    {
        return Json{{"error", error.what()}}.dump(-1, ' ', true);
    }
}

/// Moves the thread to a desktop, which may not be there yet.
bool MoveToDesktop(const char* name)
{
    for (int tries = 0; tries < 600; ++tries)
    {
        if (HDESK desktop = OpenDesktopA(name, 0, FALSE, GENERIC_ALL))
        {
            return SetThreadDesktop(desktop) != FALSE;
        }
        Sleep(50);
    }
    return false;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2 || !MoveToDesktop(argv[1]))
    {
        std::fprintf(stderr, "usage: driver DESKTOP, the name of a desktop that exists\n");
        return 2;
    }
    for (std::string line; std::getline(std::cin, line);)
    {
        std::printf("%s\n", Answer(line).c_str());
        std::fflush(stdout);
    }
    return 0;
}
