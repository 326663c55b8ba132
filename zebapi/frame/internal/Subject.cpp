#include "zebapi/frame/internal/Subject.h"

#include "qorth/Text.h"
#include "zebapi/constants/NameLookup.h"

namespace zeb
{

CStringA TagText(ULONG tag)
{
    // The table has text properties as PT_STRING8.
    const bool isWide = PROP_TYPE(tag) == PT_UNICODE;
    const ULONG listed = isWide ? PROP_TAG(PT_STRING8, PROP_ID(tag)) : tag;
    const char* name = Zeb_NameFromValue("PropTags", listed, nullptr);
    CStringA text;
    text.Format("%s%s0x%08X", name != nullptr ? name : "", name != nullptr ? " " : "", static_cast<unsigned int>(tag));
    return text;
}

CStringA EntryText(const SBinary& entryID)
{
    constexpr ULONG Shown = 32;
    CStringA text("entry ");
    if (entryID.lpb != nullptr)
    {
        const ULONG count = entryID.cb < Shown ? entryID.cb : Shown;
        for (ULONG i = 0; i < count; ++i)
        {
            CStringA byte;
            byte.Format("%02X", static_cast<unsigned int>(entryID.lpb[i]));
            text += byte;
        }
        text += entryID.cb > Shown ? "... " : " ";
    }
    return text + "(" + CountText(entryID.cb, "byte") + ")";
}

CStringA CountText(ULONG count, const char* one)
{
    CStringA text;
    text.Format("%u %s%s", static_cast<unsigned int>(count), one, count == 1 ? "" : "s");
    return text;
}

CStringA NameText(const char* name)
{
    return CStringA("'") + (name != nullptr ? name : "") + "'";
}

CStringA NameText(const WCHAR* name)
{
    const CStringA narrow = QorConvertStringByANSITable(name, -1);
    return NameText(static_cast<const char*>(narrow));
}

CStringA NumberText(const char* what, ULONG number)
{
    CStringA text;
    text.Format("%s %u", what, static_cast<unsigned int>(number));
    return text;
}

CStringA RowsText(LONG count)
{
    CStringA text;
    text.Format("%d row%s", static_cast<int>(count), count == 1 ? "" : "s");
    return text;
}

CStringA TagsText(const SPropTagArray* tags)
{
    if (tags == nullptr)
    {
        return "all properties";
    }
    return tags->cValues == 1 ? TagText(tags->aulPropTag[0]) : CountText(tags->cValues, "tag");
}

CStringA ValuesText(ULONG count, const SPropValue* values)
{
    return count == 1 && values != nullptr ? TagText(values[0].ulPropTag) : CountText(count, "value");
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
