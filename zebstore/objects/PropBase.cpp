#include "zebstore/objects/PropBase.h"

#include "zebstore/base/Memory.h"
#include "zebstore/objects/Problems.h"
#include "zebstore/objects/PropNames.h"
#include "zebstore/storage/ValueBuilder.h"

#include <algorithm>
#include <cstddef>

namespace zebstore
{
namespace
{

/// Looks into the computed properties first, then into the stored ones.
class BothSources final : public ValueSource
{
public:
    BothSources(const PropertySet& computed, const PropertySet& stored)
        : m_computed(computed)
        , m_stored(stored)
    {
    }

    EncodedValue Find(ULONG tag) const override
    {
        const EncodedValue computed = m_computed.Find(tag);
        return computed ? computed : m_stored.Find(tag);
    }

private:
    const PropertySet& m_computed;
    const PropertySet& m_stored;
};

// A value written through a stream is held in memory with the other values up to this size (bytes).
constexpr size_t LongestInMemory = 32 * 1024;
// Size limit of GetProps in bytes; longer values are read through streams.
constexpr size_t LongestGiven = 64 * 1024;

bool IsText(ULONG type)
{
    return type == PT_STRING8 || type == PT_UNICODE || type == PT_MV_STRING8 || type == PT_MV_UNICODE;
}

ULONG WithTextForm(ULONG tag, bool unicode)
{
    const ULONG type = PROP_TYPE(tag);
    if (!IsText(type))
    {
        return tag;
    }
    return CHANGE_PROP_TYPE(tag, ((type & MV_FLAG) | (unicode ? PT_UNICODE : PT_STRING8)));
}

/// SetProps passes over these.
bool IsNoValue(const SPropValue& value)
{
    return PROP_TYPE(value.ulPropTag) == PT_ERROR || PROP_TYPE(value.ulPropTag) == PT_NULL;
}

} // namespace

void PropBase::RequireWrite() const
{
    if (m_access == Access::Write)
    {
        return;
    }
    File().Connection().RequireWritable();
    throw Error(MAPI_E_NO_ACCESS, "the object was opened for reading");
}

IUnknown* PropBase::OpenObject(ULONG, const IID&, ULONG, ULONG)
{
    throw Error(MAPI_E_INTERFACE_NOT_SUPPORTED, "the property cannot be opened with this interface");
}

std::vector<ULONG> PropBase::AllTags(bool unicode)
{
    std::vector<ULONG> tags;
    PropertySet computed;
    for (ULONG tag : ComputedTags())
    {
        if (Lists(tag) && Compute(tag, computed))
        {
            tags.push_back(WithTextForm(computed.Find(tag).tag, unicode));
        }
    }
    for (const PropertySet::Item& item : Stored().Items())
    {
        if (!computed.Has(item.tag))
        {
            tags.push_back(WithTextForm(item.tag, unicode));
        }
    }
    return tags;
}

HRESULT PropBase::GetPropsOf(const SPropTagArray* tags, ULONG flags, ULONG* count, SPropValue** values)
{
    Require(count != nullptr && values != nullptr, "the output pointer is null");
    *count = 0;
    *values = nullptr;
    RequireFlags(flags, MAPI_UNICODE);
    Require(tags == nullptr || tags->cValues > 0, "the list of property tags is empty");
    const bool unicode = (flags & MAPI_UNICODE) != 0;
    std::vector<ULONG> all;
    if (tags == nullptr)
    {
        all = AllTags(unicode);
    }
    const ULONG* asked = tags != nullptr ? tags->aulPropTag : all.data();
    const size_t askedCount = tags != nullptr ? tags->cValues : all.size();
    PropertySet computed;
    for (size_t i = 0; i < askedCount; ++i)
    {
        Compute(asked[i], computed);
    }
    const PropertySet& stored = Stored();
    if (tags != nullptr)
    {
        AddDefaults(asked, askedCount, stored, computed);
    }
    BuildOptions options;
    options.unicode = unicode;
    options.wholeUpTo = LongestGiven;
    size_t errors = 0;
    *values = BuildValues(asked, askedCount, BothSources(computed, stored), options, &errors);
    *count = static_cast<ULONG>(askedCount);
    return errors ? MAPI_W_ERRORS_RETURNED : S_OK;
}

void PropBase::AddDefaults(const ULONG* asked, size_t count, const PropertySet& stored, PropertySet& computed)
{
    for (size_t i = 0; i < count; ++i)
    {
        if (!computed.Has(asked[i]) && !stored.Has(asked[i]))
        {
            Default(asked[i], computed);
        }
    }
}

bool PropBase::IsFixed(ULONG tag)
{
    return HasId(ComputedTags(), tag);
}

/// @throws Error MAPI_E_COMPUTED, MAPI_E_UNEXPECTED_ID for an identifier that no property has
HRESULT PropBase::WhyFixed(ULONG tag)
{
    if (IsFixed(tag))
    {
        return MAPI_E_COMPUTED;
    }
    const ULONG id = PROP_ID(tag);
    const bool isUnknown =
        id == PROP_ID_NULL || id == PROP_ID_INVALID || (id >= FirstNamedId && !File().NamedProperties().Name(id));
    return isUnknown ? MAPI_E_UNEXPECTED_ID : S_OK;
}

void PropBase::RequireWritable(ULONG tag)
{
    const HRESULT code = WhyFixed(tag);
    Check(code, code == MAPI_E_COMPUTED ? "the property cannot be written" : "no property has this identifier");
}

void PropBase::GetPropListOf(ULONG flags, SPropTagArray** tags)
{
    Require(tags != nullptr, "the output pointer is null");
    *tags = nullptr;
    RequireFlags(flags, MAPI_UNICODE);
    std::vector<ULONG> all = AllTags((flags & MAPI_UNICODE) != 0);
    for (ULONG tag : ObjectTags())
    {
        all.push_back(tag);
    }
    Buffer<SPropTagArray> array(Allocate(offsetof(SPropTagArray, aulPropTag) + (all.size() + 1) * sizeof(ULONG)));
    array->cValues = static_cast<ULONG>(all.size());
    std::copy(all.begin(), all.end(), array->aulPropTag);
    *tags = array.Detach();
}

HRESULT PropBase::SetOne(PropertySet& properties, const SPropValue& value)
{
    if (IsNoValue(value))
    {
        return S_OK;
    }
    try
    {
        properties.Set(value);
    }
    catch (const Error& error)
    {
        return error.Code();
    }
    Written(value.ulPropTag);
    return S_OK;
}

void PropBase::SetPropsOf(ULONG count, const SPropValue* values, SPropProblemArray** problems)
{
    if (problems != nullptr)
    {
        *problems = nullptr;
    }
    Require(count > 0 && values != nullptr, "the list of property values is null or empty");
    RequireWrite();
    Problems found;
    Edit([&](PropertySet& properties)
    {
        // First all that reads the store: when that fails, nothing is set.
        std::vector<HRESULT> refusals;
        for (ULONG i = 0; i < count; ++i)
        {
            refusals.push_back(IsNoValue(values[i]) ? S_OK : WhyFixed(values[i].ulPropTag));
        }
        for (ULONG i = 0; i < count; ++i)
        {
            const HRESULT code = FAILED(refusals[i]) ? refusals[i] : SetOne(properties, values[i]);
            if (FAILED(code))
            {
                found.Add(i, values[i].ulPropTag, code);
            }
        }
    });
    if (problems != nullptr)
    {
        *problems = found.Detach();
    }
}

void PropBase::DeletePropsOf(const SPropTagArray* tags, SPropProblemArray** problems)
{
    if (problems != nullptr)
    {
        *problems = nullptr;
    }
    Require(tags != nullptr && tags->cValues > 0, "the list of property tags is null or empty");
    RequireWrite();
    Problems found;
    Edit([&](PropertySet& properties)
    {
        for (ULONG i = 0; i < tags->cValues; ++i)
        {
            const ULONG tag = tags->aulPropTag[i];
            if (IsFixed(tag))
            {
                found.Add(i, tag, MAPI_E_COMPUTED);
            }
            else if (!properties.Remove(tag))
            {
                found.Add(i, tag, MAPI_E_NOT_FOUND);
            }
            else
            {
                Written(tag);
            }
        }
    });
    if (problems != nullptr)
    {
        *problems = found.Detach();
    }
}

void PropBase::OpenPropertyOf(ULONG tag, const IID* iid, ULONG options, ULONG flags, IUnknown** object)
{
    Require(object != nullptr, "the output pointer is null");
    *object = nullptr;
    if (iid == nullptr)
    {
        throw Error(MAPI_E_INTERFACE_NOT_SUPPORTED, "the interface identifier is null");
    }
    RequireFlags(flags, MAPI_MODIFY | MAPI_CREATE | MAPI_DEFERRED_ERRORS);
    if (flags & (MAPI_MODIFY | MAPI_CREATE))
    {
        RequireWrite();
    }
    if (!IsEqualGUID(*iid, IID_IStream))
    {
        *object = OpenObject(tag, *iid, options, flags);
        return;
    }
    if (HasId(ComputedTags(), tag))
    {
        PropertySet computed;
        if (flags & (MAPI_MODIFY | MAPI_CREATE))
        {
            throw Error(MAPI_E_COMPUTED, "the property is computed");
        }
        if (!Compute(tag, computed))
        {
            throw Error(MAPI_E_NOT_FOUND, "the object does not have the property");
        }
        *object = new Stream(OpenForReading(computed, tag), false);
        return;
    }
    if (!(flags & (MAPI_MODIFY | MAPI_CREATE)))
    {
        *object = new Stream(OpenForReading(Stored(), tag), false);
        return;
    }
    RequireWritable(tag);
    auto bytes = std::make_shared<PropertyBytes>(*this, Stored(), tag, (flags & MAPI_CREATE) != 0);
    *object = new Stream(bytes, true);
    m_streams.push_back(bytes);
}

void PropBase::PutStreamValue(ULONG tag, const std::shared_ptr<StagedValue>& value)
{
    const std::lock_guard hold(m_lock);
    Edit([&](PropertySet& properties)
    {
        if (value->Size() > LongestInMemory)
        {
            properties.SetLarge(tag, value);
        }
        else
        {
            SetFromBytes(properties, tag, *value);
        }
        Written(tag);
    });
}

void PropBase::FlushStreams()
{
    std::vector<std::weak_ptr<PropertyBytes>> open;
    open.swap(m_streams);
    for (const std::weak_ptr<PropertyBytes>& each : open)
    {
        if (const std::shared_ptr<PropertyBytes> bytes = each.lock())
        {
            bytes->Publish();
            m_streams.push_back(each);
        }
    }
}

} // namespace zebstore
