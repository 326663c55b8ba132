// A list of rows in columns whose texts are asked for when they are drawn.
#pragma once

#include "tools/zebview/Theme.h"

#include <commctrl.h>

#include <functional>
#include <string>
#include <vector>

namespace zeb::view
{

struct PaneColumn
{
    const char* title;
    int width; ///< in pixels of a screen with 96 dots per inch
    bool isRight;
};

/// How a row is drawn.
enum class RowLook
{
    Plain,
    Bold,
    Failure,
};

/// A list view control without rows of its own, for any number of rows. What the functions throw reaches the window that
/// hands the control's notifications on.
class ListPane
{
public:
    struct Source
    {
        std::function<std::string(int row, int column)> text; ///< UTF-8, in one line
        std::function<RowLook(int row)> look;                 ///< may be empty
    };

    ListPane() = default;
    ListPane(const ListPane&) = delete;
    ListPane& operator=(const ListPane&) = delete;

    /// @param name what assistive programs read
    void Create(HWND parent, int id, const char* name, Source source);
    HWND Handle() const { return m_list; }

    void SetColumns(std::vector<PaneColumn> columns, const Scale& scale);
    /// New fonts and sizes; columns keep the widths that the user gave them, in the new scale.
    void Rescale(const Scale& before, const Scale& now, const Fonts& fonts);
    void SetTheme(const Theme& theme);
    /// Marks the column that the rows are sorted by; -1 marks none.
    void MarkSorted(int column, bool isDescending) const;

    /// Shows so many rows, and draws them again. @param keepPlace do not scroll
    void SetCount(int count, bool keepPlace) const;
    int Count() const;
    /// -1 when no row is selected.
    int Selected() const;
    /// Selects a row and scrolls to it if `show`; -1 selects none.
    void Select(int row, bool show) const;
    void ShowLast() const;
    /// A row as text, with tabs between the columns.
    std::string RowText(int row) const;

    /// Draws. @return whether the notification was that; `result` is then the procedure's
    bool OnNotify(NMHDR& header, LRESULT& result);

private:
    static LRESULT CALLBACK Subclass(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                     DWORD_PTR self);
    bool IsSelecting(UINT message, WPARAM wParam, LPARAM lParam) const;
    LRESULT SelectOther(UINT message, WPARAM wParam, LPARAM lParam) const;
    LRESULT DrawRow(NMLVCUSTOMDRAW& draw) const;
    LRESULT DrawHeader(NMCUSTOMDRAW& draw) const;
    void FillAfterTitles(HWND header, HDC context) const;
    void GiveText(LVITEMW& item);

    HWND m_list = nullptr;
    Source m_source;
    std::vector<PaneColumn> m_columns;
    HFONT m_plain = nullptr, m_bold = nullptr;
    const Theme* m_theme = nullptr;
};

} // namespace zeb::view
