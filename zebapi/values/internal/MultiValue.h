// Internal: copies arrays of values to and from MAPI memory.
#pragma once

#include "framework/Containers.h"
#include "zebapi/values/internal/PropValWrite.h"
#include "zebapi/values/internal/Received.h"

#include <algorithm>
#include <utility>

namespace zeb
{

template <class Text>
auto CopyTexts(const CArray<Text>& texts, void* parent)
{
    using Char = typename Text::XCHAR;
    const auto count = static_cast<std::uint64_t>(texts.GetSize());
    Char** copies = AllocateArray<Char*>(count, parent);
    for (std::uint64_t i = 0; i < count; ++i)
    {
        const Text& text = texts[static_cast<INT_PTR>(i)];
        copies[i] = CopyText(text.GetString(), static_cast<std::uint64_t>(text.GetLength()), parent);
    }
    return copies;
}

template <class T>
T* CopyNumbers(const CArray<T>& numbers, void* parent)
{
    const auto count = static_cast<std::uint64_t>(numbers.GetSize());
    T* copies = AllocateArray<T>(count, parent);
    std::copy(numbers.begin(), numbers.end(), copies);
    return copies;
}

template <class Element>
const Element& AsReceived(const Element& element)
{
    return element;
}

inline SBinary AsReceived(const SBinary& element)
{
    return Received(element);
}

template <class T, class Element>
void CopyOut(CArray<T>& values, const Element* elements, ULONG claimed)
{
    const ULONG count = CountOf(elements, claimed);
    // Into a separate array: the elements may belong to the array itself.
    CArray<T> copies;
    copies.Reserve(static_cast<INT_PTR>(count));
    for (ULONG i = 0; i < count; ++i)
    {
        copies.Add(T(AsReceived(elements[i])));
    }
    values = std::move(copies);
}

} // namespace zeb
