#include "zebapi/objects/Message.h"

CZebMessage::CZebMessage(IMAPIProp* prop)
    : CZebIProp(prop)
{
}

CZebMessage::CZebMessage(const CZebMessage& other)
    : CZebIProp(nullptr)
{
    CZebMessage::operator=(other);
}

const GUID* CZebMessage::GetInterfaceCIID()
{
    return &IID_IMessage;
}

ULONG CZebMessage::GetMAPIType()
{
    return MAPI_MESSAGE;
}

CComPtr<IMessage> CZebMessage::GetMessageA()
{
    return QueryFor<IMessage>(IID_IMessage);
}

CZebMessage& CZebMessage::operator=(const CZebMessage& other)
{
    CZebIProp::operator=(other);
    return *this;
}

CZebMailUser::CZebMailUser(IMAPIProp* prop)
    : CZebIProp(prop)
{
}

CZebMailUser::CZebMailUser(const CZebMailUser& other)
    : CZebIProp(nullptr)
{
    CZebMailUser::operator=(other);
}

const GUID* CZebMailUser::GetInterfaceCIID()
{
    return &IID_IMAPIProp;
}

ULONG CZebMailUser::GetMAPIType()
{
    return MAPI_MAILUSER;
}

CZebMailUser& CZebMailUser::operator=(const CZebMailUser& other)
{
    CZebIProp::operator=(other);
    return *this;
}

CZebDistList::CZebDistList(IMAPIProp* prop)
    : CZebContainer(prop)
{
}

CZebDistList::CZebDistList(const CZebDistList& other)
    : CZebContainer(nullptr)
{
    CZebDistList::operator=(other);
}

const GUID* CZebDistList::GetInterfaceCIID()
{
    return &IID_IDistList;
}

ULONG CZebDistList::GetMAPIType()
{
    return MAPI_DISTLIST;
}

CComPtr<IDistList> CZebDistList::GetDistList()
{
    return QueryFor<IDistList>(IID_IDistList);
}

CZebDistList& CZebDistList::operator=(const CZebDistList& other)
{
    // Not the container's: what IsExchange found out about the list held before stays.
    CZebIProp::operator=(other);
    return *this;
}

CZebPropObj::CZebPropObj(IMAPIProp* prop)
    : CZebIProp(prop)
{
}

CZebPropObj::CZebPropObj(const CZebPropObj& other) = default;

CZebPropObj& CZebPropObj::operator=(const CZebPropObj& other) = default;

bool CZebPropObj::IsMAPITypeAcceptable(unsigned int type)
{
    return type >= MAPI_STORE && type <= MAPI_DISTLIST;
}
