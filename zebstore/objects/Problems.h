// The properties that a call could not set, delete or copy.
#pragma once

#include "platform/mapi.h"

#include <vector>

namespace zebstore
{

/// Collects property problems and builds the MAPI structure.
class Problems
{
public:
    void Add(ULONG index, ULONG tag, SCODE code) { m_problems.push_back({index, tag, code}); }
    bool IsEmpty() const { return m_problems.empty(); }
    /// @return null when there are none
    SPropProblemArray* Detach() const;

private:
    std::vector<SPropProblem> m_problems;
};

} // namespace zebstore
