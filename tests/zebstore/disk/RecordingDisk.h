// A disk that records what it was asked to write, so that a loss of power at any moment can be made from the record.
#pragma once

#include "tests/zebstore/disk/DiskVfs.h"

#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace zebstore::test
{

/// What changed a file or made it last, or a step of the work that was done.
struct DiskEvent
{
    enum class Kind
    {
        Write,
        Truncate,
        Delete,
        Sync,
        Done,
    };

    Kind kind;
    std::string name;
    std::int64_t offset = 0; ///< also the size of Truncate
    std::string bytes;
};

/// Records; the calls are done as ever. Temporary files are left out, which nobody reads after a loss of power.
class RecordingDisk final : public Disk
{
public:
    int On(const DiskRequest& request, const std::function<int(const DiskRequest&)>& perform) override;
    /// A step of the work was done: its change was acknowledged.
    void AddDone() { m_events.push_back({DiskEvent::Kind::Done, {}, 0, {}}); }
    const std::vector<DiskEvent>& Events() const { return m_events; }

private:
    std::vector<DiskEvent> m_events;
};

/// The files on a disk that keeps back what was not synced.
class UnsyncedFiles
{
public:
    /// The file `path` is there from the beginning.
    explicit UnsyncedFiles(const std::string& path);

    void Add(const DiskEvent& event);
    /// Writes the files as they may be after a loss of power now: with what was synced and, if `random` is given, with a
    /// part of what was not; some of those writes are torn at the borders of sectors.
    void WriteImage(std::mt19937* random) const;

private:
    struct File
    {
        std::optional<std::string> durable; ///< none: there is no such file
        std::vector<DiskEvent> pending;
    };

    static void Apply(const DiskEvent& event, std::optional<std::string>& content);
    static void ApplyTorn(DiskEvent event, std::mt19937& random, std::optional<std::string>& content);

    std::map<std::string, File> m_files;
};

} // namespace zebstore::test
