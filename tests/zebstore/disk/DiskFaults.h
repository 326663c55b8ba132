// The failures of a disk that tests try for each call.
//
// ZEB_FAULTS=all in the environment takes every kind of failure for every call, instead of one after the other.
#pragma once

#include "tests/zebstore/disk/FailingDisk.h"
#include "zebstore/base/Error.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

namespace zebstore::test
{

using Extent = DiskFault::Extent;

inline const std::vector<DiskFault> OpenFaults = {
    {DiskCall::Open, SQLITE_CANTOPEN, Extent::Nothing, false, "fails"},
    {DiskCall::Open, SQLITE_IOERR, Extent::Nothing, true, "fails for good"}};
inline const std::vector<DiskFault> ReadFaults = {
    {DiskCall::Read, SQLITE_IOERR_READ, Extent::Nothing, false, "fails"},
    {DiskCall::Read, SQLITE_IOERR_READ, Extent::Nothing, true, "fails for good"}};
inline const std::vector<DiskFault> WriteFaults = {
    {DiskCall::Write, SQLITE_IOERR_WRITE, Extent::Nothing, false, "fails"},
    {DiskCall::Write, SQLITE_FULL, Extent::Half, false, "is shortened"},
    {DiskCall::Write, SQLITE_IOERR_WRITE, Extent::Torn, false, "is torn"},
    {DiskCall::Write, SQLITE_IOERR_WRITE, Extent::Torn, true, "is torn for good"},
    {DiskCall::Write, SQLITE_FULL, Extent::Half, true, "is shortened for good"}};
inline const std::vector<DiskFault> SyncFaults = {
    {DiskCall::Sync, SQLITE_IOERR_FSYNC, Extent::Nothing, false, "fails"},
    {DiskCall::Sync, SQLITE_IOERR_FSYNC, Extent::Half, false, "is done and fails"},
    {DiskCall::Sync, SQLITE_IOERR_FSYNC, Extent::Nothing, true, "fails for good"}};
inline const std::vector<DiskFault> TruncateFaults = {
    {DiskCall::Truncate, SQLITE_IOERR_TRUNCATE, Extent::Nothing, false, "fails"},
    {DiskCall::Truncate, SQLITE_IOERR_TRUNCATE, Extent::Half, false, "is done and fails"}};
inline const std::vector<DiskFault> SizeFaults = {
    {DiskCall::Size, SQLITE_IOERR_FSTAT, Extent::Nothing, false, "fails"}};
inline const std::vector<DiskFault> DeleteFaults = {
    {DiskCall::Delete, SQLITE_IOERR_DELETE, Extent::Nothing, false, "fails"},
    {DiskCall::Delete, SQLITE_IOERR_DELETE, Extent::Half, false, "is done and fails"}};
inline const std::vector<DiskFault> AccessFaults = {
    {DiskCall::Access, SQLITE_IOERR_ACCESS, Extent::Nothing, false, "fails"}};
inline const std::vector<DiskFault> LockFaults = {{DiskCall::Lock, SQLITE_IOERR_LOCK, Extent::Nothing, false, "fails"},
                                                  {DiskCall::Lock, SQLITE_BUSY, Extent::Nothing, false, "must wait"}};
inline const std::vector<DiskFault> MapFaults = {
    {DiskCall::SharedMap, SQLITE_IOERR_SHMMAP, Extent::Nothing, false, "fails"},
    {DiskCall::SharedMap, SQLITE_CANTOPEN, Extent::Nothing, true, "fails for good"}};
inline const std::vector<DiskFault> SharedLockFaults = {
    {DiskCall::SharedLock, SQLITE_IOERR_SHMLOCK, Extent::Nothing, false, "fails"},
    {DiskCall::SharedLock, SQLITE_BUSY, Extent::Nothing, false, "must wait"}};

/// The results that a host may get when the disk fails.
inline bool IsStated(HRESULT code)
{
    return code == MAPI_E_DISK_ERROR || code == MAPI_E_NOT_ENOUGH_DISK || code == MAPI_E_BUSY ||
           code == MAPI_E_NO_ACCESS;
}

inline bool AllFaults()
{
    const char* wanted = std::getenv("ZEB_FAULTS");
    return wanted != nullptr && std::string(wanted) == "all";
}

/// The calls that a test lets fail: every `stride`th from `first` on. With ZEB_FAULTS=all every one.
struct Numbers
{
    int first = 1;
    int stride = 1;
};

/// Runs `body` with a fault and the number of the call that fails, until no call is left. The numbers take the faults in
/// turn.
/// @param body returns whether the work made so many calls
/// @return how many calls failed
template <class Body>
int EachFault(const std::vector<DiskFault>& faults, Numbers numbers, Body&& body)
{
    numbers = AllFaults() ? Numbers() : numbers;
    const size_t each = AllFaults() ? faults.size() : 1;
    int points = 0;
    int turn = 0;
    for (bool happened = true; happened && !testing::Test::HasFailure(); ++turn)
    {
        happened = false;
        for (size_t i = 0; i < each; ++i)
        {
            const bool reached =
                body(faults[(static_cast<size_t>(turn) + i) % faults.size()], numbers.first + turn * numbers.stride);
            happened = happened || reached;
            points += reached ? 1 : 0;
        }
    }
    return points;
}

} // namespace zebstore::test
