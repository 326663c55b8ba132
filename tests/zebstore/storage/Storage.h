// What the storage tests share: a store in a folder of its own, and values written briefly.
#pragma once

#include "tests/support/TempFolder.h"
#include "zebstore/base/Guard.h"
#include "zebstore/base/Memory.h"
#include "zebstore/notify/Notifier.h"
#include "zebstore/storage/Database.h"
#include "zebstore/storage/StoreFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace zebstore::test
{

/// The stored properties of a message whose PR_BODY_W refers to a large value that cannot exist: its number is -1.
constexpr const char* DamagedReference = "x'0100010000101F8011000000"
                                         "00FFFFFFFFFFFFFFFF0900000000000000'";

inline SPropValue Value(ULONG tag)
{
    SPropValue value;
    std::memset(static_cast<void*>(&value), 0, sizeof(value));
    value.ulPropTag = tag;
    return value;
}
inline SPropValue LongValue(ULONG tag, LONG number)
{
    SPropValue value = Value(tag);
    value.Value.l = number;
    return value;
}
inline SPropValue TimeValue(ULONG tag, std::int64_t time)
{
    SPropValue value = Value(tag);
    std::memcpy(static_cast<void*>(&value.Value.ft), &time, sizeof(time));
    return value;
}
inline SPropValue NarrowValue(ULONG tag, const char* text)
{
    SPropValue value = Value(CHANGE_PROP_TYPE(tag, PT_STRING8));
    value.Value.lpszA = const_cast<char*>(text);
    return value;
}
inline SPropValue WideValue(ULONG tag, const WCHAR* text)
{
    SPropValue value = Value(CHANGE_PROP_TYPE(tag, PT_UNICODE));
    value.Value.lpszW = const_cast<WCHAR*>(text);
    return value;
}
inline SPropValue BinaryValue(ULONG tag, const std::string& bytes)
{
    SPropValue value = Value(tag);
    value.Value.bin.cb = static_cast<ULONG>(bytes.size());
    value.Value.bin.lpb = reinterpret_cast<BYTE*>(const_cast<char*>(bytes.data()));
    return value;
}

inline MessageContent Mail(const std::string& subject, LONG flags = 0)
{
    MessageContent content;
    content.properties.SetText(PR_SUBJECT_W, subject);
    content.properties.SetText(PR_MESSAGE_CLASS_W, "IPM.Note");
    content.properties.SetLong(PR_MESSAGE_FLAGS, flags);
    return content;
}

inline PropertySet Named(const std::string& name)
{
    PropertySet properties;
    properties.SetText(PR_DISPLAY_NAME_W, name);
    return properties;
}

/// Sort keys and columns as MAPI takes them.
inline Buffer<SSortOrderSet> SortSet(const std::vector<SSortOrder>& keys, ULONG categories = 0)
{
    Buffer<SSortOrderSet> set(Allocate(CbNewSSortOrderSet(keys.size())));
    set->cSorts = static_cast<ULONG>(keys.size());
    set->cCategories = categories;
    set->cExpanded = 0;
    std::copy(keys.begin(), keys.end(), set->aSort);
    return set;
}
inline Buffer<SPropTagArray> TagArray(const std::vector<ULONG>& tags)
{
    Buffer<SPropTagArray> array(Allocate(CbNewSPropTagArray(tags.size())));
    array->cValues = static_cast<ULONG>(tags.size());
    std::copy(tags.begin(), tags.end(), array->aulPropTag);
    return array;
}

/// The code of the Error that `body` throws, S_OK when it throws none.
template <class Body>
HRESULT CodeOf(Body&& body, std::string* text = nullptr)
{
    try
    {
        body();
    }
    catch (const Error& error)
    {
        if (text)
        {
            *text = error.what();
        }
        return error.Code();
    }
    return S_OK;
}

/// Makes an open file one of an older schema version: 5 with an index by date in place of runs of dates, 4 without it, 3 also
/// without checksums and times of folders, 2 also without an address book, 1 also without lists of recent changes.
inline void MakeOlder(StoreFile& store, int version)
{
    Database& database = store.Connection().Db();
    database.Execute("DROP TABLE date_run");
    database.Execute(("PRAGMA user_version=" + std::to_string(version)).c_str());
    if (version == 5)
    {
        // Of the last messages of each folder, some are not in the index.
        database.Execute("UPDATE message SET parts=parts | 16 WHERE id % 3 = 0; "
                         "CREATE INDEX message_by_date ON message(id >> 32, submitted) WHERE (parts & 16) = 0");
    }
    if (version > 3)
    {
        return;
    }
    database.Execute("ALTER TABLE chunk DROP COLUMN sum");
    database.Execute("ALTER TABLE folder DROP COLUMN created; ALTER TABLE folder DROP COLUMN modified");
    for (const char* table : {"store", "folder", "message", "recipient", "attachment", "address", "directory"})
    {
        database.Execute(("UPDATE " + std::string(table) +
                          " SET props=CAST(x'01' || substr(props, 2, length(props) - 9) AS BLOB) "
                          "WHERE props IS NOT NULL")
                             .c_str());
    }
    if (version < 3)
    {
        database.Execute("DROP TABLE member; DROP TABLE address; DROP TABLE directory");
    }
    if (version < 2)
    {
        database.Execute("ALTER TABLE contents DROP COLUMN recent");
    }
}

/// A store in a folder of its own; at the end the file must be sound and all MAPI memory freed.
class StorageTest : public ::testing::Test
{
protected:
    static constexpr FolderId Inbox = IdOf(StandardFolder::Inbox);

    void SetUp() override
    {
        m_buffers = g_liveBuffers;
        m_store = StoreFile::Create(Path("test.zeb"), "Test", Observed());
    }
    void TearDown() override
    {
        if (m_store)
        {
            for (const std::string& problem : m_store->CheckWhole())
            {
                ADD_FAILURE() << problem;
            }
        }
        m_store.reset();
        EXPECT_EQ(g_liveBuffers.load(), m_buffers) << "MAPI memory was not freed";
        EXPECT_EQ(g_badFrees.load(), 0) << "MAPI memory was freed that was not live";
    }

    std::string Path(const std::string& name) const { return m_folder.File(name); }
    void Reopen()
    {
        m_store.reset();
        m_store = StoreFile::Open(Path("test.zeb"), Observed());
    }
    /// As a session opens its stores.
    static StoreFile::OpenOptions Observed()
    {
        StoreFile::OpenOptions options;
        options.observer = &Notifier::The();
        return options;
    }
    StoreFile& Store() { return *m_store; }

    zeb::test::TempFolder m_folder;
    std::shared_ptr<StoreFile> m_store;
    long m_buffers = 0;
};

} // namespace zebstore::test
