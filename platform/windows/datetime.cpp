#include "platform/datetime.h"

#include "platform/text.h"

#include <memory>

namespace zeb::platform
{
namespace
{

bool SameSecond(const SYSTEMTIME& a, const SYSTEMTIME& b)
{
    return a.wYear == b.wYear && a.wMonth == b.wMonth && a.wDay == b.wDay && a.wHour == b.wHour &&
           a.wMinute == b.wMinute && a.wSecond == b.wSecond;
}

/// The OLE date of a local time; empty when an OLE date cannot represent it to the second.
std::optional<DATE> OleDate(SYSTEMTIME local)
{
    // Dropped first: half a second would round up.
    local.wMilliseconds = 0;
    DATE date = 0;
    SYSTEMTIME back = {};
    if (!SystemTimeToVariantTime(&local, &date) || !VariantTimeToSystemTime(date, &back) || !SameSecond(local, back))
    {
        return std::nullopt;
    }
    return date;
}

} // namespace

std::optional<std::string> LocalDateText(const FILETIME& time)
{
    FILETIME localFileTime = {};
    SYSTEMTIME local = {};
    if (!FileTimeToLocalFileTime(&time, &localFileTime) || !FileTimeToSystemTime(&localFileTime, &local))
    {
        return std::nullopt;
    }
    const std::optional<DATE> date = OleDate(local);
    BSTR made = nullptr;
    if (!date || FAILED(VarBstrFromDate(*date, LOCALE_USER_DEFAULT, 0, &made)))
    {
        return std::nullopt;
    }
    const std::unique_ptr<OLECHAR, decltype(&SysFreeString)> text(made, &SysFreeString);
    return NarrowFromWide(text.get(), SysStringLen(text.get()));
}

FILETIME CurrentFileTime()
{
    FILETIME time = {};
    GetSystemTimeAsFileTime(&time);
    return time;
}

} // namespace zeb::platform
