// The tasks with the library's classes. docs/from-mapi.md shows what is between the marks.
#include "tests/documents/Tasks.h"

namespace wrapped
{

// [start]
void WithSession(void (*use)(CZebSession& session))
{
    Zeb_GetMAPI().Initialize(false);
    CZebSession session = Zeb_GetMAPI().OpenSession(nullptr, nullptr);
    use(session);
    Zeb_GetMAPI().Uninitialize(&session);
}
// [/start]

// [inbox]
CZebFolder OpenInbox(CZebSession& session)
{
    return session.OpenDefaultMsgStore(nullptr, MAPI_BEST_ACCESS).OpenInboxFolder(MAPI_BEST_ACCESS);
}
// [/inbox]

// [rows]
std::vector<Text> ReadSubjects(CZebTable& contents)
{
    std::vector<Text> subjects;
    for (CZebRow row : contents.Rows({PR_SUBJECT_W}))
    {
        subjects.push_back(row[PR_SUBJECT_W].UseDefault(ZEBW("")));
    }
    return subjects;
}
// [/rows]

// [search]
void RestrictToUnread(CZebTable& contents, const WCHAR* word)
{
    CZebRestrictionAllocator wanted;
    wanted.Allocate();
    wanted.CreateAnd(2);
    wanted[0].CreateContentW(PR_SUBJECT_W, word, FL_SUBSTRING | FL_IGNORECASE);
    wanted[1].CreateBitMask(PR_MESSAGE_FLAGS, MSGFLAG_READ, BMR_EQZ);
    contents.Restrict(wanted, 0);
}
// [/search]

// [body]
CStringW ReadBody(CZebMessage& message)
{
    return message.GetLongStringW(PR_BODY_W);
}
// [/body]

// [create]
CZebMessage CreateMessage(CZebFolder& folder, const WCHAR* subject, const WCHAR* address)
{
    CZebPropValArray properties(1);
    properties[PR_SUBJECT_W] = subject;
    CZebMessage message = folder.CreateMessage(properties, false, 0);
    message.AddRecipient(MAPI_TO, nullptr, address); // resolved, as a one-off entry
    message.SaveChanges(KEEP_OPEN_READWRITE);
    return message;
}
// [/create]

// [named]
void WriteStars(CZebMessage& message, LONG stars)
{
    CZebPropValArray properties(1);
    properties[message.GetNamedTag(TaskSet, ZEBW("Stars"), PT_LONG)] = stars;
    message.SetProps(properties, true, nullptr);
}
// [/named]

// [failure]
void DeleteFolder(CZebFolder& parent, const SBinary& folder, std::string& failure)
{
    try
    {
        parent.DeleteFolder(folder, nullptr, 0, nullptr);
    }
    catch (CZebException* exception)
    {
        failure = Zeb_DescribeException(exception); // the operation, the object and the provider's text
        exception->Delete();
    }
}
// [/failure]

} // namespace wrapped
