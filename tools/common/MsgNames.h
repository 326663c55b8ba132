// The names of a .msg file's named properties.
#pragma once

#include "tools/common/MsgFormat.h"
#include "tools/common/Property.h"

#include <map>
#include <string>
#include <vector>

namespace zeb::tools
{

/// Gives the named properties of one file their identifiers, and writes the table of their names.
class MsgNames
{
public:
    /// The identifier of a name in this file, from 0x8000; 0 when there are too many names.
    ULONG IdOf(const PropertyName& name);
    /// Writes the table into the top folder of the file. @throws platform::CompoundError
    void Write(platform::CompoundOutput& top) const;

private:
    struct Entry
    {
        ULONG first = 0; ///< the number of the name, or the position of its text
        ULONG hashed = 0;
        ULONG second = 0; ///< its kind, its property set and its index
    };

    unsigned SetOf(const GUID& set);

    std::map<std::string, ULONG> m_ids;
    std::vector<GUID> m_sets;
    std::vector<Entry> m_entries;
    std::string m_texts;
};

/// Reads the table of names. @param top the top folder of the file
/// @return the name of each identifier from 0x8000; empty for entries that are damaged
/// @throws platform::CompoundError
std::vector<std::optional<PropertyName>> ReadMsgNames(platform::CompoundFolder& top);

/// The bytes of a stream; empty when the folder does not have it. @throws platform::CompoundError
std::string MsgStream(platform::CompoundFolder& folder, const std::string& name);

} // namespace zeb::tools
