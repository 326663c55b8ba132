// The export names of a provider's entry points, and the export names that identify a provider.
#pragma once

#include <cstddef>

namespace zeb
{

/// The entry points that the library calls through; the order of the slots and of the load tables.
enum class EntryPoint : size_t
{
    MAPIInitialize,
    MAPIUninitialize,
    MAPILogonEx,
    MAPIAdminProfiles,
    HrGetOneProp,
    HrSetOneProp,
    HrValidateIPMSubtree,
    FreeProws,
    HrQueryAllRows,
    PropCopyMore,
    Count,
};

constexpr size_t EntryPointCount = static_cast<size_t>(EntryPoint::Count);

/// Which export fills a slot.
struct EntryPointRow
{
    EntryPoint slot;
    const char* name;
};

extern const EntryPointRow UndecoratedEntryPoints[EntryPointCount];
extern const EntryPointRow DecoratedEntryPoints[EntryPointCount];

/// The exports that a library must have to count as a provider, 22 names each, terminated by null.
extern const char* const DecoratedTestList[];
extern const char* const UndecoratedTestList[];

/// Qualifiers of FGetComponentPath: texts separated by a NUL, ended by an empty one.
extern const char OutlookLanguageQualifier[];
extern const char OfficeLanguageQualifier[];

} // namespace zeb
