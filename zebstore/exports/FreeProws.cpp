// FreeProws: frees a row set.
#include "zebstore/base/LiveBlocks.h"
#include "zebstore/base/Memory.h"

void WINAPI FreeProws(LPSRowSet rows)
{
    if (rows == nullptr)
    {
        return;
    }
    if (!zebstore::g_roots.Has(rows))
    {
        return zebstore::CountBadFree("FreeProws", rows);
    }
    for (ULONG i = 0; i < rows->cRows; ++i)
    {
        zebstore::FreeOf(rows->aRow[i].lpProps, "FreeProws");
    }
    zebstore::FreeOf(rows, "FreeProws");
}
