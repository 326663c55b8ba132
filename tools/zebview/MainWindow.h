// The main window.
#pragma once

#include "tools/zebview/CallLog.h"
#include "tools/zebview/ChangeListener.h"
#include "tools/zebview/Details.h"
#include "tools/zebview/FolderPane.h"
#include "tools/zebview/Layout.h"
#include "tools/zebview/ListPane.h"
#include "tools/zebview/RowList.h"
#include "tools/zebview/ValueWindow.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zeb::view
{

/// Shows a profile: its folders and address book, the rows of one of them, one row in four pages, and the log of calls.
///
/// All of MAPI is called on the thread of the window. Failures are shown in the line at the bottom and in the log; where
/// nothing can be shown at all, also in the pane for the message.
class MainWindow : public Window
{
public:
    /// @param profile the profile to open, UTF-8; empty: the default profile
    MainWindow(CallLog& log, const std::string& profile);
    ~MainWindow() override;

    /// Handles keys that belong to the window as a whole. @return whether the message is done
    bool Translate(MSG& message);

private:
    // MainWindow.cpp: the window and its messages.
    void CreatePanes();
    void CreateDetailPanes();
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnFailure(const std::string& failure) override;
    LRESULT OnNotify(NMHDR& header);
    void OnTreeNotify(const NMHDR& header);
    void OnListNotify(NMHDR& header);
    void OnTimer(UINT_PTR timer);
    void TakeFocus();
    void ArrangePanes();
    static void MovePane(HWND pane, const RECT& place);
    void SetFonts();
    void SetTheme();
    void OnDpiChanged(UINT dpi, const RECT& place);
    LRESULT ColourOf(HDC context, HWND control) const;
    bool OnMouse(UINT message, LPARAM lParam);
    LRESULT DrawTab(const DRAWITEMSTRUCT& draw) const;

    // Commands.cpp: menu and keys.
    void OnCommand(int id, int code);
    void OnMenuCommand(int id);
    void Copy() const;
    void SelectAll() const;
    void MoveToPane(int direction) const;
    void SaveChosenAttachment();
    void OpenChosenValue();
    void ToggleLog();
    bool OnTab(bool isBack) const;

    // Contents.cpp: what the panes show.
    void ListProfiles();
    void OpenProfile(const std::string& profile);
    void OpenChosenProfile();
    void CloseProfile();
    void OpenFolders();
    void ShowFolders();
    void ChooseInbox();
    void OnPlaceChosen();
    void OpenRows(const CZebTable& table, const RowKind& kind);
    void ShowRows(bool keepPlace);
    void OnRowsChanged();
    void SortBy(int column);
    void ApplyFilter();
    void ShowChosenRow();
    void ShowDetails(Details details);
    void ShowPage(int page);
    void ShowTabs() const;
    void UpdateLog();
    void SetStatus(const std::string& text, bool isFailure = false);
    void ShowCounts();
    CZebContainer OpenPlace(const view::Place& place);
    std::string CellOfDetail(int page, int row, int column) const;
    HWND PageWindow() const;

    CallLog& m_log;
    Theme m_theme;
    Scale m_scale;
    Fonts m_fonts;
    Layout m_layout;
    Accelerators m_keys;
    Border m_moving = Border::None;
    HWND m_profiles = nullptr, m_profileLabel = nullptr, m_filter = nullptr, m_filterLabel = nullptr;
    HWND m_tabs = nullptr, m_text = nullptr, m_status = nullptr;
    HWND m_focus = nullptr; ///< the pane that had the keyboard when another window became active
    FolderPane m_tree;
    ListPane m_list, m_properties, m_recipients, m_attachments, m_calls;
    std::vector<std::unique_ptr<ValueWindow>> m_values;
    int m_page = 0;
    bool m_statusIsFailure = false;
    bool m_allFolders = false;

    std::vector<std::string> m_profileNames;
    std::string m_profile; ///< the one that is open, or could not be opened
    // Each is opened from those before it, and released before them.
    std::unique_ptr<Mailbox> m_mailbox;
    std::unique_ptr<ChangeListener> m_folderChanges, m_rowChanges;
    std::unique_ptr<FolderTable> m_folders;
    std::vector<FolderNode> m_containers;
    view::Place m_place;
    std::unique_ptr<RowList> m_rows;
    std::string m_shownKey; ///< of the row that the details are about
    Details m_details;
};

} // namespace zeb::view
