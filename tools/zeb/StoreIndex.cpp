// zeb store index on, off and status
#include "tools/common/Failure.h"
#include "tools/common/Lister.h"
#include "tools/common/Output.h"
#include "tools/common/Progress.h"
#include "tools/common/StoreUpgrade.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/StoreExports.h"
#include "zebstore/zebstore.h"

#include <memory>

namespace zeb::tools
{
namespace
{

struct IndexOptions
{
    std::string profile;
    std::string file; ///< path of the store's file, UTF-8; empty: the profile's store
    bool json = false;
};

void STDAPICALLTYPE ShowIndexProgress(void* context, const char* finding, ULONGLONG done, ULONGLONG whole)
{
    if (finding == nullptr && whole != 0)
    {
        static_cast<Progress*>(context)->Step(done * 1000 / whole);
    }
}

ZEBSTORE_INDEX_STATE UseIndex(const std::string& file, ULONG action)
{
    Progress progress("blocks", 1000);
    ZEBSTORE_INDEX_STATE state{};
    char failure[1024] = "";
    const HRESULT result = StoreExport<ZEBSTORE_INDEX>("ZebStoreIndex")(file.c_str(), action, &state, ShowIndexProgress,
                                                                        &progress, failure, sizeof(failure));
    progress.Clear();
    if (FAILED(result))
    {
        const char* const doing = action == ZEBSTORE_INDEX_STATUS ? "read" : "change";
        throw ToolError(std::string("cannot ") + doing + " the text index of store file '" + file + "': " + failure);
    }
    return state;
}

std::string TextOfState(const ZEBSTORE_INDEX_STATE& state)
{
    if (state.isOn == 0)
    {
        return "no text index";
    }
    if (state.isOn != 1)
    {
        return "a text index of another version, which is not used; 'zeb store index on' makes it again";
    }
    return "text index of " + Grouped(state.messages - state.waiting) + " messages, " + Grouped(state.bytes) +
           " bytes; " + Grouped(state.waiting) + " waiting";
}

Json JsonOfState(const std::string& file, const ZEBSTORE_INDEX_STATE& state)
{
    return {{"file", file},
            {"index", state.isOn == 0   ? "off"
                      : state.isOn == 1 ? "on"
                                        : "outdated"},
            {"messages", state.messages},
            {"waiting", state.waiting},
            {"bytes", state.bytes}};
}

int RunIndex(const IndexOptions& options, ULONG action)
{
    const std::string file = options.file.empty() ? StoreFileOf(options.profile) : options.file;
    if (action != ZEBSTORE_INDEX_STATUS)
    {
        AnnounceUpgrade(file);
    }
    const ZEBSTORE_INDEX_STATE state = UseIndex(file, action);
    Lister(options.json)
        .Object([&] { return JsonOfState(file, state); },
                [&] { Print("store file '" + OneLine(file) + "': " + TextOfState(state) + "\n"); });
    return ExitDone;
}

} // namespace

void AddStoreIndex(Command store)
{
    auto options = std::make_shared<IndexOptions>();
    Command index = store.AddCommand(
        "index", "Switches the text index of a store's file, which makes searches for texts in subject, sender, "
                 "recipients and body quick and saving slower");
    index.NeedsCommand();
    const auto add = [&](const char* name, const char* help, ULONG action)
    {
        Command command = index.AddCommand(name, help);
        AddProfileOption(command, options->profile);
        command.AddOption("file", options->file, "The store's file; without it the file of the profile's store")
            .Type("FILE")
            .Excludes("--profile");
        command.AddFlag("--json", options->json, "Print JSON");
        command.Runs([options, action] { return RunIndex(*options, action); });
    };
    add("on", "Makes the index, or indexes what waits; other programs may use the store meanwhile", ZEBSTORE_INDEX_ON);
    add("off", "Drops the index; 'zeb store compact' frees its space", ZEBSTORE_INDEX_OFF);
    add("status", "Tells whether there is an index, and how many messages are in it", ZEBSTORE_INDEX_STATUS);
}

} // namespace zeb::tools
