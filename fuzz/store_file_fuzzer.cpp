// Store files with damaged rows and bytes: all is read without a crash, what the check calls sound can be read, and a
// repaired store is sound, can be read and can be written.
#include "fuzz/Require.h"
#include "fuzz/SampleStore.h"
#include "fuzz/StoreDamage.h"
#include "fuzz/StoreReader.h"
#include "zebstore/storage/AddressStorage.h"
#include "zebstore/storage/Repair.h"

#include <algorithm>
#include <filesystem>
#include <memory>

namespace
{

using namespace zebstore;

bool IsOneOf(HRESULT code, std::initializer_list<HRESULT> codes)
{
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

void RequireRefusal(const Error& error)
{
    ::Require(
        IsOneOf(error.Code(), {MAPI_E_CORRUPT_STORE, MAPI_E_CORRUPT_DATA, MAPI_E_VERSION, MAPI_E_NOT_ENOUGH_MEMORY}),
        ("a damaged file is refused as that, not: " + std::string(error.what())).c_str());
}

std::shared_ptr<StoreFile> Open(const std::string& path)
{
    try
    {
        return StoreFile::Open(path, {});
    }
    catch (const Error& error)
    {
        RequireRefusal(error);
        return nullptr;
    }
}

void RequireNone(const std::vector<std::string>& problems, const char* what)
{
    ::Require(problems.empty(), (what + std::string(": ") + (problems.empty() ? "" : problems[0])).c_str());
}

std::vector<std::string> Read(const std::shared_ptr<StoreFile>& store)
{
    return ReadAll(std::make_shared<StoreContext>(store));
}

bool Repair(StoreFile& store, const StoreDamage& damage)
{
    try
    {
        RepairStore(store, {[](const std::string&) {}, [](std::uint64_t, std::uint64_t) {}});
        return true;
    }
    catch (const Error& error)
    {
        RequireRefusal(error);
        ::Require(damage.bytes, ("rows can be repaired: " + std::string(error.what())).c_str());
        return false;
    }
}

// Adds a row to most tables.
void Change(const std::shared_ptr<StoreFile>& store)
{
    PropertySet named;
    named.SetText(PR_DISPLAY_NAME_W, "fuzzed");
    const FolderId folder = store->Folders().Create(IdOf(StandardFolder::IpmSubtree), named);
    MessageContent content;
    content.properties.SetText(PR_SUBJECT_W, "new");
    content.properties.SetEncoded(PR_BODY_W, std::string(6000, 'n'));
    const MessageId made = store->Messages().Create({IdOf(StandardFolder::Inbox), false}, content);
    store->Messages().Move({made}, folder);
    store->Folders().Delete(folder, true, true);
    AddressStorage(store).Create(MAPI_MAILUSER, named);
}

void RequireUsable(const std::shared_ptr<StoreFile>& store)
{
    RequireNone(Read(store), "a sound store can be read");
    try
    {
        Change(store);
    }
    catch (const Error& error)
    {
        ::Require(error.Code() == MAPI_E_TOO_BIG,
                  ("a sound store can be written: " + std::string(error.what())).c_str());
    }
    RequireNone(store->CheckWhole(), "a written store is sound");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    FuzzedDataProvider input(data, size);
    const std::string path = FuzzerFile("store.zeb");
    for (const char* suffix : {"", "-wal", "-shm"})
    {
        std::filesystem::remove(path + suffix);
    }
    WriteFile(path, SampleStore());
    const StoreDamage damage = DamageStore(path, input);
    const std::shared_ptr<StoreFile> store = Open(path);
    if (!store)
    {
        return 0;
    }
    const bool isSound = store->CheckWhole().empty();
    const std::vector<std::string> failures = Read(store);
    if (isSound)
    {
        RequireNone(failures, "what the check calls sound can be read");
    }
    if (Repair(*store, damage))
    {
        RequireNone(store->CheckWhole(), "a repaired store is sound");
        RequireUsable(store);
    }
    return 0;
}
