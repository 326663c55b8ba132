#include "zebapi/values/internal/PropDump.h"

#include "zebapi/constants/NameLookup.h"

namespace zeb
{

namespace
{

/// The constant's name and a tab; a constant without a name as a number.
CStringA NameOrNumber(const char* table, ULONG value)
{
    CStringA text;
    if (const char* name = Zeb_NameFromValue(table, value))
    {
        text.Format("%s\t", name);
    }
    else
    {
        text.Format("%#04X\t", static_cast<unsigned int>(value));
    }
    return text;
}

} // namespace

CStringA DumpLine(const CZebOnePropVal& value)
{
    constexpr int MaxValueLength = 256;
    CStringA line = NameOrNumber("PropIDs", value.GetPropID());
    line += NameOrNumber("PropType", value.GetType());
    line += value.StringConversionPossible() ? value.String(false).Left(MaxValueLength)
                                             : CStringA("<No string conversion>");
    return line;
}

} // namespace zeb
