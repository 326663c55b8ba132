#include "zebstore/objects/AttachmentList.h"

#include "zebstore/base/Error.h"
#include "zebstore/objects/MemoryTable.h"

#include <algorithm>

namespace zebstore
{

AttachmentList::AttachmentList(StorePtr store, MessageId message)
    : m_store(std::move(store))
    , m_message(message)
{
}

std::set<ULONG> AttachmentList::Numbers()
{
    std::set<ULONG> numbers;
    if (m_message)
    {
        for (ULONG number : m_store->File().Attachments().Numbers(m_message))
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
bool AttachmentList::IsStored(ULONG number)
{
    return m_message != 0 && m_store->File().Attachments().Has(m_message, number);
}

bool AttachmentList::Has(ULONG number)
{
    const auto edit = m_edits.find(number);
    return edit != m_edits.end() ? !edit->second.removed : IsStored(number);
}

AttachmentEdit AttachmentList::Now(ULONG number)
{
    const auto edit = m_edits.find(number);
    if (edit != m_edits.end())
    {
        if (edit->second.removed)
        {
            throw Error(MAPI_E_NOT_FOUND, "the attachment was deleted");
        }
        return edit->second;
    }
    if (!m_message)
    {
        throw Error(MAPI_E_NOT_FOUND, "the message has no attachment with this number");
    }
    AttachmentEdit now;
    now.number = number;
    now.properties = m_store->File().Attachments().Load(m_message, number);
    return now;
}

MessageId AttachmentList::StoredEmbedded(ULONG number)
{
    if (!m_message || (m_edits.count(number) && !IsStored(number)))
    {
        return 0;
    }
    return m_store->File().Attachments().Embedded(m_message, number).value_or(0);
}

void AttachmentList::Start(const std::vector<AttachmentEdit>& attachments)
{
    for (const AttachmentEdit& each : attachments)
    {
        m_edits[each.number] = each;
        UseNumber(each.number);
    }
}

void AttachmentList::Put(AttachmentEdit edit)
{
    const ULONG number = edit.number;
    m_edits[number] = std::move(edit);
    Show();
}

ULONG AttachmentList::FreeNumber()
{
    if (!m_numbersKnown)
    {
        for (const ULONG taken : Numbers())
        {
            UseNumber(taken);
        }
    }
    m_numbersKnown = true;
    return m_nextNumber;
}

void AttachmentList::UseNumber(ULONG number)
{
    m_nextNumber = std::max(m_nextNumber, number + 1);
}

std::vector<AttachmentEdit> AttachmentList::Take()
{
    std::vector<AttachmentEdit> attachments;
    for (auto& each : m_edits)
    {
        attachments.push_back(std::move(each.second));
    }
    return attachments;
}

void AttachmentList::GiveBack(std::vector<AttachmentEdit>&& attachments)
{
    for (AttachmentEdit& each : attachments)
    {
        m_edits[each.number] = std::move(each);
    }
}

void AttachmentList::Forget(MessageId message)
{
    m_message = message;
    m_edits.clear();
    m_numbersKnown = false;
}

void AttachmentList::SetEdits(Edits edits)
{
    m_edits = std::move(edits);
    Show();
}

std::vector<PropertySet> AttachmentList::Rows(std::vector<RowKey>& keys)
{
    std::vector<PropertySet> rows;
    for (ULONG number : Numbers())
    {
        PropertySet row = Now(number).properties;
        row.SetLong(PR_ATTACH_NUM, static_cast<LONG>(number));
        row.SetBinary(PR_INSTANCE_KEY, &number, sizeof(number));
        row.SetBinary(PR_RECORD_KEY, &number, sizeof(number));
        row.SetLong(PR_OBJECT_TYPE, MAPI_ATTACH);
        rows.push_back(std::move(row));
        keys.push_back(number);
    }
    return rows;
}

void AttachmentList::Show()
{
    // Rows are kept only while an open table shows them.
    if (m_shown.use_count() == 1)
    {
        m_shown.reset();
    }
    if (!m_shown)
    {
        return;
    }
    std::vector<RowKey> keys;
    std::vector<PropertySet> rows = Rows(keys);
    m_shown->Replace(std::move(rows), std::move(keys));
}

IMAPITable* AttachmentList::Table(ULONG flags)
{
    RequireFlags(flags, MAPI_UNICODE | MAPI_DEFERRED_ERRORS);
    if (!m_shown)
    {
        m_shown = std::make_shared<MemoryRows>(std::vector<PropertySet>());
    }
    const std::shared_ptr<MemoryRows> rows = m_shown;
    Show();
    return TableOver(rows, flags);
}

} // namespace zebstore
