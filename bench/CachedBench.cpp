// cached-scroll, cached-hit, cached-random: a table read by row index, against the same rows by hand.
#include "bench/Benches.h"
#include "bench/Stores.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <random>
#include <stdexcept>

namespace bench
{

namespace
{

constexpr ULONG Window = 50;
constexpr ULONG Before = 25;
constexpr ULONG Subject = 1;
/// Passes over all indexes of a cached-hit round.
constexpr int PassesPerRound = 10;

void Check(HRESULT result)
{
    if (FAILED(result))
    {
        throw std::runtime_error("A table call failed.");
    }
}

/// A row read by careful hand-written code.
const SRow& RowOf(const SRowSet& rows, ULONG index)
{
    if (index >= rows.cRows)
    {
        throw std::runtime_error("A row is missing.");
    }
    return rows.aRow[index];
}

/// Both ways to read one folder of messages, each with its own table.
struct Tables
{
    explicit Tables(std::shared_ptr<StoreOf> of)
        : store(std::move(of))
        , count(store->Count())
    {
        CZebTable table = store->Inbox().GetContentsTable(MAPI_UNICODE);
        table.SetColumns(4, PR_ENTRYID, PR_SUBJECT_W, PR_SENDER_NAME_W, PR_MESSAGE_DELIVERY_TIME);
        cached = table;

        CComPtr<IMAPIContainer> inbox;
        Check(
            CComPtr<IMAPIProp>(store->Inbox().GetInterface())->QueryInterface(IID_IMAPIContainer, inbox.PutAs<void>()));
        Check(inbox->GetContentsTable(MAPI_UNICODE, hand.Put()));
        SizedSPropTagArray(4, columns) = {4, {PR_ENTRYID, PR_SUBJECT_W, PR_SENDER_NAME_W, PR_MESSAGE_DELIVERY_TIME}};
        Check(hand->SetColumns(reinterpret_cast<SPropTagArray*>(&columns), 0));
    }

    /// Passes up to 50 rows from the current position to `use`.
    template <class Use>
    ULONG QueryByHand(const Use& use)
    {
        SRowSet* rows = nullptr;
        Check(hand->QueryRows(Window, 0, &rows));
        const ULONG read = rows->cRows;
        use(*rows);
        for (ULONG i = 0; i < read; ++i)
        {
            Zeb_MemFree(rows->aRow[i].lpProps);
        }
        Zeb_MemFree(rows);
        return read;
    }

    double ScrollCached()
    {
        return SecondsOfReading(count, [this](unsigned long long& sum)
        {
            for (ULONG i = 0; i < count; ++i)
            {
                sum += cached[i].TagAt(Subject);
            }
        });
    }
    double ScrollByHand()
    {
        return SecondsOfReading(count, [this](unsigned long long& sum)
        {
            Check(hand->SeekRow(BOOKMARK_BEGINNING, 0, nullptr));
            const auto addUp = [&](const SRowSet& rows)
            {
                for (ULONG i = 0; i < rows.cRows; ++i)
                {
                    sum += RowOf(rows, i).lpProps[Subject].ulPropTag;
                }
            };
            while (QueryByHand(addUp) != 0)
            {
            }
        });
    }
    double RandomCached(const std::vector<ULONG>& indexes)
    {
        return SecondsOfReading(indexes.size(), [&](unsigned long long& sum)
        {
            for (const ULONG index : indexes)
            {
                sum += cached[index].TagAt(Subject);
            }
        });
    }
    double RandomByHand(const std::vector<ULONG>& indexes)
    {
        return SecondsOfReading(indexes.size(), [&](unsigned long long& sum)
        {
            for (const ULONG index : indexes)
            {
                const ULONG start = index > Before ? index - Before : 0;
                Check(hand->SeekRow(BOOKMARK_BEGINNING, static_cast<LONG>(start), nullptr));
                QueryByHand([&](const SRowSet& rows) { sum += RowOf(rows, index - start).lpProps[Subject].ulPropTag; });
            }
        });
    }
    /// Seconds of `read`, which adds up the tags of the subjects of `rows` rows.
    template <class Read>
    static double SecondsOfReading(size_t rows, const Read& read)
    {
        unsigned long long sum = 0;
        const double seconds = Seconds([&] { read(sum); });
        Expect(sum, rows);
        return seconds;
    }
    static void Expect(unsigned long long sum, size_t rows)
    {
        if (sum != static_cast<unsigned long long>(rows) * PR_SUBJECT_W)
        {
            throw std::runtime_error("A table did not give every row its subject.");
        }
    }

    std::shared_ptr<StoreOf> store;
    ULONG count;
    CZebCachedTable cached;
    CComPtr<IMAPITable> hand;
};

/// A cached table whose row count costs a virtual call and no more, so that what remains can be seen.
class Counted : public CZebCachedTable
{
public:
    ULONG GetRowCount() override { return m_count; }
    using CZebCachedTable::operator=;
    ULONG m_count = 0;
};

/// The rows of one window again and again, in no order.
struct Hits
{
    explicit Hits(std::shared_ptr<StoreOf> of)
        : tables(std::move(of))
    {
        cached = static_cast<const CZebTable&>(tables.cached);
        cached.m_count = tables.count;
        Check(tables.hand->QueryRows(Window, 0, &rows));
        std::mt19937 random(20260101);
        std::uniform_int_distribution<ULONG> any(0, Window - 1);
        for (ULONG& index : order)
        {
            index = any(random);
        }
    }
    ~Hits() { Zeb_FreeProws(rows); }
    Hits(const Hits&) = delete;
    Hits& operator=(const Hits&) = delete;

    /// Seconds of `read` with every index, `rounds` times, from the fastest of the rounds: the difference of two short
    /// times would show every interruption. Adds up what it gives.
    template <class Read>
    double Each(ULONG rounds, unsigned long long& sum, const Read& read) const
    {
        double fastest = std::numeric_limits<double>::infinity();
        for (ULONG i = 0; i < rounds; ++i)
        {
            unsigned long long added = 0;
            fastest = std::min(fastest, Seconds([&]
            {
                for (int pass = 0; pass < PassesPerRound; ++pass)
                {
                    for (const ULONG index : order)
                    {
                        added += read(index);
                    }
                    // Each pass reads the rows again.
                    Keep(added);
                }
            }));
            sum += added;
        }
        return fastest * rounds;
    }
    double Cached(ULONG rounds)
    {
        CZebCachedTable& table = cached;
        Keep(table[0].TagAt(Subject));
        unsigned long long counts = 0;
        unsigned long long sum = 0;
        const double counting = Each(rounds, counts, [&](ULONG) { return table.GetRowCount(); });
        const double reading = Each(rounds, sum, [&](ULONG index) { return table[index].TagAt(Subject); });
        Tables::Expect(sum, rounds * PassesPerRound * std::size(order));
        return reading - counting;
    }
    double ByHand(ULONG rounds) const
    {
        unsigned long long sum = 0;
        const double reading =
            Each(rounds, sum, [&](ULONG index) { return RowOf(*rows, index).lpProps[Subject].ulPropTag; });
        Tables::Expect(sum, rounds * PassesPerRound * std::size(order));
        return reading;
    }

    Tables tables;
    Counted cached;
    SRowSet* rows = nullptr;
    ULONG order[1000];
};

} // namespace

Measurement CachedScroll(const Options& options)
{
    auto tables = std::make_shared<Tables>(std::make_shared<StoreOf>(options.folder, options.brief ? 2000 : 100000));
    return {"cached-scroll", 2.2, [=] { return tables->ScrollCached(); }, [=] { return tables->ScrollByHand(); },
            options.brief ? 3 : 11};
}

Measurement CachedHit(const Options& options)
{
    auto hits = std::make_shared<Hits>(std::make_shared<StoreOf>(options.folder, 1000));
    const ULONG rounds = options.brief ? 10 : 500;
    return {"cached-hit", 1.8, [=] { return hits->Cached(rounds); }, [=] { return hits->ByHand(rounds); },
            options.brief ? 3 : 21};
}

Measurement CachedRandom(const Options& options)
{
    auto tables = std::make_shared<Tables>(std::make_shared<StoreOf>(options.folder, options.brief ? 5000 : 1000000));
    // The same rows for both ways; no two are close enough to share a window.
    auto indexes = std::make_shared<std::vector<ULONG>>();
    std::mt19937 random(20260101);
    std::uniform_int_distribution<ULONG> any(Before, tables->count - Window);
    for (int i = 0; i < (options.brief ? 50 : 2000); ++i)
    {
        const ULONG index = any(random);
        const ULONG last = indexes->empty() ? 0 : indexes->back();
        if (index > last + Window || index + Window < last)
        {
            indexes->push_back(index);
        }
    }
    return {"cached-random", 1.05, [=] { return tables->RandomCached(*indexes); },
            [=] { return tables->RandomByHand(*indexes); }, options.brief ? 3 : 21};
}

} // namespace bench
