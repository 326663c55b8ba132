#include "zebapi/Subject.h"

#include "zebapi/TAGS.h"

namespace zeb
{

CStringA TagText(ULONG tag)
{
    // The table has text properties as PT_STRING8.
    const bool isWide = PROP_TYPE(tag) == PT_UNICODE;
    const ULONG listed = isWide ? PROP_TAG(PT_STRING8, PROP_ID(tag)) : tag;
    const char* name = Zeb_NameFromValue("PropTags", listed, nullptr);
    CStringA text;
    text.Format("%s%s0x%08X", name != nullptr ? name : "", name != nullptr ? " " : "",
                static_cast<unsigned int>(tag));
    return text;
}

void ThrowTag(LONG result, ULONG tag, const char* file, int line, const char* operation)
{
    for (;;)
    {
        AboutTag(tag, [&] { CZebException::Throw(result, file, line, operation); });
    }
}

void ThrowIndex(LONG result, const char* what, LONG index, ULONG count, const char* file, int line,
                const char* operation)
{
    const auto subject = [&]
    {
        CStringA text;
        text.Format("%s %d of %u", what, static_cast<int>(index), static_cast<unsigned int>(count));
        return text;
    };
    for (;;)
    {
        About(subject, [&] { CZebException::Throw(result, file, line, operation); });
    }
}

} // namespace zeb
