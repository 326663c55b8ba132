// zeb store info
#include "tools/common/Failure.h"
#include "tools/common/HostSession.h"
#include "tools/common/Lister.h"
#include "tools/common/Output.h"
#include "tools/common/Profiles.h"
#include "tools/common/StoreUpgrade.h"
#include "tools/zeb/Command.h"

#include <filesystem>
#include <memory>

namespace zeb::tools
{
namespace
{

struct StoreInfoOptions
{
    std::string profile;
    bool json = false;
};

/// Sums over all folders of a store.
struct StoreCounts
{
    uint64_t folders = 0, messages = 0, unread = 0, hidden = 0;
};

StoreCounts CountAll(CZebMsgStore& store)
{
    StoreCounts counts;
    CZebTable table = store.OpenRootFolder(MAPI_BEST_ACCESS).GetHierarchyTable(CONVENIENT_DEPTH);
    for (CZebRow row : table.Rows({PR_CONTENT_COUNT, PR_CONTENT_UNREAD, PR_ASSOC_CONTENT_COUNT}))
    {
        ++counts.folders;
        counts.messages += static_cast<uint64_t>(NumberOf(row, PR_CONTENT_COUNT));
        counts.unread += static_cast<uint64_t>(NumberOf(row, PR_CONTENT_UNREAD));
        counts.hidden += static_cast<uint64_t>(NumberOf(row, PR_ASSOC_CONTENT_COUNT));
    }
    return counts;
}

uint64_t BytesOf(const std::string& file)
{
    std::error_code failure;
    const auto size = std::filesystem::file_size(std::filesystem::u8path(file), failure);
    return failure ? 0 : size;
}

bool IsWritable(CZebMsgStore& store)
{
    CZebPropValArray values;
    store.OpenRootFolder(MAPI_BEST_ACCESS).GetProps(values, 1, PR_ACCESS_LEVEL);
    return values.hasRealValue(PR_ACCESS_LEVEL) && (static_cast<LONG>(values[PR_ACCESS_LEVEL]) & MAPI_MODIFY) != 0;
}

void PrintInfoLine(const char* name, const std::string& value)
{
    Print("  " + Fitted(name, 10) + value + "\n");
}

void PrintInfo(const Json& info)
{
    const auto number = [&](const char* name) { return Grouped(info[name].get<uint64_t>()); };
    Print("store '" + OneLine(info["name"]) + "'\n");
    if (info["file"].is_string())
    {
        PrintInfoLine("file", OneLine(info["file"]));
        PrintInfoLine("size", number("size") + " bytes, of them " + number("free") + " free; " + number("log") +
                                  " bytes in the write-ahead log");
        PrintInfoLine("version", number("fileVersion"));
    }
    PrintInfoLine("access", info["writable"].get<bool>() ? "read and write" : "read only");
    PrintInfoLine("folders", number("folders"));
    PrintInfoLine("messages",
                  number("messages") + " (" + number("unread") + " unread), and " + number("hidden") + " hidden");
}

int ShowInfo(const StoreInfoOptions& options)
{
    HostSession session(options.profile);
    CZebMsgStore store = session.OpenStore();
    CZebProfAdmin administration = CZebProfAdmin::Open();
    const std::string file = FileOfStore(administration, options.profile);
    const StoreCounts counts = CountAll(store);
    Json info = {{"name", TextOf(store, PR_DISPLAY_NAME_W)}, {"file", TextOrNull(file)}};
    if (const std::optional<StoreHeader> header = ReadStoreHeader(file))
    {
        info["size"] = BytesOf(file);
        info["free"] = uint64_t{header->freePages} * header->pageSize;
        info["log"] = BytesOf(file + "-wal");
        info["fileVersion"] = header->version;
    }
    info["writable"] = IsWritable(store);
    info["folders"] = counts.folders;
    info["messages"] = counts.messages;
    info["unread"] = counts.unread;
    info["hidden"] = counts.hidden;
    Lister(options.json).Object([&] { return info; }, [&] { PrintInfo(info); });
    return ExitDone;
}

} // namespace

void AddStoreInfo(Command store)
{
    auto options = std::make_shared<StoreInfoOptions>();
    Command command = store.AddCommand("info", "Shows a store's file, its size and what it holds");
    AddProfileOption(command, options->profile);
    command.AddFlag("--json", options->json, "Print JSON");
    command.Runs([options] { return ShowInfo(*options); });
}

} // namespace zeb::tools
