// zeb stores, zeb store check, repair, compact and backup
#include "tools/common/Failure.h"
#include "tools/common/HostSession.h"
#include "tools/common/Lister.h"
#include "tools/common/Output.h"
#include "tools/common/Profiles.h"
#include "tools/common/Progress.h"
#include "tools/common/StoreUpgrade.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/StoreExports.h"
#include "zebstore/zebstore.h"

#include <filesystem>
#include <memory>
#include <vector>

namespace zeb::tools
{
namespace
{

struct StoreOptions
{
    std::string profile;
    std::string file;   ///< path of the store's file, UTF-8; empty: the profile's store
    std::string output; ///< path of the repaired copy, UTF-8; empty: next to the store's file
    bool inPlace = false;
    bool json = false;
};

/// A store of a profile.
struct ListedStore
{
    std::string name, provider, entryId;
    std::string file; ///< empty for the stores of other providers
    bool isDefault = false;
};

ListedStore StoreOf(const CZebRow& row)
{
    ListedStore store;
    store.name = TextOf(row, PR_DISPLAY_NAME_W);
    store.provider = TextOf(row, PR_PROVIDER_DISPLAY_W);
    store.entryId = static_cast<const char*>(row[PR_ENTRYID].String(false));
    store.file = TextOf(row, PR_ZEBSTORE_PATH_W);
    store.isDefault = row.hasRealValue(PR_DEFAULT_STORE) && static_cast<bool>(row[PR_DEFAULT_STORE]);
    return store;
}

Json JsonOf(const ListedStore& store)
{
    return {{"name", store.name},
            {"default", store.isDefault},
            {"provider", store.provider},
            {"file", TextOrNull(store.file)},
            {"entryId", store.entryId}};
}

void PrintStore(const ListedStore& store)
{
    Print((store.isDefault ? "* " : "  ") + OneLine(store.name) + "  " + OneLine(store.provider) +
          (store.file.empty() ? "" : "  " + OneLine(store.file)) + "\n");
}

int ListStores(const StoreOptions& options)
{
    HostSession session(options.profile);
    CZebTable table = session.Session().GetMsgStoresTable();
    Lister lister(options.json);
    for (CZebRow row :
         table.Rows({PR_DISPLAY_NAME_W, PR_DEFAULT_STORE, PR_PROVIDER_DISPLAY_W, PR_ENTRYID, PR_ZEBSTORE_PATH_W}))
    {
        const ListedStore store = StoreOf(row);
        lister.Row([&] { return JsonOf(store); }, [&] { PrintStore(store); });
    }
    lister.EndAs("stores");
    return ExitDone;
}

int CheckStore(const StoreOptions& options)
{
    HostSession session(options.profile);
    CZebMsgStore store = session.OpenStore();
    const std::string name = TextOf(store, PR_DISPLAY_NAME_W);
    const std::string verdict = TextOf(store, PR_ZEBSTORE_CHECK_W);
    if (verdict.empty())
    {
        throw ToolError("store '" + name + "' cannot be checked: it is not a zebstore store");
    }
    CZebProfAdmin administration = CZebProfAdmin::Open();
    const std::string named =
        "store '" + OneLine(name) + "' in '" + OneLine(FileOfStore(administration, options.profile)) + "'";
    if (verdict == "ok")
    {
        Print(named + " is intact\n");
        return ExitDone;
    }
    Complain("zeb", named + " is damaged:\n" + verdict);
    return ExitFailed;
}

/// Progress and findings reported while the provider works on a file.
class Care
{
public:
    explicit Care(const char* unit)
        : m_progress(unit, WholeShown)
    {
    }

    static void STDAPICALLTYPE Take(void* context, const char* finding, ULONGLONG done, ULONGLONG whole)
    {
        Care& care = *static_cast<Care*>(context);
        if (finding != nullptr)
        {
            care.m_progress.Clear();
            care.m_findings.push_back(finding);
        }
        else
        {
            care.m_progress.Step(whole == 0 ? 0 : done * WholeShown / whole);
        }
    }

    void Clear() { m_progress.Clear(); }
    const std::vector<std::string>& Findings() const { return m_findings; }

private:
    static constexpr uint64_t WholeShown = 1000;

    Progress m_progress;
    std::vector<std::string> m_findings;
};

void RequireDone(HRESULT result, const char* doing, const std::string& file, const char* failure)
{
    if (FAILED(result))
    {
        throw ToolError(std::string(doing) + " '" + file + "': " + failure);
    }
}

std::string CopyNameOf(const std::string& file)
{
    std::filesystem::path path = std::filesystem::u8path(file);
    const std::filesystem::path extension = path.extension();
    path.replace_extension();
    path += ".repaired";
    path += extension;
    return path.u8string();
}

int RepairStore(const StoreOptions& options)
{
    const std::string file = options.file.empty() ? StoreFileOf(options.profile) : options.file;
    const std::string copy = options.output.empty() ? CopyNameOf(file) : options.output;
    AnnounceUpgrade(file);
    Care care("rows");
    char failure[1024] = "";
    const HRESULT result = StoreExport<ZEBSTORE_REPAIR>("ZebStoreRepair")(
        file.c_str(), options.inPlace ? nullptr : copy.c_str(), Care::Take, &care, failure, sizeof(failure));
    care.Clear();
    for (const std::string& finding : care.Findings())
    {
        Print(OneLine(finding) + "\n");
    }
    RequireDone(result, "cannot repair store file", file, failure);
    const std::string count = Grouped(care.Findings().size()) + (care.Findings().size() == 1 ? " repair" : " repairs");
    Print(options.inPlace ? "store file '" + OneLine(file) + "': " + count + "\n"
                          : "store file '" + OneLine(file) + "': " + count + ", in the copy '" + OneLine(copy) + "'\n");
    return ExitDone;
}

unsigned long long SizeOf(const std::string& file)
{
    std::error_code failure;
    const auto size = std::filesystem::file_size(std::filesystem::u8path(file), failure);
    return failure ? 0 : size;
}

int CompactStore(const StoreOptions& options)
{
    const std::string file = options.file.empty() ? StoreFileOf(options.profile) : options.file;
    const unsigned long long before = SizeOf(file) + SizeOf(file + "-wal");
    AnnounceUpgrade(file);
    Care care("steps");
    char failure[1024] = "";
    const HRESULT result =
        StoreExport<ZEBSTORE_COMPACT>("ZebStoreCompact")(file.c_str(), Care::Take, &care, failure, sizeof(failure));
    care.Clear();
    RequireDone(result, "cannot compact store file", file, failure);
    Print("store file '" + OneLine(file) + "': " + Grouped(before) + " bytes before, " +
          Grouped(SizeOf(file) + SizeOf(file + "-wal")) + " now\n");
    return ExitDone;
}

int BackUpStore(const StoreOptions& options)
{
    const std::string file = StoreFileOf(options.profile);
    Care care("steps");
    char failure[1024] = "";
    const HRESULT result = StoreExport<ZEBSTORE_BACKUP>("ZebStoreBackup")(
        file.c_str(), ValidUtf8(options.output).c_str(), Care::Take, &care, failure, sizeof(failure));
    care.Clear();
    RequireDone(result, "cannot back up store file", file, failure);
    Print("store file '" + OneLine(file) + "': " + Grouped(SizeOf(options.output)) + " bytes copied to '" +
          OneLine(ValidUtf8(options.output)) + "'\n");
    return ExitDone;
}

void AddFileArgument(Command command, const std::shared_ptr<StoreOptions>& options)
{
    AddProfileOption(command, options->profile);
    command.AddOption("file", options->file, "The store's file; without it the file of the profile's store")
        .Type("FILE")
        .Excludes("--profile");
}

} // namespace

void AddStore(Command app)
{
    auto options = std::make_shared<StoreOptions>();
    Command list = app.AddCommand("stores", "Lists the message stores of a profile; * * marks the default store");
    AddProfileOption(list, options->profile);
    list.AddFlag("--json", options->json, "Print JSON");
    list.Runs([options] { return ListStores(*options); });

    Command store = app.AddCommand("store", "Maintains a store");
    store.NeedsCommand();
    Command check = store.AddCommand("check", "Checks the whole file of the default store");
    AddProfileOption(check, options->profile);
    check.Runs([options] { return CheckStore(*options); });

    AddStoreInfo(store);

    Command backup =
        store.AddCommand("backup", "Copies the store's file as it is at one moment, while other programs may use it");
    AddProfileOption(backup, options->profile);
    backup.AddOption("copy", options->output, "The copy; must not exist").Required().Type("FILE");
    backup.Runs([options] { return BackUpStore(*options); });

    Command repair = store.AddCommand(
        "repair", "Repairs a store's file, in a copy unless --in-place: counters and columns are rebuilt, "
                  "orphaned rows are deleted; prints a line for each repair");
    AddFileArgument(repair, options);
    Option inPlace = repair.AddFlag("--in-place", options->inPlace, "Repair the file itself instead of a copy");
    repair.AddOption("--output", options->output, "The copy; without it next to the file: NAME.repaired.zeb")
        .Type("FILE")
        .Excludes(inPlace);
    repair.Runs([options] { return RepairStore(*options); });

    Command compact = store.AddCommand(
        "compact", "Frees the space that deleted content left in a store's file; no other program may have it open");
    AddFileArgument(compact, options);
    compact.Runs([options] { return CompactStore(*options); });
    AddStoreIndex(store);
}

} // namespace zeb::tools
