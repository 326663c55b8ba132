#include "qorth/DllLoader.h"

#include "framework/Memory.h"
#include "platform/module.h"

#include <utility>

CDllLoader::CDllLoader() = default;

CDllLoader::CDllLoader(const char* path, long mode)
{
    // Not a virtual call: a derived object is not constructed yet.
    CDllLoader::Load(path, mode);
}

CDllLoader::~CDllLoader()
{
    Unload();
}

bool CDllLoader::Load(const char* path, long mode)
{
    std::string reason;
    void* const loaded = zeb::framework::WithMemory([&]
    { return zeb::platform::LoadModule(path == nullptr ? "" : path, mode, &reason); });
    m_reason = loaded == nullptr ? reason.c_str() : "";
    if (loaded == nullptr)
    {
        return false;
    }
    if (void* old = std::exchange(m_module, loaded))
    {
        zeb::platform::UnloadModule(old);
    }
    return true;
}

bool CDllLoader::IsEmpty() const
{
    return m_module == nullptr;
}

void* CDllLoader::GetProc(const char* name) const
{
    return m_module == nullptr ? nullptr : zeb::platform::FindExport(m_module, name);
}

void CDllLoader::Unload()
{
    if (void* old = std::exchange(m_module, nullptr))
    {
        zeb::platform::UnloadModule(old);
    }
}

CStringA CDllLoader::Reason() const
{
    return m_reason;
}
