// A counting IWABObject.
#pragma once

#include "platform/mapi.h"

#include <cstdlib>
#include <cstring>
#include <set>

namespace zeb::test
{

/// Allocated by the test; `references` is 1 when it has no other reference. A child block lives until the object does.
class WabObject : public IWABObject
{
public:
    HRESULT answer = S_OK;       ///< of QueryInterface
    IUnknown* answerWith = this; ///< the object that QueryInterface returns
    int references = 1;
    int queries = 0;
    IID askedFor = {};
    int allocations = 0;
    int moreAllocations = 0;
    int frees = 0;
    void* lastParent = nullptr;

    virtual ~WabObject()
    {
        for (void* block : m_blocks)
        {
            std::free(block);
        }
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(const IID& iid, void** object) override
    {
        ++queries;
        askedFor = iid;
        *object = nullptr;
        if (FAILED(answer))
        {
            return answer;
        }
        answerWith->AddRef();
        *object = answerWith;
        return answer;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references); }
    ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--references); }

    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT, ULONG, LPMAPIERROR*) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE AllocateBuffer(ULONG size, void** block) override
    {
        ++allocations;
        return Make(size, block);
    }
    HRESULT STDMETHODCALLTYPE AllocateMore(ULONG size, void* parent, void** block) override
    {
        ++moreAllocations;
        lastParent = parent;
        return Make(size, block);
    }
    HRESULT STDMETHODCALLTYPE FreeBuffer(void* block) override
    {
        ++frees;
        m_blocks.erase(block);
        std::free(block);
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Backup(LPSTR) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE Import(LPSTR) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE Find(LPADRBOOK, HWND) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE VCardDisplay(LPADRBOOK, HWND, LPSTR) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE LDAPUrl(LPADRBOOK, HWND, ULONG, LPSTR, LPMAILUSER*) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE VCardCreate(LPADRBOOK, ULONG, LPSTR, LPMAILUSER) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE VCardRetrieve(LPADRBOOK, ULONG, LPSTR, LPMAILUSER*) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE GetMe(LPADRBOOK, ULONG, DWORD*, SBinary*, ULONG) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE SetMe(LPADRBOOK, ULONG, SBinary, ULONG) override { return MAPI_E_NO_SUPPORT; }

private:
    HRESULT Make(ULONG size, void** block)
    {
        *block = std::malloc(size != 0 ? size : 1);
        std::memset(*block, 0xCD, size);
        m_blocks.insert(*block);
        return S_OK;
    }

    std::set<void*> m_blocks;
};

} // namespace zeb::test
