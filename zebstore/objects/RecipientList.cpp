#include "zebstore/objects/RecipientList.h"

#include "zebstore/base/Error.h"
#include "zebstore/objects/MemoryTable.h"

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
    Require(entry.rgPropVals != nullptr || entry.cValues == 0, "a recipient has no values");
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

RecipientList::RecipientList(StorePtr store, MessageId message)
    : m_store(std::move(store))
    , m_message(message)
{
}

const std::vector<PropertySet>& RecipientList::Rows()
{
    if (!m_rows)
    {
        m_rows = m_message ? m_store->File().Recipients().Load(m_message) : std::vector<PropertySet>();
    }
    return *m_rows;
}

void RecipientList::Merge(ULONG flags, const ADRENTRY& entry)
{
    PropertySet given = RecipientFrom(entry);
    std::vector<PropertySet>& rows = *m_rows;
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

void RecipientList::Modify(ULONG flags, const ADRLIST& list)
{
    const std::vector<PropertySet> before = Rows();
    try
    {
        if (flags == 0)
        {
            m_rows->clear();
        }
        for (ULONG i = 0; i < list.cEntries; ++i)
        {
            Merge(flags, list.aEntries[i]);
        }
    }
    catch (...)
    {
        m_rows = before;
        throw;
    }
}

void RecipientList::MarkChanged()
{
    m_changed = true;
    Show();
}

std::optional<std::vector<PropertySet>> RecipientList::Take()
{
    if (!m_rows || (!m_changed && m_message))
    {
        return std::nullopt;
    }
    return std::move(m_rows);
}

void RecipientList::GiveBack(std::optional<std::vector<PropertySet>>&& rows)
{
    if (rows)
    {
        m_rows = std::move(rows);
    }
}

void RecipientList::Forget(MessageId message)
{
    m_message = message;
    m_rows.reset();
}

void RecipientList::SetDraft(Draft draft)
{
    m_rows = std::move(draft.rows);
    m_changed = draft.changed;
    Show();
}

void RecipientList::Show()
{
    if (!m_shown)
    {
        return;
    }
    std::vector<RowKey> keys;
    for (const PropertySet& each : Rows())
    {
        keys.push_back(each.Long(PR_ROWID));
    }
    m_shown->Replace(Rows(), std::move(keys));
}

IMAPITable* RecipientList::Table(ULONG flags)
{
    RequireFlags(flags, MAPI_UNICODE | MAPI_DEFERRED_ERRORS);
    if (!m_shown)
    {
        m_shown = std::make_shared<MemoryRows>(std::vector<PropertySet>());
    }
    Show();
    return TableOver(m_shown, flags);
}

} // namespace zebstore
