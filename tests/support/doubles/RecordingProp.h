// Doubles of MAPI's property objects and of streams, which record every call and answer with the test's data.
#pragma once

#include "tests/support/doubles/UnusedStream.h"
#include "zebapi/MEM.h"

#include <cstring>
#include <functional>
#include <list>
#include <map>

namespace zeb::test
{

/// A property of a double. Text is stored as bytes and returned in the requested width.
struct Property
{
    ULONG tag;
    LONG number;
    std::string bytes;
};

inline SPropValue NotFound(ULONG tag)
{
    SPropValue value = {};
    value.ulPropTag = PROP_TAG(PT_ERROR, PROP_ID(tag));
    value.Value.err = MAPI_E_NOT_FOUND;
    return value;
}

/// The value under MAPI's buffer `parent`.
inline SPropValue Filled(const Property& property, ULONG tag, void* parent)
{
    SPropValue value = {};
    value.ulPropTag = tag;
    const auto size = static_cast<ULONG>(property.bytes.size());
    switch (PROP_TYPE(tag))
    {
    case PT_STRING8:
        value.Value.lpszA = static_cast<char*>(Zeb_MemAllocate(size + 1, parent));
        std::memcpy(value.Value.lpszA, property.bytes.data(), size);
        break;
    case PT_UNICODE:
        value.Value.lpszW = static_cast<WCHAR*>(Zeb_MemAllocate((size + 1) * 2, parent));
        for (ULONG i = 0; i < size; ++i)
        {
            value.Value.lpszW[i] = static_cast<unsigned char>(property.bytes[i]);
        }
        break;
    case PT_BINARY:
        value.Value.bin.cb = size;
        value.Value.bin.lpb = static_cast<BYTE*>(Zeb_MemAllocate(size + 1, parent));
        std::memcpy(value.Value.bin.lpb, property.bytes.data(), size);
        break;
    case PT_BOOLEAN:
        value.Value.b = static_cast<unsigned short>(property.number);
        break;
    default:
        value.Value.l = property.number;
        break;
    }
    return value;
}

/// The properties of one double.
class Bag
{
public:
    void Set(ULONG tag, LONG number) { m_properties.push_back({tag, number, ""}); }
    void Set(ULONG tag, const std::string& bytes) { m_properties.push_back({tag, 0, bytes}); }

    /// The requested values in a separate buffer, as GetProps returns them; null tags request all.
    HRESULT Give(const SPropTagArray* tags, ULONG* count, SPropValue** values) const
    {
        const ULONG wanted = tags != nullptr ? tags->cValues : static_cast<ULONG>(m_properties.size());
        *count = wanted;
        *values = static_cast<SPropValue*>(Zeb_MemAllocate((wanted + 1) * sizeof(SPropValue), nullptr));
        HRESULT result = S_OK;
        for (ULONG i = 0; i < wanted; ++i)
        {
            const ULONG tag = tags != nullptr ? tags->aulPropTag[i] : At(i).tag;
            const Property* property = Find(tag);
            (*values)[i] = property != nullptr ? Filled(*property, TagOf(*property, tag), *values) : NotFound(tag);
            result = property != nullptr ? result : MAPI_W_ERRORS_RETURNED;
        }
        return result;
    }
    HRESULT List(SPropTagArray** tags) const
    {
        const auto count = static_cast<ULONG>(m_properties.size());
        *tags = static_cast<SPropTagArray*>(Zeb_MemAllocate(CbNewSPropTagArray(count + 1), nullptr));
        (*tags)->cValues = count;
        for (ULONG i = 0; i < count; ++i)
        {
            (*tags)->aulPropTag[i] = At(i).tag;
        }
        return S_OK;
    }

private:
    const Property& At(ULONG index) const { return *std::next(m_properties.begin(), index); }
    const Property* Find(ULONG tag) const
    {
        for (const Property& property : m_properties)
        {
            if (PROP_ID(property.tag) == PROP_ID(tag))
            {
                return &property;
            }
        }
        return nullptr;
    }
    /// The type is the caller's for text, else the property's own.
    static ULONG TagOf(const Property& property, ULONG asked)
    {
        const ULONG type = PROP_TYPE(asked);
        return type == PT_STRING8 || type == PT_UNICODE ? asked : property.tag;
    }

    std::list<Property> m_properties;
};

/// A stream over bytes.
class RecordingStream : public UnusedStream
{
public:
    RecordingStream(Journal& journal, std::string bytes)
        : UnusedStream(journal, "stream")
        , m_size(bytes.size())
        , m_bytes(std::move(bytes))
    {
    }
    /// The result of Stat, independent of the data.
    void ClaimSize(unsigned long long size) { m_size = size; }

    HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG count, ULONG* read) override
    {
        const ProviderScope inside;
        const HRESULT result = Called("Read", Number(count) + "," + Null(read));
        if (SUCCEEDED(result))
        {
            std::memcpy(buffer, m_bytes.data(), std::min<size_t>(count, m_bytes.size()));
        }
        return result;
    }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* stat, DWORD flags) override
    {
        const ProviderScope inside;
        const HRESULT result = Called("Stat", Number(flags));
        stat->cbSize.QuadPart = m_size;
        return result;
    }

private:
    unsigned long long m_size;
    std::string m_bytes;
};

/// IMAPIProp, for any interface derived from it.
template <class Interface>
class RecordingPropOf : public Counted<Interface>
{
public:
    using Counted<Interface>::Counted;

    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT result, ULONG flags, LPMAPIERROR* error) override
    {
        const ProviderScope inside;
        return this->LastError(result, flags, error);
    }
    HRESULT STDMETHODCALLTYPE SaveChanges(ULONG flags) override
    {
        const ProviderScope inside;
        return this->Called(
            "SaveChanges", Number(flags),
            RefuseFlags(flags, KEEP_OPEN_READONLY | KEEP_OPEN_READWRITE | FORCE_SAVE | MAPI_DEFERRED_ERRORS));
    }
    HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray tags, ULONG flags, ULONG* count, LPSPropValue* values) override
    {
        const ProviderScope inside;
        const HRESULT result =
            this->Called("GetProps", Tags(tags) + "," + Number(flags),
                         FirstOf({RefuseFlags(flags, MAPI_UNICODE), Require(count != nullptr && values != nullptr),
                                  tags != nullptr ? RequireTags(tags) : S_OK}));
        if (count == nullptr || values == nullptr)
        {
            return result;
        }
        *values = nullptr;
        *count = m_givesNothing ? 1 : 0;
        if (this->Stops(result) || m_givesNothing)
        {
            return result;
        }
        const HRESULT given = m_bag.Give(tags, count, values);
        for (ULONG i = 0; m_dropsBytes && i < *count; ++i)
        {
            if (PROP_TYPE((*values)[i].ulPropTag) == PT_BINARY)
            {
                (*values)[i].Value.bin.lpb = nullptr;
            }
        }
        return given;
    }
    HRESULT STDMETHODCALLTYPE GetPropList(ULONG flags, LPSPropTagArray* tags) override
    {
        const ProviderScope inside;
        const HRESULT result = this->Called("GetPropList", Number(flags),
                                            FirstOf({RefuseFlags(flags, MAPI_UNICODE), Require(tags != nullptr)}));
        if (tags == nullptr)
        {
            return result;
        }
        *tags = nullptr;
        return this->Stops(result) ? result : m_bag.List(tags);
    }
    HRESULT STDMETHODCALLTYPE OpenProperty(ULONG tag, LPCIID iid, ULONG options, ULONG flags,
                                           LPUNKNOWN* object) override
    {
        const ProviderScope inside;
        *object = nullptr;
        const HRESULT result = this->Called(
            "OpenProperty", Number(tag) + "," + Name(iid) + "," + Number(options) + "," + Number(flags),
            FirstOf({RefuseFlags(flags, MAPI_CREATE | MAPI_MODIFY | MAPI_DEFERRED_ERRORS), Require(iid != nullptr)}));
        return this->GivesNoObject(result) ? result : this->HandOut(m_property, object);
    }
    HRESULT STDMETHODCALLTYPE SetProps(ULONG count, LPSPropValue values, LPSPropProblemArray* problems) override
    {
        const ProviderScope inside;
        std::string text;
        HRESULT refusal = Require(count != 0 && values != nullptr);
        for (ULONG i = 0; values != nullptr && i < count; ++i)
        {
            text += Value(values[i]) + ",";
            refusal = FirstOf({refusal, RequireWritable(values[i])});
        }
        return this->Called("SetProps", text + "problems " + Null(problems), refusal);
    }
    HRESULT STDMETHODCALLTYPE DeleteProps(LPSPropTagArray tags, LPSPropProblemArray* problems) override
    {
        const ProviderScope inside;
        return this->Called("DeleteProps", Tags(tags) + ",problems " + Null(problems), RequireTags(tags));
    }
    HRESULT STDMETHODCALLTYPE CopyTo(ULONG, LPCIID, LPSPropTagArray, ULONG_PTR, LPMAPIPROGRESS, LPCIID, LPVOID, ULONG,
                                     LPSPropProblemArray*) override
    {
        return this->Unexpected("CopyTo");
    }
    HRESULT STDMETHODCALLTYPE CopyProps(LPSPropTagArray, ULONG_PTR, LPMAPIPROGRESS, LPCIID, LPVOID, ULONG,
                                        LPSPropProblemArray*) override
    {
        return this->Unexpected("CopyProps");
    }
    HRESULT STDMETHODCALLTYPE GetNamesFromIDs(LPSPropTagArray* tags, LPGUID set, ULONG flags, ULONG* count,
                                              LPMAPINAMEID** names) override
    {
        const ProviderScope inside;
        *count = 0;
        *names = nullptr;
        const HRESULT result =
            this->Called("GetNamesFromIDs", Tags(*tags) + ",set " + Null(set) + "," + Number(flags),
                         FirstOf({RefuseFlags(flags, MAPI_NO_STRINGS | MAPI_NO_IDS), RequireTags(*tags)}));
        if (this->Stops(result) || m_givesNothing)
        {
            return result;
        }
        *count = (*tags)->cValues;
        *names = static_cast<MAPINAMEID**>(Zeb_MemAllocate(*count * sizeof(MAPINAMEID*), nullptr));
        for (ULONG i = 0; m_namesGiven.lpguid != nullptr && i < *count; ++i)
        {
            (*names)[i] = static_cast<MAPINAMEID*>(Zeb_MemAllocate(sizeof(MAPINAMEID), *names));
            *(*names)[i] = m_namesGiven;
        }
        return m_namesGiven.lpguid != nullptr ? result : MAPI_W_ERRORS_RETURNED;
    }
    HRESULT STDMETHODCALLTYPE GetIDsFromNames(ULONG count, LPMAPINAMEID* names, ULONG flags,
                                              LPSPropTagArray* tags) override
    {
        const ProviderScope inside;
        *tags = nullptr;
        const HRESULT result =
            this->Called("GetIDsFromNames", Number(count) + "," + Number(flags),
                         FirstOf({RefuseFlags(flags, MAPI_CREATE), Require((count == 0) == (names == nullptr))}));
        if (this->Stops(result) || m_namedTags.empty())
        {
            return result;
        }
        m_namesAsked.assign(names, names + count);
        for (auto& name : m_namesAsked)
        {
            m_idsAsked.push_back(name->Kind.lID);
            if (name->ulKind == MNID_STRING)
            {
                m_textsAsked.emplace_back(name->Kind.lpwstrName);
            }
        }
        const auto given = static_cast<ULONG>(m_namedTags.size());
        *tags = static_cast<SPropTagArray*>(Zeb_MemAllocate(CbNewSPropTagArray(given), nullptr));
        (*tags)->cValues = given;
        std::copy(m_namedTags.begin(), m_namedTags.end(), (*tags)->aulPropTag);
        if (m_named)
        {
            m_named();
        }
        return result;
    }

    Bag m_bag;
    /// GetProps succeeds with null values and a count of 1.
    bool m_givesNothing = false;
    /// GetProps returns binaries with counts but without bytes.
    bool m_dropsBytes = false;
    /// Returned by OpenProperty.
    IUnknown* m_property = nullptr;
    /// The result of GetIDsFromNames; empty: success with a null pointer.
    std::vector<ULONG> m_namedTags;
    std::vector<LONG> m_idsAsked;
    std::vector<std::basic_string<WCHAR>> m_textsAsked;
    /// The answer of GetNamesFromIDs for every tag; without a set: none has a name.
    MAPINAMEID m_namesGiven = {};
    /// Runs at the end of GetIDsFromNames, after the tags are set.
    std::function<void()> m_named;

private:
    std::vector<MAPINAMEID*> m_namesAsked;
};

/// A plain property object.
class RecordingProp : public RecordingPropOf<IMAPIProp>
{
public:
    explicit RecordingProp(Journal& journal, std::string name = "prop")
        : RecordingPropOf<IMAPIProp>(journal, std::move(name), {&IID_IUnknown, &IID_IMAPIProp})
    {
    }
};

/// What objects can be opened, by the bytes of their entry identifiers; the type is what the opener reports.
class Openable
{
public:
    void Add(const std::string& entryID, IUnknown* object, ULONG type) { m_objects[entryID] = {object, type}; }

    HRESULT Open(ULONG count, LPENTRYID entryID, ULONG* type, LPUNKNOWN* object) const
    {
        const auto found = m_objects.find(std::string(reinterpret_cast<const char*>(entryID), count));
        if (found == m_objects.end())
        {
            return MAPI_E_NOT_FOUND;
        }
        *type = found->second.type;
        *object = found->second.object;
        if (*object != nullptr)
        {
            (*object)->AddRef();
        }
        return S_OK;
    }

private:
    struct Object
    {
        IUnknown* object;
        ULONG type;
    };
    std::map<std::string, Object> m_objects;
};

inline std::string OpenArguments(ULONG count, LPENTRYID entryID, LPCIID iid, ULONG flags, const ULONG* type,
                                 LPUNKNOWN* object)
{
    // Both outputs are empty before a call.
    EXPECT_EQ(*type, 0u);
    EXPECT_EQ(*object, nullptr);
    return Hex(entryID, count) + "," + Name(iid) + "," + Number(flags);
}

} // namespace zeb::test
