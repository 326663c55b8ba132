// What the doubles of streams share.
#pragma once

#include "tests/support/doubles/Journal.h"

#include <string>

namespace zeb::test
{

/// A stream whose calls are all unexpected; a double overrides those that its tests make.
class UnusedStream : public Counted<IStream>
{
public:
    UnusedStream(Journal& journal, std::string name)
        : Counted<IStream>(journal, std::move(name), {&IID_IUnknown, &IID_IStream})
    {
    }

    HRESULT STDMETHODCALLTYPE Read(void*, ULONG, ULONG*) override { return Unexpected("Read"); }
    HRESULT STDMETHODCALLTYPE Write(const void*, ULONG, ULONG*) override { return Unexpected("Write"); }
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER, DWORD, ULARGE_INTEGER*) override { return Unexpected("Seek"); }
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return Unexpected("SetSize"); }
    HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override
    {
        return Unexpected("CopyTo");
    }
    HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return Unexpected("Commit"); }
    HRESULT STDMETHODCALLTYPE Revert() override { return Unexpected("Revert"); }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override
    {
        return Unexpected("LockRegion");
    }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override
    {
        return Unexpected("UnlockRegion");
    }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG*, DWORD) override { return Unexpected("Stat"); }
    HRESULT STDMETHODCALLTYPE Clone(IStream**) override { return Unexpected("Clone"); }
};

} // namespace zeb::test
