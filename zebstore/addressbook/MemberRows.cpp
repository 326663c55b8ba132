#include "zebstore/addressbook/MemberRows.h"

#include "zebstore/addressbook/EntryRow.h"
#include "zebstore/addressbook/ListMembers.h"
#include "zebstore/storage/MemoryRows.h"

namespace zebstore
{
namespace
{

// The current members: rebuilt whenever the address book or the contacts have changed.
class MemberRows final : public MemoryRows
{
public:
    MemberRows(const StorePtr& store, const AddressName& list)
        : MemoryRows({}, EntryRowTags())
        , m_store(store)
        , m_list(list)
    {
        Refresh();
    }

    std::uint64_t Generation() override
    {
        Refresh();
        return MemoryRows::Generation();
    }

private:
    void Refresh()
    {
        StoreFile& file = m_store->File();
        const std::lock_guard hold(file.Lock());
        const std::uint64_t now = AddressStorage(m_store->SharedFile()).Generation() +
                                  file.Contents().Generation({IdOf(StandardFolder::Contacts), false});
        if (now == m_madeOf)
        {
            return;
        }
        std::vector<PropertySet> rows;
        for (const AddressEntryId& each : MembersOf(m_store, m_list))
        {
            rows.push_back(RowOfEntry(m_store, each.data(), each.size()));
        }
        Replace(std::move(rows));
        m_madeOf = now;
    }

    const StorePtr m_store;
    const AddressName m_list;
    std::uint64_t m_madeOf = 0;
};

} // namespace

std::shared_ptr<RowSource> MakeMemberRows(const StorePtr& store, const AddressName& list)
{
    return std::make_shared<MemberRows>(store, list);
}

} // namespace zebstore
