#include "zebstore/objects/MemoryTable.h"

#include "zebstore/tables/Table.h"

namespace zebstore
{

IMAPITable* NewMemoryTable(std::vector<PropertySet> rows, std::vector<ULONG> defaultColumns, ULONG flags)
{
    TableOptions options;
    options.unicode = (flags & MAPI_UNICODE) != 0;
    options.type = TBLTYPE_SNAPSHOT;
    auto source = std::make_shared<MemoryRows>(std::move(rows), std::move(defaultColumns));
    return CreateTable(std::move(source), options).Detach();
}

IMAPITable* TableOver(const std::shared_ptr<MemoryRows>& rows, ULONG flags)
{
    TableOptions options;
    options.unicode = (flags & MAPI_UNICODE) != 0;
    options.type = TBLTYPE_DYNAMIC;
    return CreateTable(rows, options).Detach();
}

} // namespace zebstore
