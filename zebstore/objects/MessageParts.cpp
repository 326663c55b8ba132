// A message's recipients and attachments.
#include "zebstore/objects/Interfaces.h"
#include "zebstore/objects/MemoryTable.h"
#include "zebstore/objects/Message.h"

#include <algorithm>

namespace zebstore
{
namespace
{

/// The position of a recipient by its PR_ROWID, or the end.
std::vector<PropertySet>::iterator FindRow(std::vector<PropertySet>& rows, LONG rowId)
{
    return std::find_if(rows.begin(), rows.end(),
                        [&](const PropertySet& each) { return each.Has(PR_ROWID) && each.Long(PR_ROWID) == rowId; });
}

PropertySet RecipientFrom(const ADRENTRY& entry)
{
    PropertySet recipient;
    Require(entry.rgPropVals || !entry.cValues, "a recipient has no values");
    for (ULONG i = 0; i < entry.cValues; ++i)
    {
        const ULONG type = PROP_TYPE(entry.rgPropVals[i].ulPropTag);
        if (type != PT_ERROR && type != PT_NULL && type != PT_OBJECT)
        {
            recipient.Set(entry.rgPropVals[i]);
        }
    }
    return recipient;
}

} // namespace

const std::vector<PropertySet>& Message::Recipients()
{
    if (!m_recipients)
    {
        m_recipients = m_id ? File().Recipients().Load(m_id) : std::vector<PropertySet>();
    }
    return *m_recipients;
}

void Message::MergeRecipient(ULONG flags, const ADRENTRY& entry)
{
    PropertySet given = RecipientFrom(entry);
    std::vector<PropertySet>& rows = *m_recipients;
    auto known = rows.end();
    if (flags & (MODRECIP_MODIFY | MODRECIP_REMOVE))
    {
        if (!given.Has(PR_ROWID))
        {
            throw Error(MAPI_E_INVALID_PARAMETER, "a recipient to modify has no PR_ROWID");
        }
        known = FindRow(rows, given.Long(PR_ROWID));
        if (known == rows.end())
        {
            throw Error(MAPI_E_NOT_FOUND, "no recipient has this PR_ROWID");
        }
        if (flags & MODRECIP_REMOVE)
        {
            rows.erase(known);
        }
        else
        {
            *known = std::move(given);
        }
        return;
    }
    LONG next = 0;
    for (const PropertySet& each : rows)
    {
        next = std::max(next, each.Long(PR_ROWID) + 1);
    }
    given.SetLong(PR_ROWID, next);
    if (!given.Has(PR_RECIPIENT_TYPE))
    {
        given.SetLong(PR_RECIPIENT_TYPE, MAPI_TO);
    }
    rows.push_back(std::move(given));
}

HRESULT Message::ModifyRecipients(ULONG flags, LPADRLIST list)
{
    return Run("IMessage::ModifyRecipients", [&]
    {
        RequireFlags(flags, MODRECIP_ADD | MODRECIP_MODIFY | MODRECIP_REMOVE);
        Require((flags & (flags - 1)) == 0,
                "more than one of MODRECIP_ADD, MODRECIP_MODIFY and MODRECIP_REMOVE is given");
        Require(list != nullptr, "the recipient list is null");
        RequireWrite();
        const std::vector<PropertySet> before = Recipients();
        try
        {
            if (flags == 0)
            {
                m_recipients->clear();
            }
            for (ULONG i = 0; i < list->cEntries; ++i)
            {
                MergeRecipient(flags, list->aEntries[i]);
            }
        }
        catch (...)
        {
            m_recipients = before;
            throw;
        }
        Load();
        m_dirty = true;
        m_recipientsChanged = true;
        ShowRecipients();
    });
}

void Message::ShowRecipients()
{
    if (!m_recipientRows)
    {
        return;
    }
    std::vector<RowKey> keys;
    for (const PropertySet& each : Recipients())
    {
        keys.push_back(each.Long(PR_ROWID));
    }
    m_recipientRows->Replace(Recipients(), std::move(keys));
}

IMAPITable* Message::RecipientTable(ULONG flags)
{
    RequireFlags(flags, MAPI_UNICODE | MAPI_DEFERRED_ERRORS);
    if (!m_recipientRows)
    {
        m_recipientRows = std::make_shared<MemoryRows>(std::vector<PropertySet>());
    }
    ShowRecipients();
    return TableOver(m_recipientRows, flags);
}

HRESULT Message::GetRecipientTable(ULONG flags, LPMAPITABLE* table)
{
    return Run("IMessage::GetRecipientTable", [&]
    {
        Require(table != nullptr, "the output pointer is null");
        *table = nullptr;
        *table = RecipientTable(flags);
    });
}

std::set<ULONG> Message::Numbers()
{
    std::set<ULONG> numbers;
    if (m_id)
    {
        for (ULONG number : File().Attachments().Numbers(m_id))
        {
            numbers.insert(number);
        }
    }
    for (const auto& each : m_edits)
    {
        if (each.second.removed)
        {
            numbers.erase(each.first);
        }
        else
        {
            numbers.insert(each.first);
        }
    }
    return numbers;
}

/// False for an attachment that was added since the message was saved.
bool Message::IsStored(ULONG number)
{
    const std::vector<ULONG> numbers = File().Attachments().Numbers(m_id);
    return std::binary_search(numbers.begin(), numbers.end(), number);
}

AttachmentEdit Message::AttachmentNow(ULONG number)
{
    const std::lock_guard<std::recursive_mutex> hold(Lock());
    const auto edit = m_edits.find(number);
    if (edit != m_edits.end())
    {
        if (edit->second.removed)
        {
            throw Error(MAPI_E_NOT_FOUND, "the attachment was deleted");
        }
        return edit->second;
    }
    if (!m_id)
    {
        throw Error(MAPI_E_NOT_FOUND, "the message has no attachment with this number");
    }
    AttachmentEdit now;
    now.number = number;
    now.properties = File().Attachments().Load(m_id, number);
    return now;
}

MessageId Message::StoredEmbedded(ULONG number)
{
    const std::lock_guard<std::recursive_mutex> hold(Lock());
    if (!m_id || (m_edits.count(number) && !IsStored(number)))
    {
        return 0;
    }
    return File().Attachments().Embedded(m_id, number).value_or(0);
}

void Message::PutAttachment(AttachmentEdit edit)
{
    const std::lock_guard<std::recursive_mutex> hold(Lock());
    RequireWrite();
    Load();
    const ULONG number = edit.number;
    m_edits[number] = std::move(edit);
    m_dirty = true;
    ShowAttachments();
}

std::vector<PropertySet> Message::AttachmentRows(std::vector<RowKey>& keys)
{
    std::vector<PropertySet> rows;
    for (ULONG number : Numbers())
    {
        PropertySet row = AttachmentNow(number).properties;
        row.SetLong(PR_ATTACH_NUM, static_cast<LONG>(number));
        row.SetBinary(PR_INSTANCE_KEY, &number, sizeof(number));
        row.SetBinary(PR_RECORD_KEY, &number, sizeof(number));
        row.SetLong(PR_OBJECT_TYPE, MAPI_ATTACH);
        rows.push_back(std::move(row));
        keys.push_back(number);
    }
    return rows;
}

void Message::ShowAttachments()
{
    // Rows are kept only while an open table shows them.
    if (m_attachmentRows.use_count() == 1)
    {
        m_attachmentRows.reset();
    }
    if (!m_attachmentRows)
    {
        return;
    }
    std::vector<RowKey> keys;
    std::vector<PropertySet> rows = AttachmentRows(keys);
    m_attachmentRows->Replace(std::move(rows), std::move(keys));
}

IMAPITable* Message::AttachmentTable(ULONG flags)
{
    RequireFlags(flags, MAPI_UNICODE | MAPI_DEFERRED_ERRORS);
    if (!m_attachmentRows)
    {
        m_attachmentRows = std::make_shared<MemoryRows>(std::vector<PropertySet>());
    }
    const std::shared_ptr<MemoryRows> rows = m_attachmentRows;
    ShowAttachments();
    return TableOver(rows, flags);
}

HRESULT Message::GetAttachmentTable(ULONG flags, LPMAPITABLE* table)
{
    return Run("IMessage::GetAttachmentTable", [&]
    {
        Require(table != nullptr, "the output pointer is null");
        *table = nullptr;
        *table = AttachmentTable(flags);
    });
}

HRESULT Message::OpenAttach(ULONG number, LPCIID iid, ULONG flags, LPATTACH* attach)
{
    return Run("IMessage::OpenAttach", [&]
    {
        Require(attach != nullptr, "the output pointer is null");
        *attach = nullptr;
        RequireFlags(flags, MAPI_MODIFY | MAPI_BEST_ACCESS | MAPI_DEFERRED_ERRORS);
        const Access access = AccessFor(flags, AccessGiven());
        const Ref<Attachment> opened = Ref<Attachment>::Adopt(new Attachment(*this, number, access, false));
        *attach = static_cast<IAttach*>(Answer(opened.Get(), iid));
    });
}

HRESULT Message::CreateAttach(LPCIID iid, ULONG flags, ULONG* number, LPATTACH* attach)
{
    return Run("IMessage::CreateAttach", [&]
    {
        Require(attach && number, "the output pointer is null");
        *attach = nullptr;
        RequireFlags(flags, MAPI_DEFERRED_ERRORS);
        RequireWrite();
        if (!m_numbersKnown)
        {
            for (const ULONG taken : Numbers())
            {
                m_nextNumber = std::max(m_nextNumber, taken + 1);
            }
        }
        m_numbersKnown = true;
        const Ref<Attachment> made = Ref<Attachment>::Adopt(new Attachment(*this, m_nextNumber, Access::Write, true));
        *attach = static_cast<IAttach*>(Answer(made.Get(), iid));
        *number = m_nextNumber++;
    });
}

HRESULT Message::DeleteAttach(ULONG number, ULONG_PTR, LPMAPIPROGRESS, ULONG flags)
{
    return Run("IMessage::DeleteAttach", [&]
    {
        RequireFlags(flags, ATTACH_DIALOG);
        RequireWrite();
        if (!Numbers().count(number))
        {
            throw Error(MAPI_E_NOT_FOUND, "the message has no attachment with this number");
        }
        AttachmentEdit edit;
        edit.number = number;
        edit.removed = true;
        m_nextNumber = std::max(m_nextNumber, number + 1);
        PutAttachment(std::move(edit));
    });
}

} // namespace zebstore
