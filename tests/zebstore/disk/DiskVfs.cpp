#include "tests/zebstore/disk/DiskVfs.h"

#include <sqlite3.h>

#include <cassert>
#include <cstring>
#include <new>

namespace zebstore::test
{

namespace
{

Disk* g_disk = nullptr;
int g_openFiles = 0;

/// What SQLite allocates for a file: this, and the system's own object behind it.
struct DiskFile : sqlite3_file
{
    std::string* name;

    sqlite3_file* Real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

DiskFile* Own(sqlite3_file* file)
{
    return static_cast<DiskFile*>(file);
}
const sqlite3_io_methods& Real(sqlite3_file* file)
{
    return *Own(file)->Real()->pMethods;
}

template <class Perform>
int Ask(sqlite3_file* file, DiskRequest request, const Perform& perform)
{
    request.name = *Own(file)->name;
    return g_disk->On(request, perform);
}

int Close(sqlite3_file* file)
{
    const int code = Real(file).xClose(Own(file)->Real());
    delete Own(file)->name;
    file->pMethods = nullptr;
    --g_openFiles;
    return code;
}
int Read(sqlite3_file* file, void* to, int count, sqlite3_int64 offset)
{
    return Ask(file, {DiskCall::Read, {}, offset, to, count}, [&](const DiskRequest& request)
    { return Real(file).xRead(Own(file)->Real(), request.bytes, request.count, request.offset); });
}
int Write(sqlite3_file* file, const void* from, int count, sqlite3_int64 offset)
{
    return Ask(file, {DiskCall::Write, {}, offset, const_cast<void*>(from), count}, [&](const DiskRequest& request)
    { return Real(file).xWrite(Own(file)->Real(), request.bytes, request.count, request.offset); });
}
int Truncate(sqlite3_file* file, sqlite3_int64 size)
{
    return Ask(file, {DiskCall::Truncate, {}, size},
               [&](const DiskRequest& request) { return Real(file).xTruncate(Own(file)->Real(), request.offset); });
}
int Sync(sqlite3_file* file, int flags)
{
    return Ask(file, {DiskCall::Sync, {}},
               [&](const DiskRequest&) { return Real(file).xSync(Own(file)->Real(), flags); });
}
int FileSize(sqlite3_file* file, sqlite3_int64* size)
{
    return Ask(file, {DiskCall::Size, {}},
               [&](const DiskRequest&) { return Real(file).xFileSize(Own(file)->Real(), size); });
}
int Lock(sqlite3_file* file, int level)
{
    return Ask(file, {DiskCall::Lock, {}},
               [&](const DiskRequest&) { return Real(file).xLock(Own(file)->Real(), level); });
}
int Unlock(sqlite3_file* file, int level)
{
    return Real(file).xUnlock(Own(file)->Real(), level);
}
int CheckReservedLock(sqlite3_file* file, int* result)
{
    return Real(file).xCheckReservedLock(Own(file)->Real(), result);
}
int FileControl(sqlite3_file* file, int what, void* argument)
{
    return Real(file).xFileControl(Own(file)->Real(), what, argument);
}
int SectorSize(sqlite3_file* file)
{
    return Real(file).xSectorSize(Own(file)->Real());
}
int DeviceCharacteristics(sqlite3_file* file)
{
    return Real(file).xDeviceCharacteristics(Own(file)->Real());
}
int ShmMap(sqlite3_file* file, int page, int size, int extend, void volatile** memory)
{
    *memory = nullptr;
    return Ask(file, {DiskCall::SharedMap, {}},
               [&](const DiskRequest&) { return Real(file).xShmMap(Own(file)->Real(), page, size, extend, memory); });
}
int ShmLock(sqlite3_file* file, int offset, int count, int flags)
{
    if (flags & SQLITE_SHM_UNLOCK)
    {
        return Real(file).xShmLock(Own(file)->Real(), offset, count, flags);
    }
    return Ask(file, {DiskCall::SharedLock, {}},
               [&](const DiskRequest&) { return Real(file).xShmLock(Own(file)->Real(), offset, count, flags); });
}
void ShmBarrier(sqlite3_file* file)
{
    Real(file).xShmBarrier(Own(file)->Real());
}
int ShmUnmap(sqlite3_file* file, int remove)
{
    return Real(file).xShmUnmap(Own(file)->Real(), remove);
}

// Version 2: no mapped files, which would be read without a call.
const sqlite3_io_methods g_methods = {2,
                                      Close,
                                      Read,
                                      Write,
                                      Truncate,
                                      Sync,
                                      FileSize,
                                      Lock,
                                      Unlock,
                                      CheckReservedLock,
                                      FileControl,
                                      SectorSize,
                                      DeviceCharacteristics,
                                      ShmMap,
                                      ShmLock,
                                      ShmBarrier,
                                      ShmUnmap,
                                      nullptr,
                                      nullptr};

sqlite3_vfs* Real(sqlite3_vfs* vfs)
{
    return static_cast<sqlite3_vfs*>(vfs->pAppData);
}

int OpenFile(sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags, int* outFlags)
{
    file->pMethods = nullptr;
    const auto perform = [&](const DiskRequest&)
    {
        sqlite3_file* const real = Own(file)->Real();
        std::memset(real, 0, static_cast<size_t>(Real(vfs)->szOsFile));
        const int code = Real(vfs)->xOpen(Real(vfs), name, real, flags, outFlags);
        if (code != SQLITE_OK)
        {
            if (real->pMethods != nullptr)
            {
                real->pMethods->xClose(real);
            }
            return code;
        }
        Own(file)->name = new std::string(name != nullptr ? name : "");
        file->pMethods = &g_methods;
        ++g_openFiles;
        return code;
    };
    return g_disk->On({DiskCall::Open, name != nullptr ? name : ""}, perform);
}
int Delete(sqlite3_vfs* vfs, const char* name, int syncFolder)
{
    return g_disk->On({DiskCall::Delete, name},
                      [&](const DiskRequest&) { return Real(vfs)->xDelete(Real(vfs), name, syncFolder); });
}
int Access(sqlite3_vfs* vfs, const char* name, int flags, int* result)
{
    return g_disk->On({DiskCall::Access, name},
                      [&](const DiskRequest&) { return Real(vfs)->xAccess(Real(vfs), name, flags, result); });
}
int FullPathname(sqlite3_vfs* vfs, const char* name, int size, char* path)
{
    return Real(vfs)->xFullPathname(Real(vfs), name, size, path);
}
int Randomness(sqlite3_vfs* vfs, int size, char* bytes)
{
    return Real(vfs)->xRandomness(Real(vfs), size, bytes);
}
int Sleep(sqlite3_vfs*, int microseconds)
{
    return microseconds; // nobody else uses the files: waiting changes nothing
}
int CurrentTime(sqlite3_vfs* vfs, double* time)
{
    return Real(vfs)->xCurrentTime(Real(vfs), time);
}
int GetLastError(sqlite3_vfs* vfs, int size, char* text)
{
    return Real(vfs)->xGetLastError(Real(vfs), size, text);
}
int CurrentTimeInt64(sqlite3_vfs* vfs, sqlite3_int64* time)
{
    return Real(vfs)->xCurrentTimeInt64(Real(vfs), time);
}

sqlite3_vfs MakeVfs(sqlite3_vfs* real)
{
    sqlite3_vfs vfs{};
    vfs.iVersion = 2;
    vfs.szOsFile = static_cast<int>(sizeof(DiskFile)) + real->szOsFile;
    vfs.mxPathname = real->mxPathname;
    vfs.zName = "disk";
    vfs.pAppData = real;
    vfs.xOpen = OpenFile;
    vfs.xDelete = Delete;
    vfs.xAccess = Access;
    vfs.xFullPathname = FullPathname;
    vfs.xRandomness = Randomness;
    vfs.xSleep = Sleep;
    vfs.xCurrentTime = CurrentTime;
    vfs.xGetLastError = GetLastError;
    vfs.xCurrentTimeInt64 = CurrentTimeInt64;
    return vfs;
}

sqlite3_vfs* TheVfs()
{
    static sqlite3_vfs vfs = MakeVfs(sqlite3_vfs_find(nullptr));
    return &vfs;
}

} // namespace

const char* NameOf(DiskCall call)
{
    static const char* const names[DiskCalls] = {"open",   "read",   "write", "sync",       "truncate",   "size",
                                                 "delete", "access", "lock",  "shared map", "shared lock"};
    return names[static_cast<int>(call)];
}

DiskScope::DiskScope(Disk& disk)
{
    sqlite3_initialize();
    g_disk = &disk;
    sqlite3_vfs_register(TheVfs(), 1);
}

DiskScope::~DiskScope()
{
    sqlite3_vfs_register(Real(TheVfs()), 1);
    assert(g_openFiles == 0);
    g_disk = nullptr;
}

int OpenDiskFiles()
{
    return g_openFiles;
}

} // namespace zebstore::test
