// SQLite's files over a disk that a test controls.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

struct sqlite3_vfs;

namespace zebstore::test
{

/// What SQLite asks of a file or of the folder that it is in.
enum class DiskCall
{
    Open,
    Read,
    Write,
    Sync,
    Truncate,
    Size,
    Delete,
    Access, ///< whether a file exists
    Lock,
    SharedMap, ///< memory that processes share
    SharedLock,
};
constexpr int DiskCalls = static_cast<int>(DiskCall::SharedLock) + 1;
const char* NameOf(DiskCall call);

/// One call. `name` is empty for a temporary file.
struct DiskRequest
{
    DiskCall call;
    std::string name;
    std::int64_t offset = 0; ///< also the size of Truncate
    void* bytes = nullptr;   ///< of Read and Write; Write does not change them
    int count = 0;
};

/// Decides what becomes of each call. Threads: one.
class Disk
{
public:
    virtual ~Disk() = default;
    /// @param perform does the call as the system does it, for a Write with these bytes instead; returns SQLite's result
    /// @return SQLite's result
    virtual int On(const DiskRequest& request, const std::function<int(const DiskRequest&)>& perform) = 0;
};

/// While it lives, all files that are opened by SQLite belong to `disk`; files that were open before do not. Every file must be
/// closed before it ends.
class DiskScope
{
public:
    explicit DiskScope(Disk& disk);
    ~DiskScope();
    DiskScope(const DiskScope&) = delete;
    DiskScope& operator=(const DiskScope&) = delete;
};

/// The files that are open through a DiskScope.
int OpenDiskFiles();

} // namespace zebstore::test
