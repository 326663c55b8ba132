// The repair of property blobs and large values.
#pragma once

#include "zebstore/storage/LargeStorage.h"
#include "zebstore/storage/WorkReport.h"

#include <unordered_set>

namespace zebstore
{

/// The work on the values of a store: property blobs, large values and their pieces. In the caller's transaction.
class ValueRepair
{
public:
    ValueRepair(StoreConnection& store, const WorkReport& report);

    /// Makes each blob and each piece match its checksum; what cannot be read is rebuilt from the other columns.
    void MendContent();
    /// Removes references to values that are not complete, copies values that have two owners.
    void MendReferences();
    /// Deletes values and pieces that belong to nothing.
    void RemoveOrphans();

private:
    struct Row
    {
        std::int64_t key = 0;
        std::int64_t number = 0;
        std::string blob;
    };
    struct Table;
    static const Table Tables[];

    void MendBlobs(const Table& table);
    void MendPieces();
    void MendReferencesOf(const Table& table);
    void Rewrite(const Table& table, const Row& row);
    void Write(const Table& table, const Row& row);
    std::string Replacement(const Table& table, const Row& row);
    bool IsWhole(const LargeReference& reference);
    std::string OwnerOf(const Table& table, const Row& row) const;
    void Step();

    StoreConnection& m_store;
    Database& m_database;
    const WorkReport& m_report;
    std::uint64_t m_done = 0;
    std::uint64_t m_whole = 0;
    std::unordered_set<std::int64_t> m_taken;
};

} // namespace zebstore
