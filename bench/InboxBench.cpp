// inbox-read: rows through table, row set, row and value, against the same on IMAPITable and SRowSet by hand.
#include "bench/Benches.h"
#include "bench/Stores.h"

#include <stdexcept>

namespace bench
{

namespace
{

constexpr ULONG Columns = 5;
constexpr LONG Batch = 1000;

unsigned long long Sum(const WCHAR* text)
{
    return text[0];
}

unsigned long long Sum(const FILETIME& time)
{
    return time.dwLowDateTime;
}

/// Reads the whole table by the library's classes.
unsigned long long ReadByLibrary(CZebFolder& inbox, ULONG& rowsRead)
{
    CZebTable table = inbox.GetContentsTable(MAPI_UNICODE);
    table.SetColumns(Columns, PR_SUBJECT_W, PR_SENDER_NAME_W, PR_MESSAGE_CLASS_W, PR_MESSAGE_DELIVERY_TIME,
                     PR_IMPORTANCE);
    unsigned long long sum = 0;
    for (;;)
    {
        CZebRowSet rows;
        table.QueryRows(&rows, Batch, nullptr, nullptr);
        const ULONG count = rows.Count();
        if (count == 0)
        {
            return sum;
        }
        rowsRead += count;
        for (ULONG i = 0; i < count; ++i)
        {
            const CZebRow row = rows[i];
            sum += Sum(static_cast<const WCHAR*>(row[PR_SUBJECT_W]));
            sum += Sum(static_cast<const WCHAR*>(row[PR_SENDER_NAME_W]));
            sum += Sum(static_cast<const WCHAR*>(row[PR_MESSAGE_CLASS_W]));
            sum += Sum(static_cast<const FILETIME&>(row[PR_MESSAGE_DELIVERY_TIME]));
            sum += static_cast<ULONG>(static_cast<LONG>(row[PR_IMPORTANCE]));
        }
    }
}

void Check(HRESULT result)
{
    if (FAILED(result))
    {
        throw std::runtime_error("A table call failed.");
    }
}

/// The value of one column, its type checked, as careful code by hand would take it.
const SPropValue& Cell(const SRow& row, ULONG column, ULONG tag)
{
    if (column >= row.cValues || row.lpProps[column].ulPropTag != tag)
    {
        throw std::runtime_error("A column is missing.");
    }
    return row.lpProps[column];
}

/// Reads the whole table on the MAPI interfaces.
unsigned long long ReadByHand(IMAPIContainer& inbox, ULONG& rowsRead)
{
    IMAPITable* table = nullptr;
    Check(inbox.GetContentsTable(MAPI_UNICODE, &table));
    SizedSPropTagArray(Columns, columns) = {
        Columns, {PR_SUBJECT_W, PR_SENDER_NAME_W, PR_MESSAGE_CLASS_W, PR_MESSAGE_DELIVERY_TIME, PR_IMPORTANCE}};
    Check(table->SetColumns(reinterpret_cast<SPropTagArray*>(&columns), 0));
    unsigned long long sum = 0;
    for (;;)
    {
        SRowSet* rows = nullptr;
        Check(table->QueryRows(Batch, 0, &rows));
        const ULONG count = rows->cRows;
        rowsRead += count;
        for (ULONG i = 0; i < count; ++i)
        {
            const SRow& row = rows->aRow[i];
            sum += Sum(Cell(row, 0, PR_SUBJECT_W).Value.lpszW);
            sum += Sum(Cell(row, 1, PR_SENDER_NAME_W).Value.lpszW);
            sum += Sum(Cell(row, 2, PR_MESSAGE_CLASS_W).Value.lpszW);
            sum += Sum(Cell(row, 3, PR_MESSAGE_DELIVERY_TIME).Value.ft);
            sum += static_cast<ULONG>(Cell(row, 4, PR_IMPORTANCE).Value.l);
        }
        for (ULONG i = 0; i < count; ++i)
        {
            Zeb_MemFree(rows->aRow[i].lpProps);
        }
        Zeb_MemFree(rows);
        if (count == 0)
        {
            table->Release();
            return sum;
        }
    }
}

} // namespace

Measurement InboxRead(const Options& options)
{
    auto store = std::make_shared<StoreOf>(options.folder, options.brief ? 2000 : 100000);
    const auto timed = [store](auto&& read)
    {
        ULONG rows = 0;
        unsigned long long sum = 0;
        const double seconds = Seconds([&] { sum = read(rows); });
        if (rows != store->Count())
        {
            throw std::runtime_error("inbox-read did not see every row.");
        }
        Keep(sum);
        return seconds;
    };
    const auto ours = [=] { return timed([&](ULONG& rows) { return ReadByLibrary(store->Inbox(), rows); }); };
    const auto baseline = [=]
    {
        return timed([&](ULONG& rows)
        {
            CComPtr<IMAPIContainer> container;
            CComPtr<IMAPIProp> inbox = store->Inbox().GetInterface();
            Check(inbox->QueryInterface(IID_IMAPIContainer, container.PutAs<void>()));
            return ReadByHand(*container, rows);
        });
    };
    return {"inbox-read", 1.015, ours, baseline, options.brief ? 3 : 61};
}

} // namespace bench
