#include "tests/zebstore/model/Steps.h"

#include "platform/tags.h"

#include <algorithm>

namespace zebstore::model
{

namespace
{

constexpr size_t MostViews = 6;
constexpr size_t MostBookmarks = 4;

View* PickView(World& world, Random& random)
{
    return world.Views().empty() ? nullptr : random.Pick(world.Views()).get();
}

// The instance key is the last column: copies are kept by it.
std::vector<ULONG> RandomColumns(Random& random, const std::vector<Kind>& kinds)
{
    std::vector<ULONG> columns;
    for (size_t left = random.Below(6); left > 0; --left)
    {
        const Kind& kind = random.Pick(kinds);
        columns.push_back(PROP_TAG(random.OneIn(8) ? PT_UNSPECIFIED : random.Pick(kind.types), kind.id));
    }
    columns.push_back(PR_INSTANCE_KEY);
    return columns;
}

Condition RandomCondition(View& view, Random& random)
{
    const ModelRows rows = view.Rows();
    const Item* sample = rows.empty() ? nullptr : &random.Pick(rows).item;
    return ConditionMaker(random, view.Kinds(), view.Kind().isHierarchy ? nullptr : sample).Tree(2);
}

// Folders have neither recipients nor attachments to ask for.
bool AsksForParts(const Condition& condition)
{
    return condition.kind == RES_SUBRESTRICTION ||
           std::any_of(condition.children.begin(), condition.children.end(), AsksForParts);
}

void OpenTableStep(World& world, Random& random)
{
    if (world.Views().size() >= MostViews)
    {
        return;
    }
    TableKind kind;
    kind.folder = random.Pick(world.Folders());
    kind.isHierarchy = random.OneIn(3);
    kind.isDeep = random.OneIn(2);
    kind.isAssociated = random.OneIn(5);
    world.OpenView(kind, RandomColumns(random, kind.isHierarchy ? FolderKinds() : MailColumnKinds()));
    if (random.OneIn(2))
    {
        world.Say("follow it");
        world.Views().back()->Follow();
    }
}

void CloseTableStep(World& world, Random& random)
{
    if (world.Views().size() < MostViews / 2)
    {
        return;
    }
    const size_t at = random.Below(world.Views().size());
    world.Say("close " + world.Views()[at]->Name());
    world.Views().erase(world.Views().begin() + static_cast<std::ptrdiff_t>(at));
}

void FollowStep(World& world, Random& random)
{
    View* const view = PickView(world, random);
    if (view == nullptr)
    {
        return;
    }
    world.Say((view->IsFollowed() ? "unfollow " : "follow ") + view->Name());
    if (view->IsFollowed())
    {
        view->Unfollow();
    }
    else
    {
        view->Follow();
    }
}

void ColumnsStep(World& world, Random& random)
{
    if (View* const view = PickView(world, random))
    {
        const std::vector<ULONG> columns = RandomColumns(random, view->Kinds());
        world.Say("set " + std::to_string(columns.size()) + " columns of " + view->Name());
        view->Choose(columns);
    }
}

void SortStep(World& world, Random& random)
{
    if (View* const view = PickView(world, random))
    {
        const Order order = ConditionMaker(random, view->Kinds(), nullptr).SortOrder(3);
        world.Say("sort " + view->Name() + " by " + Readable(order));
        view->Sort(order);
    }
}

void RestrictStep(World& world, Random& random)
{
    View* const view = PickView(world, random);
    if (view == nullptr)
    {
        return;
    }
    std::optional<Condition> restriction;
    if (!random.OneIn(3))
    {
        restriction = RandomCondition(*view, random);
    }
    if (restriction && view->Kind().isHierarchy && AsksForParts(*restriction))
    {
        return;
    }
    world.Say("restrict " + view->Name() + " to " + (restriction ? Readable(*restriction) : "all"));
    view->Restrict(restriction);
}

void ReadStep(World& world, Random& random)
{
    View* const view = PickView(world, random);
    if (view == nullptr)
    {
        return;
    }
    const LONG count = static_cast<LONG>(random.Below(12)) - 3;
    const bool stays = random.OneIn(3);
    world.Say("read " + std::to_string(count) + " rows of " + view->Name() + (stays ? ", and stay" : ""));
    const ModelRows rows = view->Sync();
    const size_t from = view->Cursor();
    const size_t begin = count < 0 ? from - std::min(from, static_cast<size_t>(-count)) : from;
    const size_t end = count < 0 ? from : std::min(rows.size(), from + static_cast<size_t>(count));
    SRowSet* set = nullptr;
    Check(view->Table().QueryRows(count, stays ? TBL_NOADVANCE : 0, &set), S_OK, "QueryRows");
    test::CopiedRows got;
    for (ULONG i = 0; i < set->cRows; ++i)
    {
        got.push_back(test::CopyOf(set->aRow[i]));
    }
    FreeProws(set);
    const test::CopiedRows expected = view->Cells(rows, begin, end);
    Check(got == expected, "the rows from " + std::to_string(begin) + " on are wrong\n" + Unlike(got, expected));
    if (!stays)
    {
        view->SetCursor(count < 0 ? begin : end);
    }
}

void ReadAllStep(World& world, Random& random)
{
    if (View* const view = PickView(world, random))
    {
        world.Say("read all of " + view->Name());
        view->CompareWhole();
    }
}

void CountStep(World& world, Random& random)
{
    View* const view = PickView(world, random);
    if (view == nullptr)
    {
        return;
    }
    world.Say("count and position of " + view->Name());
    const size_t rows = view->Sync().size();
    ULONG count = 0, row = 0, numerator = 0, denominator = 0;
    Check(view->Table().GetRowCount(0, &count), S_OK, "GetRowCount");
    Check(count == rows, "the count is " + std::to_string(count) + ", not " + std::to_string(rows));
    Check(view->Table().QueryPosition(&row, &numerator, &denominator), S_OK, "QueryPosition");
    Check(row == view->Cursor(),
          "the cursor is at " + std::to_string(row) + ", not at " + std::to_string(view->Cursor()));
    Check(numerator == row && denominator == std::max<size_t>(rows, 1), "the fraction of the position is wrong");
}

/// Where to seek from: a bookmark of the table's own, or one that was made.
struct Origin
{
    BOOKMARK bookmark = BOOKMARK_BEGINNING;
    size_t index = 0;
    HRESULT result = S_OK;
};

Origin PickOrigin(View& view, Random& random)
{
    const size_t rows = view.Sync().size();
    // Bookmarks that were made are more interesting than those of the table.
    const size_t marks = random.OneIn(3) ? 0 : view.Bookmarks().size();
    const size_t choice = marks > 0 ? 3 + random.Below(marks) : random.Below(3);
    switch (choice)
    {
    case 0:
        return {BOOKMARK_BEGINNING, 0, S_OK};
    case 1:
        return {BOOKMARK_CURRENT, view.Cursor(), S_OK};
    case 2:
        return {BOOKMARK_END, rows, S_OK};
    default:
        break;
    }
    auto chosen = view.Bookmarks().begin();
    std::advance(chosen, static_cast<std::ptrdiff_t>(choice - 3));
    const View::Mark& mark = chosen->second;
    const HRESULT result = !mark.isValid ? MAPI_E_INVALID_BOOKMARK : mark.isGone ? MAPI_W_POSITION_CHANGED : S_OK;
    return {chosen->first, mark.isValid ? mark.index : 0, result};
}

void SeekStep(World& world, Random& random)
{
    View* const view = PickView(world, random);
    if (view == nullptr)
    {
        return;
    }
    const auto last = static_cast<LONG>(view->Sync().size());
    const Origin origin = PickOrigin(*view, random);
    const LONG count = static_cast<LONG>(random.Below(9)) - 4;
    world.Say("seek " + std::to_string(count) + " from bookmark " + std::to_string(origin.bookmark) + " of " +
              view->Name());
    LONG sought = 0;
    Check(view->Table().SeekRow(origin.bookmark, count, &sought), origin.result, "SeekRow");
    if (FAILED(origin.result))
    {
        return;
    }
    const auto from = static_cast<LONG>(origin.index);
    const LONG target = std::max<LONG>(0, std::min(from + count, last));
    Check(sought == target - from,
          "the cursor moved by " + std::to_string(sought) + ", not " + std::to_string(target - from));
    view->SetCursor(static_cast<size_t>(target));
}

void SeekApproxStep(World& world, Random& random)
{
    if (View* const view = PickView(world, random))
    {
        const ULONG numerator = static_cast<ULONG>(random.Below(6));
        world.Say("seek " + std::to_string(numerator) + "/4 of " + view->Name());
        const size_t rows = view->Sync().size();
        Check(view->Table().SeekRowApprox(numerator, 4), S_OK, "SeekRowApprox");
        view->SetCursor(rows * std::min<size_t>(numerator, 4) / 4);
    }
}

void FindStep(World& world, Random& random)
{
    View* const view = PickView(world, random);
    if (view == nullptr)
    {
        return;
    }
    const Condition condition = RandomCondition(*view, random);
    if (view->Kind().isHierarchy && AsksForParts(condition))
    {
        return;
    }
    const Origin origin = PickOrigin(*view, random);
    const bool backward = random.OneIn(2);
    world.Say(std::string("find ") + (backward ? "backward " : "") + "from bookmark " +
              std::to_string(origin.bookmark) + " of " + view->Name() + " " + Readable(condition));
    const ModelRows rows = view->Sync();
    std::optional<size_t> expected;
    for (size_t i = backward ? 0 : origin.index; i < (backward ? origin.index : rows.size()); ++i)
    {
        if ((backward || !expected) && Holds(condition, rows[i].item))
        {
            expected = i;
        }
    }
    test::RestrictionMaker maker;
    Room room;
    const HRESULT result = FAILED(origin.result) ? origin.result : expected ? origin.result : MAPI_E_NOT_FOUND;
    Check(view->Table().FindRow(Made(condition, maker, room), origin.bookmark, backward ? DIR_BACKWARD : 0), result,
          "FindRow");
    const ULONG row = view->Position();
    const size_t now = SUCCEEDED(result) ? *expected : view->Cursor();
    Check(row == now, "the cursor is at " + std::to_string(row) + ", not at " + std::to_string(now));
    view->SetCursor(now);
}

void BookmarkStep(World& world, Random& random)
{
    View* const view = PickView(world, random);
    if (view == nullptr)
    {
        return;
    }
    if (view->Bookmarks().size() >= MostBookmarks)
    {
        const BOOKMARK first = view->Bookmarks().begin()->first;
        world.Say("free bookmark " + std::to_string(first) + " of " + view->Name());
        Check(view->Table().FreeBookmark(first), S_OK, "FreeBookmark");
        view->Bookmarks().erase(first);
        return;
    }
    const ModelRows rows = view->Sync();
    if (view->Cursor() >= rows.size())
    {
        return;
    }
    BOOKMARK bookmark = 0;
    Check(view->Table().CreateBookmark(&bookmark), S_OK, "CreateBookmark");
    world.Say("bookmark " + std::to_string(bookmark) + " of " + view->Name() + " at row " +
              std::to_string(view->Cursor()));
    View::Mark mark;
    mark.index = view->Cursor();
    mark.key = rows[mark.index].key;
    view->Bookmarks()[bookmark] = mark;
}

} // namespace

const std::vector<Step>& TableSteps()
{
    static const std::vector<Step> steps = {{"open a table", 8, OpenTableStep},
                                            {"close a table", 1, CloseTableStep},
                                            {"follow a table", 2, FollowStep},
                                            {"set columns", 2, ColumnsStep},
                                            {"sort a table", 5, SortStep},
                                            {"restrict a table", 4, RestrictStep},
                                            {"read rows", 8, ReadStep},
                                            {"read all rows", 2, ReadAllStep},
                                            {"count rows", 4, CountStep},
                                            {"seek", 7, SeekStep},
                                            {"seek approximately", 2, SeekApproxStep},
                                            {"find a row", 6, FindStep},
                                            {"bookmark a row", 7, BookmarkStep}};
    return steps;
}

} // namespace zebstore::model
