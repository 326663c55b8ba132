// Messages, mail users, distribution lists and plain property objects.
#pragma once

#include "zebapi/objects/Container.h"

/// A message. Its properties are all that is wrapped; for recipients and attachments query GetInterface().
class ZEBAPI_EXPORT CZebMessage : public CZebIProp
{
public:
    const GUID* GetInterfaceCIID() override;
    /// MAPI_MESSAGE.
    ULONG GetMAPIType() override;

protected:
    /// The object's IMessage.
    /// @throws _com_error E_POINTER when empty, E_NOINTERFACE when the object refuses
    virtual zeb::CComPtr<IMessage> GetMessageA();

public:
    /// Shares the object of other. Never throws.
    virtual CZebMessage& operator=(const CZebMessage& other);

    /// Adds a reference on prop, which may be null.
    explicit CZebMessage(IMAPIProp* prop = nullptr);
    CZebMessage(const CZebMessage& other);
};

/// A mail user. Opened as IMAPIProp; only the object's type is checked.
class ZEBAPI_EXPORT CZebMailUser : public CZebIProp
{
public:
    const GUID* GetInterfaceCIID() override;
    /// MAPI_MAILUSER.
    ULONG GetMAPIType() override;
    /// Shares the object of other. Never throws.
    virtual CZebMailUser& operator=(const CZebMailUser& other);

    /// Adds a reference on prop, which may be null.
    explicit CZebMailUser(IMAPIProp* prop = nullptr);
    CZebMailUser(const CZebMailUser& other);
};

/// A distribution list.
class ZEBAPI_EXPORT CZebDistList : public CZebContainer
{
public:
    const GUID* GetInterfaceCIID() override;
    /// MAPI_DISTLIST.
    ULONG GetMAPIType() override;

protected:
    /// The object's IDistList.
    /// @throws _com_error E_POINTER when empty, E_NOINTERFACE when the object refuses
    virtual zeb::CComPtr<IDistList> GetDistList();

public:
    /// Shares the object of other. The answer that IsExchange gave before stays. Never throws.
    virtual CZebDistList& operator=(const CZebDistList& other);

    /// Adds a reference on prop, which may be null.
    explicit CZebDistList(IMAPIProp* prop = nullptr);
    /// Shares the object of other; IsExchange starts unasked.
    CZebDistList(const CZebDistList& other);
};

/// Any object whose properties are to be read: every type from MAPI_STORE to MAPI_DISTLIST is accepted.
class ZEBAPI_EXPORT CZebPropObj : public CZebIProp
{
public:
    bool IsMAPITypeAcceptable(unsigned int type) override;

    /// Adds a reference on prop, which may be null.
    explicit CZebPropObj(IMAPIProp* prop = nullptr);
    CZebPropObj(const CZebPropObj& other);
    CZebPropObj& operator=(const CZebPropObj& other);
};
