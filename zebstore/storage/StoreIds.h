// The identifiers of folders and messages in a store file.
#pragma once

#include "platform/mapi.h"

#include <cstdint>

namespace zebstore
{

/// Folders are numbered from 1 to LastFolder; a number is never given twice.
using FolderId = std::int64_t;
/// Folder, normal or associated, running number: see ContentsKey. A message that is moved gets a new identifier; none
/// is ever given twice.
using MessageId = std::int64_t;

/// Names the contents of a folder: its normal or its associated messages. The key of the table `contents`.
///
/// An identifier of a message is the key of its contents, shifted left by MessageBits, plus the message's number, so
/// that the messages of one folder are adjacent in the table `message`.
class ContentsKey
{
public:
    static constexpr int MessageBits = 32;
    static constexpr std::int64_t LastNumber = 0xFFFFFFFF;

    constexpr ContentsKey(FolderId folder, bool associated)
        : m_column(Shifted(folder, 1) | (associated ? 1 : 0))
    {
    }
    /// The contents that a message belongs to.
    static constexpr ContentsKey Of(MessageId message) { return ContentsKey(message >> MessageBits); }
    /// From the column `contents.container`.
    static constexpr ContentsKey FromColumn(std::int64_t column) { return ContentsKey(column); }
    /// The messages inside attachments, which belong to no folder. Its row also holds the folder tree's change number.
    static constexpr ContentsKey Embedded() { return ContentsKey(0); }
    static constexpr std::int64_t NumberOf(MessageId message) { return message & LastNumber; }

    constexpr FolderId Folder() const { return m_column >> 1; }
    constexpr bool IsAssociated() const { return (m_column & 1) != 0; }
    constexpr bool IsEmbedded() const { return m_column == 0; }
    /// Only the normal messages of a folder are counted as unread.
    constexpr bool CountsUnread() const { return !IsEmbedded() && !IsAssociated(); }
    constexpr std::int64_t Column() const { return m_column; }

    constexpr MessageId Message(std::int64_t number) const { return Shifted(m_column, MessageBits) | number; }
    /// Bounds of the identifiers, both included. No message has the number 0.
    constexpr MessageId FirstMessage() const { return Message(0); }
    constexpr MessageId LastMessage() const { return Message(LastNumber); }

    constexpr bool operator==(ContentsKey other) const { return m_column == other.m_column; }

private:
    // Defined for any number: a damaged file may have any.
    static constexpr std::int64_t Shifted(std::int64_t number, int bits)
    {
        return static_cast<std::int64_t>(static_cast<std::uint64_t>(number) << bits);
    }
    explicit constexpr ContentsKey(std::int64_t column)
        : m_column(column)
    {
    }

    std::int64_t m_column;
};

/// ContentsKey::Column as SQL, for a column with a folder's number.
#define ZEB_NORMAL_CONTENTS(folder) folder "*2"
#define ZEB_ASSOCIATED_CONTENTS(folder) folder "*2+1"

/// The folders that every store has, by their fixed numbers.
enum class StandardFolder : FolderId
{
    Root = 1,
    IpmSubtree,
    Inbox,
    Outbox,
    DeletedItems,
    SentItems,
    Contacts,
    Finder,
    Views,
    CommonViews,
};
constexpr FolderId IdOf(StandardFolder folder)
{
    return static_cast<FolderId>(folder);
}
constexpr bool IsStandard(FolderId folder)
{
    return folder <= IdOf(StandardFolder::CommonViews);
}

} // namespace zebstore
