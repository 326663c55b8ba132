// The comparison of the text index with the messages.
#include "zebstore/storage/Encoding.h"
#include "zebstore/storage/MessageText.h"
#include "zebstore/storage/TextBlock.h"
#include "zebstore/storage/TextIndex.h"
#include "zebstore/storage/TextIndexSchema.h"

#include <unordered_map>

namespace zebstore
{

namespace
{

using Problems = std::vector<std::string>;

/// Problems of one kind that are listed one by one; the rest is counted.
constexpr size_t MostListed = 10;

void Report(Problems& problems, const std::vector<MessageId>& messages, const char* what)
{
    for (size_t i = 0; i < messages.size() && i < MostListed; ++i)
    {
        problems.push_back("the text index: message " + std::to_string(messages[i]) + what);
    }
    if (messages.size() > MostListed)
    {
        problems.push_back("the text index: " + std::to_string(messages.size() - MostListed) +
                           " more messages:" + what);
    }
}

void CheckPlaces(Database& database, Problems& problems)
{
    Report(problems,
           Query(database, "SELECT id FROM message WHERE id > ? AND id NOT IN (SELECT message FROM text_member) "
                           "AND id NOT IN (SELECT id FROM text_waiting)")
               .Bind(1, ContentsKey::Embedded().LastMessage())
               .Numbers(),
           " is missing");
    Report(problems,
           Query(database, "SELECT message FROM text_member WHERE message NOT IN (SELECT id FROM message) UNION "
                           "SELECT id FROM text_waiting WHERE id NOT IN (SELECT id FROM message)")
               .Numbers(),
           " is listed and does not exist");
    Query lost(database, "SELECT count(*) FROM text_member WHERE (place >> ?) NOT IN (SELECT id FROM text_block)");
    if (lost.Bind(1, SlotBits).Step() && lost.Number(0) != 0)
    {
        problems.push_back("the text index: " + std::to_string(lost.Number(0)) + " places belong to no block");
    }
}

/// One block against the texts of its messages.
class BlockCheck
{
public:
    BlockCheck(StoreConnection& connection, std::int64_t block)
        : m_connection(connection)
        , m_block(block)
        , m_parts(BlockParts)
        , m_counts(BlockSlots, 0)
    {
        Query query(connection.Db(), "SELECT id, slots FROM text_gram WHERE id BETWEEN ? AND ?");
        query.Bind(1, block << PartBits).Bind(2, ((block + 1) << PartBits) - 1);
        while (query.Step())
        {
            std::string& part = m_parts[static_cast<size_t>(query.Number(0)) & (BlockParts - 1)];
            part = query.Bytes(1);
            CountGrams(part, m_counts);
        }
    }

    /// The messages whose texts are not those of the index; those that wait are not asked.
    std::vector<MessageId> Wrong(std::string_view open)
    {
        std::vector<MessageId> wrong;
        Query query(m_connection.Db(),
                    "SELECT place, message FROM text_member WHERE place BETWEEN ? AND ? AND message NOT IN "
                    "(SELECT id FROM text_waiting) AND message IN (SELECT id FROM message)");
        query.Bind(1, m_block << SlotBits).Bind(2, ((m_block + 1) << SlotBits) - 1);
        while (query.Step())
        {
            const auto slot = static_cast<size_t>(query.Number(0)) & (BlockSlots - 1);
            if (!IsRight(slot, query.Number(1), open))
            {
                wrong.push_back(query.Number(1));
            }
        }
        return wrong;
    }

private:
    bool IsRight(size_t slot, MessageId message, std::string_view open)
    {
        m_grams.Clear();
        if (!AddTexts(m_connection, message, m_grams))
        {
            return true; // reported as damaged itself
        }
        bool right = m_counts[slot] == m_grams.Grams().size() && m_grams.IsOpen() == IsOpen(slot, open);
        for (size_t i = 0; right && i < m_grams.Grams().size(); ++i)
        {
            const Gram gram = m_grams.Grams()[i];
            right = With(gram)[slot];
        }
        return right;
    }

    static bool IsOpen(size_t slot, std::string_view open)
    {
        for (size_t at = 0; at < open.size(); at += sizeof(std::uint32_t))
        {
            if (ReadNumber<std::uint32_t>(open, at) == slot)
            {
                return true;
            }
        }
        return false;
    }

    const Slots& With(Gram gram)
    {
        const auto known = m_known.find(gram);
        return known != m_known.end() ? known->second
                                      : m_known.emplace(gram, SlotsWith(m_parts[PartOf(gram)], gram)).first->second;
    }

    StoreConnection& m_connection;
    std::int64_t m_block;
    std::vector<std::string> m_parts;
    std::vector<std::uint32_t> m_counts;
    std::unordered_map<Gram, Slots> m_known;
    GramSet m_grams;
};

void CheckBlocks(StoreConnection& connection, Problems& problems)
{
    Query query(connection.Db(), "SELECT id, open, rows, (SELECT count(*) FROM text_member WHERE place BETWEEN b.id << "
                                 "11 AND (b.id << 11) + 2047), "
                                 "(SELECT count(*) FROM text_member WHERE place BETWEEN b.id << 11 AND (b.id << 11) + "
                                 "2047 AND message NOT BETWEEN first AND last) "
                                 "FROM text_block b");
    while (query.Step())
    {
        const std::string block = "the text index: block " + std::to_string(query.Number(0));
        if (query.Number(2) != query.Number(3))
        {
            problems.push_back(block + " counts " + std::to_string(query.Number(2)) + " messages and has " +
                               std::to_string(query.Number(3)));
        }
        if (query.Number(4) != 0)
        {
            problems.push_back(block + " has " + std::to_string(query.Number(4)) + " messages beyond its bounds");
        }
        Report(problems, BlockCheck(connection, query.Number(0)).Wrong(query.Bytes(1)),
               " does not have the texts that are listed");
    }
}

} // namespace

std::vector<std::string> TextIndex::Problems()
{
    const StoreSnapshot snapshot(m_connection);
    switch (ReadTextIndexSchema(m_connection.Db()))
    {
    case TextIndexSchema::None:
        return {};
    case TextIndexSchema::Foreign:
        return {"the text index is incomplete or of another version: it is not used"};
    default:
        break;
    }
    std::vector<std::string> problems;
    CheckPlaces(m_connection.Db(), problems);
    CheckBlocks(m_connection, problems);
    return problems;
}

} // namespace zebstore
