#include "zebstore/storage/TextIndex.h"

#include "zebstore/storage/Encoding.h"
#include "zebstore/storage/MessageText.h"
#include "zebstore/storage/TextBlock.h"
#include "zebstore/storage/TextIndexSchema.h"

#include <algorithm>

namespace zebstore
{

namespace
{

constexpr MessageId LastEmbedded = ContentsKey::Embedded().LastMessage();
/// Pairs of a slot and a gram after which a block is closed early: long texts would take too much memory.
constexpr size_t MostPairs = 4000000;
/// A block that was made of fewer messages, without being closed early, is joined with others.
constexpr std::int64_t SmallBlock = BlockSlots / 2;
constexpr int MostBlocksOfASave = 2;

std::int64_t PlaceOf(std::int64_t block, size_t slot)
{
    return (block << SlotBits) + static_cast<std::int64_t>(slot);
}

/// Asks one block.
class BlockReader
{
public:
    BlockReader(Database& database, std::int64_t block, std::string_view open)
        : m_database(database)
        , m_block(block)
    {
        for (size_t at = 0; at + sizeof(std::uint32_t) <= open.size(); at += sizeof(std::uint32_t))
        {
            if (const size_t slot = ReadNumber<std::uint32_t>(open, at); slot < BlockSlots)
            {
                m_open.set(slot);
            }
        }
    }

    Slots Matching(const TextPlan& plan) const { return Ask(plan) | m_open; }

private:
    Slots Ask(const TextPlan& plan) const
    {
        Slots slots;
        slots.set();
        for (const Gram gram : plan.grams)
        {
            slots &= With(gram);
            if (slots.none())
            {
                return slots;
            }
        }
        if (plan.isAny)
        {
            Slots any;
            for (const TextPlan& child : plan.children)
            {
                any |= Ask(child);
            }
            return slots & any;
        }
        for (const TextPlan& child : plan.children)
        {
            slots &= Ask(child);
            if (slots.none())
            {
                return slots;
            }
        }
        return slots;
    }

    Slots With(Gram gram) const
    {
        Query query(m_database, "SELECT slots FROM text_gram WHERE id=?");
        query.Bind(1, (m_block << PartBits) + static_cast<std::int64_t>(PartOf(gram)));
        return query.Step() ? SlotsWith(query.Bytes(0), gram) : Slots();
    }

    Database& m_database;
    std::int64_t m_block;
    Slots m_open;
};

/// Puts messages into a new block, in the caller's transaction.
class BlockMaker
{
public:
    explicit BlockMaker(StoreConnection& connection)
        : m_connection(connection)
        , m_database(connection.Db())
    {
        Query query(m_database, "SELECT coalesce(max(id), 0) FROM text_block");
        query.Step();
        m_block = query.Number(0) + 1;
    }

    bool IsFull() const { return m_rows == BlockSlots || m_writer.Pairs() > MostPairs; }
    size_t Rows() const { return m_rows; }

    void Add(MessageId message)
    {
        m_grams.Clear();
        if (!AddTexts(m_connection, message, m_grams))
        {
            return; // damaged: it goes on waiting, so that every search comes across it
        }
        LeaveOldBlock(message);
        Query(m_database, "INSERT INTO text_member(place, message) VALUES(?, ?)")
            .Bind(1, PlaceOf(m_block, m_rows))
            .Bind(2, message)
            .Run();
        Query(m_database, "DELETE FROM text_waiting WHERE id=?").Bind(1, message).Run();
        m_writer.Add(m_rows, m_grams.Grams());
        if (m_grams.IsOpen())
        {
            AppendNumber(m_open, static_cast<std::uint32_t>(m_rows));
        }
        m_first = m_rows == 0 ? message : std::min(m_first, message);
        m_last = std::max(m_last, message);
        ++m_rows;
    }

    void Finish()
    {
        if (m_rows == 0)
        {
            return;
        }
        std::int64_t bytes = 0;
        for (size_t part = 0; part < BlockParts; ++part)
        {
            const std::string slots = m_writer.Part(part);
            if (!slots.empty())
            {
                Query(m_database, "INSERT INTO text_gram(id, slots) VALUES(?, ?)")
                    .Bind(1, (m_block << PartBits) + static_cast<std::int64_t>(part))
                    .BindBlob(2, slots)
                    .Run();
                bytes += static_cast<std::int64_t>(slots.size());
            }
        }
        Query query(m_database, "INSERT INTO text_block(id, made, rows, first, last, bytes, open) "
                                "VALUES(?1, ?2, ?2, ?3, ?4, ?5, ?6)");
        query.Bind(1, m_block).Bind(2, static_cast<std::int64_t>(m_rows)).Bind(3, m_first).Bind(4, m_last);
        query.Bind(5, bytes).BindBlob(6, m_open).Run();
    }

private:
    // A changed message still has the place of its old text.
    void LeaveOldBlock(MessageId message)
    {
        Query member(m_database, "SELECT place FROM text_member WHERE message=?");
        if (!member.Bind(1, message).Step())
        {
            return;
        }
        Query(m_database, "UPDATE text_block SET rows=rows-1 WHERE id=?").Bind(1, member.Number(0) >> SlotBits).Run();
        Query(m_database, "DELETE FROM text_member WHERE place=?").Bind(1, member.Number(0)).Run();
    }

    StoreConnection& m_connection;
    Database& m_database;
    std::int64_t m_block = 0;
    size_t m_rows = 0;
    MessageId m_first = 0;
    MessageId m_last = 0;
    std::string m_open;
    GramSet m_grams;
    TextBlockWriter m_writer;
};

void AppendMembers(Database& database, std::int64_t block, const Slots& slots, ContentsKey contents,
                   std::vector<MessageId>& to)
{
    Query query(database, "SELECT message FROM text_member WHERE place=?");
    for (size_t slot = 0; slot < BlockSlots; ++slot)
    {
        if (!slots[slot])
        {
            continue;
        }
        if (query.Bind(1, PlaceOf(block, slot)).Step() && ContentsKey::Of(query.Number(0)) == contents)
        {
            to.push_back(query.Number(0));
        }
        query.Reset();
    }
}

} // namespace

bool TextIndex::IsOn()
{
    const std::lock_guard hold(m_connection.Lock());
    Query query(m_connection.Db(), "PRAGMA schema_version");
    query.Step();
    const std::int64_t cookie = query.Number(0);
    if (cookie != m_cookie)
    {
        m_isOn = ReadTextIndexSchema(m_connection.Db()) == TextIndexSchema::Complete;
        m_cookie = cookie;
        m_isCounted = false;
    }
    return m_isOn;
}

std::uint64_t TextIndex::Waiting()
{
    Query query(m_connection.Db(), "SELECT count(*) FROM text_waiting");
    query.Step();
    return static_cast<std::uint64_t>(query.Number(0));
}

TextIndexState TextIndex::State()
{
    const StoreSnapshot snapshot(m_connection);
    TextIndexState state;
    state.isOn = IsOn();
    state.isForeign = ReadTextIndexSchema(m_connection.Db()) == TextIndexSchema::Foreign;
    Query messages(m_connection.Db(), "SELECT count(*) FROM message WHERE id > ?");
    messages.Bind(1, LastEmbedded).Step();
    state.messages = static_cast<std::uint64_t>(messages.Number(0));
    if (state.isOn)
    {
        state.waiting = Waiting();
        Query bytes(m_connection.Db(), "SELECT coalesce(sum(bytes), 0) FROM text_block");
        bytes.Step();
        state.bytes = static_cast<std::uint64_t>(bytes.Number(0));
    }
    return state;
}

void TextIndex::TurnOn()
{
    m_connection.RequireWritable();
    StoreTransaction transaction(m_connection);
    if (!IsOn())
    {
        DropTextIndexSchema(m_connection.Db());
        CreateTextIndexSchema(m_connection.Db());
        Query(m_connection.Db(), "INSERT INTO text_waiting(id) SELECT id FROM message WHERE id > ?")
            .Bind(1, LastEmbedded)
            .Run();
    }
    transaction.Commit();
    m_cookie = -1;
}

void TextIndex::TurnOff()
{
    m_connection.RequireWritable();
    StoreTransaction transaction(m_connection);
    DropTextIndexSchema(m_connection.Db());
    transaction.Commit();
    m_cookie = -1;
}

void TextIndex::Switch(bool on, const WorkReport& report)
{
    if (!on)
    {
        return TurnOff();
    }
    TurnOn();
    Complete(report);
}

void TextIndex::DropThinBlocks(bool alsoSmall)
{
    Database& database = m_connection.Db();
    const std::vector<std::int64_t> thin =
        Query(database,
              "SELECT id FROM text_block WHERE rows*2 < made OR (?1 AND rows < ?2 AND bytes < 1000000) LIMIT ?3")
            .Bind(1, alsoSmall ? 1 : 0)
            .Bind(2, SmallBlock)
            .Bind(3, alsoSmall ? -1 : 1)
            .Numbers();
    for (const std::int64_t block : thin)
    {
        const std::int64_t first = PlaceOf(block, 0), last = PlaceOf(block, BlockSlots - 1);
        Query(database, "INSERT OR IGNORE INTO text_waiting(id) SELECT message FROM text_member WHERE place "
                        "BETWEEN ? AND ?")
            .Bind(1, first)
            .Bind(2, last)
            .Run();
        Query(database, "DELETE FROM text_member WHERE place BETWEEN ? AND ?").Bind(1, first).Bind(2, last).Run();
        Query(database, "DELETE FROM text_gram WHERE id BETWEEN ? AND ?")
            .Bind(1, block << PartBits)
            .Bind(2, ((block + 1) << PartBits) - 1)
            .Run();
        Query(database, "DELETE FROM text_block WHERE id=?").Bind(1, block).Run();
    }
}

size_t TextIndex::MakeBlock()
{
    StoreTransaction transaction(m_connection);
    const std::vector<MessageId> waiting = Query(m_connection.Db(), "SELECT id FROM text_waiting ORDER BY id LIMIT ?")
                                               .Bind(1, static_cast<std::int64_t>(BlockSlots))
                                               .Numbers();
    BlockMaker maker(m_connection);
    for (const MessageId message : waiting)
    {
        if (maker.IsFull())
        {
            break;
        }
        maker.Add(message);
    }
    maker.Finish();
    transaction.Commit();
    return maker.Rows();
}

void TextIndex::Complete(const WorkReport& report)
{
    m_connection.RequireWritable();
    std::uint64_t done = 0, whole = 0;
    {
        StoreTransaction transaction(m_connection);
        if (IsOn())
        {
            DropThinBlocks(true);
            whole = Waiting();
        }
        transaction.Commit();
    }
    while (done < whole)
    {
        const size_t made = IsOn() ? MakeBlock() : 0;
        if (made == 0)
        {
            return;
        }
        done += made;
        report.progress(std::min(done, whole), whole);
    }
}

void TextIndex::Noted()
{
    if (!IsOn())
    {
        return;
    }
    ++m_noted;
    if (m_isCounted && m_noted < BlockSlots)
    {
        return;
    }
    m_noted = Waiting();
    m_isCounted = true;
    if (m_noted < BlockSlots)
    {
        return;
    }
    // Not all that may wait after an index was made in part: the save that comes across them would take minutes.
    DropThinBlocks(false);
    for (int blocks = 0; blocks < MostBlocksOfASave && Waiting() >= BlockSlots; ++blocks)
    {
        MakeBlock();
    }
    m_noted = Waiting() % BlockSlots;
}

std::optional<std::vector<MessageId>> TextIndex::Candidates(const TextPlan& plan, ContentsKey contents, size_t most)
{
    const StoreSnapshot snapshot(m_connection);
    if (!IsOn())
    {
        return std::nullopt;
    }
    Database& database = m_connection.Db();
    std::vector<MessageId> found = Query(database, "SELECT id FROM text_waiting WHERE id BETWEEN ? AND ? LIMIT ?")
                                       .Bind(1, contents.FirstMessage())
                                       .Bind(2, contents.LastMessage())
                                       .Bind(3, static_cast<std::int64_t>(most) + 1)
                                       .Numbers();
    Query blocks(database, "SELECT id, open FROM text_block WHERE first <= ? AND last >= ? AND rows > 0");
    blocks.Bind(1, contents.LastMessage()).Bind(2, contents.FirstMessage());
    while (found.size() <= most && blocks.Step())
    {
        const std::int64_t block = blocks.Number(0);
        const Slots slots = BlockReader(database, block, blocks.Bytes(1)).Matching(plan);
        AppendMembers(database, block, slots, contents, found);
    }
    if (found.size() > most)
    {
        return std::nullopt;
    }
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
}

} // namespace zebstore
