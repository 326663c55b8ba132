// Tables to be followed by notifications, over one store.
#pragma once

#include "tests/zebstore/storage/ComputedNumber.h"
#include "tests/zebstore/storage/Restrictions.h"
#include "tests/zebstore/storage/TableCopy.h"

#include "zebstore/notify/Notifier.h"
#include "zebstore/storage/ContentsRows.h"
#include "zebstore/storage/HierarchyRows.h"
#include "zebstore/tables/Table.h"

#include <atomic>

namespace zebstore::test
{

class NotifyTables : public StorageTest
{
protected:
    static constexpr FolderId Archive = IdOf(StandardFolder::SentItems);

    void TearDown() override
    {
        Notifier::The().Stop();
        StorageTest::TearDown();
    }

    static MessageContent Numbered(LONG number)
    {
        MessageContent content = Mail("subject " + std::to_string(number % 7));
        content.properties.SetLong(PR_IMPORTANCE, number);
        return content;
    }
    MessageId Add(LONG number, FolderId folder = Inbox)
    {
        return Store().Messages().Create({folder, false}, Numbered(number));
    }
    void Change(MessageId message, LONG number)
    {
        MessageContent content = Numbered(number);
        Store().Messages().Save(message, content, 0);
    }

    Ref<IMAPITable> Contents(FolderId folder = Inbox)
    {
        const auto table = CreateTable(MakeContentsRows(m_store, {folder, false}, Computed(PR_INSTANCE_KEY)), {});
        EXPECT_EQ(table->SetColumns(TagArray({PR_SUBJECT_A, PR_IMPORTANCE, PR_INSTANCE_KEY}).Get(), 0), S_OK);
        return table;
    }
    Ref<IMAPITable> Hierarchy(FolderId folder, bool wholeTree)
    {
        const auto table = CreateTable(MakeHierarchyRows(m_store, folder, wholeTree, Computed(PR_INSTANCE_KEY)), {});
        EXPECT_EQ(table->SetColumns(TagArray({PR_DISPLAY_NAME_A, PR_DEPTH, PR_CONTENT_COUNT, PR_CONTENT_UNREAD,
                                              PR_SUBFOLDERS, PR_INSTANCE_KEY})
                                        .Get(),
                                    0),
                  S_OK);
        return table;
    }
    static Ref<IMAPITable> Sorted(Ref<IMAPITable> table, ULONG tag, ULONG order = TABLE_SORT_ASCEND)
    {
        EXPECT_EQ(table->SortTable(SortSet({{tag, order}}).Get(), 0), S_OK);
        return table;
    }
    Ref<IMAPITable> Restricted(Ref<IMAPITable> table, LONG below)
    {
        EXPECT_EQ(table->Restrict(m_make.Property(RELOP_LT, LongValue(PR_IMPORTANCE, below)), 0), S_OK);
        return table;
    }

    // The copy that the sink made becomes what a fresh read gives, by row events alone.
    static void ExpectFollowed(Followed& followed)
    {
        const CopiedRows fresh = ReadCopy(followed.Table());
        EXPECT_TRUE(followed.Sink().Becomes(fresh)) << testing::PrintToString(followed.Sink().Rows()) << "\n"
                                                    << testing::PrintToString(fresh);
        EXPECT_EQ(followed.Sink().Whole(), 0);
    }

    RestrictionMaker m_make;
};

/// Counts its calls; after Close there must be none.
class CountingSink final : public Object<IMAPIAdviseSink>
{
public:
    explicit CountingSink(std::atomic<int>& calls)
        : m_calls(calls)
    {
    }
    ULONG STDMETHODCALLTYPE OnNotify(ULONG, LPNOTIFICATION) override
    {
        EXPECT_FALSE(m_closed) << "notified after Unadvise";
        ++m_calls;
        return 0;
    }
    void Close() { m_closed = true; }

private:
    bool Answers(REFIID iid) const override { return IsOneOf(iid, {&IID_IMAPIAdviseSink}); }

    std::atomic<int>& m_calls;
    std::atomic<bool> m_closed{false};
};

} // namespace zebstore::test
