#include "tests/zebstore/storage/Storage.h"

namespace zebstore::test
{
namespace
{

class NamedPropertyTest : public StorageTest
{
protected:
    static MAPINAMEID Number(const GUID& set, LONG number)
    {
        MAPINAMEID name{};
        name.lpguid = const_cast<GUID*>(&set);
        name.ulKind = MNID_ID;
        name.Kind.lID = number;
        return name;
    }
    static MAPINAMEID Text(const GUID& set, const WCHAR* text)
    {
        MAPINAMEID name{};
        name.lpguid = const_cast<GUID*>(&set);
        name.ulKind = MNID_STRING;
        name.Kind.lpwstrName = const_cast<WCHAR*>(text);
        return name;
    }
    ULONG IdOfName(const MAPINAMEID& name, bool create)
    {
        const MAPINAMEID* names[] = {&name};
        return Store().NamedProperties().Ids(names, 1, create)[0];
    }
};

TEST_F(NamedPropertyTest, NumbersAreStableFrom8000)
{
    const MAPINAMEID number = Number(PS_PUBLIC_STRINGS, 0x8501);
    const MAPINAMEID text = Text(PS_PUBLIC_STRINGS, ZEBW("Keywords"));
    EXPECT_EQ(IdOfName(number, false), 0u);
    EXPECT_EQ(IdOfName(number, true), 0x8000u);
    EXPECT_EQ(IdOfName(text, true), 0x8001u);
    Reopen();
    EXPECT_EQ(IdOfName(number, false), 0x8000u);
    EXPECT_EQ(IdOfName(text, false), 0x8001u);
}

TEST_F(NamedPropertyTest, SetKindAndCaseMatter)
{
    const ULONG one = IdOfName(Text(PS_PUBLIC_STRINGS, ZEBW("name")), true);
    EXPECT_NE(IdOfName(Text(PS_PUBLIC_STRINGS, ZEBW("Name")), true), one);
    EXPECT_NE(IdOfName(Text(IID_IMAPITable, ZEBW("name")), true), one);
    EXPECT_NE(IdOfName(Number(PS_PUBLIC_STRINGS, 0), true), one);
    EXPECT_EQ(IdOfName(Text(PS_PUBLIC_STRINGS, ZEBW("name")), true), one);
}

TEST_F(NamedPropertyTest, RepeatedNewNamesGetOneNumber)
{
    const MAPINAMEID name = Number(PS_PUBLIC_STRINGS, 3);
    const MAPINAMEID* names[] = {&name, &name};
    const std::vector<ULONG> ids = Store().NamedProperties().Ids(names, 2, true);
    EXPECT_EQ(ids[0], ids[1]);
}

TEST_F(NamedPropertyTest, NumbersLeadBackToNames)
{
    const ULONG number = IdOfName(Number(PS_PUBLIC_STRINGS, -5), true);
    const ULONG text = IdOfName(Text(PS_PUBLIC_STRINGS, ZEBW("Gr\u00F6\u00DFe")), true);
    EXPECT_EQ(Store().NamedProperties().Name(number)->number, -5);
    EXPECT_EQ(Store().NamedProperties().Name(text)->name, ZEBW("Gr\u00F6\u00DFe"));
    EXPECT_FALSE(Store().NamedProperties().Name(text)->number);
    EXPECT_TRUE(IsEqualGUID(Store().NamedProperties().Name(text)->set, PS_PUBLIC_STRINGS));
    EXPECT_FALSE(Store().NamedProperties().Name(0x9999));
    EXPECT_EQ(Store().NamedProperties().All().size(), 2u);
}

TEST_F(NamedPropertyTest, AnInvalidNameAddsNone)
{
    const MAPINAMEID good = Number(PS_PUBLIC_STRINGS, 1);
    const MAPINAMEID empty = Text(PS_PUBLIC_STRINGS, ZEBW(""));
    MAPINAMEID homeless = good;
    homeless.lpguid = nullptr;
    const MAPINAMEID* bad[] = {&good, &empty};
    EXPECT_EQ(CodeOf([&] { Store().NamedProperties().Ids(bad, 2, true); }), MAPI_E_INVALID_PARAMETER);
    bad[1] = &homeless;
    EXPECT_EQ(CodeOf([&] { Store().NamedProperties().Ids(bad, 2, true); }), MAPI_E_INVALID_PARAMETER);
    bad[1] = nullptr;
    EXPECT_EQ(CodeOf([&] { Store().NamedProperties().Ids(bad, 2, true); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_TRUE(Store().NamedProperties().All().empty());
}

TEST_F(NamedPropertyTest, TooManyNamesExceedTheQuota)
{
    std::vector<MAPINAMEID> names;
    for (LONG i = 0; i < 0xFFFE - 0x8000 + 1; ++i)
    {
        names.push_back(Number(PS_PUBLIC_STRINGS, i));
    }
    std::vector<const MAPINAMEID*> pointers;
    for (const MAPINAMEID& name : names)
    {
        pointers.push_back(&name);
    }
    EXPECT_EQ(Store().NamedProperties().Ids(pointers.data(), pointers.size(), true).back(), 0xFFFEu);
    EXPECT_EQ(CodeOf([&] { IdOfName(Number(PS_PUBLIC_STRINGS, -1), true); }), static_cast<HRESULT>(0x80040900));
}

} // namespace
} // namespace zebstore::test
