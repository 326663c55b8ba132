// The MAPI library that the system itself brings.
#include "tests/zebapi/frame/ProviderFixture.h"
#include "zebapi/Mapiload.h"

namespace zeb::test
{

namespace
{

using ::testing::ElementsAre;

using ForeignProvider = ProviderFixture;

} // namespace

TEST_F(ForeignProvider, TheSystemsLibraryIsFoundLast)
{
    EnumOfficeBitness bitness = OfficeBitnessNone;
    EXPECT_EQ(std::string(Zeb_GetMapiDllPath(bitness)), "MAPI32.DLL");
    EXPECT_EQ(bitness, OfficeBitness32);
    EXPECT_THAT(log.Lines(), ElementsAre(Progress("Checking Outlook MAPI..."), Progress("Checking common MAPI: "),
                                         Progress("Check system MAPI: MAPI32.DLL"), Plain("Checking 'MAPI32.DLL'"),
                                         Plain("'MAPI32.DLL' is correct and MAPI is for 32-bit Office."),
                                         Progress("System MAPI is correct: MAPI32.DLL")));
}

} // namespace zeb::test
