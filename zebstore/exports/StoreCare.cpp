// The exports for the maintenance of a store's file.
#include "platform/text.h"
#include "zebstore/base/Guard.h"
#include "zebstore/notify/Notifier.h"
#include "zebstore/storage/Repair.h"
#include "zebstore/storage/Schema.h"
#include "zebstore/zebstore.h"

#include <filesystem>
#include <sqlite3.h>

namespace zebstore
{
namespace
{

static_assert(ApplicationId == ZEBSTORE_APPLICATION_ID && SchemaVersion == ZEBSTORE_FILE_VERSION,
              "hosts identify a store's file by its header");

WorkReport ReportTo(ZEBSTORE_REPORT* report, void* context)
{
    WorkReport work;
    work.found = [=](const std::string& finding)
    {
        if (report != nullptr)
        {
            report(context, finding.c_str(), 0, 0);
        }
    };
    work.progress = [=](std::uint64_t done, std::uint64_t whole)
    {
        if (report != nullptr)
        {
            report(context, nullptr, done, whole);
        }
    };
    return work;
}

// Truncated at a character boundary.
void GiveText(const std::string& text, char* to, ULONG size)
{
    if (to == nullptr || size == 0)
    {
        return;
    }
    const size_t length = zeb::platform::Utf8Prefix(text.data(), text.size(), size - 1);
    text.copy(to, length);
    to[length] = '\0';
}

// Deletes the copy that a failed repair left.
class NewFile
{
public:
    explicit NewFile(std::string path)
        : m_path(std::move(path))
    {
    }
    ~NewFile()
    {
        std::error_code ignored;
        if (!m_kept)
        {
            for (const char* suffix : {"", "-wal", "-shm", "-journal"})
            {
                std::filesystem::remove(std::filesystem::u8path(m_path + suffix), ignored);
            }
        }
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    void Keep() { m_kept = true; }

private:
    std::string m_path;
    bool m_kept = false;
};

std::shared_ptr<StoreFile> OpenToWrite(const char* path)
{
    StoreFile::OpenOptions options;
    options.observer = &Notifier::The();
    return StoreFile::Open(path, options);
}

void RequirePaths(const char* path, const char* copy)
{
    if (!StoreFile::Exists(path))
    {
        throw Error(MAPI_E_NOT_FOUND, std::string("the store file '") + path + "' does not exist");
    }
    if (StoreFile::Exists(copy))
    {
        throw Error(MAPI_E_COLLISION, std::string("the file '") + copy + "' exists already");
    }
}

void Backup(const char* path, const char* copy, const WorkReport& work)
{
    RequirePaths(path, copy);
    StoreFile::OpenOptions options;
    options.readOnly = true;
    StoreFile::Open(path, options); // refuses what is not a store
    NewFile made(copy);
    CopyStore(path, copy, work);
    made.Keep();
}

void Repair(const char* path, const char* copy, const WorkReport& work)
{
    if (copy == nullptr)
    {
        return RepairStore(*OpenToWrite(path), work);
    }
    RequirePaths(path, copy);
    NewFile made(copy);
    CopyStore(path, copy, work);
    RepairStore(*OpenToWrite(copy), work);
    made.Keep();
}

void Switch(const char* path, ULONG action, ZEBSTORE_INDEX_STATE* state, const WorkReport& work)
{
    if (action > ZEBSTORE_INDEX_OFF)
    {
        throw Error(MAPI_E_INVALID_PARAMETER, "the action is not one of a text index");
    }
    StoreFile::OpenOptions reading;
    reading.readOnly = true;
    const auto store = action == ZEBSTORE_INDEX_STATUS ? StoreFile::Open(path, reading) : OpenToWrite(path);
    if (action != ZEBSTORE_INDEX_STATUS)
    {
        store->Texts().Switch(action == ZEBSTORE_INDEX_ON, work);
    }
    if (state != nullptr)
    {
        const TextIndexState found = store->Texts().State();
        *state = {found.isOn ? 1u : found.isForeign ? 2u : 0u, found.messages, found.waiting, found.bytes};
    }
}

template <class Body>
HRESULT Run(const char* name, char* failure, ULONG failureSize, Body&& body)
{
    const HRESULT result = Guarded(name, body);
    GiveText(FAILED(result) ? LastErrorText(result) : std::string(), failure, failureSize);
    return result;
}

} // namespace
} // namespace zebstore

using namespace zebstore;

HRESULT STDAPICALLTYPE ZebStoreRepair(const char* path, const char* copy, ZEBSTORE_REPORT* report, void* context,
                                      char* failure, ULONG failureSize)
{
    return Run("ZebStoreRepair", failure, failureSize, [&]
    {
        Require(path != nullptr, "the path of the store file is null");
        Repair(path, copy, ReportTo(report, context));
    });
}

HRESULT STDAPICALLTYPE ZebStoreCompact(const char* path, ZEBSTORE_REPORT* report, void* context, char* failure,
                                       ULONG failureSize)
{
    return Run("ZebStoreCompact", failure, failureSize, [&]
    {
        Require(path != nullptr, "the path of the store file is null");
        CompactStore(*OpenToWrite(path), ReportTo(report, context));
    });
}

HRESULT STDAPICALLTYPE ZebStoreBackup(const char* path, const char* copy, ZEBSTORE_REPORT* report, void* context,
                                      char* failure, ULONG failureSize)
{
    return Run("ZebStoreBackup", failure, failureSize, [&]
    {
        Require(path != nullptr && copy != nullptr, "the path of the store file or of its copy is null");
        Backup(path, copy, ReportTo(report, context));
    });
}

const char* STDAPICALLTYPE ZebStoreVersion()
{
    return "zebstore " ZEB_VERSION " (SQLite " SQLITE_VERSION ")";
}

HRESULT STDAPICALLTYPE ZebStoreIndex(const char* path, ULONG action, ZEBSTORE_INDEX_STATE* state,
                                     ZEBSTORE_REPORT* report, void* context, char* failure, ULONG failureSize)
{
    return Run("ZebStoreIndex", failure, failureSize, [&]
    {
        Require(path != nullptr, "the path of the store file is null");
        Switch(path, action, state, ReportTo(report, context));
    });
}
