// Internal: reads a byte buffer sequentially, never beyond its end.
#pragma once

#include "framework/CString.h"
#include "platform/mapi.h"
#include "platform/overloads.h"

#include <cstdint>
#include <memory>

namespace zeb
{

/// An owned temporary array; a small one needs no heap memory. Its items are uninitialized.
template <class T>
class CSafeArray
{
public:
    explicit CSafeArray(size_t count)
        : m_heap(count > SmallCount ? framework::WithMemory([count] { return new T[count]; }) : nullptr)
    {
    }
    T* Get() { return m_heap != nullptr ? m_heap.get() : m_small; }
    T& operator[](size_t index) { return Get()[index]; }

private:
    static constexpr size_t SmallCount = 64;

    std::unique_ptr<T[]> m_heap;
    T m_small[SmallCount];
};

/// Reads integers (little-endian), bytes and text from a borrowed buffer, at any alignment.
///
/// No read goes past the end, and none throws because of missing bytes: a read that does not fit returns zero or empty
/// text and leaves the position unchanged. Threads: none of its own.
class CBinaryParser
{
public:
    virtual ~CBinaryParser();
    /// Bytes between the position and the end; 0 when the position was moved past it.
    virtual std::uint64_t Remaining() const;
    /// Advances the position by `n` bytes, possibly past the end.
    virtual void Advance(std::uint64_t n);
    /// The position, counted from the start.
    virtual std::uint64_t Offset() const;
    /// The position in the buffer; its end when the position was moved past it.
    virtual const BYTE* Current() const;
    virtual std::uint8_t Read8();
    virtual std::uint16_t Read16();
    virtual std::uint32_t Read32();
    virtual void Read64(std::uint64_t& value);
    /// Copies `n` bytes to `destination`; does nothing when it is null or they do not fit.
    virtual void ReadBytes(std::uint64_t n, void* destination);
    ZEB_OVERLOADS(
        /// Text up to and including its terminator; empty, and nothing consumed, when the rest has no terminator.
        virtual CStringA ReadStringA(),
        /// Consumes `n` characters; the text ends at the first terminator among them.
        virtual CStringA ReadStringA(std::uint64_t n));
    ZEB_OVERLOADS(
        virtual CStringW ReadStringW(),
        virtual CStringW ReadStringW(std::uint64_t n));

    /// A null `start` counts as an empty buffer.
    CBinaryParser(std::uint64_t size, const void* start);

private:
    void Fetch(std::uint64_t n, void* destination);
    template <class T>
    T Fetch();
    template <class Char>
    std::uint64_t TerminatedLength() const;
    template <class Text>
    Text FetchText(std::uint64_t n);

    std::uint64_t m_size;
    const BYTE* m_start;
    const BYTE* m_end;
    std::uint64_t m_offset = 0; ///< may be past the end; never wraps
};

} // namespace zeb
