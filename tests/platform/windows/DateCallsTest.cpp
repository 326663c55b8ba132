// The results of the system's conversions decide whether a date has a text, and are freed. This program's imports of
// them are replaced here.
#include "platform/datetime.h"
#include "tests/support/FailingNew.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <new>

namespace
{

using VariantTimeToSystemTimeFunction = INT(WINAPI*)(double, LPSYSTEMTIME);
using VarBstrFromDateFunction = HRESULT(WINAPI*)(DATE, LCID, ULONG, BSTR*);
using SysFreeStringFunction = void(WINAPI*)(BSTR);

template <class Function>
Function Real(const char* name)
{
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("oleaut32.dll"), name)));
}

/// Changes the date that comes back from an OLE date; null leaves it.
void (*spoil)(SYSTEMTIME&) = nullptr;
bool givesLongText = false;
int textsMade = 0;
int textsFreed = 0;

/// While it lives, the text of a date is too long for a string's inline storage.
struct LongTexts
{
    LongTexts() { givesLongText = true; }
    ~LongTexts() { givesLongText = false; }
};

INT WINAPI OwnVariantTimeToSystemTime(double date, LPSYSTEMTIME parts)
{
    static const auto real = Real<VariantTimeToSystemTimeFunction>("VariantTimeToSystemTime");
    const INT result = real(date, parts);
    if (result && spoil != nullptr)
    {
        spoil(*parts);
    }
    return result;
}

HRESULT WINAPI OwnVarBstrFromDate(DATE date, LCID locale, ULONG flags, BSTR* text)
{
    static const auto real = Real<VarBstrFromDateFunction>("VarBstrFromDate");
    static const auto make = Real<BSTR(WINAPI*)(const OLECHAR*)>("SysAllocString");
    ++textsMade;
    if (!givesLongText)
    {
        return real(date, locale, flags, text);
    }
    *text = make(L"the twenty-first of November in the year two thousand and twenty-six");
    return *text != nullptr ? S_OK : E_OUTOFMEMORY;
}

void WINAPI OwnSysFreeString(BSTR text)
{
    static const auto real = Real<SysFreeStringFunction>("SysFreeString");
    textsFreed += text != nullptr ? 1 : 0;
    real(text);
}

FILETIME Year2026()
{
    constexpr uint64_t ticks = 134'397'489'710'000'000; // 2026-11-21 15:36:11
    FILETIME time = {};
    time.dwLowDateTime = static_cast<DWORD>(ticks);
    time.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
    return time;
}

} // namespace

extern "C" VariantTimeToSystemTimeFunction __imp_VariantTimeToSystemTime;
extern "C" VarBstrFromDateFunction __imp_VarBstrFromDate;
extern "C" SysFreeStringFunction __imp_SysFreeString;
VariantTimeToSystemTimeFunction __imp_VariantTimeToSystemTime = OwnVariantTimeToSystemTime;
VarBstrFromDateFunction __imp_VarBstrFromDate = OwnVarBstrFromDate;
SysFreeStringFunction __imp_SysFreeString = OwnSysFreeString;

namespace zeb::platform
{

TEST(DateCalls, AChangedDateHasNoText)
{
    ASSERT_TRUE(LocalDateText(Year2026()).has_value());
    void (*const changes[])(SYSTEMTIME&) = {
        [](SYSTEMTIME& back) { ++back.wYear; },   [](SYSTEMTIME& back) { ++back.wMonth; },
        [](SYSTEMTIME& back) { ++back.wDay; },    [](SYSTEMTIME& back) { ++back.wHour; },
        [](SYSTEMTIME& back) { ++back.wMinute; }, [](SYSTEMTIME& back) { ++back.wSecond; }};
    int part = 0;
    for (const auto change : changes)
    {
        spoil = change;
        EXPECT_FALSE(LocalDateText(Year2026()).has_value()) << "part " << part;
        ++part;
    }
    spoil = [](SYSTEMTIME& back) { back.wMilliseconds = 999; };
    EXPECT_TRUE(LocalDateText(Year2026()).has_value()) << "milliseconds do not count";
    spoil = nullptr;
}

TEST(DateCalls, LackOfMemoryFreesTheText)
{
    const LongTexts longTexts;
    int failures = 0;
    for (int after = 0; after < 1000; ++after)
    {
        textsMade = 0;
        textsFreed = 0;
        bool failed = false;
        try
        {
            const zeb::test::FailingNew failing(after);
            LocalDateText(Year2026());
        }
        catch (const std::bad_alloc&)
        {
            failed = true;
        }
        EXPECT_EQ(textsMade, 1);
        EXPECT_EQ(textsFreed, 1) << after;
        if (!failed)
        {
            EXPECT_GE(failures, 1) << "narrowing allocates";
            return;
        }
        ++failures;
    }
    FAIL() << "never had enough memory";
}

} // namespace zeb::platform
