// Invalid identifiers in every call that accepts one: a clear error, an empty target, and no change.
#include "tests/integration/Host.h"

#include <functional>
#include <random>
#include <vector>

namespace zeb::test
{
namespace
{

using Bytes = std::vector<BYTE>;

class BadIdentifier : public StoreHost
{
protected:
    BadIdentifier()
    {
        AddMessage("the only one", 1);
        CZebTable table = Contents();
        table.SetColumns(1, PR_ENTRYID);
        CZebRowSet rows;
        table.QueryRows(&rows, 0, nullptr, nullptr);
        m_message = BytesOf(rows[0][PR_ENTRYID]);
        m_folder = BytesOf(Inbox().GetEntryID());
        m_storeId = BytesOf(m_store->GetEntryID());
        m_inbox = Inbox();
    }

    static Bytes BytesOf(const SBinary& id) { return Bytes(id.lpb, id.lpb + id.cb); }
    static SBinary Binary(const Bytes& id) { return {static_cast<ULONG>(id.size()), const_cast<BYTE*>(id.data())}; }

    /// Opens by session, store and folder; each must refuse with one of `codes` and an error text.
    void ExpectRefused(const Bytes& id, const std::vector<HRESULT>& codes, const std::string& what)
    {
        const std::function<void(CZebIProp&)> openers[] = {
            [&](CZebIProp& target) { m_session->OpenEntry(Binary(id), target, MAPI_BEST_ACCESS); },
            [&](CZebIProp& target) { m_store->OpenEntry(Binary(id), target, MAPI_BEST_ACCESS); },
            [&](CZebIProp& target) { m_inbox.OpenEntry(Binary(id), target, MAPI_BEST_ACCESS); },
        };
        for (size_t i = 0; i < 3; ++i)
        {
            CZebPropObj target(m_inbox.GetInterface().Get());
            const Failure thrown = FailureOf([&] { openers[i](target); });
            bool known = false;
            for (const HRESULT code : codes)
            {
                known = known || code == thrown.result;
            }
            EXPECT_TRUE(known) << what << ", opener " << i << ": " << std::hex << thrown.result;
            EXPECT_NE(thrown.text.find(' '), std::string::npos) << "no sentence: " << thrown.text;
            EXPECT_FALSE(target.IsValid()) << what << ", opener " << i;
        }
    }

    Bytes m_message;
    Bytes m_folder;
    Bytes m_storeId;
    CZebFolder m_inbox;
};

TEST_F(BadIdentifier, CutAtEveryLengthIsRefused)
{
    for (const Bytes* id : {&m_message, &m_folder, &m_storeId})
    {
        for (size_t length = 1; length < id->size(); ++length)
        {
            ExpectRefused(Bytes(id->begin(), id->begin() + static_cast<std::ptrdiff_t>(length)),
                          {MAPI_E_INVALID_ENTRYID},
                          "cut to " + std::to_string(length) + " of " + std::to_string(id->size()));
        }
    }
}

TEST_F(BadIdentifier, ChangedOrLengthenedIsRefused)
{
    for (const Bytes* id : {&m_message, &m_folder})
    {
        for (size_t i = 0; i < id->size(); ++i)
        {
            Bytes changed = *id;
            changed[i] ^= 0x55;
            ExpectRefused(changed, {MAPI_E_INVALID_ENTRYID}, "byte " + std::to_string(i));
        }
        Bytes longer = *id;
        longer.push_back(0);
        ExpectRefused(longer, {MAPI_E_INVALID_ENTRYID}, "one byte more");
    }
}

TEST_F(BadIdentifier, OfRandomBytesIsRefused)
{
    std::mt19937 random(20240607);
    for (const size_t size : {1u, 4u, 18u, 20u, 34u, 38u, 54u, 70u, 1000u, 100'000u})
    {
        for (int i = 0; i < 10; ++i)
        {
            Bytes id(size);
            for (BYTE& byte : id)
            {
                byte = static_cast<BYTE>(random());
            }
            ExpectRefused(id, {MAPI_E_INVALID_ENTRYID}, std::to_string(size) + " random bytes");
            if (size >= 38)
            {
                std::copy(m_folder.begin(), m_folder.begin() + 20, id.begin());
                ExpectRefused(id, {MAPI_E_INVALID_ENTRYID}, std::to_string(size) + " random bytes of this store");
            }
        }
    }
}

TEST_F(BadIdentifier, OfAnotherStoreIsRefused)
{
    CreateProfile("other", File("other.zeb"), false);
    CZebSession session = LogOn("other");
    {
        CZebMsgStore store = OpenDefaultStore(session);
        CZebFolder inbox = store.OpenInboxFolder(MAPI_BEST_ACCESS);
        CZebPropValArray properties(1);
        properties[PR_SUBJECT_A] = "there";
        CZebMessage message = inbox.CreateMessage(properties, true, 0);
        ExpectRefused(BytesOf(inbox.GetEntryID()), {MAPI_E_INVALID_ENTRYID}, "folder");
        ExpectRefused(BytesOf(message.GetEntryID()), {MAPI_E_INVALID_ENTRYID}, "message");
        ExpectRefused(BytesOf(store.GetEntryID()), {MAPI_E_NOT_FOUND, MAPI_E_INVALID_ENTRYID}, "store");
        // Neither copied, moved nor deleted from here.
        CZebFolder here = Inbox();
        EXPECT_EQ(FailureOf([&] { here.DeleteMessage(message.GetEntryID()); }).result, MAPI_E_INVALID_ENTRYID);
        EXPECT_EQ(FailureOf([&] { here.CopyMessage(message.GetEntryID(), here, 0); }).result, MAPI_E_INVALID_ENTRYID);
        EXPECT_EQ(FailureOf([&] { here.DeleteFolder(inbox.GetEntryID(), nullptr, 0, nullptr); }).result,
                  MAPI_E_INVALID_ENTRYID);
        EXPECT_EQ(inbox.GetContentsTable(0).GetRowCount(), 1u);
        EXPECT_EQ(here.GetContentsTable(0).GetRowCount(), 1u);
    }
    session.Logoff(0, 0, 0);
}

TEST_F(BadIdentifier, OfDeletedObjectsIsNotFound)
{
    CZebFolder folder = Inbox().CreateFolder("gone soon", false, true, 0, "", FOLDER_GENERIC);
    const Bytes folderId = BytesOf(folder.GetEntryID());
    CZebMessage message = Opened<CZebMessage>(Binary(m_message));
    m_store->DeleteMessage(Binary(m_message), true);
    m_inbox.DeleteFolder(Binary(folderId), nullptr, 0, nullptr);
    ExpectRefused(m_message, {MAPI_E_NOT_FOUND}, "message");
    ExpectRefused(folderId, {MAPI_E_NOT_FOUND}, "folder");
    // An object that was open fails too, and does not restore anything.
    EXPECT_EQ(FailureOf([&] { message.SetDisplayName("x"); }).result, MAPI_E_OBJECT_DELETED);
    EXPECT_EQ(FailureOf([&] { folder.SetDisplayName("x"); }).result, MAPI_E_NOT_FOUND);
    EXPECT_EQ(FailureOf([&] { folder.GetContentsTable(0); }).result, MAPI_E_NOT_FOUND);
    EXPECT_EQ(Contents().GetRowCount(), 0u);
}

TEST_F(BadIdentifier, OpensNoStoreAndMatchesNone)
{
    for (const Bytes* id : {&m_message, &m_folder})
    {
        EXPECT_EQ(FailureOf([&] { m_session->OpenMsgStore(Binary(*id), nullptr, 0); }).result, MAPI_E_INVALID_ENTRYID);
    }
    for (const Bytes* id : {&m_message, &m_folder, &m_storeId})
    {
        for (size_t length = 0; length < id->size(); ++length)
        {
            const Bytes cut(id->begin(), id->begin() + static_cast<std::ptrdiff_t>(length));
            EXPECT_EQ(FailureOf([&] { m_session->OpenMsgStore(Binary(cut), nullptr, 0); }).result,
                      MAPI_E_INVALID_ENTRYID)
                << length;
            for (const auto& [a, b] : {std::pair(&cut, id), std::pair(id, &cut)})
            {
                try
                {
                    EXPECT_FALSE(m_session->CompareEntryIDs(Binary(*a), Binary(*b))) << length;
                }
                catch (CZebException* exception)
                {
                    EXPECT_EQ(exception->GetResult(), MAPI_E_INVALID_ENTRYID) << length;
                    exception->Delete();
                }
            }
        }
    }
}

TEST_F(BadIdentifier, WithoutBytesOpensOnlyStoreRoots)
{
    const SBinary nothing{0, nullptr};
    EXPECT_TRUE(
        m_session->CompareEntryIDs(Opened<CZebFolder>(nothing).GetEntryID(), m_store->OpenRootFolder(0).GetEntryID()));
    CZebPropObj target;
    EXPECT_EQ(FailureOf([&] { m_session->OpenEntry(nothing, target, 0); }).result, MAPI_E_INVALID_ENTRYID);
    EXPECT_EQ(FailureOf([&] { m_session->OpenMsgStore(nothing, nullptr, 0); }).result, MAPI_E_INVALID_ENTRYID);
    const SBinary noPointer{54, nullptr};
    EXPECT_EQ(FailureOf([&] { m_session->OpenEntry(noPointer, target, 0); }).result, MAPI_E_INVALID_ENTRYID);
    EXPECT_EQ(FailureOf([&] { m_store->OpenEntry(noPointer, target, 0); }).result, MAPI_E_INVALID_ENTRYID);
    EXPECT_EQ(FailureOf([&] { m_inbox.OpenEntry(noPointer, target, 0); }).result, MAPI_E_INVALID_ENTRYID);
}

TEST_F(BadIdentifier, InHexadecimalCountsWholePairsOnly)
{
    const CZebBinary id(Inbox().GetEntryID());
    const std::string hex = id.String().GetString();
    EXPECT_TRUE(m_session->CompareEntryIDs(CZebBinary(hex.c_str()), id));
    EXPECT_TRUE(Opened<CZebFolder>(CZebBinary(hex.c_str())).IsValid());
    const auto refuse = [&](const std::string& text, const char* what)
    { ExpectRefused(BytesOf(CZebBinary(text.c_str())), {MAPI_E_INVALID_ENTRYID}, what); };
    refuse(hex.substr(0, hex.size() - 2), "cut");
    refuse(hex.substr(0, hex.size() - 1), "odd");
    EXPECT_TRUE(m_session->CompareEntryIDs(CZebBinary((hex + "0").c_str()), id)) << "half a byte is none";
    refuse("bad text", "not hexadecimal after its first byte");
    refuse(std::string(1'000'000, 'F'), "a megabyte");
    refuse(std::string(999'999, 'F'), "an odd megabyte");
    for (const char* text : {"", "no hexadecimal text", "F", "\xFF\xFE"})
    {
        const CZebBinary empty(text);
        EXPECT_EQ(static_cast<const SBinary&>(empty).cb, 0u) << text;
        CZebPropObj target;
        EXPECT_EQ(FailureOf([&] { m_session->OpenEntry(empty, target, 0); }).result, MAPI_E_INVALID_ENTRYID) << text;
    }
    EXPECT_STREQ(CZebBinary(std::string(1'000'000, 'f').c_str()).String(), std::string(1'000'000, 'F').c_str());
}

} // namespace
} // namespace zeb::test
