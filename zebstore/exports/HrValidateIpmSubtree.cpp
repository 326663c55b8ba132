// HrValidateIPMSubtree: checks that a store has the folders of the IPM subtree.
#include "zebstore/base/Guard.h"
#include "zebstore/base/Memory.h"
#include "zebstore/base/Object.h"

using namespace zebstore;

namespace
{

constexpr ULONG FolderTags[] = {PR_IPM_SUBTREE_ENTRYID,  PR_IPM_WASTEBASKET_ENTRYID, PR_IPM_OUTBOX_ENTRYID,
                                PR_IPM_SENTMAIL_ENTRYID, PR_VIEWS_ENTRYID,           PR_FINDER_ENTRYID,
                                PR_COMMON_VIEWS_ENTRYID};
constexpr ULONG TagCount = 1 + sizeof(FolderTags) / sizeof(FolderTags[0]);

void RequireFolder(IMsgStore& store, const SPropValue& value)
{
    if (PROP_TYPE(value.ulPropTag) != PT_BINARY)
    {
        throw Error(MAPI_E_NOT_FOUND, "the store has no entry identifier of a standard folder");
    }
    ULONG type = 0;
    IUnknown* object = nullptr;
    Check(store.OpenEntry(value.Value.bin.cb, reinterpret_cast<LPENTRYID>(value.Value.bin.lpb), nullptr, 0, &type,
                          &object),
          "a standard folder of the store cannot be opened");
    const Ref<IUnknown> owner = Ref<IUnknown>::Adopt(object);
    if (type != MAPI_FOLDER)
    {
        throw Error(MAPI_E_CORRUPT_STORE, "a standard folder of the store is not a folder");
    }
}

} // namespace

HRESULT WINAPI HrValidateIPMSubtree(LPMDB store, ULONG flags, ULONG* count, LPSPropValue* values, LPMAPIERROR* error)
{
    return Guarded("HrValidateIPMSubtree", [&]
    {
        Require(store != nullptr, "the store is null");
        RequireFlags(flags, MAPI_FORCE_CREATE | MAPI_FULL_IPM_TREE);
        if (error != nullptr)
        {
            *error = nullptr;
        }
        SizedSPropTagArray(TagCount, tags) = {TagCount, {PR_VALID_FOLDER_MASK}};
        for (ULONG i = 1; i < TagCount; ++i)
        {
            tags.aulPropTag[i] = FolderTags[i - 1];
        }
        ULONG got = 0;
        LPSPropValue read = nullptr;
        Check(store->GetProps(reinterpret_cast<LPSPropTagArray>(&tags), 0, &got, &read),
              "the entry identifiers of the store's standard folders cannot be read");
        Buffer<SPropValue> owner(read);
        for (ULONG i = 1; i < got; ++i)
        {
            RequireFolder(*store, read[i]);
        }
        if (count != nullptr)
        {
            *count = got;
        }
        if (values != nullptr)
        {
            *values = owner.Detach();
        }
    });
}
