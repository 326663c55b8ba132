// The rows of a store's messages, and the same rows inserted by prepared statements.
#pragma once

#include "bench/Sql.h"

#include <array>
#include <string>
#include <vector>

namespace bench
{

/// The messages of a store without attachments and large values.
class StoredMessages
{
public:
    /// @throws std::runtime_error unless the store holds `count` such messages
    StoredMessages(const std::string& path, size_t count);

    /// Inserts them into an empty store, one transaction each, without the provider's index by date.
    void InsertInto(const std::string& path) const;

private:
    struct Keyed
    {
        long long message;
        StoredRow row;
    };
    static constexpr size_t Tables = 2; // message, recipient

    std::array<std::vector<Keyed>, Tables> m_rows;
};

} // namespace bench
