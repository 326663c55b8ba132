// The entries of the address book as rows.
#include "zebstore/storage/AddressStorage.h"
#include "zebstore/storage/Database.h"
#include "zebstore/storage/PropertyBlob.h"
#include "zebstore/storage/RowSelect.h"

#include <deque>

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
    AddressValues(StoreFile& store, const ComputedAddress& computed, const Query& query)
        : m_computed(computed)
        , m_address(query.Number(0))
        , m_type(static_cast<ULONG>(query.Number(TypeColumn)))
        , m_blob(query.Bytes(BlobColumn), store)
    {
    }

    EncodedValue Find(ULONG tag) const override
    {
        m_made.emplace_back();
        if (m_computed.OfEntry(tag, m_address, m_type, m_made.back()))
            return m_made.back().Find(tag);
        m_made.pop_back();
        return m_blob.Find(tag);
    }

private:
    const ComputedAddress& m_computed;
    AddressId m_address;
    ULONG m_type;
    PropertyBlob m_blob;
    mutable std::deque<PropertySet> m_made; // a deque: what was handed out stays in place
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
        const std::lock_guard<std::recursive_mutex> hold(m_store->Lock());
        const ReadScope moment(m_store->Connection());
        if (Count() == 0)
            return {};
        // The natural order is that of the names, so the commonest sort order asks for nothing.
        const bool natural = !order || order->IsEmpty() || IsByName(*order);
        if (natural && !restriction)
            return AllKeys();
        RowSelection selection(restriction, natural ? nullptr : order);
        Query query(m_store->Connection(), "SELECT id, type, props FROM address ORDER BY key, id");
        while (query.Step())
            selection.Add(query.Number(0), AddressValues(*m_store, *m_computed, query));
        return selection.Take();
    }

    std::vector<RowKey> KeysAfter(std::optional<RowKey> after, size_t count) override
    {
        const std::lock_guard<std::recursive_mutex> hold(m_store->Lock());
        const ReadScope moment(m_store->Connection());
        std::vector<RowKey> keys;
        if (Count() == 0)
            return keys;
        Query query(
            m_store->Connection(),
            after ? "SELECT id FROM address WHERE (key, id) > (SELECT key, id FROM address WHERE id=?2) "
                    "ORDER BY key, id LIMIT ?1"
                  : "SELECT id FROM address ORDER BY key, id LIMIT ?1");
        query.Bind(1, static_cast<std::int64_t>(count));
        if (after)
            query.Bind(2, *after);
        while (query.Step())
            keys.push_back(query.Number(0));
        return keys;
    }

    void Read(const RowKey* keys, size_t count, const Visitor& visit) override
    {
        const std::lock_guard<std::recursive_mutex> hold(m_store->Lock());
        const ReadScope moment(m_store->Connection());
        const PropertySet none;
        if (count == 0)
            return;
        Query query(m_store->Connection(), "SELECT id, type, props FROM address WHERE id=?");
        for (size_t i = 0; i < count; ++i)
        {
            if (query.Bind(1, keys[i]).Step())
                visit(i, AddressValues(*m_store, *m_computed, query));
            else
                visit(i, none);
            query.Reset();
        }
    }

    std::vector<ULONG> DefaultColumns() override
    {
        std::vector<ULONG> columns = m_computed->Tags();
        for (const ULONG tag : {PR_DISPLAY_NAME_W, PR_ADDRTYPE_W, PR_EMAIL_ADDRESS_W, PrSmtpAddress,
                                PR_ACCOUNT_W, PR_SEARCH_KEY})
            columns.push_back(tag);
        return columns;
    }

    std::vector<ULONG> AllColumns() override
    {
        std::vector<ULONG> columns = DefaultColumns();
        const std::lock_guard<std::recursive_mutex> hold(m_store->Lock());
        const std::vector<RowKey> keys = KeysAfter(std::nullopt, 100); // the first rows stand for all
        for (const RowKey key : keys)
            for (const ULONG tag : m_addresses.Load(key).properties.Tags())
                if (std::none_of(columns.begin(), columns.end(),
                                 [&](ULONG each) { return PROP_ID(each) == PROP_ID(tag); }))
                    columns.push_back(tag);
        return columns;
    }

private:
    static bool IsByName(const SortOrder& order)
    {
        const SortOrder::Key& first = order.Keys().front();
        const ULONG type = PROP_TYPE(first.tag);
        return order.Keys().size() == 1 && PROP_ID(first.tag) == PROP_ID(PR_DISPLAY_NAME) &&
               !first.descending && (type == PT_UNICODE || type == PT_STRING8 || type == PT_UNSPECIFIED);
    }

    std::vector<RowKey> AllKeys()
    {
        std::vector<RowKey> keys;
        keys.reserve(Count());
        Query query(m_store->Connection(), "SELECT id FROM address ORDER BY key, id");
        while (query.Step())
            keys.push_back(query.Number(0));
        return keys;
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
