#include "tests/zebstore/storage/Storage.h"

#include "zebstore/storage/ValueBuilder.h"

namespace zebstore::test
{
namespace
{

// Values go through a message of the file and come back as SPropValue.
class PropertySetTest : public StorageTest
{
protected:
    PropertySet ThroughFile(const PropertySet& properties)
    {
        MessageContent content;
        content.properties = properties;
        const MessageId message = Store().Messages().Create({Inbox, false}, content);
        Reopen();
        return Store().Messages().Load(message).properties;
    }
    Buffer<SPropValue> RoundTrip(const SPropValue& value)
    {
        PropertySet properties;
        properties.Set(value);
        return Built(value.ulPropTag, ThroughFile(properties));
    }
    static Buffer<SPropValue> Built(ULONG tag, const PropertySet& properties)
    {
        return Buffer<SPropValue>(BuildValues(&tag, 1, properties, {}));
    }
};

constexpr ULONG Id = 0x6001;

TEST_F(PropertySetTest, EveryFixedTypeComesBack)
{
    for (const ULONG type : {PT_I2, PT_LONG, PT_R4, PT_DOUBLE, PT_CURRENCY, PT_APPTIME, PT_I8, PT_SYSTIME})
    {
        SPropValue value = Value(PROP_TAG(type, Id));
        const unsigned char bytes[8] = {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0x40};
        std::memcpy(static_cast<void*>(&value.Value), bytes, 8);
        const Buffer<SPropValue> back = RoundTrip(value);
        EXPECT_EQ(back->ulPropTag, value.ulPropTag);
        const size_t size = type == PT_I2 ? 2 : type == PT_LONG || type == PT_R4 ? 4 : 8;
        EXPECT_EQ(std::memcmp(&back->Value, bytes, size), 0) << type;
    }
    SPropValue flag = Value(PROP_TAG(PT_BOOLEAN, Id));
    flag.Value.b = 1;
    EXPECT_EQ(RoundTrip(flag)->Value.b, 1);
    GUID guid = IID_IMAPITable;
    SPropValue clsid = Value(PROP_TAG(PT_CLSID, Id));
    clsid.Value.lpguid = &guid;
    EXPECT_TRUE(IsEqualGUID(*RoundTrip(clsid)->Value.lpguid, guid));
}

TEST_F(PropertySetTest, BinariesReturnEmptyOrWithZeros)
{
    const std::string bytes("a\0b\xFF", 4);
    const Buffer<SPropValue> back = RoundTrip(BinaryValue(PROP_TAG(PT_BINARY, Id), bytes));
    EXPECT_EQ(std::string(reinterpret_cast<char*>(back->Value.bin.lpb), back->Value.bin.cb), bytes);
    const Buffer<SPropValue> empty = RoundTrip(BinaryValue(PROP_TAG(PT_BINARY, Id), ""));
    EXPECT_EQ(empty->ulPropTag, PROP_TAG(PT_BINARY, Id));
    EXPECT_EQ(empty->Value.bin.cb, 0u);
}

TEST_F(PropertySetTest, MultiValuedFixedTypesComeBack)
{
    for (const ULONG type : {PT_MV_I2, PT_MV_LONG, PT_MV_R4, PT_MV_DOUBLE, PT_MV_CURRENCY, PT_MV_APPTIME, PT_MV_SYSTIME,
                             PT_MV_I8, PT_MV_CLSID})
    {
        unsigned char bytes[48];
        for (unsigned i = 0; i < sizeof(bytes); ++i)
        {
            bytes[i] = static_cast<unsigned char>(i);
        }
        SPropValue value = Value(PROP_TAG(type, Id));
        value.Value.MVl.cValues = 3;
        value.Value.MVl.lpl = reinterpret_cast<LONG*>(bytes);
        const Buffer<SPropValue> back = RoundTrip(value);
        ASSERT_EQ(back->ulPropTag, value.ulPropTag);
        ASSERT_EQ(back->Value.MVl.cValues, 3u);
        const size_t size = type == PT_MV_I2                         ? 2
                            : type == PT_MV_LONG || type == PT_MV_R4 ? 4
                            : type == PT_MV_CLSID                    ? 16
                                                                     : 8;
        EXPECT_EQ(std::memcmp(back->Value.MVl.lpl, bytes, size * 3), 0) << type;
    }
}

TEST_F(PropertySetTest, MultiValuedVariableTypesComeBack)
{
    const char* narrow[] = {"one", "", "three"};
    SPropValue value = Value(PROP_TAG(PT_MV_STRING8, Id));
    value.Value.MVszA.cValues = 3;
    value.Value.MVszA.lppszA = const_cast<char**>(narrow);
    Buffer<SPropValue> back = RoundTrip(value);
    ASSERT_EQ(back->Value.MVszA.cValues, 3u);
    EXPECT_STREQ(back->Value.MVszA.lppszA[0], "one");
    EXPECT_STREQ(back->Value.MVszA.lppszA[1], "");
    EXPECT_STREQ(back->Value.MVszA.lppszA[2], "three");

    const WCHAR* wide[] = {ZEBW("eins"), ZEBW("zw\u00F6lf")};
    value = Value(PROP_TAG(PT_MV_UNICODE, Id));
    value.Value.MVszW.cValues = 2;
    value.Value.MVszW.lppszW = const_cast<WCHAR**>(wide);
    back = RoundTrip(value);
    ASSERT_EQ(back->Value.MVszW.cValues, 2u);
    EXPECT_EQ(zeb::platform::WideString(back->Value.MVszW.lppszW[1]), ZEBW("zw\u00F6lf"));

    SBinary binaries[2] = {BinaryValue(0, std::string("x\0y", 3)).Value.bin, {0, nullptr}};
    std::string first("x\0y", 3);
    binaries[0].lpb = reinterpret_cast<BYTE*>(&first[0]);
    value = Value(PROP_TAG(PT_MV_BINARY, Id));
    value.Value.MVbin.cValues = 2;
    value.Value.MVbin.lpbin = binaries;
    back = RoundTrip(value);
    ASSERT_EQ(back->Value.MVbin.cValues, 2u);
    EXPECT_EQ(back->Value.MVbin.lpbin[0].cb, 3u);
    EXPECT_EQ(back->Value.MVbin.lpbin[1].cb, 0u);
}

TEST_F(PropertySetTest, EmptyMultiValuesComeBackEmpty)
{
    const Buffer<SPropValue> back = RoundTrip(Value(PROP_TAG(PT_MV_UNICODE, Id)));
    EXPECT_EQ(back->ulPropTag, PROP_TAG(PT_MV_UNICODE, Id));
    EXPECT_EQ(back->Value.MVszW.cValues, 0u);
}

TEST_F(PropertySetTest, TextComesAsAskedFor)
{
    PropertySet properties;
    properties.Set(NarrowValue(PR_SUBJECT_A, "plain"));
    properties.Set(WideValue(PR_BODY_W, ZEBW("wide \u00E4")));
    properties = ThroughFile(properties);
    EXPECT_EQ(zeb::platform::WideString(Built(PR_SUBJECT_W, properties)->Value.lpszW), ZEBW("plain"));
    EXPECT_STREQ(Built(PR_SUBJECT_A, properties)->Value.lpszA, "plain");
    const WCHAR wide[] = ZEBW("wide \u00E4");
    EXPECT_EQ(Built(PR_BODY_A, properties)->Value.lpszA, zeb::platform::NarrowFromWide(wide, 6));
    EXPECT_EQ(properties.Find(PR_SUBJECT_W).tag, ULONG(PR_SUBJECT_A)) << "the written type stays";
}

TEST_F(PropertySetTest, UnspecifiedTextFollowsTheOption)
{
    PropertySet properties;
    properties.Set(NarrowValue(PR_SUBJECT_A, "x"));
    const ULONG tag = PROP_TAG(PT_UNSPECIFIED, PROP_ID(PR_SUBJECT_A));
    BuildOptions options;
    options.unicode = true;
    EXPECT_EQ(Buffer<SPropValue>(BuildValues(&tag, 1, properties, options))->ulPropTag, ULONG(PR_SUBJECT_W));
    options.keepTextType = true;
    EXPECT_EQ(Buffer<SPropValue>(BuildValues(&tag, 1, properties, options))->ulPropTag, ULONG(PR_SUBJECT_A));
}

TEST_F(PropertySetTest, NarrowBytesComeBackUnchanged)
{
    const std::string odd("caf\xE9 \xFF\xFE", 7);
    const Buffer<SPropValue> back = RoundTrip(NarrowValue(PR_SUBJECT_A, odd.c_str()));
    EXPECT_EQ(std::string(back->Value.lpszA), odd);
}

TEST_F(PropertySetTest, MissingAndForeignTypesAreAbsent)
{
    PropertySet properties;
    properties.SetLong(PR_IMPORTANCE, 1);
    const ULONG tags[] = {PR_SUBJECT_A, PROP_TAG(PT_I2, PROP_ID(PR_IMPORTANCE)), PR_IMPORTANCE, PR_NULL};
    size_t errors = 0;
    const Buffer<SPropValue> values(BuildValues(tags, 4, properties, {}, &errors));
    EXPECT_EQ(errors, 2u);
    EXPECT_EQ(values.Get()[0].ulPropTag, PROP_TAG(PT_ERROR, PROP_ID(PR_SUBJECT_A)));
    EXPECT_EQ(values.Get()[0].Value.err, MAPI_E_NOT_FOUND);
    EXPECT_EQ(PROP_TYPE(values.Get()[1].ulPropTag), ULONG(PT_ERROR));
    EXPECT_EQ(values.Get()[2].Value.l, 1);
    EXPECT_EQ(values.Get()[3].ulPropTag, ULONG(PR_NULL));
}

TEST_F(PropertySetTest, AnInvalidValueChangesNothing)
{
    PropertySet properties;
    properties.SetLong(PROP_TAG(PT_LONG, Id), 5);
    for (const ULONG type : {PT_ERROR, PT_NULL, PT_OBJECT, PT_UNSPECIFIED, ULONG(0x77), ULONG(MV_FLAG | PT_BOOLEAN)})
    {
        EXPECT_EQ(CodeOf([&] { properties.Set(Value(PROP_TAG(type, Id))); }), MAPI_E_INVALID_TYPE) << type;
    }
    SPropValue hollow = Value(PROP_TAG(PT_BINARY, Id));
    hollow.Value.bin.cb = 3;
    EXPECT_EQ(CodeOf([&] { properties.Set(hollow); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(CodeOf([&] { properties.Set(Value(PROP_TAG(PT_UNICODE, Id))); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(properties.Long(PROP_TAG(PT_LONG, Id)), 5);
}

TEST_F(PropertySetTest, SettingReplacesWhateverTypeWasThere)
{
    PropertySet properties;
    properties.SetText(PR_SUBJECT_W, "text");
    properties.SetLong(PROP_TAG(PT_LONG, PROP_ID(PR_SUBJECT_W)), 9);
    EXPECT_EQ(properties.Count(), 1u);
    EXPECT_EQ(properties.Long(PROP_TAG(PT_LONG, PROP_ID(PR_SUBJECT_W))), 9);
    EXPECT_TRUE(properties.Remove(PR_SUBJECT_W));
    EXPECT_FALSE(properties.Remove(PR_SUBJECT_W));
    EXPECT_TRUE(properties.IsEmpty());
}

TEST_F(PropertySetTest, TagsAreInIdentifierOrder)
{
    PropertySet properties;
    for (const ULONG id : {0x9000u, 0x0037u, 0x8001u, 0x3001u})
    {
        properties.SetLong(PROP_TAG(PT_LONG, id), static_cast<LONG>(id));
    }
    const std::vector<ULONG> tags = ThroughFile(properties).Tags();
    EXPECT_TRUE(std::is_sorted(tags.begin(), tags.end()));
    EXPECT_NE(std::find(tags.begin(), tags.end(), PROP_TAG(PT_LONG, 0x8001)), tags.end());
}

} // namespace
} // namespace zebstore::test
