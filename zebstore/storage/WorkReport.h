// The progress of a long step.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace zebstore
{

/// Called during a long step, on the calling thread. It must not throw and not use the store.
struct WorkReport
{
    /// One line (UTF-8, no full stop) for each thing that was wrong and what was done about it.
    std::function<void(const std::string& finding)> found;
    /// `done` of `whole` steps; 0 of 0 where it is not known.
    std::function<void(std::uint64_t done, std::uint64_t whole)> progress;
};

} // namespace zebstore
