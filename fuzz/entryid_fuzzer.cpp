// Entry identifiers: any bytes are classified and dumped; nothing is thrown, lost or read beyond the end.
#include "fuzz/Require.h"
#include "tests/support/MapiMemory.h"
#include "zebapi/Binary.h"
#include "zebapi/EntryIDInfo.h"

#include <cstdint>
#include <cstring>

namespace
{

void Examine(const std::uint8_t* data, size_t size)
{
    CZebBinary identifier(static_cast<ULONG>(size), const_cast<std::uint8_t*>(data));
    const zeb::CEntryIDInfo info(identifier);
    const zeb::CEntryIDInfo copy(info);
    const CStringA dump = info.Dump("");
    Require(dump == copy.Dump(""), "a copy dumps the same");
    Require(std::strncmp(dump, "CEntryIDInfo\r\n", 14) == 0, "a dump begins with its name");
    Require(info.Unread() <= size, "the unread part is not larger than the input");
    CStringA hex = identifier.String();
    if (size != 0)
    {
        Require(CZebBinary::DumpEntryID(hex) == dump, "the dump of the text is the dump of the bytes");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    zeb::test::MapiMemory memory;
    Examine(data, size);
    Require(memory.LiveRoots() == 0, "all MAPI memory was freed");
    return 0;
}
