// Stored property sets and the provider's entry identifiers: any bytes are read without a crash, and every returned
// value can be freed.
#include "fuzz/Require.h"
#include "fuzz/SampleStore.h"
#include "zebstore/base/EntryId.h"
#include "zebstore/base/Memory.h"
#include "zebstore/storage/PropertyBlob.h"
#include "zebstore/storage/StoreFile.h"
#include "zebstore/storage/ValueBuilder.h"

#include <cstdint>
#include <memory>

namespace
{

using namespace zebstore;

/// A private store, for the values that a blob declares as large.
StoreFile& Store()
{
    static const std::shared_ptr<StoreFile> store = StoreFile::Create(FuzzerFile("blob.zeb"), "fuzz", {});
    return *store;
}

void Build(const PropertyBlob& blob, ULONG type)
{
    std::vector<ULONG> tags;
    for (size_t i = 0; i < blob.Count(); ++i)
    {
        tags.push_back(type == PT_UNSPECIFIED ? blob.At(i).tag : CHANGE_PROP_TYPE(blob.At(i).tag, type));
    }
    if (tags.empty())
    {
        return;
    }
    size_t errors = 0;
    SPropValue* values = BuildValues(tags.data(), tags.size(), blob, {true, false}, &errors);
    ::Require(errors <= tags.size(), "no more errors than values");
    Free(values);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    try
    {
        const PropertyBlob blob(bytes, Store().Connection());
        const bool sound = PropertyBlob::IsSound(bytes);
        ::Require(!sound || size >= 4, "an intact blob has its index");
        Build(blob, PT_UNSPECIFIED);
        Build(blob, PT_UNICODE);
        Build(blob, PT_MV_STRING8);
        blob.Decode();
    }
    catch (const Error&)
    {
        // A damaged value is refused.
    }
    const MAPIUID uid = {};
    try
    {
        ParseItemId(uid, data, size);
        if (LooksLikeStoreEntryId(data, size))
        {
            ParseStoreEntryId(data, size);
        }
    }
    catch (const Error&)
    {
        // A foreign or truncated identifier is refused.
    }
    return 0;
}
