#include "tools/common/StoreUpgrade.h"

#include "platform/console.h"
#include "tools/common/Output.h"
#include "zebstore/zebstore.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace zeb::tools
{
namespace
{

constexpr char Magic[] = "SQLite format 3";
constexpr size_t HeaderSize = 100;
constexpr size_t PageSizeAt = 16, PagesAt = 28, FreePagesAt = 36, VersionAt = 60;
constexpr size_t ApplicationAt = 68;

uint32_t BigEndian(const unsigned char* bytes)
{
    return static_cast<uint32_t>(bytes[0]) << 24 | static_cast<uint32_t>(bytes[1]) << 16 |
           static_cast<uint32_t>(bytes[2]) << 8 | bytes[3];
}

bool IsOlderStore(const std::string& file)
{
    const std::filesystem::path path = std::filesystem::u8path(file);
    std::filesystem::path log = path;
    log += "-wal";
    std::error_code failure;
    // A write-ahead log next to the file overrides the file's header.
    if (std::filesystem::file_size(log, failure) > 0 && !failure)
    {
        return false;
    }
    const std::optional<StoreHeader> header = ReadStoreHeader(file);
    return header && header->version < ZEBSTORE_FILE_VERSION;
}

} // namespace

std::optional<StoreHeader> ReadStoreHeader(const std::string& file)
{
    unsigned char bytes[HeaderSize] = {};
    std::ifstream stream(std::filesystem::u8path(file), std::ios::binary);
    if (!stream.read(reinterpret_cast<char*>(bytes), sizeof bytes) || std::memcmp(bytes, Magic, sizeof Magic) != 0 ||
        BigEndian(bytes + ApplicationAt) != ZEBSTORE_APPLICATION_ID)
    {
        return std::nullopt;
    }
    StoreHeader header;
    header.version = BigEndian(bytes + VersionAt);
    header.pageSize = static_cast<uint32_t>(bytes[PageSizeAt]) << 8 | bytes[PageSizeAt + 1];
    header.pageSize = header.pageSize == 1 ? 65536 : header.pageSize;
    header.pages = BigEndian(bytes + PagesAt);
    header.freePages = BigEndian(bytes + FreePagesAt);
    return header;
}

void AnnounceUpgrade(const std::string& file)
{
    if (!platform::IsTerminal(platform::OutputStream::Error) || !IsOlderStore(file))
    {
        return;
    }
    std::fprintf(stderr, "upgrading store '%s'\n", OneLine(file).c_str());
    std::fflush(stderr);
}

} // namespace zeb::tools
