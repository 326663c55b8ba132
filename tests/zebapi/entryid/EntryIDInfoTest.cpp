#include "zebapi/EntryIDInfo.h"

#include "platform/text.h"
#include "tests/support/MapiMemory.h"
#include "tests/support/Thrown.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

namespace zeb::test
{

namespace
{

const std::string oneOffUID = "812B1FA4BEA310199D6E00DD010F5402";
const std::string exchangeUID = "DCA740C8C042101AB4B908002B2FE182";
const std::string contactUID = "FE42AA0A18C71A10E8850B651C240000";
const std::string wrapUID = "38A1BB1005E5101AA1BB08002B2A56C2";
const std::string unknownUID = "000102030405060708090A0B0C0D0E0F";
const std::string zeroUID(32, '0');

std::string HexOf(const std::string& bytes)
{
    static const char digits[] = "0123456789ABCDEF";
    std::string hex;
    for (const char byte : bytes)
    {
        hex += digits[static_cast<unsigned char>(byte) >> 4];
        hex += digits[static_cast<unsigned char>(byte) & 0xF];
    }
    return hex;
}

/// Terminated narrow text.
std::string Text(const std::string& text)
{
    return HexOf(text + '\0');
}

/// Terminated wide text.
std::string WideText(const std::u16string& text)
{
    std::string bytes;
    for (const char16_t character : text + u'\0')
    {
        bytes += static_cast<char>(character & 0xFF);
        bytes += static_cast<char>(character >> 8);
    }
    return HexOf(bytes);
}

std::string Filled(const char* byte, int count)
{
    std::string hex;
    for (int i = 0; i < count; ++i)
    {
        hex += byte;
    }
    return hex;
}

class EntryIDInfo : public ::testing::Test
{
protected:
    static CEntryIDInfo Info(const std::string& hex) { return CEntryIDInfo(CZebBinary(hex.c_str())); }
    static std::string Dump(const std::string& hex) { return std::string(Zeb_DumpEntryID(hex.c_str())); }

    /// The lines in front of the object.
    static std::string Head(const std::string& hex, const std::string& type, const std::string& uid,
                            const std::string& shortTerm = "No", const std::string& compound = "No")
    {
        return "CEntryIDInfo\r\n  EntryID: " + hex + "\r\n  Type: " + type + "\r\n  ShortTerm: " + shortTerm +
               "\r\n  Compound: " + compound + "\r\n  ProviderUID: " + uid + "\r\n  Object:";
    }

    MapiMemory memory;
};

} // namespace

TEST_F(EntryIDInfo, TheTopFlagClassifiesUnknownIdentifiers)
{
    EXPECT_EQ(Info("80000000" + unknownUID + "0000").Type(), eidtShortTerm);
    EXPECT_EQ(Info("7F000000" + unknownUID + "0000").Type(), eidtUnknown);
    const std::string hex = "80800000" + unknownUID + "0000";
    EXPECT_EQ(Dump(hex), Head(hex, "eidtShortTerm", unknownUID, "Yes", "Yes") + "  <NULL>");
    const std::string plain = "7F7F0000" + unknownUID + "0000";
    EXPECT_EQ(Dump(plain), Head(plain, "eidtUnknown", unknownUID) + "  <NULL>");
    EXPECT_EQ(Info(plain).Unread(), 2u);
}

TEST_F(EntryIDInfo, LengthDistinguishesFoldersAndMessages)
{
    EXPECT_EQ(Info("00000000" + unknownUID + Filled("00", 18)).Type(), eidtFolder);
    EXPECT_EQ(Info("00000000" + unknownUID + Filled("00", 34)).Type(), eidtMessage);
    for (const int length : {0, 1, 17, 19, 24, 26, 33, 35, 48, 50})
    {
        EXPECT_EQ(Info("00000000" + unknownUID + Filled("00", length)).Type(), eidtUnknown) << length;
    }
    // The length decides; the top flag is then ignored.
    EXPECT_EQ(Info("80000000" + unknownUID + Filled("00", 18)).Type(), eidtFolder);
}

TEST_F(EntryIDInfo, EighteenBytesShowAFoldersDatabase)
{
    const std::string guid = Filled("A1", 16);
    const std::string hex = "00000000" + unknownUID + "0200" + guid;
    EXPECT_EQ(Dump(hex), Head(hex, "eidtFolder", unknownUID) +
                             "  CEntryIDData\r\n    Type: 0x00000002\r\n    Object:\r\n"
                             "    CEntryIDFolderObject\r\n      DatabaseGUID: " +
                             guid + "\r\n      TODO: dump more there...\r\n");
    EXPECT_EQ(Info(hex).Unread(), 0u);
}

TEST_F(EntryIDInfo, ShortMessagesShowAZeroDatabase)
{
    const std::string guid = Filled("B2", 16);
    const std::string hex = "00000000" + unknownUID + "0300" + guid + Filled("C3", 16);
    EXPECT_EQ(Dump(hex), Head(hex, "eidtMessage", unknownUID) +
                             "  CEntryIDData\r\n    Type: 0x00000003\r\n    Object:\r\n"
                             "    CEntryIDMessageObject\r\n      FolderDatabaseGUID: " +
                             guid + "\r\n      MessageDatabaseGUID: " + zeroUID +
                             "\r\n      TODO: dump more there...\r\n");
    EXPECT_EQ(Info(hex).Unread(), 0u) << "what did not fit went to the following fields";
}

TEST_F(EntryIDInfo, OtherObjectTypesAreOnlyRecorded)
{
    const std::string hex = "00000000" + unknownUID + "3412" + Filled("A1", 16);
    EXPECT_EQ(Dump(hex), Head(hex, "eidtFolder", unknownUID) +
                             "  CEntryIDData\r\n    Type: 0x00001234\r\n    Object:\r\n    <NULL>");
    EXPECT_EQ(Info(hex).Unread(), 16u);
}

TEST_F(EntryIDInfo, TheDllNameDecidesOnExchange)
{
    // Header 20, version and flag 2, name 11: the next multiple of 4 is 36, three bytes on.
    for (const char* dll : {"emsmdb.dll", "EMSMDB.DLL"})
    {
        const std::string hex = "00000000" + wrapUID + "0000" + Text(dll) + "EEEEEE" + "01000000" + Filled("D4", 16) +
                                "0C000000" + Text("SERVER") + Text("/o=org/cn=box") + "99";
        EXPECT_EQ(Dump(hex), Head(hex, "eidtMessageDatabase", wrapUID) +
                                 "  CEntryIDMessageDatabaseObject\r\n    DLLFileName: " + dll +
                                 "\r\n    bIsExchange: Yes\r\n    WrappedProviderUID = " + Filled("D4", 16) +
                                 "\r\n    ServerShortname = SERVER\r\n    MailboxDN = /o=org/cn=box\r\n");
        EXPECT_EQ(Info(hex).Unread(), 1u);
    }
}

TEST_F(EntryIDInfo, OtherStoresShowEmptyFields)
{
    const std::string hex = "00000000" + wrapUID + "0000" + Text("zebstore.dll") + "010203";
    EXPECT_EQ(Dump(hex), Head(hex, "eidtMessageDatabase", wrapUID) +
                             "  CEntryIDMessageDatabaseObject\r\n    DLLFileName: zebstore.dll\r\n"
                             "    bIsExchange: No\r\n    WrappedProviderUID = " +
                             zeroUID + "\r\n    ServerShortname = \r\n    MailboxDN = \r\n");
    EXPECT_EQ(Info(hex).Unread(), 3u);
}

TEST_F(EntryIDInfo, NarrowOneOffShowsThreeTexts)
{
    // What looks like a format, and any length, goes out as it is.
    const std::string name = "%s%n" + std::string(3000, 'x');
    const std::string hex = "00000000" + oneOffUID + "00000000" + Text(name) + Text("SMTP") + Text("a@example.org");
    EXPECT_EQ(Dump(hex), Head(hex, "eidtOneOff", oneOffUID) +
                             "  CEntryIDOneOffRecipientObject\r\n    Unicode: No\r\n    CEntryIDOneOffInfo\r\n"
                             "    DisplayName: " +
                             name + "\r\n    AddressType: SMTP\r\n    EmailAddress=a@example.org\r\n");
}

TEST_F(EntryIDInfo, WideOneOffIsNarrowed)
{
    const std::u16string wide = u"J\u00f6rg";
    const platform::WideString name(wide.begin(), wide.end());
    // An odd number of narrow bytes before: wide texts are not aligned.
    const std::string hex =
        "00000000" + oneOffUID + "00000080" + WideText(wide) + WideText(u"SMTP") + WideText(u"j@example.org");
    EXPECT_EQ(Dump(hex), Head(hex, "eidtOneOff", oneOffUID) +
                             "  CEntryIDOneOffRecipientObject\r\n    Unicode: Yes\r\n    CEntryIDOneOffInfo\r\n"
                             "    DisplayName: " +
                             platform::NarrowFromWide(name.data(), name.size()) +
                             "\r\n    AddressType: SMTP\r\n    EmailAddress=j@example.org\r\n");
}

TEST_F(EntryIDInfo, OnlyTheTopBitMeansWide)
{
    const std::string texts = Text("n") + Text("t") + Text("e");
    const auto shown = [&](const std::string& flags) { return Dump("00000000" + oneOffUID + flags + texts); };
    EXPECT_NE(shown("FFFFFF7F").find("Unicode: No\r\n"), std::string::npos) << "0x7FFFFFFF";
    EXPECT_NE(shown("FFFFFF7F").find("DisplayName: n\r\n"), std::string::npos);
    EXPECT_NE(shown("00000080").find("Unicode: Yes\r\n"), std::string::npos) << "0x80000000";
}

TEST_F(EntryIDInfo, TypesOutsideTheTableAreUnknown)
{
    CEntryIDInfo info("00");
    // No identifier is of these types; the type is the first field.
    const auto named = [&](LONG type)
    {
        std::memcpy(static_cast<void*>(std::addressof(info)), &type, sizeof type);
        return std::string(info.TypeName());
    };
    EXPECT_EQ(named(8), "eidtNewsGroupFolder");
    EXPECT_EQ(named(7), "eidtContact");
    EXPECT_EQ(named(9), "eidtUnknown");
    EXPECT_EQ(named(-1), "eidtUnknown");
    EXPECT_EQ(named(0x7FFFFFFF), "eidtUnknown");
}

TEST_F(EntryIDInfo, AddressBookEntryIsNotParsed)
{
    const std::string hex = "00000000" + exchangeUID + "0100000000000000" + Text("/o=org/cn=x");
    EXPECT_EQ(Dump(hex), Head(hex, "eidtAddressBook", exchangeUID) + "  CEntryIDAddressBookObject\r\n    TODO...\r\n");
}

TEST_F(EntryIDInfo, ContactWrapsAMessage)
{
    const std::string wrapped = "00000000" + unknownUID + "0300" + Filled("B2", 24) + Filled("C3", 24);
    const std::string hex = "00000000" + contactUID + "03000000" + "04000000" + "01000000" + "46000000" + wrapped;
    const CEntryIDInfo info = Info(hex);
    EXPECT_EQ(info.Type(), eidtContact);
    EXPECT_EQ(info.Unread(), 0u);
    ASSERT_NE(info.Contact(), nullptr);
    EXPECT_EQ(info.Contact()->Type(), CONTAB_USER);
    EXPECT_EQ(info.WrappedString(), wrapped.c_str());
    const std::string object = "CEntryIDData\r\n?  Type: 0x00000003\r\n?  Object:\r\n?  CEntryIDMessageObject\r\n"
                               "?    FolderDatabaseGUID: " +
                               Filled("B2", 16) + "\r\n?    MessageDatabaseGUID: " + Filled("C3", 16) +
                               "\r\n?    TODO: dump more there...\r\n";
    const auto indented = [](std::string text, const std::string& indent)
    {
        for (size_t at = text.find('?'); at != std::string::npos; at = text.find('?'))
        {
            text.replace(at, 1, indent);
        }
        return text;
    };
    EXPECT_EQ(std::string(info.WrappedDump()), Head(wrapped, "eidtMessage", unknownUID) + indented("?" + object, "  "));
    EXPECT_EQ(Dump(hex), Head(hex, "eidtContact", contactUID) +
                             "  CEntryIDContactAddressBookObject\r\n    Version: 0x00000003\r\n"
                             "    Type: CONTAB_USER (0x00000004)\r\n    Index: 0x00000001\r\n"
                             "    EntryIDCount: 0x00000046\r\n    Object:\r\n"
                             "    CEntryIDInfo\r\n      EntryID: " +
                             wrapped +
                             "\r\n      Type: eidtMessage\r\n      ShortTerm: No\r\n      Compound: No\r\n"
                             "      ProviderUID: " +
                             unknownUID + "\r\n      Object:" + indented("?" + object, "      "));
}

TEST_F(EntryIDInfo, ContactFolderHasEightBytesMore)
{
    const std::string wrapped = "00000000" + unknownUID + "0200" + Filled("A1", 24);
    const std::string hex =
        "00000000" + contactUID + "03000000" + "03000000" + "00000000" + "2E000000" + Filled("EE", 8) + wrapped;
    const CEntryIDInfo info = Info(hex);
    EXPECT_EQ(info.Contact()->Type(), CONTAB_FOLDER);
    EXPECT_EQ(info.WrappedString(), wrapped.c_str());
    EXPECT_NE(Dump(hex).find("Type: CONTAB_FOLDER (0x00000003)"), std::string::npos);
    EXPECT_NE(Dump(hex).find("CEntryIDFolderObject"), std::string::npos);
}

TEST_F(EntryIDInfo, TruncatedContactFolderWrapsNothing)
{
    const std::string numbers = "00000000" + contactUID + "03000000" + "03000000" + "00000000" + "2E000000";
    for (int rest = 0; rest <= 8; ++rest)
    {
        const CEntryIDInfo info = Info(numbers + Filled("EE", rest));
        EXPECT_EQ(info.Contact()->Type(), CONTAB_FOLDER);
        EXPECT_EQ(info.Contact()->Wrapped(), nullptr) << rest;
        EXPECT_EQ(info.Unread(), 0u) << rest;
    }
    EXPECT_NE(Info(numbers + Filled("EE", 9)).Contact()->Wrapped(), nullptr);
}

TEST_F(EntryIDInfo, WrappedIdentifierIsAlwaysAMessages)
{
    const std::string wrapped = "80000000" + oneOffUID + "0200" + Filled("A1", 24);
    const CEntryIDInfo info =
        Info("00000000" + contactUID + "03000000" + "05000000" + "01000000" + "2E000000" + wrapped);
    const std::string dump(info.WrappedDump());
    EXPECT_EQ(dump.find(Head(wrapped, "eidtMessage", oneOffUID, "Yes") + "  CEntryIDData\r\n"), 0u) << dump;
    EXPECT_NE(dump.find("CEntryIDFolderObject"), std::string::npos);
}

TEST_F(EntryIDInfo, WithoutAnIdentifierIsNamedInvalid)
{
    const CEntryIDInfo none{CZebBinary()};
    EXPECT_EQ(none.String(), "<InvalidBinary>");
    EXPECT_EQ(none.Type(), eidtUnknown);
    EXPECT_EQ(none.Contact(), nullptr);
}

TEST_F(EntryIDInfo, TruncatedHeaderIsReadByBytes)
{
    EXPECT_EQ(Dump("80"), Head("80", "eidtShortTerm", zeroUID, "Yes") + "  <NULL>");
    EXPECT_EQ(Dump("0080"), Head("0080", "eidtUnknown", zeroUID, "No", "Yes") + "  <NULL>");
    // A provider UID that is cut is none, and its bytes are left.
    const std::string cut = "8000000081" + Filled("2B", 14);
    EXPECT_EQ(Dump(cut), Head(cut, "eidtShortTerm", zeroUID, "Yes") + "  <NULL>");
    EXPECT_EQ(Info(cut).Unread(), 15u);
    EXPECT_EQ(Info("8000000081" + Filled("2B", 15)).Unread(), 0u);
}

TEST_F(EntryIDInfo, FieldsThatAreCutAreZero)
{
    // Ten bytes for a GUID: they go to the counter and the padding after it.
    const std::string hex = "00000000" + contactUID + "01000000" + "04000000" + "00000000" + "20000000" + "00000000" +
                            unknownUID + "0200" + Filled("A1", 10);
    const std::string dump = Dump(hex);
    EXPECT_NE(dump.find("DatabaseGUID: " + zeroUID), std::string::npos) << dump;
    EXPECT_EQ(Info(hex).Unread(), 2u);
}

TEST_F(EntryIDInfo, HexadecimalTextEndsAtOtherCharacters)
{
    const std::string good = "00000000" + unknownUID + "0200" + Filled("A1", 16);
    EXPECT_EQ(Dump(good + "F"), Dump(good)) << "an odd digit is none";
    EXPECT_EQ(Dump(good + "-" + good), Dump(good));
    EXPECT_EQ(Dump("no identifier"), Head("", "eidtUnknown", zeroUID) + "  <NULL>");
    EXPECT_EQ(Dump("F"), Dump("no identifier"));
    const std::string megabyte = Filled("5A", 1 << 19);
    EXPECT_EQ(Dump(megabyte), Head(megabyte, "eidtUnknown", Filled("5A", 16)) + "  <NULL>");
}

TEST_F(EntryIDInfo, TextsOfAMegabyteAreWhole)
{
    const std::string name(1 << 20, '%');
    const std::string hex = "00000000" + oneOffUID + "00000000" + Text(name) + Text("SMTP") + Text("a@example.org");
    EXPECT_NE(Dump(hex).find("DisplayName: " + name + "\r\n    AddressType: SMTP\r\n"), std::string::npos);
}

TEST_F(EntryIDInfo, TextBeyondAStringIsRefused)
{
    CDumpText text(0);
    text.Append("kept");
    const BYTE byte = 0;
    EXPECT_EQ(ThrownBy([&] { text.AppendHex(&byte, 0x40000000); }), MAPI_E_NOT_ENOUGH_MEMORY);
    text.AppendNumber(0xAB);
    EXPECT_EQ(text.Take(), "kept0x000000AB");
    EXPECT_EQ(text.Take(), "");
    CDumpText roomy(1000);
    roomy.Append("no more than this");
    EXPECT_EQ(roomy.Take().GetLength(), 17);
}

TEST_F(EntryIDInfo, OtherContactTypesAreNamed)
{
    const auto typeLine = [](const char* type)
    { return Dump("00000000" + contactUID + "00000000" + type + "0000000000000000"); };
    EXPECT_NE(typeLine("05000000").find("Type: CONTAB_DISTLIST (0x00000005)"), std::string::npos);
    EXPECT_NE(typeLine("07000000").find("Type: <Unknown> (0x00000007)"), std::string::npos);
}

TEST_F(EntryIDInfo, AnEmptyContactHasNoObject)
{
    const std::string hex = "00000000" + contactUID + "03000000" + "04000000" + "00000000" + "00000000";
    const CEntryIDInfo info = Info(hex);
    EXPECT_EQ(info.Type(), eidtContact);
    EXPECT_EQ(info.Contact()->Wrapped(), nullptr);
    EXPECT_EQ(ThrownBy([&] { info.WrappedDump(); }), MAPI_E_INVALID_TYPE);
    EXPECT_EQ(ThrownBy([&] { info.WrappedString(); }), MAPI_E_INVALID_TYPE);
    const std::string dump = Dump(hex);
    const std::string end = "    Object:\r\n    <NULL>";
    EXPECT_EQ(dump.substr(dump.size() - end.size()), end);
}

TEST_F(EntryIDInfo, OnlyContactsWrapAnIdentifier)
{
    const CEntryIDInfo info = Info("00000000" + unknownUID + Filled("00", 18));
    EXPECT_EQ(info.Contact(), nullptr);
    EXPECT_EQ(ThrownBy([&] { info.WrappedDump(); }), MAPI_E_INVALID_TYPE);
    EXPECT_EQ(ThrownBy([&] { info.WrappedString(); }), MAPI_E_INVALID_TYPE);
}

TEST_F(EntryIDInfo, InvalidBinaryGivesAnEmptyInfo)
{
    const CEntryIDInfo info{CZebBinary()};
    EXPECT_EQ(info.Type(), eidtUnknown);
    EXPECT_EQ(info.Unread(), 0u);
    EXPECT_EQ(std::string(info.Dump("")), Head("<InvalidBinary>", "eidtUnknown", zeroUID) + "  <NULL>");
}

TEST_F(EntryIDInfo, EveryLineTakesThePrefix)
{
    const std::string hex = "00000000" + unknownUID + "0200" + Filled("A1", 16);
    const std::string dump(Info(hex).Dump("> "));
    EXPECT_EQ(dump.substr(0, 16), "> CEntryIDInfo\r\n");
    EXPECT_NE(dump.find("\r\n>   Object:>   CEntryIDData\r\n>     Type: "), std::string::npos);
    for (size_t at = dump.find("\r\n"); at != std::string::npos && at + 2 < dump.size(); at = dump.find("\r\n", at + 2))
    {
        EXPECT_EQ(dump.substr(at + 2, 2), "> ") << at;
    }
}

TEST_F(EntryIDInfo, CopiesAreDeep)
{
    const std::string wrapped = "00000000" + unknownUID + "0300" + Filled("B2", 48);
    const std::string hexes[] = {
        "00000000" + contactUID + "03000000" + "04000000" + "01000000" + "46000000" + wrapped,
        "80800000" + unknownUID + "0200" + Filled("A1", 16),
        "80000000" + oneOffUID + "00000080" + WideText(u"a") + WideText(u"b") + WideText(u"c") + "FF",
        "00000000" + wrapUID + "0000" + Text("emsmdb.dll"),
        "00000000" + exchangeUID,
        "00000000" + unknownUID,
    };
    for (const std::string& hex : hexes)
    {
        auto original = std::make_unique<CEntryIDInfo>(CZebBinary(hex.c_str()));
        const std::string dump(original->Dump(""));
        const eidt type = original->Type();
        const std::uint64_t unread = original->Unread();
        const CEntryIDInfo copy(*original);
        original.reset();
        EXPECT_EQ(copy.Type(), type);
        EXPECT_EQ(copy.Unread(), unread);
        EXPECT_EQ(std::string(copy.Dump("")), dump);
    }
}

TEST_F(EntryIDInfo, TruncatedIdentifiersAreClassifiedAndDumped)
{
    const std::string wrapped = "00000000" + unknownUID + "0300" + Filled("B2", 48);
    const std::string hexes[] = {
        "00000000" + contactUID + "03000000" + "03000000" + "01000000" + "46000000" + Filled("EE", 8) + wrapped,
        "00000000" + contactUID + "03000000" + "04000000" + "01000000" + "46000000" + wrapped,
        "00000000" + unknownUID + "0300" + Filled("A1", 48),
        "00000000" + oneOffUID + "00000080" + WideText(u"name") + WideText(u"SMTP") + WideText(u"a@b"),
        "00000000" + oneOffUID + "00000000" + Text("name") + Text("SMTP") + Text("a@b"),
        "00000000" + wrapUID + "0000" + Text("emsmdb.dll") + "EEEEEE" + "01000000" + Filled("D4", 16) + "0C000000" +
            Text("SERVER") + Text("/o=org"),
        "00000000" + exchangeUID + "0100000000000000" + Text("/o=org"),
    };
    for (const std::string& hex : hexes)
    {
        for (size_t length = 2; length <= hex.size(); length += 2)
        {
            const std::string cut = hex.substr(0, length);
            const std::string dump = Dump(cut);
            EXPECT_EQ(dump.find("CEntryIDInfo\r\n  EntryID: " + cut + "\r\n  Type: "), 0u) << cut;
            const CEntryIDInfo info = Info(cut);
            EXPECT_LE(info.Unread(), length / 2);
            EXPECT_EQ(std::string(CEntryIDInfo(info).Dump("")), dump);
        }
    }
}

TEST_F(EntryIDInfo, UnterminatedTextsAreEmpty)
{
    const std::string hex = "00000000" + oneOffUID + "00000000" + HexOf("no end");
    EXPECT_NE(Dump(hex).find("DisplayName: \r\n"), std::string::npos);
    EXPECT_EQ(Info(hex).Unread(), 6u);
}

TEST_F(EntryIDInfo, EmptyTextDumpsAsEmptyResult)
{
    EXPECT_EQ(Dump(""), "");
    EXPECT_EQ(std::string(Zeb_DumpEntryID(nullptr)), "");
}

} // namespace zeb::test
