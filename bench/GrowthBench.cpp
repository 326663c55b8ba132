// attachments, restrict-wide: what one item costs among many, against the same among few.
#include "bench/Benches.h"
#include "bench/Stores.h"

#include <stdexcept>

namespace bench
{

namespace
{

constexpr size_t ContentSize = 100;

/// A new store for messages with attachments; those of all runs stay in it.
class AttachmentStore
{
public:
    explicit AttachmentStore(const std::string& folder)
    {
        const std::string path = folder + "/attachments.zeb";
        DeleteStore(path);
        MakeProfile("attachments", path);
        m_session = Zeb_GetMAPI().OpenSession(nullptr, "attachments");
        m_store = m_session.OpenDefaultMsgStore(nullptr, MDB_WRITE | MAPI_BEST_ACCESS);
        m_inbox = m_store.OpenInboxFolder(MAPI_BEST_ACCESS);
    }
    ~AttachmentStore()
    {
        m_inbox.Free();
        m_store.Free();
        m_session.Logoff(0, 0, 0);
    }
    AttachmentStore(const AttachmentStore&) = delete;
    AttachmentStore& operator=(const AttachmentStore&) = delete;

    /// Creates a message with that many attachments, opens it again and reads each of them.
    void Run(ULONG count)
    {
        const std::string content(ContentSize, 'x');
        CZebBinary entryID;
        {
            CZebMessage message = m_inbox.CreateMessage(0);
            for (ULONG i = 0; i < count; ++i)
            {
                message.AddAttachment(ZEBW("a.txt"), content.data(), static_cast<ULONG>(content.size()));
            }
            message.SaveChanges(KEEP_OPEN_READONLY);
            entryID = message.GetEntryID();
        }
        CZebMessage message;
        m_inbox.OpenEntry(entryID, message, 0);
        CZebRowSet rows;
        message.GetAttachments(rows);
        size_t bytes = 0;
        for (ULONG i = 0; i < rows.Count(); ++i)
        {
            CZebAttachment attachment =
                message.OpenAttachment(static_cast<ULONG>(static_cast<LONG>(rows[i][PR_ATTACH_NUM])), 0);
            CZebPropValArray values;
            attachment.GetProps(values, 1, PR_ATTACH_DATA_BIN);
            bytes += static_cast<const SBinary&>(values[PR_ATTACH_DATA_BIN]).cb;
        }
        if (bytes != count * ContentSize)
        {
            throw std::runtime_error("attachments read " + std::to_string(bytes) + " bytes, not " +
                                     std::to_string(count * ContentSize) + ".");
        }
    }

private:
    CZebSession m_session;
    CZebMsgStore m_store;
    CZebFolder m_inbox;
};

/// Restricts a table to rows whose subject is one of `count` texts, none of which any row has.
void RestrictToTexts(StoreOf& store, ULONG count)
{
    CZebTable table = store.Inbox().GetContentsTable(MAPI_UNICODE);
    CZebRestrictionAllocator any;
    any.Allocate();
    any.CreateOr(count);
    for (ULONG i = 0; i < count; ++i)
    {
        const CStringA text = ("no subject has the number " + std::to_string(i)).c_str();
        any[i].CreateContentA(PR_SUBJECT_A, text, FL_FULLSTRING | FL_IGNORECASE);
    }
    table.Restrict(any, 0);
    if (table.GetRowCount() != 0)
    {
        throw std::runtime_error("restrict-wide found messages.");
    }
}

/// The seconds of `times` runs.
double SecondsOf(ULONG times, const std::function<void()>& body)
{
    return Seconds([&]
    {
        for (ULONG i = 0; i < times; ++i)
        {
            body();
        }
    });
}

} // namespace

Measurement Attachments(const Options& options)
{
    const ULONG few = options.brief ? 20 : 200, times = options.brief ? 10 : 100;
    auto store = std::make_shared<AttachmentStore>(options.folder);
    return {"attachments", 1.3, [=] { return SecondsOf(1, [&] { store->Run(few * times); }); },
            [=] { return SecondsOf(times, [&] { store->Run(few); }); }, options.brief ? 1 : 5};
}

Measurement RestrictWide(const Options& options)
{
    const ULONG few = options.brief ? 10 : 100, times = options.brief ? 10 : 100;
    auto store = std::make_shared<StoreOf>(options.folder, options.brief ? 200 : 1000);
    return {"restrict-wide", 1.3, [=] { return SecondsOf(1, [&] { RestrictToTexts(*store, few * times); }); },
            [=] { return SecondsOf(times, [&] { RestrictToTexts(*store, few); }); }, options.brief ? 1 : 5};
}

} // namespace bench
