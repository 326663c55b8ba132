#include "zebstore/addressbook/AddressBook.h"

#include "zebstore/addressbook/AddressObjects.h"
#include "zebstore/addressbook/AddressResolve.h"
#include "zebstore/addressbook/AddressValues.h"
#include "zebstore/addressbook/ContainerRows.h"
#include "zebstore/addressbook/EntryRow.h"
#include "zebstore/base/Memory.h"
#include "zebstore/objects/EntryIdBytes.h"
#include "zebstore/objects/PropObject.h"
#include "zebstore/storage/Encoding.h"
#include "zebstore/storage/ValueBuilder.h"

#include <cstring>

namespace zebstore
{
namespace
{

AddressEntryId IdOfContainer(const StorePtr& store, AddressKind kind)
{
    const std::string id = ContainerRow(store, kind, false).Binary(PR_ENTRYID);
    return AddressEntryId(id.begin(), id.end());
}

/// The properties of the IAddrBook object itself.
const std::vector<ULONG>& BookTags()
{
    static const std::vector<ULONG> tags = {PR_OBJECT_TYPE, PR_DISPLAY_NAME_W, PR_MAPPING_SIGNATURE};
    return tags;
}

/// The address book of a session, or of the WAB. Threads: any.
class AddressBook final : public PropObject<IAddrBook>
{
public:
    AddressBook(const StorePtr& store, Access access)
        : PropObject(store, access)
        , m_addresses(store->SharedFile())
    {
    }

    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID id, LPCIID iid, ULONG flags, ULONG* objectType,
                                        LPUNKNOWN* object) override
    {
        return Guarded("IAddrBook::OpenEntry", [&]
        {
            Require(object != nullptr, "the output pointer is null");
            *object = nullptr;
            *object = OpenAddress(Store(), size, id, iid, flags, AccessGiven(), objectType);
        });
    }

    HRESULT STDMETHODCALLTYPE CompareEntryIDs(ULONG sizeA, LPENTRYID a, ULONG sizeB, LPENTRYID b, ULONG flags,
                                              ULONG* same) override
    {
        return Guarded("IAddrBook::CompareEntryIDs", [&]
        {
            Require(same != nullptr, "the output pointer is null");
            RequireFlags(flags, 0);
            *same = SameEntry(sizeA, a, sizeB, b) ? TRUE : FALSE;
        });
    }

    HRESULT STDMETHODCALLTYPE Advise(ULONG, LPENTRYID, ULONG, LPMAPIADVISESINK, ULONG_PTR*) override
    {
        return Refuse("IAddrBook::Advise", "the address book does not notify");
    }
    HRESULT STDMETHODCALLTYPE Unadvise(ULONG_PTR) override
    {
        return Refuse("IAddrBook::Unadvise", "the address book does not notify");
    }

    HRESULT STDMETHODCALLTYPE CreateOneOff(LPTSTR name, LPTSTR type, LPTSTR address, ULONG flags, ULONG* size,
                                           LPENTRYID* id) override
    {
        return Guarded("IAddrBook::CreateOneOff", [&]
        {
            RequireFlags(flags, MAPI_UNICODE | MAPI_SEND_NO_RICH_INFO);
            Require(type != nullptr && address != nullptr, "a one-off address needs a type and an address");
            AddressName oneOff;
            oneOff.kind = AddressKind::OneOff;
            oneOff.type = TextArgument(type, flags);
            oneOff.address = TextArgument(address, flags);
            oneOff.displayName = name != nullptr ? TextArgument(name, flags) : oneOff.address;
            oneOff.richInfo = (flags & MAPI_SEND_NO_RICH_INFO) == 0;
            Give(MakeOneOffId(oneOff, (flags & MAPI_UNICODE) != 0), size, id);
        });
    }

    HRESULT STDMETHODCALLTYPE NewEntry(ULONG_PTR, ULONG, ULONG, LPENTRYID, ULONG, LPENTRYID, ULONG*,
                                       LPENTRYID*) override
    {
        return RefuseWindow("IAddrBook::NewEntry");
    }

    HRESULT STDMETHODCALLTYPE ResolveName(ULONG_PTR, ULONG flags, LPTSTR, LPADRLIST list) override
    {
        return Run("IAddrBook::ResolveName", [&]
        {
            // A caller that allows a dialog gets none: the provider has no user interface.
            RequireFlags(flags, MAPI_UNICODE | MAPI_DIALOG);
            Require(list != nullptr, "the list of names is null");
            ResolveAll(*list, (flags & MAPI_UNICODE) != 0);
        });
    }

    HRESULT STDMETHODCALLTYPE Address(ULONG_PTR*, LPADRPARM, LPADRLIST*) override
    {
        return RefuseWindow("IAddrBook::Address");
    }
    HRESULT STDMETHODCALLTYPE Details(ULONG_PTR*, LPFNDISMISS, LPVOID, ULONG, LPENTRYID, LPFNBUTTON, LPVOID, LPTSTR,
                                      ULONG) override
    {
        return RefuseWindow("IAddrBook::Details");
    }
    HRESULT STDMETHODCALLTYPE RecipOptions(ULONG_PTR, ULONG, LPADRENTRY) override
    {
        return RefuseWindow("IAddrBook::RecipOptions");
    }

    HRESULT STDMETHODCALLTYPE QueryDefaultRecipOpt(LPTSTR, ULONG flags, ULONG* count, LPSPropValue* options) override
    {
        return Guarded("IAddrBook::QueryDefaultRecipOpt", [&]
        {
            RequireFlags(flags, MAPI_UNICODE);
            Require(count != nullptr && options != nullptr, "the output pointer is null");
            *count = 0;
            *options = nullptr;
        });
    }

    HRESULT STDMETHODCALLTYPE GetPAB(ULONG* size, LPENTRYID* id) override
    {
        return Run("IAddrBook::GetPAB", [&] { Give(Chosen(PR_AB_DEFAULT_PAB, AddressKind::Contacts), size, id); });
    }
    HRESULT STDMETHODCALLTYPE SetPAB(ULONG size, LPENTRYID id) override
    {
        return Run("IAddrBook::SetPAB", [&] { Choose(PR_AB_DEFAULT_PAB, size, id); });
    }
    HRESULT STDMETHODCALLTYPE GetDefaultDir(ULONG* size, LPENTRYID* id) override
    {
        return Run("IAddrBook::GetDefaultDir",
                   [&] { Give(Chosen(PR_AB_DEFAULT_DIR, AddressKind::Directory), size, id); });
    }
    HRESULT STDMETHODCALLTYPE SetDefaultDir(ULONG size, LPENTRYID id) override
    {
        return Run("IAddrBook::SetDefaultDir", [&] { Choose(PR_AB_DEFAULT_DIR, size, id); });
    }

    HRESULT STDMETHODCALLTYPE GetSearchPath(ULONG flags, LPSRowSet* path) override
    {
        return Run("IAddrBook::GetSearchPath", [&]
        {
            RequireFlags(flags, MAPI_UNICODE);
            Require(path != nullptr, "the output pointer is null");
            *path = nullptr;
            *path = RowsOf(SearchPath(), (flags & MAPI_UNICODE) != 0);
        });
    }

    HRESULT STDMETHODCALLTYPE SetSearchPath(ULONG flags, LPSRowSet path) override
    {
        return Run("IAddrBook::SetSearchPath", [&]
        {
            RequireFlags(flags, 0);
            Require(path != nullptr && path->cRows > 0, "the search path is null or empty");
            KeepSearchPath(*path);
        });
    }

    HRESULT STDMETHODCALLTYPE PrepareRecips(ULONG flags, LPSPropTagArray tags, LPADRLIST list) override
    {
        return Run("IAddrBook::PrepareRecips", [&]
        {
            RequireFlags(flags, 0);
            Require(list != nullptr, "the recipient list is null");
            for (ULONG i = 0; tags != nullptr && i < list->cEntries; ++i)
            {
                Prepare(list->aEntries[i], *tags);
            }
        });
    }

private:
    static HRESULT Refuse(const char* method, const char* why)
    {
        return Guarded(method, [&] { throw Error(MAPI_E_NO_SUPPORT, why); });
    }
    static HRESULT RefuseWindow(const char* method)
    {
        return Refuse(method, "the call needs a dialog, and the provider has no user interface");
    }

    bool Answers(REFIID iid) const override { return IsOneOf(iid, {&IID_IMAPIProp, &IID_IAddrBook}); }
    const PropertySet& Stored() override { return m_none; }
    const std::vector<ULONG>& ComputedTags() override { return BookTags(); }
    bool Compute(ULONG tag, PropertySet& out) override
    {
        switch (PROP_ID(tag))
        {
        case PROP_ID(PR_OBJECT_TYPE):
            out.SetLong(PR_OBJECT_TYPE, MAPI_ADDRBOOK);
            return true;
        case PROP_ID(PR_DISPLAY_NAME):
            out.SetText(PR_DISPLAY_NAME_W, "Address Book");
            return true;
        case PROP_ID(PR_MAPPING_SIGNATURE):
            out.SetBinary(PR_MAPPING_SIGNATURE, Store()->Uid().ab, sizeof(MAPIUID));
            return true;
        default:
            return false;
        }
    }
    void Edit(const std::function<void(PropertySet&)>&) override
    {
        throw Error(MAPI_E_NO_SUPPORT, "the address book has no writable properties");
    }
    void Save(ULONG) override {}

    static void Give(const AddressEntryId& bytes, ULONG* size, LPENTRYID* id)
    {
        GiveBytes(bytes.data(), bytes.size(), size, id);
    }

    AddressKind ContainerNamed(ULONG size, const void* id) const
    {
        if (!size || id == nullptr)
        {
            throw Error(MAPI_E_INVALID_ENTRYID, "the entry identifier is empty");
        }
        const AddressKind kind = ParseAddressId(Store()->Uid(), id, size).kind;
        if (kind != AddressKind::Directory && kind != AddressKind::Contacts)
        {
            throw Error(MAPI_E_INVALID_ENTRYID, "the entry identifier does not name a container of entries");
        }
        return kind;
    }

    AddressEntryId Chosen(ULONG tag, AddressKind otherwise) const
    {
        const std::string chosen = m_addresses.Properties().Binary(tag);
        return chosen.empty() ? IdOfContainer(Store(), otherwise) : AddressEntryId(chosen.begin(), chosen.end());
    }

    void Choose(ULONG tag, ULONG size, const void* id)
    {
        ContainerNamed(size, id);
        RequireWrite();
        const std::lock_guard hold(File().Lock());
        PropertySet properties = m_addresses.Properties();
        properties.SetBinary(tag, id, size);
        m_addresses.SaveProperties(properties);
    }

    /// Own contacts go before the global address list.
    std::vector<AddressKind> SearchPath() const
    {
        std::vector<AddressKind> path;
        const PropertySet properties = m_addresses.Properties();
        const EncodedValue kept = properties.Find(PR_AB_SEARCH_PATH);
        for (ULONG i = 0; kept && i < ElementCount(kept.Type(), kept.bytes); ++i)
        {
            const std::string_view id = Element(kept.Type(), kept.bytes, i);
            path.push_back(ContainerNamed(static_cast<ULONG>(id.size()), id.data()));
        }
        return path.empty() ? std::vector<AddressKind>{AddressKind::Contacts, AddressKind::Directory} : path;
    }

    void KeepSearchPath(const SRowSet& path)
    {
        RequireWrite();
        std::vector<SBinary> ids;
        for (ULONG i = 0; i < path.cRows; ++i)
        {
            for (ULONG j = 0; j < path.aRow[i].cValues; ++j)
            {
                if (path.aRow[i].lpProps[j].ulPropTag == PR_ENTRYID)
                {
                    ids.push_back(path.aRow[i].lpProps[j].Value.bin);
                }
            }
        }
        Require(ids.size() == path.cRows, "a row of the search path has no entry identifier");
        for (const SBinary& each : ids)
        {
            ContainerNamed(each.cb, each.lpb);
        }
        SPropValue value{};
        value.ulPropTag = PR_AB_SEARCH_PATH;
        value.Value.MVbin.cValues = static_cast<ULONG>(ids.size());
        value.Value.MVbin.lpbin = ids.data();
        const std::lock_guard hold(File().Lock());
        PropertySet properties = m_addresses.Properties();
        properties.Set(value);
        m_addresses.SaveProperties(properties);
    }

    SRowSet* RowsOf(const std::vector<AddressKind>& containers, bool unicode) const
    {
        const size_t size = CbNewSRowSet(containers.size());
        Buffer<SRowSet> set(Allocate(size));
        std::memset(static_cast<void*>(set.Get()), 0, size);
        BuildOptions options;
        options.unicode = unicode;
        std::vector<Buffer<SPropValue>> values;
        std::vector<size_t> counts;
        for (const AddressKind each : containers)
        {
            const PropertySet row = ContainerRow(Store(), each, AccessGiven() == Access::Write);
            std::vector<ULONG> tags;
            for (const ULONG tag : row.Tags())
            {
                tags.push_back(IsText(PROP_TYPE(tag)) ? CHANGE_PROP_TYPE(tag, PT_UNSPECIFIED) : tag);
            }
            values.emplace_back(BuildValues(tags.data(), tags.size(), row, options));
            counts.push_back(tags.size());
        }
        for (size_t i = 0; i < values.size(); ++i)
        {
            set->aRow[i].cValues = static_cast<ULONG>(counts[i]);
            set->aRow[i].lpProps = values[i].Detach();
        }
        set->cRows = static_cast<ULONG>(values.size());
        return set.Detach();
    }

    NameMatches FindInPath(const std::string& name) const
    {
        NameMatches all;
        for (const AddressKind each : SearchPath())
        {
            const NameMatches here = FindByName(*MakeContainerRows(Store(), each), name, nullptr);
            // The first container that knows the name alone decides.
            if (here.count == 1)
            {
                return here;
            }
            all.count += here.count;
        }
        return all;
    }

    /// "TYPE:address" and "name@domain" resolve without an entry in any container.
    bool IsAddress(const std::string& name, PropertySet& entry) const
    {
        const size_t colon = name.find(':');
        AddressName oneOff;
        oneOff.kind = AddressKind::OneOff;
        oneOff.displayName = name;
        if (colon != std::string::npos && colon > 0 && colon + 1 < name.size() && name.find_first_of(" @") > colon)
        {
            oneOff.type = name.substr(0, colon);
            oneOff.address = name.substr(colon + 1);
            oneOff.displayName = oneOff.address;
        }
        else if (name.find('@') != std::string::npos && name.find_first_of(" \t,;<>") == std::string::npos)
        {
            oneOff.type = "SMTP";
            oneOff.address = name;
        }
        else
        {
            return false;
        }
        const AddressEntryId id = MakeOneOffId(oneOff, true);
        entry = RowOfEntry(Store(), id.data(), id.size());
        return true;
    }

    void ResolveAll(ADRLIST& list, bool unicode) const
    {
        HRESULT failure = S_OK;
        std::string name;
        for (ULONG i = 0; i < list.cEntries; ++i)
        {
            ADRENTRY& entry = list.aEntries[i];
            if (IsResolved(entry))
            {
                continue;
            }
            const std::string asked = NameToResolve(entry);
            NameMatches matches = FindInPath(asked);
            if (matches.count == 0 && IsAddress(asked, matches.entry))
            {
                matches.count = 1;
            }
            if (matches.count == 1)
            {
                GiveProperties(entry, matches.entry, unicode);
            }
            else if (failure == S_OK)
            {
                failure = matches.count ? MAPI_E_AMBIGUOUS_RECIP : MAPI_E_NOT_FOUND;
                name = asked;
            }
        }
        if (failure == MAPI_E_AMBIGUOUS_RECIP)
        {
            throw Error(failure, "the name '" + name + "' is ambiguous: several entries of the address book match");
        }
        if (failure != S_OK)
        {
            throw Error(failure, "no entry of the address book matches '" + name + "'");
        }
    }

    /// The requested properties first, in their order, then the other existing properties.
    void Prepare(ADRENTRY& entry, const SPropTagArray& tags) const
    {
        PropertySet known;
        std::vector<ULONG> order(tags.aulPropTag, tags.aulPropTag + tags.cValues);
        for (ULONG i = 0; i < entry.cValues; ++i)
        {
            const SPropValue& value = entry.rgPropVals[i];
            if (PROP_TYPE(value.ulPropTag) == PT_ERROR || PROP_TYPE(value.ulPropTag) == PT_NULL)
            {
                continue;
            }
            known.Set(value);
            if (!HasId(order, value.ulPropTag))
            {
                order.push_back(value.ulPropTag);
            }
        }
        PropertySet found;
        if (const std::string id = known.Binary(PR_ENTRYID); !id.empty())
        {
            found = RowOfEntry(Store(), id.data(), id.size());
        }
        for (const PropertySet::Item& item : found.Items())
        {
            if (!known.Has(item.tag))
            {
                known.SetEncoded(item.tag, item.bytes);
            }
        }
        SPropValue* values = BuildValues(order.data(), order.size(), known, {});
        Free(entry.rgPropVals);
        entry.rgPropVals = values;
        entry.cValues = static_cast<ULONG>(order.size());
    }

    const AddressStorage m_addresses;
    const PropertySet m_none;
};

} // namespace

Ref<IAddrBook> NewAddressBook(const StorePtr& store, Access access)
{
    return Ref<IAddrBook>::Adopt(new AddressBook(store, access));
}

} // namespace zebstore
