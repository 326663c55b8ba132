#include "tests/zebstore/model/Random.h"

#include "platform/tags.h"

#include <limits>

namespace zebstore::model
{

namespace
{

Wide WithoutZero(Wide text)
{
    text.erase(std::remove(text.begin(), text.end(), WCHAR(0)), text.end());
    return text;
}

template <class T>
std::int64_t Least()
{
    return std::numeric_limits<T>::min();
}
template <class T>
std::int64_t Most()
{
    return std::numeric_limits<T>::max();
}

} // namespace

Words::Words(unsigned seed)
{
    test::TextMaker maker(seed);
    for (int i = 0; i < 10; ++i)
    {
        m_words.push_back(WithoutZero(maker.Text(12)));
    }
    for (const char* each : {"", "alpha", "ALPHA", "Re: alpha", "alphabet", "10 %"})
    {
        m_words.push_back(Wide(each, each + std::strlen(each)));
    }
    m_words.push_back(WithoutZero(maker.Text(20)));
}

Wide Random::Text(bool isShort)
{
    const Wide word = Cased(Pick(m_words.All()));
    if (isShort || !OneIn(12))
    {
        return OneIn(3) ? word + Pick(m_words.All()) : word;
    }
    // Longer than a sort key, or stored outside of the row.
    const size_t length = OneIn(4) ? 5000 : 250 + Below(10);
    Wide text(length, static_cast<WCHAR>(OneIn(2) ? 'a' : 'A'));
    return text + word;
}

Wide Random::Cased(const Wide& text)
{
    if (!OneIn(4))
    {
        return text;
    }
    const auto folded = WideFromStored(FoldedText(text));
    return Wide(folded.begin(), folded.end());
}

std::int64_t Random::Whole(ULONG type)
{
    // 1 January 1970 as a FILETIME; times before it are as good as others.
    constexpr std::int64_t Epoch = 116444736000000000;
    const std::int64_t few = static_cast<std::int64_t>(Below(7)) - 3;
    switch (type)
    {
    case PT_BOOLEAN:
        return OneIn(2) ? 1 : 0;
    case PT_SYSTIME:
        return OneIn(6) ? few + 3 : Epoch + few * 864000000000;
    case PT_I2:
        return OneIn(6) ? OneIn(2) ? Least<std::int16_t>() : Most<std::int16_t>() : few;
    case PT_LONG:
        return OneIn(6) ? OneIn(2) ? Least<std::int32_t>() : Most<std::int32_t>() : few;
    default:
        return OneIn(4) ? OneIn(2) ? Least<std::int64_t>() : Most<std::int64_t>() : few * (OneIn(2) ? 1 : 5000000000);
    }
}

double Random::Real()
{
    constexpr double Infinity = std::numeric_limits<double>::infinity();
    constexpr double Some[] = {0.0, -0.0, 1.5, -1.5, 1e30, -1e30, 1e-30, -1e-30, Infinity, -Infinity, 25569.0, -3.25};
    return OneIn(20) ? std::numeric_limits<double>::quiet_NaN() : Pick(Some);
}

std::string Random::Bytes(bool isShort)
{
    static const std::string some[] = {
        "", std::string(1, '\0'), std::string(2, '\0'), std::string("\0\xFF", 2), "\xFF", "\xFF\xFF", "ab", "abc", "b"};
    std::string bytes = Pick(some);
    if (!isShort && OneIn(12))
    {
        bytes.insert(0, OneIn(4) ? 5000 : 300, '\x7F');
    }
    return OneIn(4) ? bytes + Pick(some) : bytes;
}

Value Random::ValueOf(ULONG type, bool isShort)
{
    constexpr const char* Narrow[] = {"", "alpha", "Alpha", "beta", "alphabet", "be"};
    Value value;
    value.type = type;
    const ULONG single = SingleOf(type);
    if ((type & MV_FLAG) != 0)
    {
        for (size_t left = Below(4); left > 0; --left)
        {
            value.many.push_back(ValueOf(single, true));
        }
        return value;
    }
    switch (type)
    {
    case PT_R4:
        value.real = static_cast<float>(Real());
        break;
    case PT_DOUBLE:
    case PT_APPTIME:
        value.real = Real();
        break;
    case PT_UNICODE:
        value.text = Text(isShort);
        break;
    case PT_STRING8:
        // The same on every system: the code page is not what is tested here.
        value.text = model::Text(std::string(Pick(Narrow))).text;
        break;
    case PT_BINARY:
        value.bytes = Bytes(isShort);
        break;
    case PT_CLSID:
        value.bytes = std::string(sizeof(GUID) - 1, OneIn(2) ? '\x80' : '\x01') + static_cast<char>(Below(3));
        break;
    default:
        value.number = Whole(type);
        break;
    }
    return value;
}

const std::vector<Kind>& MessageKinds()
{
    static const std::vector<Kind> kinds = []
    {
        std::vector<Kind> made = {
            {PROP_ID(PR_SUBJECT), {PT_UNICODE}},
            {PROP_ID(PR_SENDER_NAME), {PT_UNICODE}},
            {PROP_ID(PR_MESSAGE_CLASS), {PT_UNICODE}},
            {PROP_ID(PR_MESSAGE_DELIVERY_TIME), {PT_SYSTIME}},
            {PROP_ID(PR_CLIENT_SUBMIT_TIME), {PT_SYSTIME}},
            {PROP_ID(PR_IMPORTANCE), {PT_LONG}},
        };
        ULONG id = 0x6600;
        for (const ULONG single : {PT_I2, PT_LONG, PT_R4, PT_DOUBLE, PT_CURRENCY, PT_APPTIME, PT_I8, PT_STRING8,
                                   PT_UNICODE, PT_SYSTIME, PT_CLSID, PT_BINARY})
        {
            made.push_back({id++, {single}});
            made.push_back({id++, {single | MV_FLAG}});
        }
        made.push_back({id++, {PT_BOOLEAN}});
        // A property that has one type in one message and another in the next.
        made.push_back({id, {PT_LONG, PT_UNICODE, PT_BINARY, PT_MV_LONG}});
        return made;
    }();
    return kinds;
}

} // namespace zebstore::model
