// The table `date_run`: sorted dates of messages, from which come the first rows of a folder that is sorted by date.
#pragma once

#include "zebstore/storage/Database.h"
#include "zebstore/storage/StoreIds.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace zebstore
{

/// The messages of a folder in groups of RunLength by their numbers. A group whose numbers are all given has a run: its
/// messages with their PR_CLIENT_SUBMIT_TIME, sorted by that. The last group is open: it has none, so a new message
/// costs nothing; one run in RunLength messages is written at once. A run may list messages that were deleted, where an
/// earlier release has deleted them: what it lists must be looked up, or counted. Messages inside attachments have no
/// runs.
/// Each call belongs to the caller's transaction or snapshot.
class DateRuns
{
public:
    static constexpr std::int64_t RunLength = 256;

    explicit DateRuns(Database& database)
        : m_database(database)
    {
    }

    static bool HasRuns(ContentsKey contents) { return !contents.IsEmbedded(); }
    /// The first message of its group.
    static MessageId GroupOf(MessageId message) { return message - ContentsKey::NumberOf(message) % RunLength; }
    /// The first message of the open group. @param next the number that the next message gets
    static MessageId OpenGroup(ContentsKey contents, std::int64_t next)
    {
        return GroupOf(contents.Message(std::max<std::int64_t>(next, 1) - 1));
    }

    /// Makes the run of a group, in place of one that is there.
    void Make(MessageId group);
    /// After a message was deleted: takes it out of its run, and deletes the run of an empty group.
    void Forget(MessageId message);
    /// Deletes all runs of a folder's messages.
    void Clear(ContentsKey contents);

    /// The messages whose dates are the first `count` in their order, and all others with the last of these dates;
    /// deleted ones among them. A missing date comes before all others.
    /// @param open OpenGroup of the contents
    /// @return by their identifiers; nothing when too many have one date
    /// @throws Error MAPI_E_CORRUPT_STORE when a run is damaged
    std::optional<std::vector<MessageId>> First(ContentsKey contents, MessageId open, bool descending, size_t count);

    /// All messages, of which only those of the open group are read.
    /// @param open OpenGroup of the contents
    /// @param rows how many messages there are
    /// @return by their identifiers; nothing when the runs do not list just these: the messages themselves must be read
    std::optional<std::vector<MessageId>> All(ContentsKey contents, MessageId open, size_t rows);

    /// The groups whose run is missing, damaged or does not list all messages, and runs of other groups.
    std::vector<MessageId> WrongGroups();
    /// Makes these runs again, or deletes those that must not be.
    void Mend(const std::vector<MessageId>& groups);

private:
    bool IsClosed(MessageId group);
    bool IsRight(MessageId group);

    Database& m_database;
};

} // namespace zebstore
