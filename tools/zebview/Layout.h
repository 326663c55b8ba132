// Where the panes of the main window are.
#pragma once

#include "tools/zebview/Theme.h"

namespace zeb::view
{

/// A border between panes that can be moved.
enum class Border
{
    None,
    Tree, ///< to the right of the folder tree
    List, ///< below the list
    Log,  ///< above the log
};

/// The panes' rectangles, and the borders between them. Sizes are kept for a screen with 96 dots per inch.
class Layout
{
public:
    RECT profileLabel{}, profile{}, filterLabel{}, filter{}, tree{}, list{}, tabs{}, page{}, log{}, status{};
    bool hasLog = true;

    /// Computes the rectangles. @param line the height of a line of text
    void Arrange(const RECT& client, const Scale& scale, int line);
    Border BorderAt(POINT point) const;
    /// Moves a border to a point; call Arrange after it.
    void Move(Border border, POINT point, const RECT& client, const Scale& scale);

private:
    int m_treeWidth = 230, m_logHeight = 130;
    int m_listPermille = 420; ///< of the height between bar and log
    int m_gap = 0;
};

} // namespace zeb::view
