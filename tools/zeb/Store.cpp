// zeb stores, zeb store check
#include "tools/common/Failure.h"
#include "tools/common/HostSession.h"
#include "tools/common/Output.h"
#include "tools/zeb/Command.h"
#include "zebstore/zebstore.h"

#include <nlohmann/json.hpp>

#include <memory>

namespace zeb::tools
{
namespace
{

struct Options
{
    std::string profile;
    bool json = false;
};

int ListStores(const Options& options)
{
    HostSession session(options.profile);
    CZebTable table = session.Session().GetMsgStoresTable();
    table.SetColumns(4, PR_DISPLAY_NAME_W, PR_DEFAULT_STORE, PR_PROVIDER_DISPLAY_W, PR_ENTRYID);
    CZebRowSet rows;
    table.QueryAllRows(&rows, nullptr, nullptr);
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        const CZebRow row = rows[i];
        const bool isDefault = row.hasRealValue(PR_DEFAULT_STORE) && static_cast<bool>(row[PR_DEFAULT_STORE]);
        const std::string name = TextOf(row, PR_DISPLAY_NAME_W);
        if (!options.json)
        {
            Print((isDefault ? "* " : "  ") + OneLine(name) + "  " +
                  OneLine(TextOf(row, PR_PROVIDER_DISPLAY_W)) + "\n");
            continue;
        }
        nlohmann::ordered_json object;
        object["name"] = name;
        object["default"] = isDefault;
        object["provider"] = TextOf(row, PR_PROVIDER_DISPLAY_W);
        object["entryId"] = static_cast<const char*>(row[PR_ENTRYID].String(false));
        list.push_back(object);
    }
    if (options.json)
        Print(list.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n");
    return ExitDone;
}

int CheckStore(const Options& options)
{
    HostSession session(options.profile);
    CZebMsgStore store = session.OpenStore();
    const std::string name = TextOf(store, PR_DISPLAY_NAME_W);
    const std::string verdict = TextOf(store, PR_ZEBSTORE_CHECK_W);
    if (verdict.empty())
        throw ToolError("store '" + name + "' can not check itself: it is none of zebstore's");
    if (verdict == "ok")
    {
        Print("store '" + OneLine(name) + "' is sound\n");
        return ExitDone;
    }
    Complain("zeb", "store '" + OneLine(name) + "' is damaged:\n" + verdict);
    return ExitFailed;
}

} // namespace

void AddStore(CLI::App& app, Action& action)
{
    auto options = std::make_shared<Options>();
    CLI::App* list =
        app.add_subcommand("stores", "Lists the message stores of a profile; * marks the default one");
    AddProfileOption(*list, options->profile);
    list->add_flag("--json", options->json, "Print JSON");
    list->callback([options, &action] { action = [options] { return ListStores(*options); }; });

    CLI::App* store = app.add_subcommand("store", "Looks after the default store");
    store->require_subcommand(1);
    CLI::App* check = store->add_subcommand("check", "Checks the whole file of the default store");
    AddProfileOption(*check, options->profile);
    check->callback([options, &action] { action = [options] { return CheckStore(*options); }; });
}

} // namespace zeb::tools
