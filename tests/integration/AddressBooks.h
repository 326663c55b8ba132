// Creates and reads entries of the provider's address book through the library's wrappers.
#pragma once

#include "tests/integration/Host.h"

#include <string>
#include <vector>

namespace zeb::test
{

inline CComPtr<IABContainer> InterfaceOf(const CZebContainer& container)
{
    CComPtr<IABContainer> result;
    ThrowIfFailed(container.GetInterface()->QueryInterface(IID_IABContainer, reinterpret_cast<void**>(result.Put())));
    return result;
}

/// Adds a mail user (an address) or a list (none) to the global address list.
inline CZebBinary AddEntry(CZebAddressBook& book, const char* name, const char* address)
{
    CZebContainer directory = book.OpenMainContainer(nullptr);
    const CComPtr<IABContainer> container = InterfaceOf(directory);
    const CZebBinary model = directory.GetBin(address ? PR_DEF_CREATE_MAILUSER : PR_DEF_CREATE_DL);
    CComPtr<IMAPIProp> created;
    const SBinary& id = model;
    ThrowIfFailed(container->CreateEntry(id.cb, reinterpret_cast<LPENTRYID>(id.lpb), 0, created.Put()), container);
    CZebPropObj entry(created.Get());
    CZebPropValArray properties(2);
    properties[PR_DISPLAY_NAME_A] = name;
    if (address)
    {
        properties[PR_EMAIL_ADDRESS_A] = address;
    }
    entry.SetProps(properties, true, nullptr);
    return entry.GetEntryID();
}

/// Makes `member` a member of `list`.
inline void AddMember(CZebAddressBook& book, const SBinary& list, const SBinary& member)
{
    CZebDistList wrapper;
    book.OpenEntry(list, wrapper, MAPI_BEST_ACCESS);
    CComPtr<IDistList> target;
    ThrowIfFailed(wrapper.GetInterface()->QueryInterface(IID_IDistList, reinterpret_cast<void**>(target.Put())));
    SBinary one = member;
    ENTRYLIST entries = {1, &one};
    ThrowIfFailed(target->CopyEntries(&entries, 0, nullptr, 0), target);
}

struct BookRow
{
    std::string name, address;
    CZebBinary id;
};

/// All rows of a table, read in batches. Frees them itself: the library cannot in WAB mode.
inline std::vector<BookRow> RowsOf(CZebTable table, bool wab = false)
{
    table.SetColumns(3, PR_DISPLAY_NAME_A, PR_EMAIL_ADDRESS_A, PR_ENTRYID);
    std::vector<BookRow> result;
    for (;;)
    {
        SRowSet* rows = nullptr;
        table.QueryRows(&rows, 3, nullptr, nullptr);
        const ULONG count = rows->cRows;
        for (ULONG i = 0; i < count; ++i)
        {
            const SPropValue* cells = rows->aRow[i].lpProps;
            BookRow row;
            row.name = PROP_TYPE(cells[0].ulPropTag) == PT_STRING8 ? cells[0].Value.lpszA : "";
            row.address = PROP_TYPE(cells[1].ulPropTag) == PT_STRING8 ? cells[1].Value.lpszA : "";
            row.id = cells[2].Value.bin;
            result.push_back(row);
        }
        if (wab)
        {
            for (ULONG i = 0; i < count; ++i)
            {
                Zeb_MemFree(rows->aRow[i].lpProps);
            }
            Zeb_MemFree(rows);
        }
        else
        {
            Zeb_FreeProws(rows);
        }
        if (count == 0)
        {
            return result;
        }
    }
}

inline std::vector<std::string> NamesOf(const std::vector<BookRow>& rows)
{
    std::vector<std::string> names;
    for (const BookRow& each : rows)
    {
        names.push_back(each.name);
    }
    return names;
}

/// The identifier of one of the root's containers.
inline CZebBinary ContainerID(CZebAddressBook& book, const std::string& name)
{
    for (const BookRow& each : RowsOf(book.OpenRootContainer(MAPI_BEST_ACCESS).GetHierarchyTable(0), book.IsWAB()))
    {
        if (each.name == name)
        {
            return each.id;
        }
    }
    ADD_FAILURE() << "no container '" << name << "'";
    return CZebBinary();
}

} // namespace zeb::test
