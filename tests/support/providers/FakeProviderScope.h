// The test provider's control for the duration of a test.
#pragma once

#include "tests/support/Environment.h"
#include "tests/support/providers/FakeProvider.h"

#include <cstdint>
#include <string>

namespace zeb::test
{

/// Answers and records the calls of every copy of the test provider in this process.
class FakeProviderScope : public FakeProviderControl
{
public:
    FakeProviderScope()
        : m_variable(FakeProviderVariable,
                     std::to_string(reinterpret_cast<uintptr_t>(static_cast<FakeProviderControl*>(this))))
    {
    }

private:
    EnvironmentScope m_variable;
};

} // namespace zeb::test
