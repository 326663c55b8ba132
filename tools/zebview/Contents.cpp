// What the panes of the main window show.
#include "tools/common/Failure.h"
#include "tools/common/HostSession.h"
#include "tools/common/Output.h"
#include "tools/common/Profiles.h"
#include "tools/zebview/Ids.h"
#include "tools/zebview/MainWindow.h"
#include "tools/zebview/WideText.h"

#include <algorithm>

namespace zeb::view
{
namespace
{

constexpr const char* NameOfPage[] = {"Message", "Properties", "Recipients", "Attachments"};

std::string KindOf(const tools::ListedAttachment& attachment)
{
    return tools::IsMessage(attachment)           ? "message"
           : attachment.method == ATTACH_BY_VALUE ? "file"
                                                  : "method " + std::to_string(attachment.method);
}

/// Names, and which of them is the default, while MAPI runs. @throws ToolError, CZebException*
std::vector<tools::ProfileEntry> ReadProfiles()
{
    Zeb_GetMAPI().SetWasFailed(false);
    const tools::HostMapi mapi;
    CZebProfAdmin administration = CZebProfAdmin::Open();
    return tools::ListProfiles(administration);
}

/// The pointer of waiting as long as it lives.
class WaitPointer
{
public:
    WaitPointer()
        : m_before(SetCursor(LoadCursorW(nullptr, MAKEINTRESOURCEW(32514)))) // the pointer of waiting
    {
    }
    ~WaitPointer() { SetCursor(m_before); }
    WaitPointer(const WaitPointer&) = delete;
    WaitPointer& operator=(const WaitPointer&) = delete;

private:
    HCURSOR m_before;
};

} // namespace

void MainWindow::ListProfiles()
{
    m_profileNames.clear();
    SendMessageW(m_profiles, CB_RESETCONTENT, 0, 0);
    std::vector<tools::ProfileEntry> profiles;
    try
    {
        profiles = ReadProfiles();
    }
    catch (...)
    {
        SetStatus(tools::CurrentFailure(), true);
    }
    for (const tools::ProfileEntry& profile : profiles)
    {
        m_profileNames.push_back(profile.name);
        SendMessageW(m_profiles, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Wide(profile.name).c_str()));
        if (m_profile.empty() ? profile.isDefault : profile.name == m_profile)
        {
            SendMessageW(m_profiles, CB_SETCURSEL, m_profileNames.size() - 1, 0);
        }
    }
}

void MainWindow::OpenChosenProfile()
{
    const LRESULT chosen = SendMessageW(m_profiles, CB_GETCURSEL, 0, 0);
    if (chosen < 0 || static_cast<size_t>(chosen) >= m_profileNames.size())
    {
        return;
    }
    const std::string& name = m_profileNames[static_cast<size_t>(chosen)];
    if (name != m_profile || m_mailbox == nullptr)
    {
        OpenProfile(name);
    }
}

void MainWindow::OpenProfile(const std::string& profile)
{
    const WaitPointer wait;
    const std::string name = profile; // may be m_profile itself
    const view::Place place = name == m_profile ? m_place : view::Place();
    CloseProfile();
    m_profile = name;
    try
    {
        Zeb_GetMAPI().SetWasFailed(false);
        m_mailbox = std::make_unique<Mailbox>(name);
        SetWindowTextW(Handle(), Wide(tools::OneLine(m_mailbox->StoreName()) + " - zebview").c_str());
        OpenFolders();
        if (place.kind == PlaceKind::None || !m_tree.Select(place))
        {
            ChooseInbox();
        }
    }
    catch (...)
    {
        const std::string failure = tools::CurrentFailure();
        SetStatus(failure, true);
        SetWindowTextW(m_text, EditText(failure).c_str());
    }
    UpdateLog();
}

void MainWindow::CloseProfile()
{
    m_values.clear();
    m_rows.reset();
    m_list.SetCount(0, false);
    ShowDetails(Details());
    m_folders.reset();
    m_tree.Clear();
    m_containers.clear();
    m_place = {};
    m_rowChanges.reset();
    m_folderChanges.reset();
    m_mailbox.reset();
}

void MainWindow::OpenFolders()
{
    const auto failed = [this](const std::string& failure) { SetStatus(failure, true); };
    m_folders.reset();
    m_folderChanges = std::make_unique<ChangeListener>([this] { ShowFolders(); }, failed);
    m_folders = std::make_unique<FolderTable>(m_mailbox->TopFolder(m_allFolders), m_folderChanges->Handle());
    try
    {
        m_containers = ReadContainers(m_mailbox->Book());
    }
    catch (...)
    {
        SetStatus("the address book: " + tools::CurrentFailure(), true);
    }
    ShowFolders();
}

void MainWindow::ShowFolders()
{
    m_tree.Show(m_mailbox->StoreName(), m_folders->Read(), m_containers);
    if (m_place.kind != PlaceKind::None && !(m_tree.Selected() == m_place))
    {
        OnPlaceChosen(); // the folder is gone
    }
}

void MainWindow::ChooseInbox()
{
    CZebFolder inbox = m_mailbox->Store().OpenInboxFolder(0);
    const CZebBinary entryId = inbox.GetEntryID();
    m_tree.Select({PlaceKind::Folder, KeyOf(entryId), ""});
}

CZebContainer MainWindow::OpenPlace(const view::Place& place)
{
    const SBinary entryId = EntryIdOf(place.key);
    if (place.kind == PlaceKind::Container)
    {
        return m_mailbox->Book().OpenContainer(entryId, 0);
    }
    CZebFolder folder;
    m_mailbox->Store().OpenEntry(entryId, folder, MAPI_BEST_ACCESS);
    return folder;
}

void MainWindow::OnPlaceChosen()
{
    const WaitPointer wait;
    m_place = m_tree.Selected();
    m_rows.reset();
    m_list.SetCount(0, false);
    SetWindowTextW(m_filter, L"");
    KillTimer(Handle(), TimerFilter);
    ShowDetails(Details());
    if (m_place.kind == PlaceKind::Folder || m_place.kind == PlaceKind::Container)
    {
        CZebContainer container = OpenPlace(m_place);
        OpenRows(container.GetContentsTable(MAPI_UNICODE),
                 m_place.kind == PlaceKind::Folder ? MessageKind() : AddressKind());
        ShowDetails(ReadObjectDetails(m_place.name, container));
    }
    else if (m_place.kind == PlaceKind::Store)
    {
        ShowDetails(ReadObjectDetails(m_place.name, m_mailbox->Store()));
        SetStatus(m_place.name);
    }
    else
    {
        SetStatus(m_place.name);
    }
}

void MainWindow::OpenRows(const CZebTable& table, const RowKind& kind)
{
    std::vector<PaneColumn> columns;
    for (const RowColumn& column : kind.columns)
    {
        columns.push_back({column.title, column.width, column.isRight});
    }
    m_rowChanges = std::make_unique<ChangeListener>([this] { OnRowsChanged(); },
                                                    [this](const std::string& failure) { SetStatus(failure, true); });
    m_rows = std::make_unique<RowList>(table, kind, m_rowChanges->Handle());
    m_list.SetColumns(columns, m_scale);
    ShowRows(false);
}

void MainWindow::ShowRows(bool keepPlace)
{
    m_list.SetCount(static_cast<int>(m_rows->Count()), keepPlace);
    m_list.MarkSorted(m_rows->SortColumn(), m_rows->IsDescending());
    ShowCounts();
}

void MainWindow::ShowCounts()
{
    const auto count = static_cast<unsigned long long>(m_list.Count());
    const bool isFiltered = GetWindowTextLengthW(m_filter) > 0;
    SetStatus(tools::OneLine(m_place.name) + ": " + tools::Counted(count, m_rows->Kind().one, m_rows->Kind().many) +
              (isFiltered ? (count == 1 ? " matches the filter" : " match the filter") : ""));
}

/// Rows were added, changed or deleted. The selected one stays selected, wherever it is now.
void MainWindow::OnRowsChanged()
{
    if (m_rows == nullptr)
    {
        return;
    }
    const int before = m_list.Selected();
    ShowRows(true);
    if (before >= 0 && !m_shownKey.empty())
    {
        const LONG now = m_rows->Find(m_shownKey, static_cast<ULONG>(before));
        if (now != before)
        {
            m_list.Select(now, false);
        }
    }
    UpdateLog();
}

void MainWindow::SortBy(int column)
{
    const WaitPointer wait;
    if (m_rows != nullptr)
    {
        m_rows->SortBy(column);
        m_list.Select(-1, false);
        ShowRows(false);
    }
}

void MainWindow::ApplyFilter()
{
    const WaitPointer wait;
    if (m_rows != nullptr)
    {
        m_rows->Filter(TextOfWindow(m_filter));
        m_list.Select(-1, false);
        ShowRows(false);
    }
}

void MainWindow::ShowChosenRow()
{
    const int row = m_list.Selected();
    if (m_rows == nullptr || row < 0)
    {
        return;
    }
    const std::string key = m_rows->KeyAt(static_cast<ULONG>(row));
    if (key.empty() || key == m_shownKey)
    {
        return;
    }
    ShowDetails(Details());
    m_shownKey = key;
    const SBinary entryId = EntryIdOf(key);
    const bool isMessage = &m_rows->Kind() == &MessageKind();
    ShowDetails(isMessage ? ReadMessageDetails(*m_mailbox, entryId) : ReadAddressDetails(*m_mailbox, entryId));
    m_shownKey = key;
    ShowCounts();
}

void MainWindow::ShowDetails(Details details)
{
    m_details = std::move(details);
    m_shownKey.clear();
    SetWindowTextW(m_text, EditText(m_details.text).c_str());
    m_properties.SetCount(static_cast<int>(m_details.properties.size()), false);
    m_recipients.SetCount(static_cast<int>(m_details.recipients.size()), false);
    m_attachments.SetCount(static_cast<int>(m_details.attachments.size()), false);
    ShowTabs();
}

void MainWindow::ShowTabs() const
{
    const size_t counts[] = {0, m_details.properties.size(), m_details.recipients.size(), m_details.attachments.size()};
    const bool isNew = SendMessageW(m_tabs, TCM_GETITEMCOUNT, 0, 0) == 0;
    for (int page = 0; page < 4; ++page)
    {
        std::wstring title =
            Wide(NameOfPage[page] + (counts[page] == 0 ? std::string() : " (" + tools::Grouped(counts[page]) + ")"));
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = title.data();
        SendMessageW(m_tabs, isNew ? TCM_INSERTITEMW : TCM_SETITEMW, static_cast<WPARAM>(page),
                     reinterpret_cast<LPARAM>(&item));
    }
}

HWND MainWindow::PageWindow() const
{
    const HWND pages[] = {m_text, m_properties.Handle(), m_recipients.Handle(), m_attachments.Handle()};
    return pages[m_page];
}

void MainWindow::ShowPage(int page)
{
    const bool hadFocus = GetFocus() == PageWindow();
    HWND before = PageWindow();
    m_page = std::clamp(page, 0, 3);
    SendMessageW(m_tabs, TCM_SETCURSEL, static_cast<WPARAM>(m_page), 0);
    if (before != PageWindow())
    {
        ShowWindow(before, SW_HIDE);
    }
    ShowWindow(PageWindow(), SW_SHOW);
    if (hadFocus)
    {
        SetFocus(PageWindow());
    }
}

std::string MainWindow::CellOfDetail(int page, int row, int column) const
{
    const auto at = static_cast<size_t>(row);
    if (page == 1 && at < m_details.properties.size())
    {
        const PropertyRow& property = m_details.properties[at];
        return column == 0 ? property.name : column == 1 ? property.type : property.value;
    }
    if (page == 2 && at < m_details.recipients.size())
    {
        const RecipientRow& recipient = m_details.recipients[at];
        return tools::OneLine(column == 0 ? recipient.kind : column == 1 ? recipient.name : recipient.address);
    }
    if (page == 3 && at < m_details.attachments.size())
    {
        const tools::ListedAttachment& attachment = m_details.attachments[at];
        const std::string size = tools::Grouped(static_cast<unsigned long long>(std::max<LONG>(attachment.size, 0)));
        return column == 0 ? tools::OneLine(attachment.name) : column == 1 ? size : KindOf(attachment);
    }
    if (page == 4 && at < m_log.Lines().size())
    {
        const LogLine& line = m_log.Lines()[at];
        return column == 0 ? line.number : column == 1 ? line.call : column == 2 ? line.result : line.text;
    }
    return "";
}

void MainWindow::UpdateLog()
{
    if (!m_log.Update())
    {
        return;
    }
    // Someone who selected a line reads it; else the newest lines are shown.
    const bool follows = m_calls.Selected() < 0;
    m_calls.SetCount(static_cast<int>(m_log.Lines().size()), true);
    if (follows)
    {
        m_calls.ShowLast();
    }
}

void MainWindow::SetStatus(const std::string& text, bool isFailure)
{
    m_statusIsFailure = isFailure;
    SetWindowTextW(m_status, Wide(text).c_str());
    InvalidateRect(m_status, nullptr, TRUE);
}

} // namespace zeb::view
