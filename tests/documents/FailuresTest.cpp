// Provokes the failures of docs/failures.md on the embedded provider: each must print what the page shows.
#include "platform/registry.h"
#include "tests/documents/Page.h"
#include "tests/integration/Content.h"

#include <FailuresFile.h>
#include <gtest/gtest.h>

#include <functional>
#include <iterator>

namespace zeb::test
{
namespace
{

std::string Hex(HRESULT result)
{
    CStringA text;
    text.Format("0x%08X", static_cast<unsigned>(result));
    return text.GetString();
}

struct Thrown
{
    HRESULT result = S_OK;
    std::string text; ///< what a host prints
};

/// What leaves body.
Thrown ThrownBy(const std::function<void()>& body)
{
    try
    {
        body();
    }
    catch (CZebException* exception)
    {
        const Thrown thrown{exception->GetResult(), Zeb_DescribeException(exception).GetString()};
        exception->Delete();
        return thrown;
    }
    catch (const _com_error& error)
    {
        return {error.Error(), Zeb_GetResultDescription(error.Error()).GetString()};
    }
    return {S_OK, "nothing was thrown"};
}

struct Failures : StoreHost
{
    Failures() { AddMessage("Lunch?", 1, 100000); }

    CZebBinary MessageId()
    {
        CZebTable contents = Contents();
        contents.SetColumns(1, PR_ENTRYID);
        CZebRowSet rows;
        contents.QueryRows(&rows, 1, nullptr, nullptr);
        return static_cast<const SBinary&>(rows[0][PR_ENTRYID]);
    }
    CZebMessage Message() { return Opened<CZebMessage>(MessageId()); }
    CZebFolder Folder(const WCHAR* name) { return Inbox().CreateFolderW(name, nullptr, OPEN_IF_EXISTS); }

    void CallEmptyWrapper() { CZebFolder().GetContentsTable(0); }
    void OpenMissingName() { Inbox().OpenFolderByNameW(ZEBW("Nowhere")); }
    void OpenMissingProperty() { Message().OpenProperty(PR_COMMENT_W, 0); }
    void OpenBadIdentifier()
    {
        CZebMessage message;
        m_store->OpenEntry(CZebBinary("0102030405060708"), message, 0);
    }
    void ChangeWithoutAccess()
    {
        CZebMessage message;
        m_store->OpenEntry(MessageId(), message, 0);
        CZebPropValArray values(1);
        values[PR_SUBJECT_W] = ZEBW("Dinner?");
        message.SetProps(values, true, nullptr);
    }
    void CreateTwice()
    {
        Folder(ZEBW("Projects"));
        Inbox().CreateFolderW(ZEBW("Projects"));
    }
    void DeleteFull()
    {
        CZebFolder full = Folder(ZEBW("Full"));
        SaveMessage(full, "kept");
        Inbox().DeleteFolder(full.GetEntryID(), nullptr, 0, nullptr);
    }
    void ReadLongValue()
    {
        CZebPropValArray values;
        CZebMessage message = Message();
        message.GetProps(values, 1, PR_BODY_W);
        const SPropValue& body = values.GetAt(0);
        ASSERT_EQ(PROP_TYPE(body.ulPropTag), ULONG(PT_ERROR));
        ThrowIfFailed(body.Value.err);
    }
    void ReadOtherType()
    {
        CZebPropValArray values;
        CZebMessage message = Message();
        message.GetProps(values, 1, PR_IMPORTANCE);
        const CStringW text = values[PR_IMPORTANCE];
    }
    void WriteComputed()
    {
        CZebPropValArray values(1);
        values[PR_OBJECT_TYPE] = ULONG(MAPI_FOLDER);
        CZebPropProblemArray problems;
        Message().SetProps(values, false, &problems);
        ASSERT_EQ(problems.GetCount(), 1);
        ThrowIfFailed(problems[0].scode);
    }
    void ReadMissingColumn()
    {
        for (CZebRow row : Contents().Rows({PR_ENTRYID}))
        {
            row[PR_SUBJECT_W].StringUtf8();
        }
    }
    void AssignTextToReceived()
    {
        SPropValue value = {};
        value.ulPropTag = PR_SUBJECT_W;
        CZebOnePropVal view(&value, nullptr);
        view = ZEBW("text");
    }
    void OpenAsOtherType()
    {
        CZebFolder folder;
        m_store->OpenEntry(MessageId(), folder, 0);
    }
    void SaveDeleted()
    {
        CZebMessage message = Message();
        Inbox().DeleteMessage(MessageId());
        CZebPropValArray values(1);
        values[PR_SUBJECT_W] = ZEBW("Dinner?");
        message.SetProps(values, true, nullptr);
    }
    void SaveChangedElsewhere()
    {
        CZebMessage first = Message(), second = Message();
        CZebPropValArray values(1);
        values[PR_SUBJECT_W] = ZEBW("Dinner?");
        first.SetProps(values, true, nullptr);
        second.SetProps(1, values, nullptr);
        second.SaveChanges(0);
    }
    void UseUndefinedFlag() { Inbox().GetContentsTable(0x00100000); }
    void AskForSearchFolder() { Inbox().CreateFolderW(ZEBW("Unread"), nullptr, 0, FOLDER_SEARCH); }
    void LogOnToMissing()
    {
        LogOff();
        LogOn("Work");
    }
    void StartWithoutProvider()
    {
        LogOff();
        Stop();
        platform::RegistryKey::Create(platform::RegistryRoot::LocalMachine,
                                      "SOFTWARE\\Clients\\Mail\\Microsoft Outlook")
            .SetStringValue("DLLPathEx", "C:\\nowhere\\provider.dll");
        Start();
    }
    void AllocateWithoutProvider()
    {
        LogOff();
        Stop();
        CZebBinary binary("00");
    }
};

struct Case
{
    const char* name; ///< of the page's section
    void (Failures::*provoke)();
};

constexpr Case Cases[] = {
    {"MAPI_E_CALL_FAILED", &Failures::StartWithoutProvider},
    {"MAPI_E_LOGON_FAILED", &Failures::LogOnToMissing},
    {"MAPI_E_NOT_INITIALIZED", &Failures::AllocateWithoutProvider},
    {"E_POINTER", &Failures::CallEmptyWrapper},
    {"MAPI_E_NOT_FOUND", &Failures::OpenMissingProperty},
    {"1168", &Failures::OpenMissingName},
    {"MAPI_E_INVALID_ENTRYID", &Failures::OpenBadIdentifier},
    {"MAPI_E_NO_ACCESS", &Failures::ChangeWithoutAccess},
    {"MAPI_E_INTERFACE_NOT_SUPPORTED", &Failures::OpenAsOtherType},
    {"MAPI_E_OBJECT_DELETED", &Failures::SaveDeleted},
    {"MAPI_E_OBJECT_CHANGED", &Failures::SaveChangedElsewhere},
    {"MAPI_E_COLLISION", &Failures::CreateTwice},
    {"MAPI_E_HAS_MESSAGES", &Failures::DeleteFull},
    {"MAPI_E_NOT_ENOUGH_MEMORY", &Failures::ReadLongValue},
    {"MAPI_E_INVALID_TYPE", &Failures::ReadOtherType},
    {"MAPI_E_UNEXPECTED_ID", &Failures::ReadMissingColumn},
    {"MAPI_E_INVALID_OBJECT", &Failures::AssignTextToReceived},
    {"MAPI_E_COMPUTED", &Failures::WriteComputed},
    {"MAPI_E_UNKNOWN_FLAGS", &Failures::UseUndefinedFlag},
    {"MAPI_E_NO_SUPPORT", &Failures::AskForSearchFolder},
};

struct EachFailure : Failures, testing::WithParamInterface<Case>
{
};

TEST_P(EachFailure, PrintsWhatThePageShows)
{
    const auto sections = ReadFailures(FailuresFile);
    ASSERT_EQ(sections.count(GetParam().name), 1u) << GetParam().name;
    const FailureSection& section = sections.at(GetParam().name);
    const Thrown thrown = ThrownBy([&] { (this->*GetParam().provoke)(); });
    const std::string printed = WithoutDetails(thrown.text) + "\n";
    const std::size_t place = section.lines.find(printed);
    EXPECT_NE(place, std::string::npos) << printed << section.lines;
    if (place == 0) // further lines are other systems'
    {
        EXPECT_EQ(Hex(thrown.result), section.code);
    }
}

INSTANTIATE_TEST_SUITE_P(, EachFailure, testing::ValuesIn(Cases), [](const auto& each) { return each.param.name; });

TEST(FailuresPage, ShowsTheTwentyThatAreProvoked)
{
    const auto sections = ReadFailures(FailuresFile);
    EXPECT_EQ(sections.size(), std::size(Cases));
    EXPECT_EQ(std::size(Cases), 20u);
    for (const auto& [name, section] : sections)
    {
        ULONG value = 0;
        if (Zeb_ValueFromName("MAPIErrors", name.c_str(), &value) == 1)
        {
            EXPECT_EQ(Hex(static_cast<HRESULT>(value)), section.code) << name;
        }
    }
}

} // namespace
} // namespace zeb::test
