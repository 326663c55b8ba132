// value-text, array-build, name-lookup, eid-dump: the library's own work, in memory, against the same by hand.
#include "bench/Benches.h"
#include "bench/Stores.h"

#include <cstdio>
#include <cstring>
#include <ctime>
#include <stdexcept>

namespace bench
{

namespace
{

/// The same work by hand must produce the same result.
void Require(bool same, const char* what)
{
    if (!same)
    {
        throw std::runtime_error(std::string(what) + " differs between the library and the baseline.");
    }
}

/// Straightforward hand-written code.
std::string HexOf(const BYTE* bytes, ULONG count)
{
    static const char digits[] = "0123456789ABCDEF";
    std::string text(size_t{count} * 2, '\0');
    for (ULONG i = 0; i < count; ++i)
    {
        text[size_t{i} * 2] = digits[bytes[i] >> 4];
        text[size_t{i} * 2 + 1] = digits[bytes[i] & 15];
    }
    return text;
}

/// One value of each kind, as a message has them.
struct TextValues
{
    char subject[64];
    WCHAR wideSubject[64];
    BYTE searchKey[32];
    SPropValue values[8];
};

TextValues MakeTextValues(ULONG number)
{
    TextValues made = {};
    std::snprintf(made.subject, sizeof made.subject, "Re: the minutes of meeting %u", number);
    for (size_t i = 0; made.subject[i] != 0; ++i)
    {
        made.wideSubject[i] = static_cast<WCHAR>(made.subject[i]);
    }
    for (size_t i = 0; i < sizeof made.searchKey; ++i)
    {
        made.searchKey[i] = static_cast<BYTE>(number * 31 + i * 7);
    }
    const std::uint64_t ticks = 127500000000000000u + std::uint64_t{number} * 36000000000u;
    const ULONG tags[8] = {PROP_TAG(PT_I2, 0x6001),
                           PR_MESSAGE_SIZE,
                           PROP_TAG(PT_I8, 0x6002),
                           PR_HASATTACH,
                           PR_SUBJECT_A,
                           PR_BODY_W,
                           PR_SEARCH_KEY,
                           PR_MESSAGE_DELIVERY_TIME};
    for (size_t i = 0; i < 8; ++i)
    {
        made.values[i].ulPropTag = tags[i];
    }
    made.values[0].Value.i = static_cast<SHORT>(number);
    made.values[1].Value.l = static_cast<LONG>(number * 1000003);
    made.values[2].Value.li.QuadPart = static_cast<LONGLONG>(number) * -1000000007;
    made.values[3].Value.b = number % 2;
    made.values[7].Value.ft = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    return made;
}

/// Sets the values' pointers to the texts stored with them.
void Link(TextValues& values)
{
    values.values[4].Value.lpszA = values.subject;
    values.values[5].Value.lpszW = values.wideSubject;
    values.values[6].Value.bin = {sizeof values.searchKey, values.searchKey};
}

std::string NarrowByHand(const WCHAR* text)
{
    std::string narrow;
    for (; *text != 0; ++text)
    {
        const unsigned unit = static_cast<std::uint16_t>(*text);
        if (unit < 0x80)
        {
            narrow += static_cast<char>(unit);
        }
        else if (unit < 0x800)
        {
            narrow += static_cast<char>(0xC0 | unit >> 6);
            narrow += static_cast<char>(0x80 | (unit & 0x3F));
        }
        else
        {
            narrow += static_cast<char>(0xE0 | unit >> 12);
            narrow += static_cast<char>(0x80 | (unit >> 6 & 0x3F));
            narrow += static_cast<char>(0x80 | (unit & 0x3F));
        }
    }
    return narrow;
}

std::string TextByHand(const SPropValue& value)
{
    char text[64];
    switch (PROP_TYPE(value.ulPropTag))
    {
    case PT_I2:
        std::snprintf(text, sizeof text, "%d", value.Value.i);
        return text;
    case PT_LONG:
        std::snprintf(text, sizeof text, "%d", static_cast<int>(value.Value.l));
        return text;
    case PT_I8:
        std::snprintf(text, sizeof text, "%lld", static_cast<long long>(value.Value.li.QuadPart));
        return text;
    case PT_BOOLEAN:
        return value.Value.b != 0 ? "true" : "false";
    case PT_STRING8:
        return value.Value.lpszA;
    case PT_UNICODE:
        return NarrowByHand(value.Value.lpszW);
    case PT_BINARY:
        return HexOf(value.Value.bin.lpb, value.Value.bin.cb);
    case PT_SYSTIME:
    {
        const std::uint64_t ticks = std::uint64_t{value.Value.ft.dwHighDateTime} << 32 | value.Value.ft.dwLowDateTime;
        const std::time_t seconds = static_cast<std::time_t>(ticks / 10000000) - 11644473600;
        std::tm local = {};
        localtime_r(&seconds, &local);
        std::snprintf(text, sizeof text, "%02d/%02d/%02d %02d:%02d:%02d", local.tm_mon + 1, local.tm_mday,
                      local.tm_year % 100, local.tm_hour, local.tm_min, local.tm_sec);
        return text;
    }
    default:
        throw std::invalid_argument("no text");
    }
}

constexpr ULONG ArraySize = 50;

/// Property `i` of those that are set: a number, a flag, a text, a date or a binary.
ULONG ArrayTag(ULONG i)
{
    static const ULONG types[5] = {PT_LONG, PT_BOOLEAN, PT_STRING8, PT_SYSTIME, PT_BINARY};
    return PROP_TAG(types[i % 5], 0x6100 + i);
}

const char ArrayText[] = "the minutes of the meeting";
BYTE g_arrayBytes[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};

void BuildByLibrary(CZebMessage& message)
{
    CZebPropValArray values(ArraySize);
    const FILETIME time = {1000, 29000000};
    const SBinary binary = {sizeof g_arrayBytes, g_arrayBytes};
    for (ULONG i = 0; i < ArraySize; i += 5)
    {
        values[ArrayTag(i)] = static_cast<LONG>(i);
        values[ArrayTag(i + 1)] = true;
        values[ArrayTag(i + 2)] = ArrayText;
        values[ArrayTag(i + 3)] = time;
        values[ArrayTag(i + 4)] = binary;
    }
    message.SetProps(values, false, nullptr);
}

/// Nothing is copied: the provider copies what it is given.
void BuildByHand(IMAPIProp& message)
{
    auto* values = static_cast<SPropValue*>(Zeb_MemAllocate(ArraySize * sizeof(SPropValue), nullptr));
    for (ULONG i = 0; i < ArraySize; ++i)
    {
        values[i].ulPropTag = ArrayTag(i);
    }
    for (ULONG i = 0; i < ArraySize; i += 5)
    {
        values[i].Value.l = static_cast<LONG>(i);
        values[i + 1].Value.b = 1;
        values[i + 2].Value.lpszA = const_cast<char*>(ArrayText);
        values[i + 3].Value.ft = {1000, 29000000};
        values[i + 4].Value.bin = {sizeof g_arrayBytes, g_arrayBytes};
    }
    const HRESULT result = message.SetProps(ArraySize, values, nullptr);
    Zeb_MemFree(values);
    if (FAILED(result))
    {
        throw std::runtime_error("The properties could not be set.");
    }
}

/// The rows of a table of constants, and values that are not in it.
struct NameRows
{
    std::vector<ZebNamedValue> rows;
    std::vector<ULONG> asked;
};

NameRows MakeNameRows()
{
    NameRows made;
    const ULONG count = Zeb_TableCount("PropTags");
    for (ULONG i = 0; i < count; ++i)
    {
        const ULONG value = Zeb_ValueAt("PropTags", i);
        made.rows.push_back({value, Zeb_NameFromValue("PropTags", value)});
        made.asked.push_back(value);
        // The same identifiers with a type that none of them has.
        made.asked.push_back(CHANGE_PROP_TYPE(value, PT_CURRENCY));
    }
    return made;
}

const char* Scan(const std::vector<ZebNamedValue>& rows, ULONG value)
{
    for (const ZebNamedValue& row : rows)
    {
        if (row.value == value)
        {
            return row.name;
        }
    }
    return nullptr;
}

/// An identifier, and its fields as text.
struct DumpedID
{
    std::string hex;
    std::string name;
    std::string type;
    std::string address;
};

const char OneOffUID[] = "812B1FA4BEA310199D6E00DD010F5402";
const char StoreUID[] = "38A1BB1005E5101AA1BB08002B2A56C2";
const char ContactUID[] = "FE42AA0A18C71A10E8850B651C240000";
const char DatabaseUID[] = "0102030405060708090A0B0C0D0E0F10";

std::string Terminated(const std::string& text)
{
    return HexOf(reinterpret_cast<const BYTE*>(text.c_str()), static_cast<ULONG>(text.size() + 1));
}

std::string OneOffByHand(const DumpedID& id)
{
    char text[2048];
    std::snprintf(text, sizeof text,
                  "CEntryIDInfo\r\n  EntryID: %s\r\n  Type: %s\r\n  ShortTerm: %s\r\n  Compound: %s\r\n"
                  "  ProviderUID: %s\r\n  Object:  CEntryIDOneOffRecipientObject\r\n    Unicode: %s\r\n"
                  "    CEntryIDOneOffInfo\r\n    DisplayName: %s\r\n    AddressType: %s\r\n"
                  "    EmailAddress=%s\r\n",
                  id.hex.c_str(), "eidtOneOff", "No", "No", OneOffUID, "No", id.name.c_str(), id.type.c_str(),
                  id.address.c_str());
    return text;
}

std::string StoreByHand(const DumpedID& id)
{
    char text[2048];
    std::snprintf(text, sizeof text,
                  "CEntryIDInfo\r\n  EntryID: %s\r\n  Type: %s\r\n  ShortTerm: %s\r\n  Compound: %s\r\n"
                  "  ProviderUID: %s\r\n  Object:  CEntryIDMessageDatabaseObject\r\n    DLLFileName: %s\r\n"
                  "    bIsExchange: %s\r\n    WrappedProviderUID = %s\r\n    ServerShortname = %s\r\n"
                  "    MailboxDN = %s\r\n",
                  id.hex.c_str(), "eidtMessageDatabase", "No", "No", StoreUID, id.type.c_str(), "Yes", DatabaseUID,
                  id.name.c_str(), id.address.c_str());
    return text;
}

std::string ContactByHand(const DumpedID& id)
{
    char text[2048];
    std::snprintf(text, sizeof text,
                  "CEntryIDInfo\r\n  EntryID: %s\r\n  Type: %s\r\n  ShortTerm: %s\r\n  Compound: %s\r\n"
                  "  ProviderUID: %s\r\n  Object:  CEntryIDContactAddressBookObject\r\n"
                  "    Version: 0x%08X\r\n    Type: %s (0x%08X)\r\n    Index: 0x%08X\r\n"
                  "    EntryIDCount: 0x%08X\r\n    Object:\r\n    CEntryIDInfo\r\n      EntryID: %s\r\n"
                  "      Type: %s\r\n      ShortTerm: %s\r\n      Compound: %s\r\n      ProviderUID: %s\r\n"
                  "      Object:      CEntryIDData\r\n        Type: 0x%08X\r\n        Object:\r\n"
                  "        CEntryIDMessageObject\r\n          FolderDatabaseGUID: %s\r\n"
                  "          MessageDatabaseGUID: %s\r\n          TODO: dump more there...\r\n",
                  id.hex.c_str(), "eidtContact", "No", "No", ContactUID, 3u, "CONTAB_USER", 4u, 1u, 70u,
                  id.name.c_str(), "eidtMessage", "No", "No", DatabaseUID, 3u, DatabaseUID, DatabaseUID);
    return text;
}

struct DumpCase
{
    DumpedID id;
    std::string (*byHand)(const DumpedID&);
};

std::vector<DumpCase> MakeDumpCases()
{
    DumpedID oneOff = {"", "Maria Lokay", "SMTP", "maria.lokay@example.org"};
    oneOff.hex = "00000000" + std::string(OneOffUID) + "00000000" + Terminated(oneOff.name) + Terminated(oneOff.type) +
                 Terminated(oneOff.address);
    DumpedID store = {"", "SERVER01", "emsmdb.dll", "/o=Example/ou=First/cn=Recipients/cn=mlokay"};
    store.hex = "00000000" + std::string(StoreUID) + "0000" + Terminated(store.type) + "000000" + "01000000" +
                DatabaseUID + "0C000000" + Terminated(store.name) + Terminated(store.address);
    DumpedID contact;
    contact.name = "00000000" + std::string(DatabaseUID) + "0300" + DatabaseUID + "0000000001000000" + DatabaseUID +
                   "0000000002000000";
    contact.hex =
        "00000000" + std::string(ContactUID) + "03000000" + "04000000" + "01000000" + "46000000" + contact.name;
    return {{oneOff, OneOffByHand}, {store, StoreByHand}, {contact, ContactByHand}};
}

} // namespace

Measurement ValueText(const Options& options)
{
    auto values = std::make_shared<std::vector<TextValues>>();
    for (ULONG i = 0; i < 1000; ++i)
    {
        values->push_back(MakeTextValues(i));
    }
    for (TextValues& each : *values)
    {
        Link(each);
        for (SPropValue& value : each.values)
        {
            Require(CZebOnePropVal(&value, nullptr).String(false) == TextByHand(value).c_str(), "value-text");
        }
    }
    const int rounds = options.brief ? 2 : 100;
    const auto timed = [values, rounds](auto&& lengthOf)
    {
        return SecondsOfEach(rounds, *values, [&](TextValues& each)
        {
            size_t length = 0;
            for (SPropValue& value : each.values)
            {
                length += lengthOf(value);
            }
            return length;
        });
    };
    const auto ours = [timed]
    {
        return timed([](SPropValue& value)
        { return static_cast<size_t>(CZebOnePropVal(&value, nullptr).String(false).GetLength()); });
    };
    const auto baseline = [timed] { return timed([](const SPropValue& value) { return TextByHand(value).size(); }); };
    return {"value-text", 1.2, ours, baseline, options.brief ? 3 : 11};
}

/// A message that takes properties and is never saved, in a store that outlives it.
struct OpenMessage
{
    explicit OpenMessage(const Options& options)
        : store(options.folder, 1000)
        , message(store.Inbox().CreateMessage(0))
    {
    }

    StoreOf store;
    CZebMessage message;
};

Measurement ArrayBuild(const Options& options)
{
    auto open = std::make_shared<OpenMessage>(options);
    const int rounds = options.brief ? 20 : 5000;
    const auto timed = [rounds](auto&& build)
    {
        return Seconds([&]
        {
            for (int round = 0; round < rounds; ++round)
            {
                build();
            }
        });
    };
    const auto ours = [=] { return timed([&] { BuildByLibrary(open->message); }); };
    const auto baseline = [=]
    {
        const CComPtr<IMAPIProp> object = open->message.GetInterface();
        return timed([&] { BuildByHand(*object.Get()); });
    };
    return {"array-build", 1.3, ours, baseline, options.brief ? 3 : 11};
}

Measurement NameLookup(const Options& options)
{
    auto names = std::make_shared<NameRows>(MakeNameRows());
    for (const ULONG value : names->asked)
    {
        Require(Zeb_NameFromValue("PropTags", value) == Scan(names->rows, value), "name-lookup");
    }
    const int rounds = options.brief ? 2 : 1000;
    const auto timed = [names, rounds](auto&& find)
    {
        return SecondsOfEach(rounds, names->asked, [&](ULONG value)
        {
            const char* name = find(value);
            return name != nullptr ? static_cast<unsigned char>(name[3]) : 1u;
        });
    };
    const auto ours = [timed] { return timed([](ULONG value) { return Zeb_NameFromValue("PropTags", value); }); };
    const auto baseline = [timed, names] { return timed([&](ULONG value) { return Scan(names->rows, value); }); };
    return {"name-lookup", 0.1, ours, baseline, options.brief ? 3 : 11};
}

Measurement EidDump(const Options& options)
{
    auto cases = std::make_shared<std::vector<DumpCase>>(MakeDumpCases());
    for (const DumpCase& each : *cases)
    {
        Require(Zeb_DumpEntryID(each.id.hex.c_str()) == each.byHand(each.id).c_str(), "eid-dump");
    }
    const int rounds = options.brief ? 20 : 20000;
    const auto ours = [cases, rounds]
    {
        return SecondsOfEach(rounds, *cases, [](const DumpCase& each)
        { return static_cast<size_t>(Zeb_DumpEntryID(each.id.hex.c_str()).GetLength()); });
    };
    const auto baseline = [cases, rounds]
    { return SecondsOfEach(rounds, *cases, [](const DumpCase& each) { return each.byHand(each.id).size(); }); };
    return {"eid-dump", 1.2, ours, baseline, options.brief ? 3 : 11};
}

} // namespace bench
