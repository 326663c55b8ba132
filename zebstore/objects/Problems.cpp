#include "zebstore/objects/Problems.h"

#include "zebstore/base/Memory.h"

#include <cstddef>
#include <cstring>

namespace zebstore
{

SPropProblemArray* Problems::Detach() const
{
    if (m_problems.empty())
    {
        return nullptr;
    }
    Buffer<SPropProblemArray> array(
        Allocate(offsetof(SPropProblemArray, aProblem) + m_problems.size() * sizeof(SPropProblem)));
    array->cProblem = static_cast<ULONG>(m_problems.size());
    std::memcpy(array->aProblem, m_problems.data(), m_problems.size() * sizeof(SPropProblem));
    return array.Detach();
}

} // namespace zebstore
