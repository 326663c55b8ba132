#include "tests/zebstore/disk/RecordingDisk.h"

#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace zebstore::test
{

namespace fs = std::filesystem;

namespace
{

constexpr size_t SectorBytes = 512;

DiskEvent EventOf(const DiskRequest& request)
{
    using Kind = DiskEvent::Kind;
    switch (request.call)
    {
    case DiskCall::Write:
        return {Kind::Write, request.name, request.offset,
                std::string(static_cast<const char*>(request.bytes), static_cast<size_t>(request.count))};
    case DiskCall::Truncate:
        return {Kind::Truncate, request.name, request.offset, {}};
    case DiskCall::Delete:
        return {Kind::Delete, request.name, 0, {}};
    default:
        return {Kind::Sync, request.name, 0, {}};
    }
}

} // namespace

int RecordingDisk::On(const DiskRequest& request, const std::function<int(const DiskRequest&)>& perform)
{
    const bool changes = request.call == DiskCall::Write || request.call == DiskCall::Truncate ||
                         request.call == DiskCall::Delete || request.call == DiskCall::Sync;
    if (changes && !request.name.empty())
    {
        m_events.push_back(EventOf(request));
    }
    return perform(request);
}

UnsyncedFiles::UnsyncedFiles(const std::string& path)
{
    std::ifstream file(fs::u8path(path), std::ios::binary);
    m_files[path].durable = std::string(std::istreambuf_iterator<char>(file), {});
}

void UnsyncedFiles::Add(const DiskEvent& event)
{
    if (event.kind == DiskEvent::Kind::Done)
    {
        return;
    }
    File& file = m_files[event.name];
    if (event.kind != DiskEvent::Kind::Sync)
    {
        file.pending.push_back(event);
        return;
    }
    for (const DiskEvent& each : file.pending)
    {
        Apply(each, file.durable);
    }
    file.pending.clear();
}

void UnsyncedFiles::Apply(const DiskEvent& event, std::optional<std::string>& content)
{
    if (event.kind == DiskEvent::Kind::Delete)
    {
        content.reset();
        return;
    }
    if (!content)
    {
        content.emplace();
    }
    const auto offset = static_cast<size_t>(event.offset);
    if (event.kind == DiskEvent::Kind::Truncate)
    {
        content->resize(offset);
        return;
    }
    content->resize(std::max(content->size(), offset + event.bytes.size()));
    content->replace(offset, event.bytes.size(), event.bytes);
}

// Each sector on its own reaches the disk or does not.
void UnsyncedFiles::ApplyTorn(DiskEvent event, std::mt19937& random, std::optional<std::string>& content)
{
    const std::string bytes = std::move(event.bytes);
    const std::int64_t start = event.offset;
    for (size_t at = 0; at < bytes.size();)
    {
        const size_t within = (static_cast<size_t>(start) + at) % SectorBytes;
        const size_t part = std::min(bytes.size() - at, SectorBytes - within);
        if (random() % 2 == 0)
        {
            event.offset = start + static_cast<std::int64_t>(at);
            event.bytes = bytes.substr(at, part);
            Apply(event, content);
        }
        at += part;
    }
}

void UnsyncedFiles::WriteImage(std::mt19937* random) const
{
    for (const auto& [name, file] : m_files)
    {
        std::optional<std::string> content = file.durable;
        for (const DiskEvent& each : file.pending)
        {
            const unsigned fate = random != nullptr ? (*random)() % 4 : 3; // kept, kept, torn, lost
            if (fate == 3 && each.kind == DiskEvent::Kind::Delete)
            {
                break; // what follows is about a new file of this name, which is not there either
            }
            if (fate < 2 || (fate == 2 && each.kind != DiskEvent::Kind::Write))
            {
                Apply(each, content);
            }
            else if (fate == 2)
            {
                ApplyTorn(each, *random, content);
            }
        }
        fs::remove(fs::u8path(name));
        if (content)
        {
            std::ofstream(fs::u8path(name), std::ios::binary).write(content->data(), std::streamsize(content->size()));
        }
    }
}

} // namespace zebstore::test
