// The small provider library of the tests, and its control by a test in the same process.
#pragma once

#include "platform/mapi.h"

namespace zeb::test
{

/// The environment variable with the address of the FakeProviderControl, as a decimal number; none when unset.
constexpr char FakeProviderVariable[] = "ZEB_FAKE_PROVIDER";

/// The environment variable with the name of a file that the library writes its end to ("ended") and, when no control
/// is set, each release of WABOpen's objects ("released"), and calls that release something after the end ("called after its
/// end"); none when unset.
constexpr char FakeProviderTraceVariable[] = "ZEB_FAKE_PROVIDER_TRACE";

/// The answers of the library and the calls that it received. Every call looks it up again, so it outlives loads and
/// unloads.
struct FakeProviderControl
{
    // Answers.
    HRESULT initialize = S_OK;
    HRESULT logon = S_OK;
    bool throwsOnLogon = false;
    IMAPISession* session = nullptr; ///< returned with an additional reference
    HRESULT admin = S_OK;
    IProfAdmin* profAdmin = nullptr; ///< returned with an additional reference
    HRESULT wabOpen = S_OK;
    IAddrBook* addressBook = nullptr; ///< returned with an additional reference
    IWABObject* wabObject = nullptr;  ///< returned with an additional reference
    bool handsOutOnFailure = false;   ///< WABOpen fills its out pointers although it fails
    /// Of FGetComponentPath's calls in their order: null is FALSE, a text is TRUE with that path.
    const char* componentPaths[3] = {};
    /// When the library is unloaded for the first time, `replaceFile` is renamed to `replacedTo` and
    /// `replacement` to `replaceFile`.
    const char* replaceFile = nullptr;
    const char* replacedTo = nullptr;
    const char* replacement = nullptr;

    // Seen.
    int loads = 0;
    int unloads = 0;
    int initializeCalls = 0;
    ULONG initVersion = 0xFFFFFFFF;
    ULONG initFlags = 0;
    int uninitializeCalls = 0;
    int logonCalls = 0;
    ULONG_PTR logonParent = 0;
    bool logonNamed = false;
    char logonName[2048] = {}; ///< up to its terminator
    bool logonPassword = false;
    ULONG logonFlags = 0;
    int adminCalls = 0;
    ULONG adminFlags = 0xFFFFFFFF;
    int componentCalls = 0;
    char componentIds[3][64] = {};
    char componentQualifiers[3][128] = {}; ///< with their terminators; "(null)" for a null one
    DWORD componentSizes[3] = {};
    BOOL componentInstalls[3] = {};
    int wabOpenCalls = 0;
    WAB_PARAM wabParam = {};
    DWORD wabReserved = 0xFFFFFFFF;
    int liveRoots = 0;    ///< blocks of MAPIAllocateBuffer that are not freed
    char called[64] = {}; ///< the last utility entry point, as its export is spelled ("HrGetOneProp@12")
};

} // namespace zeb::test
