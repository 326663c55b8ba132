#include "qorth/Text.h"

#include "platform/text.h"

#include <cstring>

CStringA QorConvertStringByANSITable(const WCHAR* text, int length)
{
    if (text == nullptr)
    {
        return CStringA();
    }
    const size_t count = length < 0 ? zeb::platform::WideLength(text) : static_cast<size_t>(length);
    return zeb::framework::WithMemory([&] { return CStringA(zeb::platform::NarrowFromWide(text, count)); });
}

CStringW QorConvertStringByANSITable(const char* text, int length)
{
    if (text == nullptr)
    {
        return CStringW();
    }
    const size_t count = length < 0 ? std::strlen(text) : static_cast<size_t>(length);
    return zeb::framework::WithMemory([&] { return CStringW(zeb::platform::WideFromNarrow(text, count)); });
}
