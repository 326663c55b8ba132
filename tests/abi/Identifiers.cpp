// Interface identifiers and property sets.
#include "tests/abi/Dump.h"

#include "platform/mapi.h"

#include <mapiguid.h>

#include <cstdio>

namespace abidump
{
namespace
{

void Fact(std::string& out, const char* name, const GUID& id)
{
    char text[128];
    std::snprintf(text, sizeof text, "identifier %s %08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X\n", name,
                  static_cast<unsigned>(id.Data1), id.Data2, id.Data3, id.Data4[0], id.Data4[1], id.Data4[2],
                  id.Data4[3], id.Data4[4], id.Data4[5], id.Data4[6], id.Data4[7]);
    out += text;
}

#define IDENTIFIER(name) Fact(out, #name, name)

} // namespace

std::string Identifiers()
{
    std::string out;
    IDENTIFIER(IID_IMAPISession);
    IDENTIFIER(IID_IMAPITable);
    IDENTIFIER(IID_IMAPIAdviseSink);
    IDENTIFIER(IID_IProfAdmin);
    IDENTIFIER(IID_IMsgServiceAdmin);
    IDENTIFIER(IID_IMAPIProp);
    IDENTIFIER(IID_IProfSect);
    IDENTIFIER(IID_IMAPIStatus);
    IDENTIFIER(IID_IMsgStore);
    IDENTIFIER(IID_IMessage);
    IDENTIFIER(IID_IAttachment);
    IDENTIFIER(IID_IAddrBook);
    IDENTIFIER(IID_IMailUser);
    IDENTIFIER(IID_IMAPIContainer);
    IDENTIFIER(IID_IMAPIFolder);
    IDENTIFIER(IID_IABContainer);
    IDENTIFIER(IID_IDistList);
    IDENTIFIER(IID_IMAPIProgress);
    IDENTIFIER(IID_IMAPISup);
    IDENTIFIER(IID_IUnknown);
    IDENTIFIER(IID_IStream);
    IDENTIFIER(PS_MAPI);
    IDENTIFIER(PS_PUBLIC_STRINGS);
    return out;
}

} // namespace abidump
