// CZebIProp: the display name.
#include "zebapi/objects/IProp.h"
#include "zebapi/values/PROPVALArray.h"

CStringA CZebIProp::GetDisplayNameA()
{
    return GetStringPropA(GetDisplayNameTag(false));
}

CStringW CZebIProp::GetDisplayNameW()
{
    return GetStringPropW(GetDisplayNameTag(true));
}

CStringA CZebIProp::GetDisplayName()
{
    return GetStringProp(GetDisplayNameTag(false));
}

void CZebIProp::SetDisplayNameA(const char* name)
{
    CZebPropValArray values(1);
    values[GetDisplayNameTag(false)] = name;
    SetProps(values, true, nullptr);
}

void CZebIProp::SetDisplayNameW(const WCHAR* name)
{
    CZebPropValArray values(1);
    values[GetDisplayNameTag(true)] = name;
    SetProps(values, true, nullptr);
}

void CZebIProp::SetDisplayName(const char* name)
{
    SetDisplayNameA(name);
}

ULONG CZebIProp::GetDisplayNameTag(bool unicode) const
{
    return unicode ? PR_DISPLAY_NAME_W : PR_DISPLAY_NAME_A;
}
