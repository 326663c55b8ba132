// A host that asks wrapped objects for MAPI's own interfaces, and catches everything the library throws.
#include "zebapi/ZebAPI.h"

#include <cstdio>

int main()
{
    CZebMessage message;
    CComPtr<IMessage> message_interface;
    try
    {
        message.GetInterface().QueryInterface(IID_IMessage, message_interface);
    }
    catch (...)
    {
        std::printf("%s\n", Zeb_DescribeCurrentException().GetString());
    }
    for (const IID* iid : {&IID_IMsgStore, &IID_IMAPIFolder, &IID_IAttachment, &IID_IAddrBook, &IID_IProfAdmin})
    {
        std::printf("%08lX\n", static_cast<unsigned long>(iid->Data1));
    }
    try
    {
        Zeb_GetMAPI().OpenSession(nullptr, nullptr);
    }
    catch (...)
    {
        std::fprintf(stderr, "%s\n", Zeb_DescribeCurrentException().GetString());
        return 1;
    }
}
