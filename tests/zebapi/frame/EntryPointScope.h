// One entry point of MAPI set to a test's function.
#pragma once

#include "zebapi/frame/internal/EntryPoints.h"

namespace zeb::test
{

/// Sets a slot for its lifetime; leaves it empty.
class EntryPointScope
{
public:
    EntryPointScope(EntryPoint slot, void* address)
        : m_slot(slot)
    {
        SetEntryPoint(slot, address);
    }
    ~EntryPointScope() { SetEntryPoint(m_slot, nullptr); }
    EntryPointScope(const EntryPointScope&) = delete;
    EntryPointScope& operator=(const EntryPointScope&) = delete;

private:
    EntryPoint m_slot;
};

} // namespace zeb::test
