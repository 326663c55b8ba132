#include "zebstore/objects/PartsCopy.h"

#include "zebstore/objects/FolderContents.h"
#include "zebstore/objects/Interfaces.h"
#include "zebstore/objects/OwnFolder.h"

#include <vector>

namespace zebstore
{
namespace
{

/// The rows of a newly opened table; freed by the destructor.
class OpenedRows
{
public:
    explicit OpenedRows(IMAPITable* table, SPropTagArray* columns = nullptr)
        : m_table(Ref<IMAPITable>::Adopt(table))
    {
        Check(HrQueryAllRows(table, columns, nullptr, nullptr, 0, &m_rows), "the table cannot be read");
    }
    ~OpenedRows() { FreeProws(m_rows); }
    OpenedRows(const OpenedRows&) = delete;
    OpenedRows& operator=(const OpenedRows&) = delete;

    SRowSet* Get() const { return m_rows; }
    ULONG Count() const { return m_rows->cRows; }
    const SPropValue& First(ULONG row) const { return m_rows->aRow[row].lpProps[0]; }

private:
    const Ref<IMAPITable> m_table;
    LPSRowSet m_rows = nullptr;
};

std::vector<ULONG> AttachmentNumbersOf(IMessage& message)
{
    IMAPITable* table = nullptr;
    Check(message.GetAttachmentTable(MAPI_UNICODE, &table), "the attachments cannot be listed");
    SizedSPropTagArray(1, columns) = {1, {PR_ATTACH_NUM}};
    const OpenedRows rows(table, reinterpret_cast<LPSPropTagArray>(&columns));
    std::vector<ULONG> numbers;
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        numbers.push_back(static_cast<ULONG>(rows.First(i).Value.l));
    }
    return numbers;
}

IMAPITable* RecipientsOf(IMessage& message)
{
    IMAPITable* table = nullptr;
    Check(message.GetRecipientTable(MAPI_UNICODE, &table), "the recipients cannot be read");
    return table;
}

bool NamesContainerParts(const CopyRequest& request)
{
    return Covers(request, PR_CONTAINER_CONTENTS) || Covers(request, PR_CONTAINER_HIERARCHY) ||
           Covers(request, PR_FOLDER_ASSOCIATED_CONTENTS);
}

bool IsContainer(IMAPIProp* object)
{
    return static_cast<bool>(Ask<IMAPIContainer>(object, IID_IMAPIContainer));
}

FolderContents ContentsToCopy(const CopyRequest& request, const OwnFolder& from, const OwnFolder& to)
{
    FolderContents contents{from.StoreOfFolder(), from.Id(), to.StoreOfFolder(), to.Id()};
    contents.messages = Covers(request, PR_CONTAINER_CONTENTS);
    contents.associated = Covers(request, PR_FOLDER_ASSOCIATED_CONTENTS);
    contents.subfolders = Covers(request, PR_CONTAINER_HIERARCHY);
    contents.move = (request.flags & MAPI_MOVE) != 0;
    return contents;
}

} // namespace

PartsCopy::PartsCopy(const CopyRequest& request)
    : m_request(request)
    , m_fromMessage(request.parts ? Ask<IMessage>(request.source, IID_IMessage) : Ref<IMessage>())
    , m_toMessage(request.parts ? Ask<IMessage>(request.target, IID_IMessage) : Ref<IMessage>())
    , m_containers(request.parts && NamesContainerParts(request) &&
                   (request.include != nullptr || IsContainer(request.source)))
{
    if (m_containers)
    {
        RequireTarget();
    }
}

void PartsCopy::RequireTarget() const
{
    const OwnFolder* from = AsOwnFolder(m_request.source);
    const OwnFolder* to = AsOwnFolder(m_request.target);
    if (from != nullptr && to != nullptr)
    {
        to->RequireChanges();
        RequireContentsFit(ContentsToCopy(m_request, *from, *to));
        return;
    }
    const bool lists =
        Ask<IDistList>(m_request.source, IID_IDistList) && Ask<IDistList>(m_request.target, IID_IDistList);
    if (!lists)
    {
        throw Error(MAPI_E_NO_SUPPORT, "the content of a container can be copied neither from this object nor "
                                       "to an object of this kind or of another provider");
    }
}

void PartsCopy::Run()
{
    if (m_fromMessage && m_toMessage)
    {
        if (Covers(m_request, PR_MESSAGE_RECIPIENTS))
        {
            CopyRecipients();
        }
        if (Covers(m_request, PR_MESSAGE_ATTACHMENTS))
        {
            CopyAttachments();
        }
    }
    if (m_request.parts)
    {
        CopyEmbedded();
    }
    if (!m_containers)
    {
        return;
    }
    const OwnFolder* from = AsOwnFolder(m_request.source);
    const OwnFolder* to = AsOwnFolder(m_request.target);
    if (from != nullptr && to != nullptr)
    {
        CopyFolderContents(ContentsToCopy(m_request, *from, *to), m_request.progress);
    }
    else if (Covers(m_request, PR_CONTAINER_CONTENTS))
    {
        CopyMembers();
    }
}

void PartsCopy::CopyRecipients()
{
    // A row set and a list of recipients have the same layout.
    const OpenedRows from(RecipientsOf(*m_fromMessage));
    const bool has = OpenedRows(RecipientsOf(*m_toMessage)).Count() > 0;
    if (has ? (m_request.flags & MAPI_NOREPLACE) != 0 : from.Count() == 0)
    {
        return;
    }
    Check(m_toMessage->ModifyRecipients(0, reinterpret_cast<LPADRLIST>(from.Get())),
          "the target refused the recipients");
    m_recipientsCopied = true;
}

void PartsCopy::CopyAttachments()
{
    const std::vector<ULONG> old = AttachmentNumbersOf(*m_toMessage);
    if (!old.empty() && (m_request.flags & MAPI_NOREPLACE))
    {
        return;
    }
    for (const ULONG number : AttachmentNumbersOf(*m_fromMessage))
    {
        CopyAttachment(number);
    }
    for (const ULONG number : old)
    {
        Check(m_toMessage->DeleteAttach(number, 0, nullptr, 0), "an attachment cannot be replaced");
    }
    m_attachmentsCopied = true;
}

void PartsCopy::CopyAttachment(ULONG number)
{
    IAttach* from = nullptr;
    IAttach* to = nullptr;
    ULONG newNumber = 0;
    Check(m_fromMessage->OpenAttach(number, nullptr, 0, &from), "an attachment cannot be opened");
    const Ref<IAttach> fromOwner = Ref<IAttach>::Adopt(from);
    Check(m_toMessage->CreateAttach(nullptr, 0, &newNumber, &to), "an attachment cannot be created");
    const Ref<IAttach> toOwner = Ref<IAttach>::Adopt(to);
    Check(from->CopyTo(0, nullptr, nullptr, 0, nullptr, &IID_IAttachment, to, 0, nullptr),
          "an attachment cannot be copied");
    Check(to->SaveChanges(KEEP_OPEN_READWRITE), "the copy of an attachment cannot be saved");
}

void PartsCopy::CopyEmbedded()
{
    if (!Covers(m_request, PR_ATTACH_DATA_OBJ) || !Ask<IAttach>(m_request.source, IID_IAttachment) ||
        !Ask<IAttach>(m_request.target, IID_IAttachment))
    {
        return;
    }
    IUnknown* from = nullptr;
    IUnknown* to = nullptr;
    HRESULT result = m_request.source->OpenProperty(PR_ATTACH_DATA_OBJ, &IID_IMessage, 0, 0, &from);
    if (result == MAPI_E_NOT_FOUND)
    {
        return;
    }
    Check(result, "the embedded message cannot be opened");
    const Ref<IUnknown> fromOwner = Ref<IUnknown>::Adopt(from);
    if (m_request.flags & MAPI_NOREPLACE)
    {
        result = m_request.target->OpenProperty(PR_ATTACH_DATA_OBJ, &IID_IMessage, 0, 0, &to);
        const Ref<IUnknown> there = Ref<IUnknown>::Adopt(std::exchange(to, nullptr));
        if (SUCCEEDED(result))
        {
            return;
        }
    }
    Check(m_request.target->OpenProperty(PR_ATTACH_DATA_OBJ, &IID_IMessage, 0, MAPI_CREATE | MAPI_MODIFY, &to),
          "the embedded message cannot be created");
    const Ref<IUnknown> toOwner = Ref<IUnknown>::Adopt(to);
    Check(static_cast<IMessage*>(from)->CopyTo(0, nullptr, nullptr, 0, nullptr, &IID_IMessage, to, 0, nullptr),
          "the embedded message cannot be copied");
    Check(static_cast<IMessage*>(to)->SaveChanges(KEEP_OPEN_READWRITE), "the embedded message cannot be saved");
}

void PartsCopy::CopyMembers()
{
    const Ref<IDistList> from = Ask<IDistList>(m_request.source, IID_IDistList);
    const Ref<IDistList> to = Ask<IDistList>(m_request.target, IID_IDistList);
    IMAPITable* table = nullptr;
    Check(from->GetContentsTable(MAPI_UNICODE, &table), "the members cannot be read");
    SizedSPropTagArray(1, columns) = {1, {PR_ENTRYID}};
    const OpenedRows rows(table, reinterpret_cast<LPSPropTagArray>(&columns));
    std::vector<SBinary> ids;
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        ids.push_back(rows.First(i).Value.bin);
    }
    ENTRYLIST list = {static_cast<ULONG>(ids.size()), ids.data()};
    if (!ids.empty())
    {
        Check(to->CopyEntries(&list, 0, nullptr, AB_NO_DIALOG), "the target refused the members");
    }
    if (!ids.empty() && (m_request.flags & MAPI_MOVE))
    {
        Check(from->DeleteEntries(&list, 0), "the members cannot be deleted from the source");
    }
}

void PartsCopy::TakeFromSource()
{
    ADRLIST none{};
    if (m_recipientsCopied)
    {
        Check(m_fromMessage->ModifyRecipients(0, &none), "the recipients cannot be deleted from the source");
    }
    if (m_attachmentsCopied)
    {
        for (const ULONG number : AttachmentNumbersOf(*m_fromMessage))
        {
            Check(m_fromMessage->DeleteAttach(number, 0, nullptr, 0),
                  "an attachment cannot be deleted from the source");
        }
    }
}

} // namespace zebstore
