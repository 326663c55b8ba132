// The text index of a store file: which messages may have a text.
#pragma once

#include "zebstore/storage/StoreConnection.h"
#include "zebstore/storage/StoreIds.h"
#include "zebstore/storage/TextPlan.h"
#include "zebstore/storage/WorkReport.h"

#include <optional>
#include <vector>

namespace zebstore
{

/// What `zeb store index status` tells.
struct TextIndexState
{
    bool isOn = false;
    /// The file has the tables of an index, but not all of them as this version makes them: it is not used.
    bool isForeign = false;
    std::uint64_t messages = 0; ///< of the file, those inside attachments left out
    std::uint64_t waiting = 0;  ///< of these, those that are not in a block yet
    std::uint64_t bytes = 0;    ///< of the blocks
};

/// An option of the file, off at first. Triggers of the table `message` note each message that is added or changed as
/// waiting, within the transaction that does it, let a moved message keep its place and give up the place of a deleted
/// one. Waiting messages always count as candidates; when BlockSlots of them wait, the transaction puts them into a
/// block. So what was committed is complete whichever program wrote it. Threads: any; the connection's lock is taken
/// inside.
class TextIndex
{
public:
    explicit TextIndex(StoreConnection& connection)
        : m_connection(connection)
    {
    }

    /// True when the file has an index as this version makes it.
    bool IsOn();
    TextIndexState State();
    /// Makes the tables, with all messages waiting; does nothing when the index is on.
    void TurnOn();
    /// Drops all that an index has, also of a damaged one.
    void TurnOff();
    /// Turns it on and completes it, or off.
    void Switch(bool on, const WorkReport& report);
    /// Puts all waiting messages into blocks, a transaction for each block.
    void Complete(const WorkReport& report);

    /// After a message was added or saved, in the caller's transaction.
    void Noted();
    /// The messages of `contents`, rising, that may fulfil the plan; those left out do not. Nothing when the index is off
    /// or there are more than `most`.
    std::optional<std::vector<MessageId>> Candidates(const TextPlan& plan, ContentsKey contents, size_t most);

    /// Compares the index with the messages, one by one. @return a line for each problem
    std::vector<std::string> Problems();

private:
    std::uint64_t Waiting();
    size_t MakeBlock();
    void DropThinBlocks(bool alsoSmall);

    StoreConnection& m_connection;
    // Under the lock.
    std::int64_t m_cookie = -1; ///< the schema's number for which m_isOn was found
    bool m_isOn = false;
    /// Messages noted since the waiting ones were counted, and those; a full block when they were never counted.
    std::uint64_t m_noted = 0;
    bool m_isCounted = false;
};

} // namespace zebstore
