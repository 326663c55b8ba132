#include "zebstore/storage/AddressRows.h"

#include "platform/tags.h"
#include "zebstore/storage/PropertyBlob.h"
#include "zebstore/storage/RowParts.h"
#include "zebstore/storage/RowSelection.h"

namespace zebstore
{

namespace
{

constexpr int TypeColumn = 1;
constexpr int BlobColumn = 2;

// One entry while it is looked at; its row is (id, type, props).
class AddressValues : public ValueSource
{
public:
    AddressValues(StoreConnection& store, const ComputedAddress& computed, const Query& query)
        : m_computed(computed)
        , m_address(query.Number(0))
        , m_type(static_cast<ULONG>(query.Number(TypeColumn)))
        , m_blob(query.Bytes(BlobColumn), store, {"address book entry", m_address})
    {
    }

    EncodedValue Find(ULONG tag) const override
    {
        const auto compute = [&](PropertySet& made) { return m_computed.OfEntry(tag, m_address, m_type, made); };
        if (const auto value = m_made.Find(tag, compute))
        {
            return *value;
        }
        return m_blob.Find(tag);
    }

private:
    const ComputedAddress& m_computed;
    AddressId m_address;
    ULONG m_type;
    PropertyBlob m_blob;
    mutable ComputedValues m_made;
};

class AddressRows : public RowSource
{
public:
    AddressRows(const AddressStorage& addresses, std::shared_ptr<const ComputedAddress> computed)
        : m_addresses(addresses)
        , m_store(addresses.SharedFile())
        , m_computed(std::move(computed))
    {
    }

    ULONG Count() override { return m_addresses.Count(); }
    std::uint64_t Generation() override { return m_addresses.Generation(); }

    std::vector<RowKey> Keys(const Restriction* restriction, const SortOrder* order) override
    {
        const std::lock_guard hold(m_store->Lock());
        const ReadScope snapshot(m_store->Connection().Db());
        if (Count() == 0)
        {
            return {};
        }
        // The natural order is that of the names, so the commonest sort order asks for nothing.
        const bool natural = order == nullptr || order->IsEmpty() || IsByName(*order);
        if (natural && restriction == nullptr)
        {
            return Query(m_store->Connection().Db(), "SELECT id FROM address ORDER BY key, id").Numbers(Count());
        }
        RowSelection selection(restriction, natural ? nullptr : order);
        Query query(m_store->Connection().Db(), "SELECT id, type, props FROM address ORDER BY key, id");
        while (query.Step())
        {
            selection.Add(query.Number(0), AddressValues(m_store->Connection(), *m_computed, query));
        }
        return selection.Take();
    }

    std::vector<RowKey> KeysAfter(std::optional<RowKey> after, size_t count) override
    {
        const std::lock_guard hold(m_store->Lock());
        const ReadScope snapshot(m_store->Connection().Db());
        if (Count() == 0)
        {
            return {};
        }
        Query query(m_store->Connection().Db(),
                    after ? "SELECT id FROM address WHERE (key, id) > (SELECT key, id FROM address WHERE id=?2) "
                            "ORDER BY key, id LIMIT ?1"
                          : "SELECT id FROM address ORDER BY key, id LIMIT ?1");
        query.Bind(1, static_cast<std::int64_t>(count));
        if (after)
        {
            query.Bind(2, *after);
        }
        return query.Numbers();
    }

    void Read(const RowKey* keys, size_t count, const Visitor& visit) override
    {
        const std::lock_guard hold(m_store->Lock());
        const ReadScope snapshot(m_store->Connection().Db());
        if (count == 0)
        {
            return;
        }
        Query query(m_store->Connection().Db(), "SELECT id, type, props FROM address WHERE id=?");
        ReadByKey(query, keys, count, visit,
                  [&](RowKey) { return AddressValues(m_store->Connection(), *m_computed, query); });
    }

    std::vector<ULONG> DefaultColumns() override
    {
        std::vector<ULONG> columns = m_computed->Tags();
        for (const ULONG tag :
             {PR_DISPLAY_NAME_W, PR_ADDRTYPE_W, PR_EMAIL_ADDRESS_W, PR_SMTP_ADDRESS_W, PR_ACCOUNT_W, PR_SEARCH_KEY})
        {
            columns.push_back(tag);
        }
        return columns;
    }

    std::vector<ULONG> AllColumns() override
    {
        ColumnList columns(DefaultColumns());
        const std::lock_guard hold(m_store->Lock());
        const std::vector<RowKey> keys = KeysAfter(std::nullopt, 100); // the first rows represent all
        for (const RowKey key : keys)
        {
            for (const ULONG tag : m_addresses.Load(key).properties.Tags())
            {
                columns.Add(tag);
            }
        }
        return columns.Take();
    }

private:
    static bool IsByName(const SortOrder& order)
    {
        const SortOrder::Key& first = order.Keys().front();
        const ULONG type = PROP_TYPE(first.tag);
        return order.Keys().size() == 1 && PROP_ID(first.tag) == PROP_ID(PR_DISPLAY_NAME) && !first.descending &&
               (type == PT_UNICODE || type == PT_STRING8 || type == PT_UNSPECIFIED);
    }

    AddressStorage m_addresses;
    std::shared_ptr<StoreFile> m_store;
    std::shared_ptr<const ComputedAddress> m_computed;
};

} // namespace

std::shared_ptr<RowSource> MakeAddressRows(const AddressStorage& addresses,
                                           std::shared_ptr<const ComputedAddress> computed)
{
    return std::make_shared<AddressRows>(addresses, std::move(computed));
}

} // namespace zebstore
