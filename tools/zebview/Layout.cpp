#include "tools/zebview/Layout.h"

#include <algorithm>

namespace zeb::view
{
namespace
{

constexpr int Gap = 5, Margin = 6, SmallestPane = 60;
constexpr int ProfileWidth = 220, LabelWidth = 54;

bool IsBetween(LONG value, LONG low, LONG high)
{
    return value >= low && value < high;
}

} // namespace

void Layout::Arrange(const RECT& client, const Scale& scale, int line)
{
    m_gap = scale(Gap);
    const int margin = scale(Margin), bar = line + scale(10), label = scale(LabelWidth), combo = scale(ProfileWidth);
    const LONG width = client.right, top = margin;
    const LONG barText = top + (bar - line) / 2;
    profileLabel = {margin, barText, margin + label, barText + line};
    profile = {profileLabel.right, top, profileLabel.right + combo, top + bar};
    filterLabel = {profile.right + 2 * margin, barText, profile.right + 2 * margin + label, barText + line};
    filter = {filterLabel.right, top, std::max(width - margin, filterLabel.right), top + bar};

    status = {margin, client.bottom - line - scale(4), width - margin, client.bottom - scale(2)};
    const LONG upper = top + bar + margin, lower = status.top - scale(2);
    const LONG height =
        hasLog ? std::clamp<LONG>(scale(m_logHeight), 0, std::max<LONG>(lower - upper - scale(2 * SmallestPane), 0))
               : 0;
    log = {0, lower - height, width, lower};
    const LONG bottom = hasLog ? log.top - m_gap : lower;
    const LONG treeWidth = std::clamp<LONG>(scale(m_treeWidth), 0, std::max<LONG>(width - scale(SmallestPane), 0));
    tree = {0, upper, treeWidth, bottom};
    const LONG middle = upper + MulDiv(static_cast<int>(bottom - upper), m_listPermille, 1000);
    list = {tree.right + m_gap, upper, width, middle};
    tabs = {list.left, middle + m_gap, width, middle + m_gap + line + scale(9)};
    page = {list.left, tabs.bottom, width, bottom};
}

Border Layout::BorderAt(POINT point) const
{
    if (IsBetween(point.x, tree.right, list.left) && IsBetween(point.y, tree.top, tree.bottom))
    {
        return Border::Tree;
    }
    if (point.x >= list.left && IsBetween(point.y, list.bottom, tabs.top))
    {
        return Border::List;
    }
    return hasLog && IsBetween(point.y, log.top - m_gap, log.top) ? Border::Log : Border::None;
}

void Layout::Move(Border border, POINT point, const RECT& client, const Scale& scale)
{
    const LONG bottom = hasLog ? log.top - m_gap : status.top;
    switch (border)
    {
    case Border::Tree:
        m_treeWidth = scale.Unscaled(static_cast<int>(std::clamp<LONG>(
            point.x, scale(SmallestPane), std::max<LONG>(client.right - scale(SmallestPane), scale(SmallestPane)))));
        break;
    case Border::List:
        m_listPermille = std::clamp(
            MulDiv(static_cast<int>(point.y - list.top), 1000, std::max<int>(static_cast<int>(bottom - list.top), 1)),
            100, 850);
        break;
    case Border::Log:
        m_logHeight = scale.Unscaled(static_cast<int>(std::max<LONG>(status.top - point.y, scale(SmallestPane))));
        break;
    case Border::None:
        break;
    }
}

} // namespace zeb::view
