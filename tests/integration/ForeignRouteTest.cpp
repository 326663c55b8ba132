// Access through the system's own MAPI library to the registered mail client.
#include "tests/integration/Host.h"

#include "platform/module.h"

namespace zeb::test
{
namespace
{

using ForeignRoute = StoreHost;

TEST_F(ForeignRoute, TheSystemLibraryIsDecorated)
{
    EnumOfficeBitness bitness = OfficeBitnessNone;
    EXPECT_EQ(std::string(Zeb_GetMapiDllPath(bitness)), "MAPI32.DLL");
    EXPECT_EQ(bitness, OfficeBitness32);
    EXPECT_NE(platform::ResolveModulePath("MAPI32.DLL").find(platform::SystemFolder()), std::string::npos);
}

TEST_F(ForeignRoute, ItsStoreIsTheRegisteredClients)
{
    const CZebBinary provider = m_store->GetBinary(PR_MDB_PROVIDER);
    const SBinary& bytes = provider;
    ASSERT_EQ(bytes.cb, sizeof(GUID));
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(bytes.lpb), 8), "ZEBStore");
}

} // namespace
} // namespace zeb::test
