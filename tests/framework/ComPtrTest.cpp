#include "framework/ComPtr.h"

#include <gtest/gtest.h>

#include <functional>
#include <type_traits>
#include <utility>

namespace
{

/// Counts its references; answers to IUnknown only.
class Counted : public IMAPIAdviseSink
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override
    {
        *result = nullptr;
        if (!IsEqualGUID(iid, IID_IUnknown))
        {
            return E_NOINTERFACE;
        }
        AddRef();
        *result = static_cast<IUnknown*>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++count; }
    ULONG STDMETHODCALLTYPE Release() override { return --count; }
    ULONG STDMETHODCALLTYPE OnNotify(ULONG number, LPNOTIFICATION) override { return number; }

    ULONG count = 1; ///< the test's own
};

using Sink = CComPtr<IMAPIAdviseSink>;

static_assert(!std::is_convertible_v<Sink, IMAPIAdviseSink*>, "a null must not slip into a call");

HRESULT ErrorOf(const std::function<void()>& action)
{
    try
    {
        action();
    }
    catch (const _com_error& error)
    {
        return error.Error();
    }
    return S_OK;
}

TEST(ComPtr, AnEmptyOneRaisesEPointer)
{
    Sink sink;
    IUnknown* unknown = nullptr;
    EXPECT_EQ(ErrorOf([&] { sink->OnNotify(0, nullptr); }), E_POINTER);
    EXPECT_EQ(ErrorOf([&] { (*sink).OnNotify(0, nullptr); }), E_POINTER);
    EXPECT_EQ(ErrorOf([&] { sink.Checked(); }), E_POINTER);
    EXPECT_EQ(ErrorOf([&] { sink.QueryInterface(IID_IUnknown, &unknown); }), E_POINTER);
    EXPECT_EQ(sink.Get(), nullptr);
    EXPECT_FALSE(sink);
    EXPECT_TRUE(!sink);
}

TEST(ComPtr, ConstructionAddsAReference)
{
    Counted object;
    {
        const Sink sink(&object);
        EXPECT_EQ(object.count, 2u);
        EXPECT_EQ(sink->OnNotify(3, nullptr), 3u);
    }
    EXPECT_EQ(object.count, 1u);
}

TEST(ComPtr, CopiesShareAndMovesHandOver)
{
    Counted object;
    {
        const Sink first(&object);
        Sink second(first);
        EXPECT_EQ(object.count, 3u);
        Sink third(std::move(second));
        EXPECT_EQ(object.count, 3u);
        EXPECT_FALSE(second); // NOLINT: emptied by the move
        second = third;
        EXPECT_EQ(object.count, 4u);
        third = std::move(second);
        EXPECT_EQ(object.count, 3u);
        const CComPtr<IUnknown> base(first);
        EXPECT_EQ(object.count, 4u);
    }
    EXPECT_EQ(object.count, 1u);
}

TEST(ComPtr, AssigningItselfKeepsTheReference)
{
    Counted object;
    Sink sink(&object);
    Sink& same = sink;
    sink = same;
    EXPECT_EQ(object.count, 2u);
    sink = sink.Get();
    EXPECT_EQ(object.count, 2u);
    sink = nullptr;
    EXPECT_EQ(object.count, 1u);
}

TEST(ComPtr, AttachAndDetachKeepTheCount)
{
    Counted object;
    Counted other;
    Sink sink(&other);
    sink.Attach(&object);
    EXPECT_EQ(other.count, 1u) << "what was held is released";
    EXPECT_EQ(object.count, 1u);
    EXPECT_EQ(sink.Detach(), &object);
    EXPECT_FALSE(sink);
    EXPECT_EQ(object.count, 1u);
    {
        const Sink taken = Sink::Take(&object);
        EXPECT_EQ(object.count, 1u);
    }
    EXPECT_EQ(object.count, 0u);
}

TEST(ComPtr, PutEmptiesAndReceivesAReference)
{
    Counted object;
    Sink sink(&object);
    object.AddRef();
    *sink.Put() = &object;
    EXPECT_EQ(object.count, 2u);
    *sink.PutAs<void>() = nullptr;
    EXPECT_EQ(object.count, 1u);
}

TEST(ComPtr, QueriesGiveAReferenceOrFail)
{
    Counted object;
    const Sink sink(&object);
    CComPtr<IUnknown> unknown;
    EXPECT_EQ(sink.QueryInterface(IID_IUnknown, unknown), S_OK);
    EXPECT_EQ(object.count, 3u);
    CComPtr<IMAPITable> table;
    EXPECT_EQ(sink.QueryInterface(IID_IMAPITable, table), E_NOINTERFACE);
    EXPECT_FALSE(table);
    IUnknown* raw = nullptr;
    EXPECT_EQ(sink.QueryInterface(IID_IUnknown, &raw), S_OK);
    EXPECT_EQ(object.count, 4u);
    raw->Release();
}

TEST(ComError, CarriesItsResult)
{
    EXPECT_EQ(ErrorOf([] { RaiseComError(E_NOINTERFACE); }), E_NOINTERFACE);
    EXPECT_THROW(RaiseComError(E_FAIL), _com_error);
}

} // namespace
