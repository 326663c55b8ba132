#include "fuzz/StoreReader.h"

#include "platform/tags.h"
#include "zebstore/addressbook/AddressBook.h"
#include "zebstore/base/Memory.h"
#include "zebstore/objects/Store.h"

#include <cstdio>
#include <set>
#include <string>

namespace
{

using namespace zebstore;

template <class Interface>
struct Out
{
    Interface** operator&() { return &pointer; }
    Ref<Interface> Take() { return Ref<Interface>::Adopt(pointer); }
    Interface* pointer = nullptr;
};

class Reader
{
public:
    explicit Reader(const StorePtr& store)
        : m_store(store)
    {
    }

    std::vector<std::string> Read()
    {
        const Ref<IMsgStore> store = NewStore(m_store, Access::Read);
        Properties(*store.Get());
        ULONG type = 0;
        Out<IUnknown> root;
        if (Succeeded(store->OpenEntry(0, nullptr, nullptr, 0, &type, &root), "OpenEntry"))
        {
            ReadFolder(static_cast<IMAPIFolder&>(*root.Take().Get()));
        }
        m_isInBook = true;
        const Ref<IAddrBook> book = NewAddressBook(m_store, Access::Read);
        Out<IUnknown> top;
        if (Succeeded(book->OpenEntry(0, nullptr, nullptr, 0, &type, &top), "OpenEntry"))
        {
            ReadContainer(static_cast<IMAPIContainer&>(*top.Take().Get()));
        }
        return std::move(m_failures);
    }

private:
    using Cells = std::vector<std::string>;

    bool Succeeded(HRESULT code, const char* what)
    {
        if (FAILED(code))
        {
            Fail(code, what);
        }
        return SUCCEEDED(code);
    }

    void Fail(HRESULT code, const char* what)
    {
        char line[64];
        std::snprintf(line, sizeof(line), "%s fails with 0x%08X", what, static_cast<unsigned>(code));
        m_failures.emplace_back(line);
    }

    // An error in place of a value says that it is large, or missing.
    void Note(const SPropValue& value)
    {
        if (PROP_TYPE(value.ulPropTag) == PT_ERROR && value.Value.err != MAPI_E_NOT_ENOUGH_MEMORY &&
            value.Value.err != MAPI_E_NOT_FOUND)
        {
            Fail(value.Value.err, "a value");
        }
    }

    void Properties(IMAPIProp& object)
    {
        ULONG count = 0;
        SPropValue* values = nullptr;
        if (Succeeded(object.GetProps(nullptr, MAPI_UNICODE, &count, &values), "GetProps"))
        {
            for (ULONG i = 0; i < count; ++i)
            {
                Note(values[i]);
                if (PROP_TYPE(values[i].ulPropTag) == PT_ERROR && values[i].Value.err == MAPI_E_NOT_ENOUGH_MEMORY)
                {
                    Stream(object, CHANGE_PROP_TYPE(values[i].ulPropTag, PT_BINARY));
                }
            }
            MAPIFreeBuffer(values);
        }
        for (const ULONG tag : {PR_BODY_W, PR_ATTACH_DATA_BIN})
        {
            Stream(object, tag);
        }
    }

    void Stream(IMAPIProp& object, ULONG tag)
    {
        Out<IUnknown> opened;
        if (FAILED(object.OpenProperty(tag, &IID_IStream, 0, 0, &opened)))
        {
            return; // it has none
        }
        const Ref<IUnknown> owner = opened.Take();
        auto& stream = static_cast<IStream&>(*owner.Get());
        char piece[4096];
        ULONG read = 1;
        while (read != 0 && Succeeded(stream.Read(piece, sizeof(piece), &read), "Read"))
        {
        }
    }

    // All rows, by the date or by the text, of those that a text is in. @return the binary cells of the first column
    Cells Rows(IMAPITable& table, ULONG id, ULONG sortedBy)
    {
        SPropTagArray* all = nullptr;
        if (Succeeded(table.QueryColumns(TBL_ALL_COLUMNS, &all), "QueryColumns"))
        {
            RowsOf(table, all, nullptr, nullptr);
            MAPIFreeBuffer(all);
        }
        SizedSPropTagArray(1, columns) = {1, {id}};
        SizedSSortOrderSet(1, order) = {1, 0, 0, {{sortedBy, TABLE_SORT_DESCEND}}};
        SPropValue text{};
        text.ulPropTag = PR_SUBJECT_A;
        text.Value.lpszA = const_cast<char*>("sample");
        SRestriction has{};
        has.rt = RES_CONTENT;
        has.res.resContent = {FL_SUBSTRING | FL_IGNORECASE, PR_SUBJECT_A, &text};
        RowsOf(table, reinterpret_cast<SPropTagArray*>(&columns), &has, nullptr);
        return RowsOf(table, reinterpret_cast<SPropTagArray*>(&columns), nullptr,
                      reinterpret_cast<SSortOrderSet*>(&order));
    }

    Cells RowsOf(IMAPITable& table, SPropTagArray* columns, SRestriction* restriction, SSortOrderSet* order)
    {
        Cells cells;
        SRowSet* rows = nullptr;
        // A table of another interface may refuse to sort or restrict; what it holds must be readable.
        if (!Succeeded(HrQueryAllRows(&table, columns, restriction, order, 0, &rows), "HrQueryAllRows"))
        {
            return cells;
        }
        for (ULONG i = 0; i < rows->cRows; ++i)
        {
            for (ULONG j = 0; j < rows->aRow[i].cValues; ++j)
            {
                Note(rows->aRow[i].lpProps[j]);
            }
            const SPropValue& first = rows->aRow[i].lpProps[0];
            if (PROP_TYPE(first.ulPropTag) == PT_BINARY)
            {
                cells.emplace_back(reinterpret_cast<const char*>(first.Value.bin.lpb), first.Value.bin.cb);
            }
        }
        FreeProws(rows);
        return cells;
    }

    static ENTRYID* AsEntryId(const std::string& id)
    {
        return reinterpret_cast<ENTRYID*>(const_cast<char*>(id.data()));
    }

    // In a damaged store, a folder may be below itself.
    bool IsNew(const std::string& id) { return m_seen.insert(id).second; }

    template <class Container, class Read>
    void Entries(Container& container, const Cells& ids, Read&& read)
    {
        for (const std::string& id : ids)
        {
            if (!IsNew(id))
            {
                continue;
            }
            ULONG type = 0;
            Out<IUnknown> opened;
            const HRESULT code =
                container.OpenEntry(static_cast<ULONG>(id.size()), AsEntryId(id), nullptr, 0, &type, &opened);
            // A member of a list may be of any provider.
            if ((!m_isInBook || code != MAPI_E_INVALID_ENTRYID) && Succeeded(code, "OpenEntry"))
            {
                const Ref<IUnknown> owner = opened.Take();
                read(type, *owner.Get());
            }
        }
    }

    void ReadFolder(IMAPIFolder& folder)
    {
        Properties(folder);
        for (const ULONG flags : {ULONG{0}, ULONG{MAPI_ASSOCIATED}})
        {
            Out<IMAPITable> contents;
            if (Succeeded(folder.GetContentsTable(flags, &contents), "GetContentsTable"))
            {
                const Cells ids = Rows(*contents.Take().Get(), PR_ENTRYID, PR_CLIENT_SUBMIT_TIME);
                Entries(folder, ids, [&](ULONG, IUnknown& object) { ReadMessage(static_cast<IMessage&>(object)); });
            }
        }
        Out<IMAPITable> hierarchy;
        if (Succeeded(folder.GetHierarchyTable(0, &hierarchy), "GetHierarchyTable"))
        {
            const Cells ids = Rows(*hierarchy.Take().Get(), PR_ENTRYID, PR_DISPLAY_NAME_W);
            Entries(folder, ids, [&](ULONG, IUnknown& object) { ReadFolder(static_cast<IMAPIFolder&>(object)); });
        }
    }

    void ReadMessage(IMessage& message)
    {
        Properties(message);
        Out<IMAPITable> recipients;
        if (Succeeded(message.GetRecipientTable(0, &recipients), "GetRecipientTable"))
        {
            RowsOf(*recipients.Take().Get(), nullptr, nullptr, nullptr);
        }
        Out<IMAPITable> attachments;
        if (!Succeeded(message.GetAttachmentTable(0, &attachments), "GetAttachmentTable"))
        {
            return;
        }
        const Ref<IMAPITable> table = attachments.Take();
        SizedSPropTagArray(1, columns) = {1, {PR_ATTACH_NUM}};
        SRowSet* rows = nullptr;
        if (!Succeeded(
                HrQueryAllRows(table.Get(), reinterpret_cast<SPropTagArray*>(&columns), nullptr, nullptr, 0, &rows),
                "HrQueryAllRows"))
        {
            return;
        }
        for (ULONG i = 0; i < rows->cRows; ++i)
        {
            Out<IAttach> attachment;
            if (Succeeded(
                    message.OpenAttach(static_cast<ULONG>(rows->aRow[i].lpProps[0].Value.l), nullptr, 0, &attachment),
                    "OpenAttach"))
            {
                ReadAttachment(*attachment.Take().Get());
            }
        }
        FreeProws(rows);
    }

    void ReadAttachment(IAttach& attachment)
    {
        Properties(attachment);
        Out<IUnknown> inside;
        if (SUCCEEDED(attachment.OpenProperty(PR_ATTACH_DATA_OBJ, &IID_IMessage, 0, 0, &inside)))
        {
            const Ref<IUnknown> owner = inside.Take();
            ReadMessage(static_cast<IMessage&>(*owner.Get()));
        }
    }

    void ReadContainer(IMAPIContainer& container)
    {
        Properties(container);
        Out<IMAPITable> contents;
        // The top has none.
        if (SUCCEEDED(container.GetContentsTable(0, &contents)))
        {
            const Cells ids = RowsOfBook(*contents.Take().Get());
            Entries(container, ids, [&](ULONG type, IUnknown& object)
            {
                if (type != MAPI_MAILUSER)
                {
                    ReadContainer(static_cast<IMAPIContainer&>(object));
                }
                else
                {
                    Properties(static_cast<IMailUser&>(object));
                }
            });
        }
        Out<IMAPITable> hierarchy;
        if (SUCCEEDED(container.GetHierarchyTable(0, &hierarchy)))
        {
            const Cells ids = RowsOfBook(*hierarchy.Take().Get());
            Entries(container, ids,
                    [&](ULONG, IUnknown& object) { ReadContainer(static_cast<IMAPIContainer&>(object)); });
        }
    }

    Cells RowsOfBook(IMAPITable& table)
    {
        SizedSPropTagArray(3, columns) = {3, {PR_ENTRYID, PR_DISPLAY_NAME_W, PR_OBJECT_TYPE}};
        return RowsOf(table, reinterpret_cast<SPropTagArray*>(&columns), nullptr, nullptr);
    }

    const StorePtr m_store;
    std::vector<std::string> m_failures;
    std::set<std::string> m_seen;
    bool m_isInBook = false;
};

} // namespace

std::vector<std::string> ReadAll(const StorePtr& store)
{
    return Reader(store).Read();
}
