#include "zebstore/storage/ContentsRows.h"

#include "zebstore/base/Watch.h"
#include "zebstore/storage/PropertyBlob.h"
#include "zebstore/storage/RowParts.h"
#include "zebstore/storage/RowSelection.h"
#include "zebstore/storage/SqlFilter.h"
#include "zebstore/storage/TextRestriction.h"

namespace zebstore
{

namespace
{

// So many rows are looked up quickly in any folder.
constexpr size_t FewCandidates = 200;
// So many listed messages are looked up for each of the first rows by date.
constexpr size_t MostPerRow = 64;
/// Folders of fewer messages are read themselves, which finds lost ones.
constexpr ULONG FewestByRuns = 4096;

// One message while it is read; the blob is fetched when the first stored property is asked for.
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
            OpenBlob();
        }
        const EncodedValue stored = m_blob->Find(tag);
        return stored || m_computed == nullptr || !m_computed->IsDefault(tag) ? stored : Default(tag);
    }

    bool AnyOf(ULONG tag, const std::function<bool(const ValueSource&)>& test) const override
    {
        if (PROP_ID(tag) == PROP_ID(PR_MESSAGE_RECIPIENTS))
        {
            const std::vector<PropertySet> recipients = m_store.Recipients().Load(m_message);
            return std::any_of(recipients.begin(), recipients.end(), test);
        }
        for (const ULONG number : m_store.Attachments().Numbers(m_message))
        {
            if (test(m_store.Attachments().Load(m_message, number)))
            {
                return true;
            }
        }
        return false;
    }

private:
    void OpenBlob() const
    {
        VerifiedRows& verified = m_store.Messages().Verified();
        const bool isVerified = verified.Has(m_message);
        m_blob.emplace(m_query.Bytes(m_blobColumn), m_store.Connection(), BlobOwner{"message", m_message},
                       isVerified ? BlobCheck::Index : BlobCheck::Checksum);
        if (!isVerified)
        {
            verified.Add(m_message);
        }
    }

    EncodedValue Default(ULONG tag) const
    {
        const MessageOrigin origin{m_message, [this] { return ChangeOf(m_store, m_message); }};
        const auto made =
            m_made.Find(tag, [&](PropertySet& out) { return m_computed->DefaultOfMessage(tag, origin, out); });
        return made.value_or(EncodedValue{});
    }

    static std::int64_t ChangeOf(StoreFile& store, MessageId message)
    {
        Query query(store.Connection().Db(), "SELECT change FROM message WHERE id=?");
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
    ContentsRows(std::shared_ptr<StoreFile> store, ContentsKey contents,
                 std::shared_ptr<const ComputedProperties> computed)
        : m_store(std::move(store))
        , m_contents(contents)
        , m_computed(std::move(computed))
    {
        if (m_computed)
        {
            m_computedIds = SortedIds(m_computed->MessageTags());
        }
    }

    ULONG Count() override { return m_store->Contents().Rows(m_contents); }

    void RequireAllRows(size_t seen) override
    {
        // A change in between explains a difference; the store compares both in one snapshot.
        if (seen != Count())
        {
            m_store->Contents().RequireAllRows(m_contents);
        }
    }

    std::uint64_t Generation() override { return m_store->Contents().Generation(m_contents); }

    std::shared_ptr<void> Snapshot() override { return std::make_shared<StoreSnapshot>(m_store->Connection()); }

    RowChanges ChangesSince(std::uint64_t generation) override
    {
        return m_store->Contents().ChangesSince(m_contents, generation);
    }

    bool KeysRise() const override { return true; }

    bool Exists(RowKey key) override { return m_store->Messages().Exists(key); }

    std::optional<RowKey> KeyBefore(RowKey key) override
    {
        const std::lock_guard hold(m_store->Lock());
        Query query(m_store->Connection().Db(),
                    "SELECT id FROM message WHERE id < ? AND id >= ? ORDER BY id DESC LIMIT 1");
        query.Bind(1, key).Bind(2, m_contents.FirstMessage());
        return query.Step() ? std::optional<RowKey>(query.Number(0)) : std::nullopt;
    }

    std::vector<RowKey> Keys(const Restriction* restriction, const SortOrder* order) override
    {
        const StoreSnapshot snapshot(m_store->Connection());
        if (restriction == nullptr && order == nullptr)
        {
            return AllKeys();
        }
        std::optional<SqlFilter> filter;
        if (restriction != nullptr)
        {
            filter = MakeFilter(restriction->Root(), m_computedIds);
        }
        const bool sqlKnowsAll = restriction == nullptr || (filter && filter->exact);
        if (const auto candidates = restriction != nullptr ? Candidates(*restriction, sqlKnowsAll) : std::nullopt)
        {
            return KeysAmong(*candidates, restriction, order, filter);
        }
        const std::optional<std::string> sqlOrder = order != nullptr ? MakeOrder(*order, m_computedIds) : std::string();
        if (sqlKnowsAll && sqlOrder)
        {
            return KeysBySql(restriction, filter, *sqlOrder);
        }
        RowSelection selection(restriction, order);
        const std::string sql = "SELECT id, parts, props FROM message" + Where(filter) + " ORDER BY id";
        Query query(m_store->Connection().Db(), sql);
        BindRange(query, filter);
        while (query.Step())
        {
            const RowKey key = query.Number(0);
            selection.Add(key, ValuesOf(key, query, 2), sqlKnowsAll && ((query.Number(1) & HasCutKeys) == 0));
        }
        return selection.Take();
    }

    std::vector<RowKey> KeysAfter(std::optional<RowKey> after, size_t count) override
    {
        const std::lock_guard hold(m_store->Lock());
        Query query(m_store->Connection().Db(), "SELECT id FROM message WHERE id > ? AND id <= ? ORDER BY id LIMIT ?");
        query.Bind(1, after ? *after : m_contents.FirstMessage())
            .Bind(2, m_contents.LastMessage())
            .Bind(3, static_cast<std::int64_t>(count));
        return query.Numbers();
    }

    std::optional<std::vector<RowKey>> FirstKeys(const SortOrder& order, size_t count) override
    {
        const std::optional<std::string> sqlOrder = MakeOrder(order, m_computedIds);
        if (!sqlOrder || PROP_ID(order.Keys().front().tag) != PROP_ID(PR_CLIENT_SUBMIT_TIME) ||
            m_store->Version() < DateRunsVersion)
        {
            return std::nullopt;
        }
        const StoreSnapshot snapshot(m_store->Connection());
        if (count >= Count())
        {
            return Keys(nullptr, &order);
        }
        // What was deleted is listed too: of messages of which few are left, all are read.
        for (size_t wanted = count; wanted <= MostPerRow * count; wanted *= 4)
        {
            const auto listed = m_store->Contents().FirstByDate(m_contents, order.Keys().front().descending, wanted);
            if (!listed)
            {
                break;
            }
            std::vector<RowKey> keys = KeysAmong(*listed, nullptr, &order, std::nullopt);
            if (keys.size() >= count)
            {
                keys.resize(count);
                return keys;
            }
        }
        return std::nullopt;
    }

    void Read(const RowKey* keys, size_t count, const Visitor& visit) override
    {
        const StoreSnapshot snapshot(m_store->Connection());
        Query query(m_store->Connection().Db(), "SELECT props FROM message WHERE id=?");
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
        const std::lock_guard hold(m_store->Lock());
        // Only the first rows are read: a scan of a large folder for rare columns would take too long.
        Query query(m_store->Connection().Db(),
                    "SELECT props FROM message WHERE id BETWEEN ? AND ? ORDER BY id LIMIT 100");
        query.Bind(1, m_contents.FirstMessage()).Bind(2, m_contents.LastMessage());
        while (query.Step())
        {
            const PropertyBlob blob(query.Bytes(0), m_store->Connection(),
                                    {"a message of folder", m_contents.Folder()});
            for (size_t i = 0; i < blob.Count(); ++i)
            {
                columns.Add(blob.At(i).tag);
            }
        }
        return columns.Take();
    }

private:
    MessageValues ValuesOf(RowKey key, const Query& query, int blobColumn) const
    {
        return MessageValues(*m_store, m_computed.get(), m_computedIds, key, query, blobColumn);
    }

    // Rows whose sort keys were cut pass; the restriction itself is applied to them.
    static std::string Where(const std::optional<SqlFilter>& filter)
    {
        const std::string range = " WHERE id BETWEEN ? AND ?";
        return filter ? range + " AND (" + filter->sql + " OR (parts & " + std::to_string(HasCutKeys) + "))" : range;
    }

    void BindRange(Query& query, const std::optional<SqlFilter>& filter) const
    {
        query.Bind(1, m_contents.FirstMessage()).Bind(2, m_contents.LastMessage());
        if (filter)
        {
            filter->Bind(query, 3);
        }
    }

    // The messages of a large folder fill so many pages that their keys are taken from the runs of dates.
    std::vector<RowKey> AllKeys()
    {
        if (Count() >= FewestByRuns && m_store->Version() >= DateRunsVersion)
        {
            if (auto keys = m_store->Contents().AllByRuns(m_contents))
            {
                return std::move(*keys);
            }
        }
        return KeysBySql(nullptr, std::nullopt, "");
    }

    std::vector<RowKey> KeysBySql(const Restriction* restriction, const std::optional<SqlFilter>& filter,
                                  const std::string& order)
    {
        std::vector<RowKey> keys;
        if (restriction == nullptr)
        {
            keys.reserve(Count());
        }
        const std::string sql =
            "SELECT id, parts FROM message" + Where(filter) + " ORDER BY " + (order.empty() ? "" : order + ", ") + "id";
        Query query(m_store->Connection().Db(), sql);
        BindRange(query, filter);
        while (query.Step())
        {
            const RowKey key = query.Number(0);
            if (restriction == nullptr || !(query.Number(1) & HasCutKeys) || MatchesWhole(key, *restriction))
            {
                keys.push_back(key);
            }
        }
        return keys;
    }

    // What the text index leaves of the rows; nothing when it says nothing, or looking up its rows one by one takes
    // longer than reading all. Where SQL alone decides, reading is quicker.
    std::optional<std::vector<RowKey>> Candidates(const Restriction& restriction, bool sqlKnowsAll)
    {
        const std::optional<TextPlan> plan = MakeTextPlan(restriction.Root());
        if (!plan)
        {
            return std::nullopt;
        }
        const size_t rows = m_store->Contents().Rows(m_contents);
        const size_t most = std::max<size_t>(FewCandidates, rows / (sqlKnowsAll ? 20 : 3));
        auto candidates = m_store->Texts().Candidates(*plan, m_contents, most);
        if (candidates)
        {
            TraceNote("folder " + std::to_string(m_contents.Folder()) + ": the text index leaves " +
                      std::to_string(candidates->size()) + " of " + std::to_string(rows) + " messages");
        }
        return candidates;
    }

    std::vector<RowKey> KeysAmong(const std::vector<RowKey>& candidates, const Restriction* restriction,
                                  const SortOrder* order, const std::optional<SqlFilter>& filter)
    {
        const bool sqlKnowsAll = filter && filter->exact;
        RowSelection selection(restriction, order);
        Query query(m_store->Connection().Db(), "SELECT id, parts, props FROM message" + Where(filter));
        if (filter)
        {
            filter->Bind(query, 3);
        }
        for (const RowKey key : candidates)
        {
            query.Bind(1, key).Bind(2, key);
            if (query.Step())
            {
                selection.Add(key, ValuesOf(key, query, 2), sqlKnowsAll && ((query.Number(1) & HasCutKeys) == 0));
            }
            query.Reset();
        }
        return selection.Take();
    }

    bool MatchesWhole(RowKey key, const Restriction& restriction)
    {
        bool matches = false;
        Read(&key, 1, [&](size_t, const ValueSource& values) { matches = restriction.Matches(values); });
        return matches;
    }

    std::shared_ptr<StoreFile> m_store;
    ContentsKey m_contents;
    std::shared_ptr<const ComputedProperties> m_computed;
    std::vector<ULONG> m_computedIds;
};

} // namespace

std::shared_ptr<RowSource> MakeContentsRows(std::shared_ptr<StoreFile> store, ContentsKey contents,
                                            std::shared_ptr<const ComputedProperties> computed)
{
    store->Folders().RequireExists(contents.Folder());
    return std::make_shared<ContentsRows>(std::move(store), contents, std::move(computed));
}

} // namespace zebstore
