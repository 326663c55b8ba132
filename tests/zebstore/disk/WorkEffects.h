// What each step of a host's work changes in the store, and whether a store has the effects of some steps and nothing else.
#pragma once

#include "tests/zebstore/disk/StoreDump.h"
#include "tests/zebstore/disk/StoreWork.h"

#include <string>
#include <vector>

namespace zebstore::test
{

using Lines = std::vector<std::string>;

/// The lines of `a` that `b` does not have; both sorted.
Lines Without(const Lines& a, const Lines& b);

/// The effects are disjoint: no step changes what another one made.
class WorkEffects
{
public:
    /// Does the work on a copy of the store `original`, all of which must succeed.
    WorkEffects(const std::string& original, const std::string& copy);

    const Lines& Before() const { return m_before; }
    /// The lines of a store in which these steps were done.
    Lines After(const std::vector<bool>& done) const;
    /// Marks the steps in `done` whose effect a store with the lines `found` has.
    void AddFound(const Lines& found, std::vector<bool>& done) const;

private:
    struct Effect
    {
        Lines added;
        Lines removed;
    };

    Lines m_before;
    std::vector<Effect> m_effects;
};

/// Copies a store file; what is left of a former one at that place is removed.
void CopyStore(const std::string& from, const std::string& to);

} // namespace zebstore::test
