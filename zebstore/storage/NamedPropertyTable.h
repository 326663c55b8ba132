// The table `named`: the named properties of a store file.
#pragma once

#include "platform/mapi.h"
#include "platform/text.h"
#include "zebstore/storage/StoreConnection.h"

#include <optional>
#include <vector>

namespace zebstore
{

struct PropertyName
{
    ULONG id = 0;
    GUID set{};
    std::optional<LONG> number;     ///< MNID_ID
    zeb::platform::WideString name; ///< MNID_STRING, when there is no number
};

/// Maps names to property identifiers, 0x8000 to 0xFFFE, which stay the same for the life of the file. Threads: any;
/// the connection's lock is taken inside.
class NamedPropertyTable
{
public:
    explicit NamedPropertyTable(StoreConnection& connection)
        : m_connection(connection)
    {
    }

    /// @param create gives a new name a number. @return property identifiers, 0 for an unknown name
    /// @throws Error 0x80040900 (MAPI_E_NAMED_PROP_QUOTA_EXCEEDED) when all numbers are used up
    std::vector<ULONG> Ids(const MAPINAMEID* const* names, size_t count, bool create);
    std::optional<PropertyName> Name(ULONG id);
    /// All names, in the order of their numbers.
    std::vector<PropertyName> All();

private:
    StoreConnection& m_connection;
};

} // namespace zebstore
