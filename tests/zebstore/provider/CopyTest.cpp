// IMAPIProp::CopyTo and CopyProps: parts that are not properties are copied too, once, or the call fails.
#include "tests/zebstore/provider/ProviderFixture.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace zebstore
{
namespace
{

/// Records each report; optionally cancels at one of them.
class ProgressDouble final : public IMAPIProgress
{
public:
    explicit ProgressDouble(ULONG flags = MAPI_TOP_LEVEL)
        : m_flags(flags)
    {
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, LPVOID*) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE Progress(ULONG value, ULONG count, ULONG total) override
    {
        values.push_back(value);
        counts.emplace_back(count, total);
        return values.size() == cancelAt ? MAPI_E_USER_CANCEL : S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetFlags(ULONG* flags) override
    {
        *flags = m_flags;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetMax(ULONG* most) override
    {
        *most = 1000;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetMin(ULONG* least) override
    {
        *least = 500;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetLimits(ULONG*, ULONG*, ULONG*) override { return S_OK; }

    std::vector<ULONG> values;
    std::vector<std::pair<ULONG, ULONG>> counts;
    size_t cancelAt = 0;

private:
    const ULONG m_flags;
};

class Copies : public Provider
{
protected:
    static HRESULT AddRecipient(IMessage& message, const char* name)
    {
        SPropValue value = NarrowValue(PR_DISPLAY_NAME_A, name);
        SizedADRLIST(1, list) = {1, {{0, 1, &value}}};
        return message.ModifyRecipients(MODRECIP_ADD, reinterpret_cast<LPADRLIST>(&list));
    }

    static void AddAttachment(IMessage& message, const char* name)
    {
        ULONG number = 0;
        IAttach* attach = nullptr;
        ASSERT_EQ(message.CreateAttach(nullptr, 0, &number, &attach), S_OK);
        const Ref<IAttach> owner = Ref<IAttach>::Adopt(attach);
        EXPECT_EQ(Set(attach, NarrowValue(PR_ATTACH_FILENAME_A, name)), S_OK);
        EXPECT_EQ(attach->SaveChanges(0), S_OK);
    }

    static Texts Column(IMAPITable* table, ULONG tag)
    {
        const Rows rows(table, {tag});
        Texts texts;
        for (ULONG i = 0; i < rows.Count(); ++i)
        {
            texts.push_back(rows.TextCell(i, 0));
        }
        return texts;
    }
    static Texts Recipients(IMessage& message)
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(message.GetRecipientTable(0, &table), S_OK);
        return Column(table, PR_DISPLAY_NAME_A);
    }
    static Texts Files(IMessage& message)
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(message.GetAttachmentTable(0, &table), S_OK);
        return Column(table, PR_ATTACH_FILENAME_A);
    }
    static Texts Subfolders(IMAPIFolder& folder, ULONG flags = 0)
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(folder.GetHierarchyTable(flags, &table), S_OK);
        return Column(table, PR_DISPLAY_NAME_A);
    }

    template <class Object>
    static HRESULT CopyTo(Object& source, IMAPIProp& target, ULONG flags = 0, std::vector<ULONG> excluded = {},
                          IMAPIProgress* progress = nullptr, SPropProblemArray** problems = nullptr)
    {
        excluded.insert(excluded.begin(), static_cast<ULONG>(excluded.size()));
        return source.CopyTo(0, nullptr, reinterpret_cast<LPSPropTagArray>(excluded.data()), 0, progress,
                             &IID_IMAPIProp, &target, flags, problems);
    }
    static HRESULT CopyProps(IMAPIProp& source, IMAPIProp& target, std::vector<ULONG> tags, ULONG flags = 0,
                             SPropProblemArray** problems = nullptr)
    {
        tags.insert(tags.begin(), static_cast<ULONG>(tags.size()));
        return source.CopyProps(reinterpret_cast<LPSPropTagArray>(tags.data()), 0, nullptr, &IID_IMAPIProp, &target,
                                flags, problems);
    }

    /// A saved message with a recipient and an attachment.
    Ref<IMessage> Full(IMAPIFolder& folder, const char* subject, const char* recipient, const char* file)
    {
        const Ref<IMessage> message = NewMessage(folder, subject);
        EXPECT_EQ(AddRecipient(*message, recipient), S_OK);
        AddAttachment(*message, file);
        EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
        return message;
    }

    /// A folder "Source" below the inbox: a, b, hidden c, a subfolder "Inner" with i.
    Ref<IMAPIFolder> Tree(IMAPIFolder& inbox)
    {
        const Ref<IMAPIFolder> source = NewFolder(inbox, "Source");
        EXPECT_EQ(Set(source.Get(), NarrowValue(PR_COMMENT_A, "kept")), S_OK);
        SaveMessage(*source, "a");
        SaveMessage(*source, "b");
        EXPECT_EQ(NewMessage(*source, "c", MAPI_ASSOCIATED)->SaveChanges(0), S_OK);
        SaveMessage(*NewFolder(*source, "Inner"), "i");
        return source;
    }

    Ref<IMAPIFolder> SubfolderOf(IMAPIFolder& folder)
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(folder.GetHierarchyTable(0, &table), S_OK);
        const Rows rows(table, {PR_ENTRYID});
        return rows.Count() ? OpenFolder(rows.BytesCell(0, 0)) : Ref<IMAPIFolder>();
    }
};

TEST_F(Copies, OfAMessageToItselfFail)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMessage> message = Full(*inbox, "one", "Ann", "a.txt");
    EXPECT_EQ(CopyTo(*message, *message), MAPI_E_NO_ACCESS);
    EXPECT_EQ(CopyProps(*message, *message, {PR_SUBJECT_A}), MAPI_E_NO_ACCESS);
    const Ref<IMessage> opened = OpenMessage(GetBytes(message.Get(), PR_ENTRYID));
    EXPECT_EQ(CopyTo(*message, *opened), MAPI_E_NO_ACCESS);
    EXPECT_EQ(Recipients(*message), Texts({"Ann"}));
    EXPECT_EQ(Files(*message), Texts({"a.txt"}));
    EXPECT_EQ(CopyTo(*inbox, *Inbox()), MAPI_E_NO_ACCESS);
    const Ref<IMessage> unsaved = NewMessage(*inbox);
    EXPECT_EQ(CopyTo(*unsaved, *unsaved), MAPI_E_NO_ACCESS);
    EXPECT_EQ(CopyTo(*unsaved, *NewMessage(*inbox)), S_OK);
}

TEST_F(Copies, OfTwoMessagesToEachOtherEnd)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMessage> one = NewMessage(*inbox, "one");
    const Ref<IMessage> other = NewMessage(*inbox, "other");
    const auto copier = [](IMessage& source, IMessage& target)
    {
        for (int i = 0; i < 100; ++i)
        {
            EXPECT_EQ(CopyTo(source, target), S_OK);
        }
    };
    std::thread there([&] { copier(*one, *other); });
    copier(*other, *one);
    there.join();
}

TEST_F(Copies, ReplaceTheTargetsRecipientsAndAttachments)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMessage> source = Full(*inbox, "source", "Ann", "a.txt");
    const Ref<IMessage> target = Full(*inbox, "target", "Bob", "b.txt");
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_EQ(CopyTo(*source, *target), S_OK);
        EXPECT_EQ(Recipients(*target), Texts({"Ann"}));
        EXPECT_EQ(Files(*target), Texts({"a.txt"}));
    }
    EXPECT_EQ(target->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    const Ref<IMessage> again = OpenMessage(GetBytes(target.Get(), PR_ENTRYID));
    EXPECT_EQ(Recipients(*again), Texts({"Ann"}));
    EXPECT_EQ(Files(*again), Texts({"a.txt"}));
    EXPECT_EQ(GetText(again.Get(), PR_DISPLAY_TO_A), "Ann");
}

TEST_F(Copies, ThatReplaceNothingKeepTheTargets)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMessage> source = Full(*inbox, "source", "Ann", "a.txt");
    const Ref<IMessage> target = Full(*inbox, "target", "Bob", "b.txt");
    EXPECT_EQ(CopyTo(*source, *target, MAPI_NOREPLACE), S_OK);
    EXPECT_EQ(Recipients(*target), Texts({"Bob"}));
    EXPECT_EQ(Files(*target), Texts({"b.txt"}));
    EXPECT_EQ(GetText(target.Get(), PR_SUBJECT_A), "target");
    const Ref<IMessage> empty = NewMessage(*inbox, "empty");
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_EQ(CopyTo(*source, *empty, MAPI_NOREPLACE), S_OK);
        EXPECT_EQ(Recipients(*empty), Texts({"Ann"}));
        EXPECT_EQ(Files(*empty), Texts({"a.txt"}));
    }
}

TEST_F(Copies, TakeAttachmentsThatAreNotSaved)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMessage> source = Full(*inbox, "source", "Ann", "a.txt");
    AddAttachment(*source, "b.txt");
    EXPECT_EQ(source->DeleteAttach(0, 0, nullptr, 0), S_OK);
    AddAttachment(*source, "c.txt");
    const Ref<IMessage> target = NewMessage(*inbox);
    EXPECT_EQ(CopyTo(*source, *target), S_OK);
    EXPECT_EQ(Files(*target), Texts({"b.txt", "c.txt"}));
    EXPECT_EQ(target->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_EQ(Files(*OpenMessage(GetBytes(target.Get(), PR_ENTRYID))), Texts({"b.txt", "c.txt"}));
}

TEST_F(Copies, ThatFailLeaveTheTargetMessage)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMessage> source = Full(*inbox, "source", "Ann", "a.txt");
    const Bytes id = GetBytes(Full(*inbox, "target", "Bob", "b.txt").Get(), PR_ENTRYID);
    for (unsigned long call = 2;; ++call)
    {
        SCOPED_TRACE(call);
        const Ref<IMessage> target = OpenMessage(id);
        Switches switches;
        switches.failingCall = call;
        switches.failingCode = MAPI_E_CALL_FAILED;
        ApplySwitches(switches);
        const HRESULT result = CopyTo(*source, *target);
        const bool happened = FaultHappened();
        ApplySwitches({});
        const bool copied = SUCCEEDED(result);
        ASSERT_EQ(GetText(target.Get(), PR_SUBJECT_A), copied ? "source" : "target");
        ASSERT_EQ(Recipients(*target), Texts({copied ? "Ann" : "Bob"}));
        ASSERT_EQ(Files(*target), Texts({copied ? "a.txt" : "b.txt"}));
        if (!happened)
        {
            EXPECT_GT(call, 20u);
            break;
        }
    }
}

TEST_F(Copies, ThatMoveRemoveWhatArrived)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMessage> source = Full(*inbox, "source", "Ann", "a.txt");
    const Ref<IMessage> target = NewMessage(*inbox, "target");
    EXPECT_EQ(CopyTo(*source, *target, MAPI_MOVE, {PR_MESSAGE_CLASS_A}), S_OK);
    EXPECT_EQ(GetText(target.Get(), PR_SUBJECT_A), "source");
    EXPECT_EQ(Recipients(*target), Texts({"Ann"}));
    EXPECT_EQ(Files(*target), Texts({"a.txt"}));
    EXPECT_EQ(GetText(source.Get(), PR_SUBJECT_A), "<none>");
    EXPECT_EQ(GetText(source.Get(), PR_MESSAGE_CLASS_A), "IPM.Note");
    EXPECT_EQ(Recipients(*source), Texts());
    EXPECT_EQ(Files(*source), Texts());
    const Ref<IMessage> readOnly = OpenMessage(GetBytes(source.Get(), PR_ENTRYID), 0);
    EXPECT_EQ(CopyTo(*readOnly, *target, MAPI_MOVE), MAPI_E_NO_ACCESS);
}

TEST_F(Copies, OfAFolderTakeItsContents)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMAPIFolder> source = Tree(*inbox);
    const Ref<IMAPIFolder> target = NewFolder(*NewFolder(*inbox, "Place"), "Target");
    EXPECT_EQ(CopyTo(*source, *target), S_OK);
    EXPECT_EQ(GetText(target.Get(), PR_DISPLAY_NAME_A), "Source");
    EXPECT_EQ(GetText(target.Get(), PR_COMMENT_A), "kept");
    for (IMAPIFolder* each : {source.Get(), target.Get()})
    {
        EXPECT_EQ(Subjects(*each), Texts({"a", "b"}));
        EXPECT_EQ(Subjects(*each, MAPI_ASSOCIATED), Texts({"c"}));
        EXPECT_EQ(Subfolders(*each), Texts({"Inner"}));
        EXPECT_EQ(Subjects(*SubfolderOf(*each)), Texts({"i"}));
    }
}

TEST_F(Copies, OfAFolderOmitExcludedContents)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMAPIFolder> source = Tree(*inbox);
    const Ref<IMAPIFolder> place = NewFolder(*inbox, "Place");
    const Ref<IMAPIFolder> first = NewFolder(*place, "first");
    EXPECT_EQ(CopyTo(*source, *first, 0, {PR_CONTAINER_CONTENTS, PR_DISPLAY_NAME_A}), S_OK);
    EXPECT_EQ(GetText(first.Get(), PR_DISPLAY_NAME_A), "first");
    EXPECT_EQ(Subjects(*first), Texts());
    EXPECT_EQ(Subjects(*first, MAPI_ASSOCIATED), Texts({"c"}));
    EXPECT_EQ(Subfolders(*first), Texts({"Inner"}));
    const Ref<IMAPIFolder> second = NewFolder(*place, "second");
    EXPECT_EQ(CopyTo(*source, *second, 0, {PR_CONTAINER_HIERARCHY, PR_FOLDER_ASSOCIATED_CONTENTS, PR_DISPLAY_NAME_A}),
              S_OK);
    EXPECT_EQ(Subjects(*second), Texts({"a", "b"}));
    EXPECT_EQ(Subjects(*second, MAPI_ASSOCIATED), Texts());
    EXPECT_EQ(Subfolders(*second), Texts());
    const Ref<IMAPIFolder> third = NewFolder(*place, "third");
    EXPECT_EQ(source->CopyTo(1, &IID_IMAPIContainer, nullptr, 0, nullptr, &IID_IMAPIFolder, third.Get(), 0, nullptr),
              S_OK);
    EXPECT_EQ(GetText(third.Get(), PR_COMMENT_A), "kept");
    EXPECT_EQ(Subjects(*third), Texts());
    EXPECT_EQ(Subfolders(*third), Texts());
}

TEST_F(Copies, OfNamedPropertiesTakeContentsToo)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMAPIFolder> source = Tree(*inbox);
    const Ref<IMAPIFolder> target = NewFolder(*inbox, "Target");
    EXPECT_EQ(CopyProps(*source, *target, {PR_CONTAINER_CONTENTS}), S_OK);
    EXPECT_EQ(Subjects(*target), Texts({"a", "b"}));
    EXPECT_EQ(Subjects(*target, MAPI_ASSOCIATED), Texts());
    EXPECT_EQ(Subfolders(*target), Texts());
    EXPECT_EQ(GetText(target.Get(), PR_COMMENT_A), "<none>");
    EXPECT_EQ(CopyProps(*source, *target, {PR_CONTAINER_HIERARCHY, PR_COMMENT_A}), S_OK);
    EXPECT_EQ(Subfolders(*target), Texts({"Inner"}));
    EXPECT_EQ(GetText(target.Get(), PR_COMMENT_A), "kept");
    EXPECT_EQ(Subjects(*source), Texts({"a", "b"}));
}

TEST_F(Copies, ThatMoveLeaveFoldersEmpty)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMAPIFolder> source = Tree(*inbox);
    const Ref<IMAPIFolder> target = NewFolder(*NewFolder(*inbox, "Place"), "Target");
    EXPECT_EQ(CopyTo(*source, *target, MAPI_MOVE), S_OK);
    EXPECT_EQ(Subjects(*source), Texts());
    EXPECT_EQ(Subjects(*source, MAPI_ASSOCIATED), Texts());
    EXPECT_EQ(Subfolders(*source), Texts());
    EXPECT_EQ(GetText(source.Get(), PR_DISPLAY_NAME_A), "Source");
    EXPECT_EQ(Subjects(*target), Texts({"a", "b"}));
    EXPECT_EQ(Subjects(*target, MAPI_ASSOCIATED), Texts({"c"}));
    EXPECT_EQ(Subjects(*SubfolderOf(*target)), Texts({"i"}));
}

TEST_F(Copies, OfAFolderNeverStayPartial)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMAPIFolder> source = Tree(*inbox);
    const Ref<IMAPIFolder> inner = SubfolderOf(*source);
    EXPECT_EQ(CopyTo(*source, *inner), MAPI_E_FOLDER_CYCLE);
    EXPECT_EQ(GetText(inner.Get(), PR_COMMENT_A), "<none>");
    EXPECT_EQ(Subjects(*inner), Texts({"i"}));
    const Ref<IMAPIFolder> target = NewFolder(*NewFolder(*inbox, "Place"), "Target");
    NewFolder(*target, "inner");
    EXPECT_EQ(CopyTo(*source, *target), MAPI_E_COLLISION);
    EXPECT_EQ(Subjects(*target), Texts());
    EXPECT_EQ(GetText(target.Get(), PR_DISPLAY_NAME_A), "Target");
    const Ref<IMAPIFolder> readOnly = OpenFolder(GetBytes(target.Get(), PR_ENTRYID), 0);
    EXPECT_EQ(CopyProps(*source, *readOnly, {PR_CONTAINER_CONTENTS}), MAPI_E_NO_ACCESS);
    const Ref<IMessage> message = NewMessage(*inbox);
    EXPECT_EQ(CopyProps(*source, *message, {PR_CONTAINER_CONTENTS}), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(Subjects(*target), Texts());
}

TEST_F(Copies, ReportANameThatIsTaken)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMAPIFolder> source = Tree(*inbox);
    const Ref<IMAPIFolder> target = NewFolder(*inbox, "Target");
    SPropProblemArray* problems = nullptr;
    EXPECT_EQ(CopyTo(*source, *target, 0, {}, nullptr, &problems), S_OK);
    const Buffer<SPropProblemArray> owner(problems);
    ASSERT_NE(problems, nullptr);
    ASSERT_EQ(problems->cProblem, 1u);
    EXPECT_EQ(PROP_ID(problems->aProblem[0].ulPropTag), PROP_ID(PR_DISPLAY_NAME_A));
    EXPECT_EQ(problems->aProblem[0].scode, MAPI_E_COLLISION);
    EXPECT_EQ(Subjects(*target), Texts({"a", "b"}));
    EXPECT_EQ(GetText(target.Get(), PR_COMMENT_A), "kept");
}

TEST_F(Copies, OfAFolderMayBeCancelled)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMAPIFolder> source = Tree(*inbox);
    for (int i = 0; i < 150; ++i)
    {
        SaveMessage(*source, "more");
    }
    const Ref<IMAPIFolder> place = NewFolder(*inbox, "Place");
    ProgressDouble progress;
    EXPECT_EQ(CopyTo(*source, *NewFolder(*place, "one"), 0, {PR_DISPLAY_NAME_A}, &progress), S_OK);
    ASSERT_GE(progress.values.size(), 3u);
    EXPECT_TRUE(std::is_sorted(progress.values.begin(), progress.values.end()));
    EXPECT_GE(progress.values.front(), 500u);
    EXPECT_EQ(progress.values.back(), 1000u);
    EXPECT_EQ(progress.counts.back(), std::make_pair(ULONG(155), ULONG(155)));
    ProgressDouble below(0);
    EXPECT_EQ(CopyTo(*source, *NewFolder(*place, "two"), 0, {PR_DISPLAY_NAME_A}, &below), S_OK);
    EXPECT_EQ(below.values.back(), 1000u);
    EXPECT_EQ(below.counts.back(), std::make_pair(ULONG(0), ULONG(0)));
    ProgressDouble cancelled;
    cancelled.cancelAt = 1;
    const Ref<IMAPIFolder> third = NewFolder(*place, "three");
    EXPECT_EQ(CopyTo(*source, *third, MAPI_MOVE, {PR_DISPLAY_NAME_A}, &cancelled), MAPI_E_USER_CANCEL);
    EXPECT_EQ(cancelled.values.size(), 1u);
    EXPECT_EQ(Subjects(*source).size() + Subjects(*third).size(), 152u);
}

TEST_F(Copies, ToAnotherStoreAreWhole)
{
    const std::string path = m_folder.File("other.zeb");
    ASSERT_EQ(MakeProfile("Other", path), S_OK);
    const Ref<IMAPIFolder> source = Tree(*Inbox());
    const Ref<IMAPISession> first = std::move(m_session);
    IMAPISession* opened = nullptr;
    ASSERT_EQ(MAPILogonEx(0, Text("Other"), nullptr, 0, &opened), S_OK);
    m_session = Ref<IMAPISession>::Adopt(opened);
    const Ref<IMAPIFolder> target = NewFolder(*Inbox(), "Target");
    EXPECT_EQ(CopyTo(*source, *target, MAPI_MOVE), S_OK);
    EXPECT_EQ(Subjects(*target), Texts({"a", "b"}));
    EXPECT_EQ(Subjects(*target, MAPI_ASSOCIATED), Texts({"c"}));
    EXPECT_EQ(Subjects(*SubfolderOf(*target)), Texts({"i"}));
    EXPECT_EQ(Subjects(*source), Texts());
    EXPECT_EQ(Subfolders(*source), Texts());
}

TEST_F(Copies, ThatMoveStandardFoldersChangeNothing)
{
    ASSERT_EQ(MakeProfile("Other", m_folder.File("other.zeb")), S_OK);
    const Ref<IMAPIFolder> inbox = Inbox();
    SaveMessage(*inbox, "stays");
    const Ref<IMAPIFolder> top = OpenFolder(GetBytes(inbox.Get(), PR_PARENT_ENTRYID));
    const Texts before = Subfolders(*top);
    const Ref<IMAPISession> first = std::move(m_session);
    IMAPISession* opened = nullptr;
    ASSERT_EQ(MAPILogonEx(0, Text("Other"), nullptr, 0, &opened), S_OK);
    m_session = Ref<IMAPISession>::Adopt(opened);
    const Ref<IMAPIFolder> target = NewFolder(*Inbox(), "Target");
    EXPECT_EQ(CopyTo(*top, *target, MAPI_MOVE), MAPI_E_NO_ACCESS);
    EXPECT_EQ(Subfolders(*target), Texts());
    EXPECT_EQ(Subfolders(*top), before);
    EXPECT_EQ(Subjects(*inbox), Texts({"stays"}));
    EXPECT_EQ(CopyTo(*top, *target), S_OK);
    EXPECT_EQ(Subfolders(*target).size(), before.size());
}

TEST_F(Copies, OfAFolderTakeLargeValues)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMAPIFolder> source = NewFolder(*inbox, "Source");
    const std::string large(70000, 'c');
    EXPECT_EQ(Set(source.Get(), NarrowValue(PR_COMMENT_A, large.c_str())), S_OK);
    HRESULT code = S_OK;
    Get(source.Get(), PR_COMMENT_W, &code);
    ASSERT_EQ(code, MAPI_E_NOT_ENOUGH_MEMORY);
    const Ref<IMAPIFolder> target = NewFolder(*inbox, "Target");
    SPropProblemArray* problems = nullptr;
    EXPECT_EQ(CopyProps(*source, *target, {PR_COMMENT_W}, 0, &problems), S_OK);
    EXPECT_EQ(problems, nullptr);
    IUnknown* opened = nullptr;
    ASSERT_EQ(target->OpenProperty(PR_COMMENT_A, &IID_IStream, 0, 0, &opened), S_OK);
    const Ref<IStream> stream = Ref<IStream>::Adopt(static_cast<IStream*>(opened));
    std::string read(large.size(), ' ');
    ULONG count = 0;
    EXPECT_EQ(stream->Read(&read[0], static_cast<ULONG>(read.size()), &count), S_OK);
    EXPECT_EQ(count, large.size());
    EXPECT_EQ(read, large);
    EXPECT_EQ(stream->Read(&read[0], 1, &count), S_FALSE);
    EXPECT_EQ(count, 0u);
}

TEST_F(Copies, NumberProblemsByTheGivenTags)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMAPIFolder> source = Tree(*inbox);
    const Ref<IMAPIFolder> target = NewFolder(*inbox, "Target");
    SPropProblemArray* problems = nullptr;
    EXPECT_EQ(CopyProps(*source, *target, {PR_CONTAINER_CLASS_A, PR_COMMENT_A, PR_DISPLAY_NAME_A}, 0, &problems), S_OK);
    const Buffer<SPropProblemArray> owner(problems);
    ASSERT_NE(problems, nullptr);
    EXPECT_EQ(problems->aProblem[0].ulIndex, 2u);
}

} // namespace
} // namespace zebstore
