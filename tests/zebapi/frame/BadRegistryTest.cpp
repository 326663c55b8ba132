// A registry that cannot be read: only where it is a file can it be made so.
#include "tests/support/Unprivileged.h"
#include "tests/zebapi/frame/LibraryFixture.h"

#include "zebapi/ZebAPI.h"

#include <filesystem>

namespace zeb::test
{

namespace
{

using ::testing::HasSubstr;

/// What a call throws: the description of a CZebException*, or that it was something else.
template <class Body>
std::string Failure(Body&& body)
{
    try
    {
        body();
    }
    catch (CZebException* exception)
    {
        const std::string text = std::to_string(exception->GetResult() == MAPI_E_CALL_FAILED) + " " +
                                 std::string(Zeb_GetExceptionDescription(exception));
        exception->Delete();
        return text;
    }
    catch (const std::exception& error)
    {
        return std::string("a standard exception: ") + error.what();
    }
    return "nothing";
}

class BadRegistry : public LibraryFixture
{
protected:
    ~BadRegistry() override { SetEnvironment("ZEBAPI_REGISTRY", m_own); }

    /// Every operation that reads the registry.
    void ExpectFailures(const std::string& reason)
    {
        EnumOfficeBitness bitness = OfficeBitnessNone;
        const std::pair<const char*, std::function<void()>> readers[] = {
            {"Initialize(false)", [this] { library.Initialize(false); }},
            {"Initialize(true)", [this] { library.Initialize(true); }},
            {"Zeb_GetMapiDllPath", [&bitness] { Zeb_GetMapiDllPath(bitness); }},
            {"CZebProfileNames", [] { CZebProfileNames names; }},
            {"GetProfilesKey", [] { CZebProfileNames::GetProfilesKey(); }},
            {"GetDefaultProfileName", [this] { library.GetDefaultProfileName(); }},
        };
        for (const auto& [name, read] : readers)
        {
            library.SetWasFailed(false);
            const std::string failure = Failure(read);
            EXPECT_THAT(failure, HasSubstr("1 Ver:0, Error:")) << name;
            EXPECT_THAT(failure, HasSubstr(reason)) << name;
        }
        log.Clear();
        EXPECT_FALSE(Zeb_HasDefaultProfile());
        EXPECT_EQ(log.CountBeginning("EXCEPTION: Description: \"Ver:0, Error:"), 1u);
    }

    std::string m_own = std::getenv("ZEBAPI_REGISTRY");
};

} // namespace

TEST_F(BadRegistry, ASyntaxErrorNamesTheLine)
{
    std::ofstream(m_own) << "REGEDIT4\n\n[HKEY_CURRENT_USER\\K]\nthis is no value\n";
    ExpectFailures("has an error in line 4");
}

TEST_F(BadRegistry, AnUnreadableFileIsAFailure)
{
    std::filesystem::create_directory(m_own);
    ExpectFailures("registry.reg");
}

TEST_F(BadRegistry, AForbiddenFileIsAFailure)
{
    std::ofstream(m_own) << "REGEDIT4\n";
    std::filesystem::permissions(m_own, std::filesystem::perms::none);
    const UnprivilegedScope unprivileged;
    ASSERT_TRUE(unprivileged.IsInForce());
    ExpectFailures("Permission denied");
}

TEST_F(BadRegistry, AMissingPlaceIsAFailure)
{
    const EnvironmentScope config("XDG_CONFIG_HOME", std::nullopt);
    const EnvironmentScope home("HOME", std::nullopt);
    SetEnvironment("ZEBAPI_REGISTRY", std::nullopt);
    ExpectFailures("no path for the registry file");
}

TEST_F(BadRegistry, OpenNamesStayReadable)
{
    platform::RegistryKey::Create(platform::RegistryRoot::CurrentUser,
                                  std::string(CZebProfileNames::GetProfilesKey()) + "\\Alpha");
    CZebProfileNames names;
    std::ofstream(m_own) << "no registry\n";
    CString name;
    EXPECT_EQ(names.GetNextName(name), 1);
    EXPECT_THAT(Failure([&names] { names.GetDefaultProfile(); }), HasSubstr("line 1"));
}

} // namespace zeb::test
