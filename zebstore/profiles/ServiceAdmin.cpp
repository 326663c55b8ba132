#include "zebstore/profiles/ServiceAdmin.h"

#include "zebstore/base/Object.h"
#include "zebstore/objects/MemoryTable.h"
#include "zebstore/objects/StoreContext.h"
#include "zebstore/zebstore.h"

#include <cstring>
#include <filesystem>

namespace zebstore
{
namespace
{

/// The settings given to ConfigureMsgService.
struct Settings
{
    std::string path;
    std::optional<bool> full;
    std::optional<bool> index;
    bool create = true;
};

std::string TextOf(const SPropValue& value)
{
    const bool unicode = PROP_TYPE(value.ulPropTag) == PT_UNICODE;
    if (!unicode && PROP_TYPE(value.ulPropTag) != PT_STRING8)
    {
        throw Error(MAPI_E_INVALID_TYPE, "a setting of the service has the wrong type: text is needed");
    }
    return TextArgument(value.Value.lpszA, unicode ? MAPI_UNICODE : 0);
}

/// One of two words.
bool OneOf(const SPropValue& value, const char* setting, const char* yes, const char* no)
{
    const std::string text = TextOf(value);
    if (text != yes && text != no)
    {
        throw Error(MAPI_E_INVALID_PARAMETER,
                    std::string("the ") + setting + " must be '" + no + "' or '" + yes + "', not '" + text + "'");
    }
    return text == yes;
}

Settings ReadSettings(ULONG count, const SPropValue* values)
{
    Require(values != nullptr || count == 0, "the array of settings is null");
    Settings settings;
    for (ULONG i = 0; i < count; ++i)
    {
        const SPropValue& value = values[i];
        if (PROP_ID(value.ulPropTag) == PROP_ID(PR_ZEBSTORE_PATH_A))
        {
            settings.path = TextOf(value);
        }
        else if (value.ulPropTag == PR_ZEBSTORE_CREATE)
        {
            settings.create = value.Value.b != 0;
        }
        else if (PROP_ID(value.ulPropTag) == PROP_ID(PR_ZEBSTORE_DURABILITY_A))
        {
            settings.full = OneOf(value, "durability", "full", "normal");
        }
        else if (PROP_ID(value.ulPropTag) == PROP_ID(PR_ZEBSTORE_INDEX_A))
        {
            settings.index = OneOf(value, "text index", "on", "off");
        }
        else
        {
            throw Error(MAPI_E_INVALID_PARAMETER, "the service has no setting with this tag");
        }
    }
    return settings;
}

/// The absolute path: a profile names the same file in whatever folder its host runs.
std::string FullPath(const std::string& path)
{
    namespace fs = std::filesystem;
    std::error_code failure;
    const fs::path full = fs::absolute(fs::u8path(path), failure);
    return failure ? path : full.lexically_normal().u8string();
}

void Configure(const std::string& profile, Service service, const Settings& settings)
{
    if (!settings.path.empty())
    {
        service.path = FullPath(settings.path);
    }
    else if (service.path.empty())
    {
        service.path = profiles::DefaultStorePath(profile);
    }
    service.fullDurability = settings.full.value_or(service.fullDurability);
    StoreFile::OpenOptions options;
    options.fullDurability = service.fullDurability;
    if (StoreFile::Exists(service.path))
    {
        options.readOnly = true;
        StoreFile::Open(service.path, options);
    }
    else if (settings.create)
    {
        std::error_code ignored;
        std::filesystem::create_directories(std::filesystem::u8path(service.path).parent_path(), ignored);
        StoreFile::Create(service.path, service.displayName, options);
    }
    else
    {
        throw Error(MAPI_E_NOT_FOUND, "the store file " + service.path + " does not exist");
    }
    if (settings.index)
    {
        options.readOnly = false;
        const WorkReport silent{[](const std::string&) {}, [](std::uint64_t, std::uint64_t) {}};
        StoreFile::Open(service.path, options)->Texts().Switch(*settings.index, silent);
    }
    profiles::SaveService(profile, service);
}

/// One store for each profile: a second service is refused.
Service AddService(const std::string& profile, const std::string& displayName)
{
    if (!profiles::Services(profile).empty())
    {
        throw Error(MAPI_E_NO_ACCESS, "the profile '" + profile + "' already has a store");
    }
    Service service;
    service.uid = profiles::NewUid();
    service.displayName = displayName.empty() ? profile : displayName;
    profiles::SaveService(profile, service);
    return service;
}

PropertySet ServiceRow(const Service& service)
{
    PropertySet row;
    row.SetBinary(PR_SERVICE_UID, service.uid.ab, sizeof(service.uid.ab));
    row.SetBinary(PR_INSTANCE_KEY, service.uid.ab, sizeof(service.uid.ab));
    row.SetText(PR_SERVICE_NAME_W, ZEBSTORE_SERVICE_NAME);
    row.SetText(PR_SERVICE_DLL_NAME_W, ZEBSTORE_DLL_NAME);
    row.SetText(PR_DISPLAY_NAME_W, service.displayName);
    row.SetLong(PR_RESOURCE_FLAGS, SERVICE_DEFAULT_STORE | SERVICE_SINGLE_COPY);
    if (!service.path.empty())
    {
        row.SetText(PR_ZEBSTORE_PATH_W, service.path);
    }
    row.SetText(PR_ZEBSTORE_DURABILITY_W, service.fullDurability ? "full" : "normal");
    return row;
}

class ServiceAdmin final : public Object<IMsgServiceAdmin>
{
public:
    explicit ServiceAdmin(std::string profile)
        : m_profile(std::move(profile))
    {
    }

    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT code, ULONG flags, LPMAPIERROR* error) override
    {
        return Guarded("IMsgServiceAdmin::GetLastError", [&] { return LastErrorAsMapi(code, flags, error); });
    }

    HRESULT STDMETHODCALLTYPE GetMsgServiceTable(ULONG flags, LPMAPITABLE* table) override
    {
        return Guarded("IMsgServiceAdmin::GetMsgServiceTable", [&]
        {
            Require(table != nullptr, "the output pointer is null");
            *table = nullptr;
            RequireFlags(flags, MAPI_UNICODE);
            std::vector<PropertySet> rows;
            for (const Service& each : profiles::Services(m_profile))
            {
                rows.push_back(ServiceRow(each));
            }
            *table = NewMemoryTable(std::move(rows),
                                    {PR_SERVICE_UID, PR_SERVICE_NAME_A, PR_DISPLAY_NAME_A, PR_INSTANCE_KEY,
                                     PR_RESOURCE_FLAGS, PR_ZEBSTORE_PATH_A, PR_ZEBSTORE_DURABILITY_A},
                                    flags);
        });
    }

    HRESULT STDMETHODCALLTYPE CreateMsgService(LPTSTR name, LPTSTR displayName, ULONG_PTR, ULONG flags) override
    {
        return Guarded("IMsgServiceAdmin::CreateMsgService", [&]
        {
            RequireFlags(flags, MAPI_UNICODE | SERVICE_UI_ALWAYS | SERVICE_UI_ALLOWED);
            if (TextArgument(name, flags) != ZEBSTORE_SERVICE_NAME)
            {
                throw Error(MAPI_E_NOT_FOUND, "the service '" + TextArgument(name, flags) + "' does not exist");
            }
            AddService(m_profile, TextArgument(displayName, flags));
        });
    }

    HRESULT STDMETHODCALLTYPE DeleteMsgService(LPMAPIUID uid) override
    {
        return Guarded("IMsgServiceAdmin::DeleteMsgService", [&]
        {
            Require(uid != nullptr, "the service identifier is null");
            profiles::DeleteService(m_profile, *uid);
        });
    }

    HRESULT STDMETHODCALLTYPE CopyMsgService(LPMAPIUID, LPTSTR, LPCIID, LPCIID, LPVOID, ULONG_PTR, ULONG) override
    {
        return Refuse("IMsgServiceAdmin::CopyMsgService");
    }

    HRESULT STDMETHODCALLTYPE RenameMsgService(LPMAPIUID uid, ULONG flags, LPTSTR displayName) override
    {
        return Guarded("IMsgServiceAdmin::RenameMsgService", [&]
        {
            Require(uid != nullptr, "the service identifier is null");
            RequireFlags(flags, MAPI_UNICODE);
            Service service = profiles::ServiceOf(m_profile, *uid);
            service.displayName = TextArgument(displayName, flags);
            profiles::SaveService(m_profile, service);
        });
    }

    HRESULT STDMETHODCALLTYPE ConfigureMsgService(LPMAPIUID uid, ULONG_PTR, ULONG flags, ULONG count,
                                                  LPSPropValue values) override
    {
        return Guarded("IMsgServiceAdmin::ConfigureMsgService", [&]
        {
            Require(uid != nullptr, "the service identifier is null");
            RequireFlags(flags, MAPI_UNICODE | SERVICE_UI_ALWAYS | SERVICE_UI_ALLOWED | MSG_SERVICE_UI_READ_ONLY);
            Configure(m_profile, profiles::ServiceOf(m_profile, *uid), ReadSettings(count, values));
        });
    }

    HRESULT STDMETHODCALLTYPE OpenProfileSection(LPMAPIUID, LPCIID, ULONG, LPPROFSECT*) override
    {
        return Refuse("IMsgServiceAdmin::OpenProfileSection");
    }
    HRESULT STDMETHODCALLTYPE MsgServiceTransportOrder(ULONG, LPMAPIUID, ULONG) override
    {
        return Refuse("IMsgServiceAdmin::MsgServiceTransportOrder");
    }
    HRESULT STDMETHODCALLTYPE AdminProviders(LPMAPIUID, ULONG, LPPROVIDERADMIN*) override
    {
        return Refuse("IMsgServiceAdmin::AdminProviders");
    }
    HRESULT STDMETHODCALLTYPE SetPrimaryIdentity(LPMAPIUID, ULONG) override
    {
        return Refuse("IMsgServiceAdmin::SetPrimaryIdentity");
    }
    HRESULT STDMETHODCALLTYPE GetProviderTable(ULONG, LPMAPITABLE*) override
    {
        return Refuse("IMsgServiceAdmin::GetProviderTable");
    }

private:
    static HRESULT Refuse(const char* method)
    {
        return Guarded(method, [] { throw Error(MAPI_E_NO_SUPPORT, "a profile supports only one store service"); });
    }

    bool Answers(REFIID iid) const override { return IsOneOf(iid, {&IID_IMsgServiceAdmin}); }

    const std::string m_profile;
};

} // namespace

std::shared_ptr<StoreFile> OpenServiceFile(const Service& service, CommitObserver* observer)
{
    StoreFile::OpenOptions options;
    options.observer = observer;
    options.fullDurability = service.fullDurability;
    try
    {
        return StoreFile::Open(service.path, options);
    }
    catch (const Error& error)
    {
        if (error.Code() != MAPI_E_NO_ACCESS)
        {
            throw;
        }
    }
    options.readOnly = true;
    return StoreFile::Open(service.path, options);
}

IMsgServiceAdmin* NewServiceAdmin(const std::string& profile)
{
    if (!profiles::Exists(profile))
    {
        throw Error(MAPI_E_NOT_FOUND, "the profile '" + profile + "' does not exist");
    }
    return new ServiceAdmin(profile);
}

void AddDefaultService(const std::string& profile)
{
    Configure(profile, AddService(profile, std::string()), Settings());
}

} // namespace zebstore
