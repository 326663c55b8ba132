// The messages of a folder as rows.
#include "zebstore/storage/PropertyBlob.h"
#include "zebstore/storage/RecentChanges.h"
#include "zebstore/storage/RowParts.h"
#include "zebstore/storage/RowSelection.h"
#include "zebstore/storage/Schema.h"
#include "zebstore/storage/SqlFilter.h"
#include "zebstore/storage/StoreParts.h"

#include <unordered_set>

namespace zebstore
{

namespace
{

// One message while it is looked at; the blob is fetched when the first stored property is asked for.
class MessageValues : public ValueSource
{
public:
    MessageValues(StoreFile& store, const ComputedProperties* computed, const std::vector<ULONG>& computedIds,
                  MessageId message, const Query& query, int blobColumn)
        : m_store(store)
        , m_computed(computed)
        , m_computedIds(computedIds)
        , m_message(message)
        , m_query(query)
        , m_blobColumn(blobColumn)
    {
    }

    EncodedValue Find(ULONG tag) const override
    {
        if (std::binary_search(m_computedIds.begin(), m_computedIds.end(), PROP_ID(tag)))
        {
            const auto compute = [&](PropertySet& made) { return m_computed->OfMessage(tag, m_message, made); };
            if (const auto value = m_made.Find(tag, compute))
            {
                return *value;
            }
        }
        if (!m_blob)
        {
            m_blob.emplace(m_query.Bytes(m_blobColumn), m_store, BlobOwner{"message", m_message});
        }
        const EncodedValue stored = m_blob->Find(tag);
        return stored || !m_computed || !m_computed->IsDefault(tag) ? stored : Default(tag);
    }

    bool AnyOf(ULONG tag, const std::function<bool(const ValueSource&)>& test) const override
    {
        if (PROP_ID(tag) == PROP_ID(PR_MESSAGE_RECIPIENTS))
        {
            const std::vector<PropertySet> recipients = m_store.Recipients(m_message);
            return std::any_of(recipients.begin(), recipients.end(), test);
        }
        for (const ULONG number : m_store.AttachmentNumbers(m_message))
        {
            if (test(m_store.Attachment(m_message, number)))
            {
                return true;
            }
        }
        return false;
    }

private:
    EncodedValue Default(ULONG tag) const
    {
        const MessageOrigin origin{m_message, [this] { return ChangeOf(m_store, m_message); }};
        const auto made =
            m_made.Find(tag, [&](PropertySet& out) { return m_computed->DefaultOfMessage(tag, origin, out); });
        return made.value_or(EncodedValue{});
    }

    static std::int64_t ChangeOf(StoreFile& store, MessageId message)
    {
        Query query(store.Connection(), "SELECT change FROM message WHERE id=?");
        return query.Bind(1, message).Step() ? query.Number(0) : 0;
    }

    StoreFile& m_store;
    const ComputedProperties* m_computed;
    const std::vector<ULONG>& m_computedIds;
    MessageId m_message;
    const Query& m_query;
    int m_blobColumn;
    mutable std::optional<PropertyBlob> m_blob;
    mutable ComputedValues m_made;
};

class ContentsRows : public RowSource
{
public:
    ContentsRows(std::shared_ptr<StoreFile> store, FolderId folder, bool associated,
                 std::shared_ptr<const ComputedProperties> computed)
        : m_store(std::move(store))
        , m_folder(folder)
        , m_associated(associated)
        , m_computed(std::move(computed))
        , m_first(FirstOf(ContainerOf(folder, associated)))
        , m_last(LastOf(ContainerOf(folder, associated)))
    {
        if (m_computed)
        {
            m_computedIds = SortedIds(m_computed->MessageTags());
        }
    }

    ULONG Count() override { return m_store->Rows(m_folder, m_associated); }

    void RequireAllRows(size_t seen) override
    {
        // A change in between explains another number; the store looks at both at one moment.
        if (seen != Count())
        {
            m_store->RequireAllRows(m_folder, m_associated);
        }
    }

    std::uint64_t Generation() override { return m_store->Generation(m_folder, m_associated); }

    std::shared_ptr<void> Moment() override { return std::make_shared<StoreMoment>(*m_store); }

    TouchedRows TouchedSince(std::uint64_t generation) override
    {
        const std::lock_guard<std::recursive_mutex> hold(m_store->Lock());
        Query query(m_store->Connection(), "SELECT change, recent FROM contents WHERE container=?");
        query.Bind(1, ContainerOf(m_folder, m_associated));
        TouchedRows touched;
        if (!query.Step())
        {
            touched.kind = TouchedRows::Kind::Replaced;
        }
        else
        {
            List(touched, query, generation);
        }
        return touched;
    }

    bool KeysRise() const override { return true; }

    bool Exists(RowKey key) override { return m_store->MessageExists(key); }

    std::optional<RowKey> KeyBefore(RowKey key) override
    {
        const std::lock_guard<std::recursive_mutex> hold(m_store->Lock());
        Query query(m_store->Connection(), "SELECT id FROM message WHERE id < ? AND id >= ? ORDER BY id DESC LIMIT 1");
        query.Bind(1, key).Bind(2, m_first);
        return query.Step() ? std::optional<RowKey>(query.Number(0)) : std::nullopt;
    }

    std::vector<RowKey> Keys(const Restriction* restriction, const SortOrder* order) override
    {
        const std::lock_guard<std::recursive_mutex> hold(m_store->Lock());
        const ReadScope moment(m_store->Connection());
        std::optional<SqlFilter> filter;
        if (restriction)
        {
            filter = MakeFilter(restriction->Root(), m_computedIds);
        }
        const std::optional<std::string> sqlOrder = order ? MakeOrder(*order, m_computedIds) : std::string();
        const bool sqlKnowsAll = !restriction || (filter && filter->exact);
        if (sqlKnowsAll && sqlOrder)
        {
            return KeysBySql(restriction, filter, *sqlOrder);
        }
        RowSelection selection(restriction, order);
        const std::string sql = "SELECT id, parts, props FROM message" + Where(filter) + " ORDER BY id";
        Query query(m_store->Connection(), sql);
        BindRange(query, filter);
        while (query.Step())
        {
            const RowKey key = query.Number(0);
            selection.Add(key, ValuesOf(key, query, 2), sqlKnowsAll && !(query.Number(1) & HasCutKeys));
        }
        return selection.Take();
    }

    std::vector<RowKey> KeysAfter(std::optional<RowKey> after, size_t count) override
    {
        const std::lock_guard<std::recursive_mutex> hold(m_store->Lock());
        Query query(m_store->Connection(), "SELECT id FROM message WHERE id > ? AND id <= ? ORDER BY id LIMIT ?");
        query.Bind(1, after ? *after : m_first).Bind(2, m_last).Bind(3, static_cast<std::int64_t>(count));
        return query.Numbers();
    }

    void Read(const RowKey* keys, size_t count, const Visitor& visit) override
    {
        const std::lock_guard<std::recursive_mutex> hold(m_store->Lock());
        const ReadScope moment(m_store->Connection());
        Query query(m_store->Connection(), "SELECT props FROM message WHERE id=?");
        ReadByKey(query, keys, count, visit, [&](RowKey key) { return ValuesOf(key, query, 0); });
    }

    std::vector<ULONG> DefaultColumns() override
    {
        std::vector<ULONG> columns = m_computed ? m_computed->MessageTags() : std::vector<ULONG>();
        for (const ULONG tag :
             {PR_SUBJECT_W, PR_MESSAGE_CLASS_W, PR_SENDER_NAME_W, PR_DISPLAY_TO_W, PR_MESSAGE_FLAGS, PR_MESSAGE_SIZE,
              PR_MESSAGE_DELIVERY_TIME, PR_CLIENT_SUBMIT_TIME, PR_LAST_MODIFICATION_TIME, PR_IMPORTANCE, PR_HASATTACH})
        {
            columns.push_back(tag);
        }
        return columns;
    }

    std::vector<ULONG> AllColumns() override
    {
        ColumnList columns(DefaultColumns());
        const std::lock_guard<std::recursive_mutex> hold(m_store->Lock());
        // The first rows stand for all: a scan of a large folder for rare columns would be no open in
        // constant time.
        Query query(m_store->Connection(), "SELECT props FROM message WHERE id BETWEEN ? AND ? ORDER BY id LIMIT 100");
        query.Bind(1, m_first).Bind(2, m_last);
        while (query.Step())
        {
            const PropertyBlob blob(query.Bytes(0), *m_store, {"a message of folder", m_folder});
            for (size_t i = 0; i < blob.Count(); ++i)
            {
                columns.Add(blob.At(i).tag);
            }
        }
        return columns.Take();
    }

private:
    // StoreFile::Generation is one more than the place's change number.
    void List(TouchedRows& touched, const Query& query, std::uint64_t generation) const
    {
        const auto now = static_cast<std::uint64_t>(query.Number(0)) + 1;
        if (generation == 0 || generation > now || now - generation > MostRecent)
        {
            return;
        }
        const std::vector<RecentChange> changes = LastRecent(query.Bytes(1), now - generation);
        for (const RecentChange& change : changes)
        {
            if (change.IsEverything())
            {
                touched.kind = TouchedRows::Kind::Replaced;
                return;
            }
        }
        if (changes.size() < now - generation)
        {
            return;
        }
        touched.kind = TouchedRows::Kind::Listed;
        std::unordered_set<RowKey> listed;
        for (const RecentChange& change : changes)
        {
            if (const RowKey key = m_first | change.number; listed.insert(key).second)
            {
                touched.rows.push_back({key, change.event != RowEvent::Added});
            }
        }
    }

    MessageValues ValuesOf(RowKey key, const Query& query, int blobColumn) const
    {
        return MessageValues(*m_store, m_computed.get(), m_computedIds, key, query, blobColumn);
    }

    // Rows whose sort keys were cut are let through; the restriction itself judges them.
    static std::string Where(const std::optional<SqlFilter>& filter)
    {
        const std::string range = " WHERE id BETWEEN ? AND ?";
        return filter ? range + " AND (" + filter->sql + " OR (parts & 8))" : range;
    }

    void BindRange(Query& query, const std::optional<SqlFilter>& filter) const
    {
        query.Bind(1, m_first).Bind(2, m_last);
        if (filter)
        {
            filter->Bind(query, 3);
        }
    }

    std::vector<RowKey> KeysBySql(const Restriction* restriction, const std::optional<SqlFilter>& filter,
                                  const std::string& order)
    {
        std::vector<RowKey> keys;
        if (!restriction)
        {
            keys.reserve(Count());
        }
        const std::string sql =
            "SELECT id, parts FROM message" + Where(filter) + " ORDER BY " + (order.empty() ? "" : order + ", ") + "id";
        Query query(m_store->Connection(), sql);
        BindRange(query, filter);
        while (query.Step())
        {
            const RowKey key = query.Number(0);
            if (!restriction || !(query.Number(1) & HasCutKeys) || MatchesWhole(key, *restriction))
            {
                keys.push_back(key);
            }
        }
        return keys;
    }

    bool MatchesWhole(RowKey key, const Restriction& restriction)
    {
        bool matches = false;
        Read(&key, 1, [&](size_t, const ValueSource& values) { matches = restriction.Matches(values); });
        return matches;
    }

    std::shared_ptr<StoreFile> m_store;
    FolderId m_folder;
    bool m_associated;
    std::shared_ptr<const ComputedProperties> m_computed;
    std::vector<ULONG> m_computedIds;
    MessageId m_first;
    MessageId m_last;
};

} // namespace

std::shared_ptr<RowSource> MakeContentsRows(std::shared_ptr<StoreFile> store, FolderId folder, bool associated,
                                            std::shared_ptr<const ComputedProperties> computed)
{
    RequireFolder(*store, folder);
    return std::make_shared<ContentsRows>(std::move(store), folder, associated, std::move(computed));
}

} // namespace zebstore
