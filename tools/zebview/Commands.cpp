// The commands of the main window.
#include "tools/common/Failure.h"
#include "tools/common/FileName.h"
#include "tools/common/Output.h"
#include "tools/zebview/Ids.h"
#include "tools/zebview/MainWindow.h"
#include "tools/zebview/WideText.h"

#include <commdlg.h>

#include <algorithm>
#include <iterator>

namespace zeb::view
{
namespace
{

constexpr UINT FilterMilliseconds = 250;

bool IsEdit(HWND window)
{
    WCHAR type[16] = L"";
    GetClassNameW(window, type, 16);
    return lstrcmpiW(type, L"Edit") == 0;
}

void PutOnClipboard(HWND owner, const std::wstring& text)
{
    const size_t bytes = (text.size() + 1) * sizeof(WCHAR);
    HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, bytes);
    if (memory == nullptr || !OpenClipboard(owner))
    {
        GlobalFree(memory);
        throw tools::ToolError("the clipboard cannot be opened");
    }
    CopyMemory(GlobalLock(memory), text.c_str(), bytes);
    GlobalUnlock(memory);
    EmptyClipboard();
    if (SetClipboardData(CF_UNICODETEXT, memory) == nullptr)
    {
        GlobalFree(memory);
    }
    CloseClipboard();
}

/// Asks for the name of a file to write. @return a path; empty when the user gave up
std::wstring AskForFile(HWND owner, const std::string& suggestion)
{
    WCHAR path[1024] = L"";
    lstrcpynW(path, Wide(suggestion).c_str(), static_cast<int>(std::size(path)));
    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = owner;
    dialog.lpstrFile = path;
    dialog.nMaxFile = static_cast<DWORD>(std::size(path));
    dialog.Flags = OFN_OVERWRITEPROMPT | OFN_NOCHANGEDIR | OFN_HIDEREADONLY | OFN_PATHMUSTEXIST;
    return GetSaveFileNameW(&dialog) ? path : L"";
}

} // namespace

void MainWindow::OnCommand(int id, int code)
{
    if (id == IdFilter && code == EN_CHANGE)
    {
        SetTimer(Handle(), TimerFilter, FilterMilliseconds, nullptr);
    }
    else if (id == IdProfile && (code == CBN_SELCHANGE || code == CBN_CLOSEUP))
    {
        // While the list is unfolded, a profile is chosen when it folds.
        if (code == CBN_CLOSEUP || SendMessageW(m_profiles, CB_GETDROPPEDSTATE, 0, 0) == 0)
        {
            OpenChosenProfile();
        }
    }
    else if (id >= CommandExit)
    {
        OnMenuCommand(id);
    }
}

void MainWindow::OnMenuCommand(int id)
{
    switch (id)
    {
    case CommandExit:
        PostMessageW(Handle(), WM_CLOSE, 0, 0);
        break;
    case CommandProfile:
        SetFocus(m_profiles);
        SendMessageW(m_profiles, CB_SHOWDROPDOWN, TRUE, 0);
        break;
    case CommandSave:
        SaveChosenAttachment();
        break;
    case CommandOpenValue:
        OpenChosenValue();
        break;
    case CommandCopy:
        Copy();
        break;
    case CommandSelectAll:
        SelectAll();
        break;
    case CommandReload:
        OpenProfile(m_profile);
        break;
    case CommandFilter:
        SetFocus(m_filter);
        SendMessageW(m_filter, EM_SETSEL, 0, -1);
        break;
    case CommandNextPane:
    case CommandPreviousPane:
        MoveToPane(id == CommandNextPane ? 1 : -1);
        break;
    case CommandAddressBook:
        m_tree.Select({m_containers.empty() ? PlaceKind::Book : PlaceKind::Container,
                       m_containers.empty() ? "" : m_containers.front().key, ""});
        break;
    case CommandAllFolders:
        m_allFolders = !m_allFolders;
        CheckMenuItem(GetMenu(Handle()), CommandAllFolders, m_allFolders ? MF_CHECKED : MF_UNCHECKED);
        OpenFolders();
        break;
    case CommandLog:
        ToggleLog();
        break;
    case CommandClearLog:
        m_log.Clear();
        m_calls.SetCount(0, false);
        break;
    default:
        if (id >= CommandMessageTab && id <= CommandAttachmentsTab)
        {
            ShowPage(id - CommandMessageTab);
            SetFocus(PageWindow());
        }
        break;
    }
}

void MainWindow::Copy() const
{
    HWND focus = GetFocus();
    if (IsEdit(focus))
    {
        SendMessageW(focus, WM_COPY, 0, 0);
        return;
    }
    for (const ListPane* pane : {&m_list, &m_properties, &m_recipients, &m_attachments, &m_calls})
    {
        if (pane->Handle() == focus && pane->Selected() >= 0)
        {
            PutOnClipboard(Handle(), Wide(pane->RowText(pane->Selected())));
        }
    }
}

void MainWindow::SelectAll() const
{
    if (IsEdit(GetFocus()))
    {
        SendMessageW(GetFocus(), EM_SETSEL, 0, -1);
    }
}

void MainWindow::MoveToPane(int direction) const
{
    std::vector<HWND> panes = {m_tree.Handle(), m_list.Handle(), PageWindow()};
    if (m_layout.hasLog)
    {
        panes.push_back(m_calls.Handle());
    }
    const auto count = static_cast<int>(panes.size());
    const auto at = std::find(panes.begin(), panes.end(), GetFocus());
    const int from = at == panes.end() ? (direction > 0 ? count - 1 : 0) : static_cast<int>(at - panes.begin());
    SetFocus(panes[static_cast<size_t>((from + direction + count) % count)]);
}

bool MainWindow::OnTab(bool isBack) const
{
    HWND focus = GetFocus();
    HWND next = GetNextDlgTabItem(Handle(), focus, isBack);
    if (next == nullptr)
    {
        return false;
    }
    SetFocus(next);
    if (next == m_filter)
    {
        SendMessageW(m_filter, EM_SETSEL, 0, -1);
    }
    return true;
}

void MainWindow::ToggleLog()
{
    m_layout.hasLog = !m_layout.hasLog;
    if (GetFocus() == m_calls.Handle())
    {
        SetFocus(m_list.Handle());
    }
    ArrangePanes();
}

void MainWindow::SaveChosenAttachment()
{
    const auto count = static_cast<int>(m_details.attachments.size());
    const int row = count == 1 ? 0 : m_attachments.Selected();
    if (row < 0 || row >= count)
    {
        throw tools::ToolError(count == 0 ? "the message has no attachment" : "no attachment is selected");
    }
    const tools::ListedAttachment attachment = m_details.attachments[static_cast<size_t>(row)];
    const std::wstring file = AskForFile(Handle(), tools::SafeFileName(attachment.name, "attachment"));
    if (!file.empty())
    {
        SaveAttachment(*m_details.message, attachment, Utf8Of(file));
        SetStatus("saved " + Utf8Of(file));
    }
}

void MainWindow::OpenChosenValue()
{
    const int row = m_properties.Selected();
    if (row < 0 || row >= static_cast<int>(m_details.properties.size()))
    {
        throw tools::ToolError("no property is selected");
    }
    PropertyRow& chosen = m_details.properties[static_cast<size_t>(row)];
    const std::string value = chosen.property.tag == 0 ? chosen.value : WholeValue(chosen.property);
    m_values.erase(std::remove_if(m_values.begin(), m_values.end(), [](const auto& each) { return !each->IsOpen(); }),
                   m_values.end());
    m_values.push_back(std::make_unique<ValueWindow>(Handle(), chosen.name + " - " + chosen.type, value));
}

} // namespace zeb::view
