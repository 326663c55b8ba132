// A system without locales.
#include "platform/datetime.h"
#include "platform/text.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <locale.h>

namespace
{

bool refuseLocales = false;

using NewLocale = locale_t (*)(int, const char*, locale_t);

} // namespace

// Replaces the C library's function in this program.
extern "C" locale_t newlocale(int mask, const char* name, locale_t base)
{
    static const auto next = reinterpret_cast<NewLocale>(dlsym(RTLD_NEXT, "newlocale"));
    return refuseLocales ? nullptr : next(mask, name, base);
}

namespace
{

using zeb::platform::LocalDateText;
using zeb::platform::UpperWide;

/// In a separate process: locales created earlier stay.
void UseTextWithoutLocales()
{
    refuseLocales = true;
    const bool right =
        UpperWide(u'a') == u'A' && UpperWide(u'Z') == u'Z' && UpperWide(u'1') == u'1' && UpperWide(0xE9) == 0xE9;
    FILETIME time = {};
    time.dwHighDateTime = 0x01C00000;
    const bool dated = LocalDateText(time).has_value();
    _exit(right && dated ? 0 : 1);
}

TEST(Locale, AsciiAndDatesWorkWithoutAny)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(UseTextWithoutLocales(), ::testing::ExitedWithCode(0), "");
}

} // namespace
