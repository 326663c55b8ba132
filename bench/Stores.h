// Stores of a known size to measure on, created through the provider and kept between runs.
#pragma once

#include "zebapi/ZebAPI.h"

#include <string>

namespace bench
{

/// Points the provider search to the zebstore in this program's folder, with the benchmarks' own registry: on Linux a file in
/// `folder`, on Windows that of the Wine prefix.
void UseOwnRegistry(const std::string& folder);
/// Registers this file of the program's folder.
void RegisterProvider(const char* file);

/// The tags of the twelve properties that every message of a benchmark store has.
extern const ULONG MessageTags[12];

/// Writes the properties of message number `number`; the same number gives the same message.
/// The values are linked to `values`' own buffer.
void FillMessage(CZebPropValArray& values, ULONG number);

/// A session on a store whose inbox holds `count` messages. The store is created on first use, with progress on
/// standard error, and kept as FOLDER/messages-COUNT.zeb.
class StoreOf
{
public:
    StoreOf(const std::string& folder, ULONG count);
    ~StoreOf();
    StoreOf(const StoreOf&) = delete;
    StoreOf& operator=(const StoreOf&) = delete;

    CZebFolder& Inbox() { return m_inbox; }
    const std::string& Path() const { return m_path; }
    ULONG Count() const { return m_count; }

    /// Closes the session and the store.
    void Close();

private:
    void Fill(ULONG from);

    std::string m_path;
    ULONG m_count;
    CZebSession m_session;
    CZebMsgStore m_store;
    CZebFolder m_inbox;
};

/// Creates a profile whose store is the file `path` (deleting an earlier profile of that name, not its file).
/// @param index "on" or "off" switches the file's text index; null: it is left as it is
void MakeProfile(const std::string& name, const std::string& path, const char* index = nullptr);

/// Creates a new store in a profile of this name; an earlier one with this path is deleted.
void MakeStore(const std::string& name, const std::string& path, const char* index = nullptr);

/// Deletes a store's files.
void DeleteStore(const std::string& path);

} // namespace bench
