// A mixed load on a store, and lines that say what it holds: the victim of a kill writes them before and after each
// change, the survivor compares.
#pragma once

#include "zebstore/storage/StoreFile.h"

#include <functional>
#include <random>
#include <set>
#include <string>

namespace zebstore::test
{

using Content = std::multiset<std::string>;

/// One change: what it takes away and what it adds.
struct LoadChange
{
    Content removed;
    Content added;
};

/// What a store holds of what MixedLoad makes.
Content ContentOf(const std::shared_ptr<StoreFile>& store);

/// Changes a store by chance. Threads: one.
class MixedLoad
{
public:
    using Announce = std::function<void(const LoadChange&)>;

    MixedLoad(std::shared_ptr<StoreFile> store, unsigned seed);

    /// Does one change, each in one transaction.
    /// @param announce is called before it, with what will be different afterwards
    void Step(const Announce& announce);

private:
    MessageContent NewContent();
    MessageId Any(FolderId& folder);
    void Create(const Announce& announce);
    void Change(const Announce& announce);
    void Pass(const Announce& announce, bool move);
    void Remove(const Announce& announce);
    void MakeFolder(const Announce& announce);
    void DropFolder(const Announce& announce);
    void AddEntry(const Announce& announce);
    void AddName(const Announce& announce);

    std::shared_ptr<StoreFile> m_store;
    std::mt19937 m_random;
};

} // namespace zebstore::test
