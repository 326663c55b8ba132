// What the parts of a repair share.
#pragma once

#include "zebstore/storage/Repair.h"
#include "zebstore/storage/StoreParts.h"

#include <unordered_set>

namespace zebstore
{

/// The work on the values of a store: property blobs, large values and their pieces. In the caller's transaction.
class ValueRepair
{
public:
    ValueRepair(StoreFile& store, const WorkReport& report);

    /// Makes each blob and each piece match its checksum; what cannot be read is replaced by what the row tells.
    void MendContent();
    /// Takes references off that name no whole value, copies values that have two owners.
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

    StoreFile& m_store;
    Database& m_database;
    const WorkReport& m_report;
    std::uint64_t m_done = 0;
    std::uint64_t m_whole = 0;
    std::unordered_set<std::int64_t> m_taken;
};

/// The work on what is counted: the messages of each place and the entries of the
/// address book. In the caller's transaction.
class CounterRepair
{
public:
    CounterRepair(StoreFile& store, const WorkReport& report);

    /// Counts again; what does not match is corrected, and open tables are told to read everything again.
    void Mend();

private:
    struct Place
    {
        std::int64_t container = 0;
        std::int64_t rows = 0;
        std::int64_t unread = 0;
        std::int64_t next = 0; ///< the number that the next message gets
    };

    std::vector<Place> WrongPlaces();
    void Correct(const Place& place);
    void MendDirectory();

    Database& m_database;
    const WorkReport& m_report;
};

/// The first column of the first row, 0 without a row.
std::int64_t NumberOf(Query&& query);

} // namespace zebstore
