#include "tests/zebstore/storage/Storage.h"

#include "zebstore/objects/FolderCopy.h"
#include "zebstore/storage/ContentsRows.h"
#include "zebstore/tables/Table.h"

#include <atomic>
#include <thread>

namespace zebstore::test
{
namespace
{

class StorageConcurrentTest : public StorageTest
{
};

TEST_F(StorageConcurrentTest, SeveralThreadsShareOneStore)
{
    constexpr int Rounds = 60;
    std::atomic<int> failures{0};
    const auto guarded = [&](auto&& body)
    {
        return std::thread([&failures, body]
        {
            try
            {
                for (int i = 0; i < Rounds; ++i)
                {
                    body(i);
                }
            }
            catch (const std::exception&)
            {
                ++failures;
            }
        });
    };
    const auto rows = MakeContentsRows(m_store, {Inbox, false}, nullptr);
    const Ref<IMAPITable> shared = CreateTable(rows, {});
    const auto readAll = [&](IMAPITable& table)
    {
        ULONG count = 0;
        SRowSet* set = nullptr;
        Check(table.GetRowCount(0, &count));
        Check(table.SeekRow(BOOKMARK_BEGINNING, 0, nullptr));
        Check(table.QueryRows(20, 0, &set));
        for (ULONG i = 0; i < set->cRows; ++i)
        {
            Free(set->aRow[i].lpProps);
        }
        Free(set);
    };
    std::thread threads[] = {
        guarded([&](int i) { Store().Messages().Create({Inbox, false}, Mail("a" + std::to_string(i))); }),
        guarded([&](int i)
    { Store().Messages().Delete({Store().Messages().Create({Inbox, false}, Mail(std::to_string(i)))}); }),
        guarded([&](int) { readAll(*shared); }),
        guarded([&](int) { readAll(*shared); }),
        guarded([&](int) { readAll(*CreateTable(rows, {})); }),
        guarded(
            [&](int i)
    {
        const auto staged = Store().Stage();
        const std::string bytes(70000 + static_cast<size_t>(i), 'x');
        staged->Write(0, bytes.data(), bytes.size());
        MessageContent content = Mail("large");
        content.properties.SetLarge(PR_RTF_COMPRESSED, staged);
        const MessageId message = Store().Messages().Create({Inbox, false}, content);
        if (Store().Messages().Load(message).properties.Binary(PR_RTF_COMPRESSED) != bytes)
        {
            ++failures;
        }
    }),
    };
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(Store().Folders().Info(Inbox).messages, ULONG(2 * Rounds));
}

// A large value is read from one store while it is written to the other.
TEST_F(StorageConcurrentTest, TwoStoresCopyToEachOther)
{
    constexpr int Rounds = 30;
    const auto other = StoreFile::Create(Path("other.zeb"), "Other", Observed());
    const auto add = [](StoreFile& store)
    {
        MessageContent content = Mail("large");
        const auto staged = store.Stage();
        staged->Write(0, std::string(300000, 'x').data(), 300000);
        content.properties.SetLarge(PR_RTF_COMPRESSED, staged);
        return store.Messages().Create({Inbox, false}, content);
    };
    const auto copier = [&](StoreFile& from, StoreFile& to)
    {
        return std::thread([&from, &to, message = add(from)]
        {
            for (int i = 0; i < Rounds; ++i)
            {
                EXPECT_EQ(CopyMessagesBetween(from, {message}, to, Inbox, false), 0u);
            }
        });
    };
    std::thread there = copier(Store(), *other);
    std::thread back = copier(*other, Store());
    there.join();
    back.join();
    EXPECT_EQ(Store().Folders().Info(Inbox).messages, ULONG(Rounds + 1));
    EXPECT_EQ(other->Folders().Info(Inbox).messages, ULONG(Rounds + 1));
}

} // namespace
} // namespace zebstore::test
