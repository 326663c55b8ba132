// A key or value that is closed to this user reads as absent; any other status of the system is a failure.
#include "tests/support/FailingSystem.h"
#include "tests/support/ProfileKeys.h"
#include "tests/zebapi/frame/LibraryFixture.h"
#include "zebapi/ZebAPI.h"

namespace zeb::test
{

namespace
{

using ::testing::HasSubstr;

// The calls of the system that reading the default profile makes.
constexpr int OpenVersionKey = 0;
constexpr int ReadVersion = 1;
constexpr int OpenProfilesKey = 2;
constexpr int ReadDefault = 3;

class ClosedRegistry : public LibraryFixture
{
protected:
    ClosedRegistry()
    {
        SetOutlookVersion("Outlook.Application.15");
        SetRegistry(platform::RegistryRoot::CurrentUser, Outlook15, "DefaultProfile", "New");
        SetRegistry(platform::RegistryRoot::CurrentUser, Subsystem, "DefaultProfile", "Old");
    }
    /// What `read` gives, or the description of what it throws, when the call of this number fails with `status`.
    template <class Read>
    static std::string With(int call, LSTATUS status, Read&& read)
    {
        try
        {
            const FailingSystem failing(call, true, static_cast<int>(status));
            const CStringA text = read();
            EXPECT_TRUE(failing.HasFailed());
            return std::string(text);
        }
        catch (CZebException* exception)
        {
            const std::string text = exception->GetResult() == MAPI_E_CALL_FAILED
                                         ? std::string(Zeb_GetExceptionDescription(exception))
                                         : "another code";
            exception->Delete();
            return text;
        }
    }
    std::string DefaultWith(int call, LSTATUS status)
    {
        return With(call, status, [this] { return m_names.GetDefaultProfile(); });
    }
    static std::string PathWith(int call, LSTATUS status)
    {
        EnumOfficeBitness bitness = OfficeBitnessNone;
        return With(call, status, [&] { return Zeb_GetMapiDllPath(bitness); });
    }

    CZebProfileNames m_names;
};

} // namespace

TEST_F(ClosedRegistry, NothingClosedReadsTheName)
{
    EXPECT_EQ(std::string(m_names.GetDefaultProfile()), "New");
}

TEST_F(ClosedRegistry, KeysClosedToUsersAreAbsent)
{
    EXPECT_EQ(DefaultWith(OpenVersionKey, ERROR_ACCESS_DENIED), "Old");
    EXPECT_EQ(DefaultWith(ReadVersion, ERROR_ACCESS_DENIED), "Old");
    EXPECT_EQ(DefaultWith(OpenProfilesKey, ERROR_ACCESS_DENIED), "");
    EXPECT_EQ(DefaultWith(ReadDefault, ERROR_ACCESS_DENIED), "");
    EXPECT_EQ(log.CountBeginning("THROW"), 0u);
}

TEST_F(ClosedRegistry, AnotherStatusNamesTheKey)
{
    EXPECT_THAT(DefaultWith(OpenVersionKey, ERROR_BADDB), HasSubstr("'Outlook.Application\\CurVer'"));
    EXPECT_THAT(DefaultWith(OpenProfilesKey, ERROR_BADDB), HasSubstr("'Software\\Microsoft\\Office\\15.0\\Outlook'"));
    EXPECT_EQ(DefaultWith(ReadDefault, ERROR_BADKEY), "") << "a value that cannot be read is none";
}

TEST_F(ClosedRegistry, TheSearchSkipsOnlyClosedKeys)
{
    const std::string path = Install(ProviderFile::Undecorated());
    EnumOfficeBitness bitness = OfficeBitnessNone;
    ASSERT_EQ(std::string(Zeb_GetMapiDllPath(bitness)), path);
    EXPECT_EQ(PathWith(0, ERROR_ACCESS_DENIED), "");
    EXPECT_EQ(PathWith(1, ERROR_ACCESS_DENIED), "") << "the value that names the library";
    EXPECT_THAT(PathWith(0, ERROR_BADDB), HasSubstr(OutlookClientKey));
}

} // namespace zeb::test
