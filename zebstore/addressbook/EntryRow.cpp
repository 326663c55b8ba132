#include "zebstore/addressbook/EntryRow.h"

#include "platform/tags.h"
#include "zebstore/addressbook/AddressValues.h"
#include "zebstore/addressbook/EntryData.h"

namespace zebstore
{

const std::vector<ULONG>& EntryRowTags()
{
    static const std::vector<ULONG> tags = {PR_ENTRYID,        PR_RECORD_KEY,     PR_OBJECT_TYPE, PR_DISPLAY_TYPE,
                                            PR_INSTANCE_KEY,   PR_DISPLAY_NAME_W, PR_ADDRTYPE_W,  PR_EMAIL_ADDRESS_W,
                                            PR_SMTP_ADDRESS_W, PR_SEARCH_KEY,     PR_ACCOUNT_W,   PR_GIVEN_NAME_W,
                                            PR_SURNAME_W};
    return tags;
}

PropertySet RowOfEntry(const StorePtr& store, const void* id, size_t size)
{
    PropertySet row;
    try
    {
        EntryData entry(store, ParseAddressId(store->Uid(), id, size), {});
        const PropertySet& stored = entry.Stored();
        for (const ULONG tag : EntryRowTags())
        {
            if (!entry.Compute(tag, row))
            {
                if (const EncodedValue value = stored.Find(tag); value && value.large == nullptr)
                {
                    row.SetEncoded(value.tag, value.bytes);
                }
            }
        }
    }
    catch (const Error& error)
    {
        if (error.Code() != MAPI_E_NOT_FOUND && error.Code() != MAPI_E_INVALID_ENTRYID)
        {
            throw;
        }
        row.Clear();
    }
    row.SetBinary(PR_ENTRYID, id, size);
    row.SetBinary(PR_INSTANCE_KEY, id, size);
    return row;
}

} // namespace zebstore
