// A double of MAPI's profile administration.
#pragma once

#include "tests/support/doubles/RowTable.h"

namespace zeb::test
{

/// Returns a profile table; all other calls are unexpected.
class RecordingProfAdmin : public Counted<IProfAdmin>
{
public:
    explicit RecordingProfAdmin(Journal& journal, std::string name = "admin")
        : Counted<IProfAdmin>(journal, std::move(name), {&IID_IUnknown, &IID_IProfAdmin})
    {
    }
    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT result, ULONG flags, LPMAPIERROR* error) override
    {
        const ProviderScope inside;
        return LastError(result, flags, error);
    }
    HRESULT STDMETHODCALLTYPE GetProfileTable(ULONG flags, LPMAPITABLE* table) override
    {
        const ProviderScope inside;
        *table = nullptr;
        const HRESULT result = Called("GetProfileTable", Number(flags), RefuseFlags(flags, 0));
        return this->GivesNoObject(result) ? result : HandOut<IMAPITable>(m_table, table);
    }
    HRESULT STDMETHODCALLTYPE CreateProfile(LPTSTR, LPTSTR, ULONG_PTR, ULONG) override
    {
        return Unexpected("CreateProfile");
    }
    HRESULT STDMETHODCALLTYPE DeleteProfile(LPTSTR, ULONG) override { return Unexpected("DeleteProfile"); }
    HRESULT STDMETHODCALLTYPE ChangeProfilePassword(LPTSTR, LPTSTR, LPTSTR, ULONG) override
    {
        return Unexpected("ChangeProfilePassword");
    }
    HRESULT STDMETHODCALLTYPE CopyProfile(LPTSTR, LPTSTR, LPTSTR, ULONG_PTR, ULONG) override
    {
        return Unexpected("CopyProfile");
    }
    HRESULT STDMETHODCALLTYPE RenameProfile(LPTSTR, LPTSTR, LPTSTR, ULONG_PTR, ULONG) override
    {
        return Unexpected("RenameProfile");
    }
    HRESULT STDMETHODCALLTYPE SetDefaultProfile(LPTSTR, ULONG) override { return Unexpected("SetDefaultProfile"); }
    HRESULT STDMETHODCALLTYPE AdminServices(LPTSTR, LPTSTR, ULONG_PTR, ULONG, LPSERVICEADMIN*) override
    {
        return Unexpected("AdminServices");
    }

    /// The result of GetProfileTable.
    RowTable* m_table = nullptr;
};

} // namespace zeb::test
