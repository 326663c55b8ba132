#include "zebstore/storage/StoreConnection.h"

namespace zebstore
{

StoreConnection::StoreConnection(std::unique_ptr<Database> database, bool readOnly, std::int64_t version)
    : m_database(std::move(database))
    , m_readOnly(readOnly)
    , m_version(version)
{
}

void StoreConnection::RequireWritable() const
{
    if (m_readOnly)
    {
        throw Error(MAPI_E_NO_ACCESS, "The store file '" + Path() + "' is open for reading only.");
    }
}

} // namespace zebstore
