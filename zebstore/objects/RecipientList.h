// The recipients of a message.
#pragma once

#include "zebstore/objects/StoreContext.h"
#include "zebstore/storage/MemoryRows.h"

#include <memory>
#include <optional>
#include <vector>

namespace zebstore
{

/// The recipients of one message, including changes that the message has not saved. Threads: the message's lock.
class RecipientList
{
public:
    /// @param message the stored message; 0: a message without stored recipients
    RecipientList(StorePtr store, MessageId message);

    /// The recipients that a caller sees, each with its PR_ROWID.
    const std::vector<PropertySet>& Rows();
    bool IsChanged() const { return m_changed; }

    /// Replaces the recipients of a message that was not loaded from the store.
    void Start(std::optional<std::vector<PropertySet>> rows) { m_rows = std::move(rows); }
    /// IMessage::ModifyRecipients: all of `list` or nothing. MarkChanged follows when the message has taken the change
    /// over.
    void Modify(ULONG flags, const ADRLIST& list);
    /// The recipients differ from the stored ones: the next save writes them, and open tables show them.
    void MarkChanged();

    /// The recipients to save; empty: the stored ones stay. GiveBack or Saved must follow.
    std::optional<std::vector<PropertySet>> Take();
    void GiveBack(std::optional<std::vector<PropertySet>>&& rows);
    /// The taken recipients were saved.
    void Saved() { m_changed = false; }
    /// Drops the rows, which are read from the stored message at the next request.
    void Forget(MessageId message);

    /// Unsaved changes of a caller.
    struct Draft
    {
        std::optional<std::vector<PropertySet>> rows;
        bool changed = false;
    };
    Draft GetDraft() const { return {m_rows, m_changed}; }
    void SetDraft(Draft draft);

    /// IMessage::GetRecipientTable.
    IMAPITable* Table(ULONG flags);

private:
    void Merge(ULONG flags, const ADRENTRY& entry);
    void Show();

    const StorePtr m_store;
    MessageId m_message;
    std::optional<std::vector<PropertySet>> m_rows;
    bool m_changed = false;
    std::shared_ptr<MemoryRows> m_shown;
};

} // namespace zebstore
