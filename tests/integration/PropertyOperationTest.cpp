// Effects of property object operations: read, write, delete, copy, save.
#include "tests/integration/Host.h"

#include <algorithm>
#include <vector>

namespace zeb::test
{
namespace
{

class PropertyOperation : public StoreHost
{
protected:
    PropertyOperation()
    {
        CZebPropValArray properties(2);
        properties[PR_SUBJECT_A] = "subject";
        properties[PR_IMPORTANCE] = static_cast<LONG>(2);
        m_message = Inbox().CreateMessage(properties, true, 0);
    }
    CZebMessage Again() { return Opened<CZebMessage>(m_message.GetEntryID()); }
    static std::vector<ULONG> TagsOf(CZebIProp& object, ULONG flags)
    {
        CZebPropTagArray list;
        object.GetPropList(&list, flags);
        std::vector<ULONG> tags;
        for (int i = 0; i < list.GetCount(); ++i)
        {
            tags.push_back(list[i]);
        }
        return tags;
    }
    static bool Has(const std::vector<ULONG>& tags, ULONG tag)
    {
        return std::find(tags.begin(), tags.end(), tag) != tags.end();
    }

    CZebMessage m_message;
};

TEST_F(PropertyOperation, WritesArraysToFirstFreeEntry)
{
    CZebPropValArray values(3);
    values[PR_SUBJECT_A] = "other";
    m_message.SetProps(values, false, nullptr);
    EXPECT_STREQ(m_message.GetStringProp(PR_SUBJECT_A), "other");
    EXPECT_STREQ(Again().GetStringProp(PR_SUBJECT_A), "subject") << "not saved";
    m_message.SetProps(values, true, nullptr);
    EXPECT_STREQ(Again().GetStringProp(PR_SUBJECT_A), "other");
    CZebPropValArray none(2);
    m_message.SetProps(none, true, nullptr);
    EXPECT_STREQ(Again().GetStringProp(PR_SUBJECT_A), "other");
}

TEST_F(PropertyOperation, ReadsExactlyTheTagsGiven)
{
    CZebPropValArray values;
    m_message.GetProps(values, 3, PR_SUBJECT_W, PR_REPORT_TEXT_A, PR_IMPORTANCE);
    ASSERT_EQ(values.Count(), 3u);
    EXPECT_EQ(values.GetAt(0).GetTag(), PR_SUBJECT_W);
    EXPECT_FALSE(values.hasRealValue(PR_REPORT_TEXT_A));
    EXPECT_EQ(static_cast<LONG>(values[PR_IMPORTANCE]), 2);
    m_message.GetProps(values, 0);
    EXPECT_EQ(values.Count(), 0u) << "a provider refuses an empty list; here it gives an empty result";
}

TEST_F(PropertyOperation, DeletesAndReportsWhatIsMissing)
{
    CZebPropTagArray tags;
    tags.Add(PR_IMPORTANCE, PR_REPORT_TEXT_A, PR_ENTRYID, 0);
    CZebPropProblemArray problems;
    m_message.DeleteProps(tags, &problems);
    ASSERT_EQ(problems.GetCount(), 2);
    EXPECT_EQ(problems[0].scode, MAPI_E_NOT_FOUND);
    EXPECT_EQ(problems[0].ulIndex, 1u);
    EXPECT_EQ(problems[1].scode, MAPI_E_COMPUTED);
    EXPECT_FALSE(Has(TagsOf(m_message, 0), PR_IMPORTANCE));
    EXPECT_TRUE(Has(TagsOf(*m_store, 0), PR_ENTRYID));
    CZebMessage before = Again();
    EXPECT_TRUE(Has(TagsOf(before, 0), PR_IMPORTANCE)) << "not saved";
    m_message.SaveChanges(KEEP_OPEN_READWRITE);
    CZebMessage after = Again();
    EXPECT_FALSE(Has(TagsOf(after, 0), PR_IMPORTANCE));
}

TEST_F(PropertyOperation, ReportsWhatItCannotWrite)
{
    CZebPropValArray values(3);
    values[PR_OBJECT_TYPE] = static_cast<LONG>(MAPI_FOLDER);
    values[PR_SUBJECT_A] = "written";
    CZebPropProblemArray problems;
    m_message.SetProps(values, true, &problems);
    ASSERT_EQ(problems.GetCount(), 1);
    EXPECT_EQ(problems[0].scode, MAPI_E_COMPUTED);
    EXPECT_EQ(problems[0].ulPropTag, PR_OBJECT_TYPE);
    EXPECT_STREQ(Again().GetStringProp(PR_SUBJECT_A), "written");
    EXPECT_EQ(Again().GetObjectType(), static_cast<ULONG>(MAPI_MESSAGE));
    m_message.SetProps(values, false, nullptr);
}

TEST_F(PropertyOperation, ListsPropertiesInTheRequestedWidth)
{
    EXPECT_TRUE(Has(TagsOf(m_message, 0), PR_SUBJECT_A));
    EXPECT_TRUE(Has(TagsOf(m_message, MAPI_UNICODE), PR_SUBJECT_W));
    for (CZebIProp* object : std::vector<CZebIProp*>{m_message, *m_store})
    {
        for (const ULONG flags : {ULONG(0), MAPI_UNICODE})
        {
            const std::vector<ULONG> listed = TagsOf(*object, flags);
            CZebPropValArray values;
            object->GetAllProps(values.CountPtr(), &values, flags);
            ASSERT_EQ(values.Count(), listed.size());
            for (ULONG i = 0; i < values.Count(); ++i)
            {
                EXPECT_EQ(values.GetAt(i).GetTag(), listed[i]);
            }
        }
    }
}

TEST_F(PropertyOperation, DumpsEveryObject)
{
    CZebPropValArray values(2);
    values[PR_SUBJECT_A] = "%s%n%s";
    values[PR_BODY_A] = std::string(3000, '%').c_str();
    m_message.SetProps(values, true, nullptr);
    CZebFolder inbox = Inbox();
    for (CZebIProp* object : std::vector<CZebIProp*>{m_message, inbox, *m_store})
    {
        object->DumpAllProps();
    }
}

TEST_F(PropertyOperation, GivesTextInEitherWidth)
{
    CZebPropValArray values(2);
    values[PR_SUBJECT_W] = ZEBW("caf\u00e9");
    values[PR_COMMENT_A] = "plain";
    m_message.SetProps(values, true, nullptr);
    CZebMessage again = Again();
    EXPECT_EQ(std::basic_string<WCHAR>(again.GetStringPropW(PR_SUBJECT_W).GetString()), ZEBW("caf\u00e9"));
    // Requested by the other tag, and converted by the library.
    EXPECT_STREQ(again.GetStringPropA(PR_SUBJECT_A), again.GetStringPropA(PR_SUBJECT_W));
    EXPECT_EQ(std::basic_string<WCHAR>(again.GetStringPropW(PR_COMMENT_A).GetString()), ZEBW("plain"));
    EXPECT_EQ(FailureOf([&] { again.GetStringPropA(PR_IMPORTANCE); }).result, MAPI_E_INVALID_TYPE);
}

TEST_F(PropertyOperation, CopiesAllOrAFewProperties)
{
    CZebMessage whole = Inbox().CreateMessage(0);
    CZebMessage few = Inbox().CreateMessage(0);
    const CComPtr<IMAPIProp> source = m_message.GetInterface();
    ThrowIfFailed(
        source->CopyTo(0, nullptr, nullptr, 0, nullptr, &IID_IMAPIProp, whole.GetInterface().Get(), 0, nullptr),
        source);
    CZebPropTagArray tags;
    tags.AddOne(PR_SUBJECT_A);
    ThrowIfFailed(source->CopyProps(tags, 0, nullptr, &IID_IMAPIProp, few.GetInterface().Get(), 0, nullptr), source);
    for (CZebMessage* copy : {std::addressof(whole), std::addressof(few)})
    {
        copy->SaveChanges(KEEP_OPEN_READWRITE);
        EXPECT_STREQ(Opened<CZebMessage>(copy->GetEntryID()).GetStringProp(PR_SUBJECT_A), "subject");
        EXPECT_FALSE(m_session->CompareEntryIDs(copy->GetEntryID(), m_message.GetEntryID()));
    }
    EXPECT_TRUE(Has(TagsOf(whole, 0), PR_IMPORTANCE));
    EXPECT_FALSE(Has(TagsOf(few, 0), PR_IMPORTANCE));
}

TEST_F(PropertyOperation, DisplayNamesAreSavedAtOnce)
{
    m_message.SetDisplayNameA("narrow");
    EXPECT_STREQ(Again().GetDisplayNameA(), "narrow");
    m_message.SetDisplayNameW(ZEBW("wide"));
    EXPECT_STREQ(Again().GetDisplayName(), "wide");
    m_message.SetDisplayName("last");
    EXPECT_EQ(std::basic_string<WCHAR>(Again().GetDisplayNameW().GetString()), ZEBW("last"));
    CZebFolder folder = Inbox().CreateFolder("before", false, true, 0, "", FOLDER_GENERIC);
    folder.SetDisplayNameW(ZEBW("after"));
    EXPECT_STREQ(Inbox().OpenFolderByName("after").GetDisplayName(), "after");
    EXPECT_EQ(FailureOf([&] { Inbox().OpenFolderByName("before"); }).result, 1168);
    EXPECT_EQ(FailureOf([&] { folder.SetDisplayNameA(nullptr); }).result, MAPI_E_INVALID_PARAMETER);
    EXPECT_STREQ(folder.GetDisplayName(), "after");
}

TEST_F(PropertyOperation, ObjectsKeptForReadingRefuseChanges)
{
    m_message.SaveChanges(KEEP_OPEN_READONLY);
    CZebPropValArray values(1);
    values[PR_SUBJECT_A] = "never";
    const Failure thrown = FailureOf([&] { m_message.SetProps(values, true, nullptr); });
    EXPECT_EQ(thrown.result, MAPI_E_NO_ACCESS);
    EXPECT_NE(thrown.text.find("opened for reading"), std::string::npos) << thrown.text;
    EXPECT_STREQ(Again().GetStringProp(PR_SUBJECT_A), "subject");
    CZebMessage forReading;
    m_store->OpenEntry(m_message.GetEntryID(), forReading, 0);
    EXPECT_EQ(FailureOf([&] { forReading.SetDisplayName("never"); }).result, MAPI_E_NO_ACCESS);
    EXPECT_EQ(FailureOf([&] { forReading.OpenProperty(PR_BODY_A, MAPI_CREATE | MAPI_MODIFY); }).result,
              MAPI_E_NO_ACCESS);
}

TEST_F(PropertyOperation, ForceSavesOverAnothersChange)
{
    CZebMessage other = Again();
    CZebPropValArray values(1);
    values[PR_COMMENT_A] = "late";
    other.SetProps(values, false, nullptr);
    m_message.SetDisplayName("mine");
    EXPECT_EQ(FailureOf([&] { other.SaveChanges(KEEP_OPEN_READWRITE); }).result, MAPI_E_OBJECT_CHANGED);
    EXPECT_STREQ(Again().GetStringProp(PR_COMMENT_A), "");
    other.SetProps(values, true, nullptr);
    EXPECT_STREQ(Again().GetStringProp(PR_COMMENT_A), "late");
}

} // namespace
} // namespace zeb::test
