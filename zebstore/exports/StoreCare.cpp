// The exports for the maintenance of a store's file.
#include "platform/text.h"
#include "zebstore/base/Guard.h"
#include "zebstore/notify/Notifier.h"
#include "zebstore/storage/Repair.h"
#include "zebstore/storage/Schema.h"
#include "zebstore/zebstore.h"

#include <filesystem>

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

void Repair(const char* path, const char* copy, const WorkReport& work)
{
    if (copy == nullptr)
    {
        return RepairStore(*OpenToWrite(path), work);
    }
    if (!StoreFile::Exists(path))
    {
        throw Error(MAPI_E_NOT_FOUND, std::string("the store file '") + path + "' does not exist");
    }
    if (StoreFile::Exists(copy))
    {
        throw Error(MAPI_E_COLLISION, std::string("the file '") + copy + "' exists already");
    }
    NewFile made(copy);
    CopyStore(path, copy, work);
    RepairStore(*OpenToWrite(copy), work);
    made.Keep();
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
