#include "zebapi/objects/Message.h"

#include "zebapi/frame/internal/Blocks.h"
#include "zebapi/frame/internal/Calls.h"
#include "zebapi/frame/internal/Subject.h"
#include "zebapi/objects/internal/OneOff.h"
#include "zebapi/objects/internal/SaveFlags.h"
#include "zebapi/objects/internal/Streams.h"
#include "zebapi/values/PROPVALArray.h"
#include "zebapi/values/TAGS.h"

#include <cstddef>

namespace
{

// Of an attachment that is not shown inside the text.
constexpr LONG NotInTheText = -1;

bool IsEmpty(const WCHAR* text)
{
    return text == nullptr || *text == 0;
}

void RequireArgument(bool holds, const char* file = ZEB_FILE, int line = ZEB_LINE, const char* operation = ZEB_CALLER)
{
    if (!holds)
    {
        CZebException::Throw(MAPI_E_INVALID_PARAMETER, file, line, operation);
    }
}

/// Hands one recipient to the message. The values stay the caller's.
void ModifyRecipient(IMessage& message, ULONG how, CZebPropValArray& values, const char* operation)
{
    values.TruncateToExisting();
    const zeb::Block<ADRLIST> list(zeb::Allocate<ADRLIST>(static_cast<ULONG>(CbNewADRLIST(1)), nullptr));
    list->cEntries = 1;
    list->aEntries[0].cValues = values.Count();
    list->aEntries[0].rgPropVals = values;
    ThrowIfFailed(message.ModifyRecipients(how, list.get()), &message, ZEB_FILE, ZEB_LINE, operation);
}

template <std::size_t Count>
void ReadAll(CZebTable table, const ULONG (&tags)[Count], CZebRowSet& rows)
{
    CZebPropTagArray columns;
    for (const ULONG tag : tags)
    {
        columns.AddOne(tag);
    }
    table.SetColumns(static_cast<SPropTagArray*>(columns));
    table.QueryAllRows(&rows, nullptr, nullptr);
}

CZebTable TableOf(const CComPtr<IMAPITable>& table, const char* operation = ZEB_CALLER)
{
    zeb::RequireObject(static_cast<bool>(table), ZEB_FILE, ZEB_LINE, operation);
    return CZebTable(table.Get());
}

/// Adds an attachment whose content `write` writes, and saves it.
template <class Write>
ULONG Attach(CZebMessage& message, const WCHAR* fileName, Write write)
{
    return zeb::AboutName(fileName, [&]
    {
        ULONG number = 0;
        CZebAttachment attachment = message.CreateAttachment(&number);
        attachment.SetFileName(fileName);
        write(attachment);
        attachment.SaveChanges(SaveFlags);
        return number;
    });
}

} // namespace

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

CZebTable CZebMessage::GetRecipientTable(ULONG flags)
{
    const CComPtr<IMessage> message = GetMessageA();
    CComPtr<IMAPITable> table;
    ThrowIfFailed(message->GetRecipientTable(flags, table.Put()), message);
    return TableOf(table);
}

void CZebMessage::GetRecipients(CZebRowSet& rows)
{
    ReadAll(GetRecipientTable(),
            {PR_ROWID, PR_RECIPIENT_TYPE, PR_DISPLAY_NAME_W, PR_ADDRTYPE_W, PR_EMAIL_ADDRESS_W, PR_ENTRYID}, rows);
}

void CZebMessage::AddRecipient(ULONG type, const WCHAR* name, const WCHAR* address, const WCHAR* addressType)
{
    const bool isResolved = !IsEmpty(address);
    RequireArgument(isResolved ? !IsEmpty(addressType) : !IsEmpty(name));
    const CComPtr<IMessage> message = GetMessageA();
    const WCHAR* const shown = IsEmpty(name) ? address : name;
    CZebPropValArray values(6);
    values[PR_RECIPIENT_TYPE] = type;
    values[PR_DISPLAY_NAME_W] = shown;
    if (isResolved)
    {
        values[PR_ADDRTYPE_W] = addressType;
        values[PR_EMAIL_ADDRESS_W] = address;
        values[PR_ENTRYID] = zeb::OneOffEntryID(shown, addressType, address);
        values[PR_SEARCH_KEY] = zeb::AddressSearchKey(addressType, address);
    }
    const char* const operation = __func__;
    zeb::AboutName(shown, [&] { ModifyRecipient(*message, MODRECIP_ADD, values, operation); });
}

void CZebMessage::AddRecipients(ULONG count, CZebPropValArray* const* recipients)
{
    RequireArgument(count == 0 || recipients != nullptr);
    const CComPtr<IMessage> message = GetMessageA();
    const zeb::Block<ADRLIST> list(
        zeb::Allocate<ADRLIST>(zeb::BlockSize(offsetof(ADRLIST, aEntries), count, sizeof(ADRENTRY)), nullptr));
    for (; list->cEntries < count; ++list->cEntries)
    {
        CZebPropValArray& values = *recipients[list->cEntries];
        values.TruncateToExisting();
        ADRENTRY& entry = list->aEntries[list->cEntries];
        entry.cValues = values.Count();
        entry.rgPropVals = values.IsValid() ? static_cast<SPropValue*>(values) : nullptr;
    }
    zeb::ThrowIfFailedAbout([count] { return zeb::CountText(count, "recipient"); },
                            message->ModifyRecipients(MODRECIP_ADD, list.get()), message);
}

void CZebMessage::RemoveRecipient(ULONG rowID)
{
    const CComPtr<IMessage> message = GetMessageA();
    CZebPropValArray values(1);
    values[PR_ROWID] = rowID;
    const char* const operation = __func__;
    zeb::About([rowID] { return zeb::NumberText("recipient", rowID); },
               [&] { ModifyRecipient(*message, MODRECIP_REMOVE, values, operation); });
}

CZebTable CZebMessage::GetAttachmentTable(ULONG flags)
{
    const CComPtr<IMessage> message = GetMessageA();
    CComPtr<IMAPITable> table;
    ThrowIfFailed(message->GetAttachmentTable(flags, table.Put()), message);
    return TableOf(table);
}

void CZebMessage::GetAttachments(CZebRowSet& rows)
{
    ReadAll(GetAttachmentTable(),
            {PR_ATTACH_NUM, PR_ATTACH_METHOD, PR_ATTACH_SIZE, PR_ATTACH_LONG_FILENAME_W, PR_ATTACH_FILENAME_W,
             PR_DISPLAY_NAME_W},
            rows);
}

CZebAttachment CZebMessage::OpenAttachment(ULONG number, ULONG flags)
{
    const CComPtr<IMessage> message = GetMessageA();
    CComPtr<IAttach> attachment;
    zeb::ThrowIfFailedAbout([number] { return zeb::NumberText("attachment", number); },
                            message->OpenAttach(number, nullptr, flags, attachment.Put()), message);
    zeb::RequireObject(static_cast<bool>(attachment));
    return CZebAttachment(attachment.Get());
}

CZebAttachment CZebMessage::CreateAttachment(ULONG* number)
{
    const CComPtr<IMessage> message = GetMessageA();
    CComPtr<IAttach> attachment;
    ULONG created = 0;
    ThrowIfFailed(message->CreateAttach(nullptr, 0, &created, attachment.Put()), message);
    zeb::RequireObject(static_cast<bool>(attachment));
    if (number != nullptr)
    {
        *number = created;
    }
    return CZebAttachment(attachment.Get());
}

ULONG CZebMessage::AddAttachment(const WCHAR* fileName, const void* bytes, ULONG size)
{
    RequireArgument(!IsEmpty(fileName) && (size == 0 || bytes != nullptr));
    return Attach(*this, fileName, [&](CZebAttachment& attachment) { attachment.SetContent(bytes, size); });
}

ULONG CZebMessage::AddAttachment(const WCHAR* fileName, IStream* content)
{
    RequireArgument(!IsEmpty(fileName) && content != nullptr);
    return Attach(*this, fileName, [&](CZebAttachment& attachment) { attachment.SetContent(content); });
}

void CZebMessage::DeleteAttachment(ULONG number)
{
    const CComPtr<IMessage> message = GetMessageA();
    zeb::ThrowIfFailedAbout([number] { return zeb::NumberText("attachment", number); },
                            message->DeleteAttach(number, 0, nullptr, 0), message);
}

void CZebMessage::SetReadFlag(ULONG flags)
{
    const CComPtr<IMessage> message = GetMessageA();
    ThrowIfFailed(message->SetReadFlag(flags), message);
}

CZebAttachment::CZebAttachment(IMAPIProp* prop)
    : CZebIProp(prop)
{
}

CZebAttachment::CZebAttachment(const CZebAttachment& other) = default;

CZebAttachment& CZebAttachment::operator=(const CZebAttachment& other) = default;

const GUID* CZebAttachment::GetInterfaceCIID()
{
    return &IID_IAttachment;
}

ULONG CZebAttachment::GetMAPIType()
{
    return MAPI_ATTACH;
}

void CZebAttachment::SetFileName(const WCHAR* fileName)
{
    RequireArgument(!IsEmpty(fileName));
    CZebPropValArray values(4);
    values[PR_ATTACH_METHOD] = static_cast<LONG>(ATTACH_BY_VALUE);
    values[PR_ATTACH_LONG_FILENAME_W] = fileName;
    values[PR_DISPLAY_NAME_W] = fileName;
    values[PR_RENDERING_POSITION] = NotInTheText;
    SetProps(values, false, nullptr);
}

void CZebAttachment::SetContent(const void* bytes, ULONG size)
{
    RequireArgument(size == 0 || bytes != nullptr);
    const CComPtr<IStream> stream = OpenProperty(PR_ATTACH_DATA_BIN, MAPI_CREATE | MAPI_MODIFY);
    zeb::WriteAll(*stream, static_cast<const BYTE*>(bytes), size);
    ThrowIfFailed(stream->Commit(STGC_DEFAULT));
}

void CZebAttachment::SetContent(IStream* content)
{
    RequireArgument(content != nullptr);
    const CComPtr<IStream> stream = OpenProperty(PR_ATTACH_DATA_BIN, MAPI_CREATE | MAPI_MODIFY);
    zeb::CopyStream(*stream, *content);
    ThrowIfFailed(stream->Commit(STGC_DEFAULT));
}

void CZebAttachment::SaveTo(IStream* target)
{
    RequireArgument(target != nullptr);
    const CComPtr<IStream> stream = OpenProperty(PR_ATTACH_DATA_BIN, 0);
    zeb::CopyStream(*target, *stream);
}

CZebMessage CZebAttachment::OpenMessage(ULONG flags)
{
    CZebMessage message;
    ThrowIfFailed(Prop()->OpenProperty(PR_ATTACH_DATA_OBJ, &IID_IMessage, 0, flags, &message), Prop());
    zeb::RequireObject(message.IsValid());
    return message;
}

CZebMessage CZebAttachment::CreateMessage()
{
    CZebPropValArray values(2);
    values[PR_ATTACH_METHOD] = static_cast<LONG>(ATTACH_EMBEDDED_MSG);
    values[PR_RENDERING_POSITION] = NotInTheText;
    SetProps(values, false, nullptr);
    return OpenMessage(MAPI_CREATE | MAPI_MODIFY);
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
    // Not the container's operator: the cached result of IsExchange of the previous list stays.
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
