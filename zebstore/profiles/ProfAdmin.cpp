#include "zebstore/profiles/ProfAdmin.h"

#include "zebstore/base/Object.h"
#include "zebstore/objects/MemoryTable.h"
#include "zebstore/objects/StoreContext.h"
#include "zebstore/profiles/ServiceAdmin.h"

namespace zebstore
{
namespace
{

// Flags that request dialogs are accepted and ignored: the provider has no user interface.
constexpr ULONG KnownFlags = MAPI_UNICODE | MAPI_DIALOG | MAPI_DEFAULT_SERVICES;

class ProfAdmin final : public Object<IProfAdmin>
{
public:
    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT code, ULONG flags, LPMAPIERROR* error) override
    {
        return Guarded("IProfAdmin::GetLastError", [&] { return LastErrorAsMapi(code, flags, error); });
    }

    HRESULT STDMETHODCALLTYPE GetProfileTable(ULONG flags, LPMAPITABLE* table) override
    {
        return Guarded("IProfAdmin::GetProfileTable", [&]
        {
            Require(table != nullptr, "the output pointer is null");
            *table = nullptr;
            RequireFlags(flags, MAPI_UNICODE);
            const std::string byDefault = profiles::Default().value_or("");
            std::vector<PropertySet> rows;
            for (const std::string& name : profiles::Names())
            {
                PropertySet row;
                row.SetText(PR_DISPLAY_NAME_W, name);
                row.SetBool(PR_DEFAULT_PROFILE, profiles::SameName(name, byDefault));
                row.SetBinary(PR_INSTANCE_KEY, name.data(), name.size());
                rows.push_back(std::move(row));
            }
            *table = NewMemoryTable(std::move(rows), {PR_DISPLAY_NAME_A, PR_DEFAULT_PROFILE}, flags);
        });
    }

    HRESULT STDMETHODCALLTYPE CreateProfile(LPTSTR name, LPTSTR, ULONG_PTR, ULONG flags) override
    {
        return Guarded("IProfAdmin::CreateProfile", [&]
        {
            RequireFlags(flags, KnownFlags);
            const std::string profile = TextArgument(name, flags);
            profiles::Create(profile);
            if (!(flags & MAPI_DEFAULT_SERVICES))
            {
                return;
            }
            try
            {
                AddDefaultService(profile);
            }
            catch (...)
            {
                profiles::Delete(profile);
                throw;
            }
        });
    }

    HRESULT STDMETHODCALLTYPE DeleteProfile(LPTSTR name, ULONG flags) override
    {
        return Guarded("IProfAdmin::DeleteProfile", [&]
        {
            RequireFlags(flags, KnownFlags);
            profiles::Delete(TextArgument(name, flags));
        });
    }

    HRESULT STDMETHODCALLTYPE ChangeProfilePassword(LPTSTR, LPTSTR, LPTSTR, ULONG) override
    {
        return Guarded("IProfAdmin::ChangeProfilePassword",
                       [] { throw Error(MAPI_E_NO_SUPPORT, "passwords of profiles are not supported"); });
    }

    HRESULT STDMETHODCALLTYPE CopyProfile(LPTSTR from, LPTSTR, LPTSTR to, ULONG_PTR, ULONG flags) override
    {
        return Guarded("IProfAdmin::CopyProfile", [&]
        {
            RequireFlags(flags, KnownFlags);
            profiles::Copy(TextArgument(from, flags), TextArgument(to, flags));
        });
    }

    HRESULT STDMETHODCALLTYPE RenameProfile(LPTSTR from, LPTSTR, LPTSTR to, ULONG_PTR, ULONG flags) override
    {
        return Guarded("IProfAdmin::RenameProfile", [&]
        {
            RequireFlags(flags, KnownFlags);
            const std::string before = TextArgument(from, flags);
            const std::string after = TextArgument(to, flags);
            const bool wasDefault = profiles::SameName(profiles::Default().value_or(""), before);
            profiles::Copy(before, after);
            profiles::Delete(before);
            if (wasDefault)
            {
                profiles::SetDefault(after);
            }
        });
    }

    HRESULT STDMETHODCALLTYPE SetDefaultProfile(LPTSTR name, ULONG flags) override
    {
        return Guarded("IProfAdmin::SetDefaultProfile", [&]
        {
            RequireFlags(flags, KnownFlags);
            profiles::SetDefault(TextArgument(name, flags));
        });
    }

    HRESULT STDMETHODCALLTYPE AdminServices(LPTSTR name, LPTSTR, ULONG_PTR, ULONG flags, LPSERVICEADMIN* admin) override
    {
        return Guarded("IProfAdmin::AdminServices", [&]
        {
            Require(admin != nullptr, "the output pointer is null");
            *admin = nullptr;
            RequireFlags(flags, KnownFlags);
            *admin = NewServiceAdmin(TextArgument(name, flags));
        });
    }

private:
    bool Answers(REFIID iid) const override { return IsOneOf(iid, {&IID_IProfAdmin}); }
};

} // namespace

IProfAdmin* NewProfAdmin()
{
    return new ProfAdmin;
}

} // namespace zebstore
