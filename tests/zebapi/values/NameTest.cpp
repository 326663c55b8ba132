#include "framework/CString.h"
#include "zebapi/TAGS.h"

#include "tests/zebapi/values/HeaderConstants.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>

namespace zeb::test
{

namespace
{

struct TableSize
{
    const char* name;
    ULONG count;
};

const TableSize tables[] = {
    {"MAPIErrors", 98}, {"CMCErrors", 39},   {"PropTags", 338}, {"PropIDs", 338},     {"PropType", 30},
    {"FolderType", 3},  {"TableStatus", 8},  {"TableType", 3},  {"SortOrder", 3},     {"RestrictionType", 11},
    {"RelOp", 7},       {"Bmr", 2},          {"FuzzyLevel", 6}, {"MAPIObjTypes", 12}, {"NotifEvents", 12},
    {"TableEvents", 8}, {"MsgFlags", 8},     {"RecipType", 4},  {"EIDFlags", 5},      {"ResourceType", 8},
    {"Priority", 3},    {"AttachMethod", 7},
};

std::string NameAt(const char* table, ULONG index)
{
    char buffer[44] = {};
    EXPECT_NE(Zeb_NameAt(table, index, buffer), nullptr);
    return buffer;
}

/// The header's value of a constant: the narrow one where there are two widths.
ULONG HeaderValue(const std::string& name)
{
    const std::map<std::string, ULONG>& constants = HeaderConstants();
    auto found = constants.find(name + "_A");
    if (found == constants.end())
    {
        found = constants.find(name);
    }
    EXPECT_NE(found, constants.end()) << name;
    return found == constants.end() ? 0 : found->second;
}

} // namespace

TEST(Names, TablesHaveTheirRows)
{
    for (const TableSize& table : tables)
    {
        EXPECT_EQ(Zeb_TableCount(table.name), table.count) << table.name;
    }
    EXPECT_EQ(Zeb_TableCount("NoSuchTable"), 0u);
    EXPECT_EQ(Zeb_TableCount("PropTag"), 0u);
    EXPECT_EQ(Zeb_TableCount("PropTagsX"), 0u);
    EXPECT_EQ(Zeb_TableCount(""), 0u);
    EXPECT_EQ(Zeb_TableCount(nullptr), 0u);
}

TEST(Names, TableNamesCompareWithoutCase)
{
    EXPECT_EQ(Zeb_TableCount("proptags"), 338u);
    EXPECT_EQ(Zeb_TableCount("PROPTAGS"), 338u);
    // Same but for bit 5, and no letter.
    EXPECT_EQ(Zeb_TableCount("\x02mr"), 0u);
    EXPECT_EQ(Zeb_TableCount("B\rr"), 0u);
    for (const TableSize& table : tables)
    {
        CStringA name(table.name);
        EXPECT_EQ(Zeb_TableCount(name.MakeUpper()), table.count) << table.name;
        EXPECT_EQ(Zeb_TableCount(name.MakeLower()), table.count) << table.name;
        EXPECT_EQ(Zeb_TableCount(name.Left(name.GetLength() - 1)), 0u) << table.name;
        EXPECT_EQ(Zeb_TableCount(name + " "), 0u) << table.name;
    }
}

TEST(Names, OnlyLettersBeginATable)
{
    for (int character = 1; character < 256; ++character)
    {
        const char name[] = {static_cast<char>(character), 0};
        EXPECT_EQ(Zeb_TableCount(name), 0u) << character;
        EXPECT_EQ(Zeb_TableCount(CStringA(name) + "mr"), character == 'B' || character == 'b' ? 2u : 0u);
    }
}

/// The macro whose value a row has.
std::string MacroOf(const std::string& table, const std::string& name)
{
    static const std::map<std::string, std::string> symbols = {
        {"<", "RELOP_LT"},
        {"<=", "RELOP_LE"},
        {">", "RELOP_GT"},
        {">=", "RELOP_GE"},
        {"==", "RELOP_EQ"},
        {"!=", "RELOP_NE"},
        {"LIKE", "RELOP_RE"},
        {"==0", "BMR_EQZ"},
        {"!=0", "BMR_NEZ"},
        {"PR_REMOTE_PROGRESS'", "PR_REMOTE_PROGRESS"},
        // Of two widths like the text properties, but without macros of their own for them.
        {"PT_MV_TSTRING", "PT_MV_STRING8"}};
    const auto symbol = symbols.find(name);
    const bool plain = symbol == symbols.end() || table == "PropTags";
    return plain ? name : symbol->second;
}

TEST(Names, EveryValueIsTheHeadersOwn)
{
    size_t compared = 0;
    for (const TableSize& table : tables)
    {
        for (ULONG i = 0; i < table.count; ++i)
        {
            const std::string name = NameAt(table.name, i);
            const ULONG value = HeaderValue(MacroOf(table.name, name));
            EXPECT_EQ(Zeb_ValueAt(table.name, i), table.name == std::string("PropIDs") ? PROP_ID(value) : value)
                << table.name << " " << name;
            ++compared;
        }
    }
    EXPECT_EQ(compared, 953u);
}

TEST(Names, TextTagsAreTheNarrowOnes)
{
    for (ULONG i = 0; i < Zeb_TableCount("PropTags"); ++i)
    {
        EXPECT_NE(PROP_TYPE(Zeb_ValueAt("PropTags", i)), ULONG{PT_UNICODE}) << i;
        EXPECT_NE(PROP_TYPE(Zeb_ValueAt("PropTags", i)), ULONG{PT_MV_UNICODE}) << i;
    }
}

TEST(Names, IdentifiersAreThoseOfTheTags)
{
    for (ULONG i = 0; i < Zeb_TableCount("PropIDs"); ++i)
    {
        const std::string tagName = NameAt("PropTags", i);
        EXPECT_EQ(Zeb_ValueAt("PropIDs", i), PROP_ID(Zeb_ValueAt("PropTags", i))) << tagName;
        EXPECT_EQ(NameAt("PropIDs", i), tagName == "PR_REMOTE_PROGRESS" ? "PR_REMOTE_PROGRESS'" : tagName);
    }
    EXPECT_STREQ(Zeb_NameFromValue("PropIDs", 0x3E0B), "PR_REMOTE_PROGRESS'");
    EXPECT_STREQ(Zeb_NameFromValue("PropTags", PR_REMOTE_PROGRESS), "PR_REMOTE_PROGRESS");
}

TEST(Names, TheFirstRowAnswersForDuplicates)
{
    EXPECT_STREQ(Zeb_NameFromValue("PropIDs", 0x3701), "PR_ATTACH_DATA_BIN");
    EXPECT_STREQ(Zeb_NameFromValue("PropTags", PR_ATTACH_DATA_OBJ), "PR_ATTACH_DATA_OBJ");
    EXPECT_STREQ(Zeb_NameFromValue("PropType", 0x101E), "PT_MV_STRING8");
    EXPECT_STREQ(Zeb_NameFromValue("MAPIErrors", static_cast<ULONG>(E_NOTIMPL)), "E_NOTIMPL");
    EXPECT_STREQ(Zeb_NameFromValue("MAPIErrors", static_cast<ULONG>(E_OUTOFMEMORY)), "MAPI_E_NOT_ENOUGH_MEMORY");
}

TEST(Names, LookUpsAnswerLikeAScan)
{
    for (const TableSize& table : tables)
    {
        std::map<ULONG, std::string> firstOfValue;
        std::map<std::string, ULONG> firstOfName;
        for (ULONG i = 0; i < table.count; ++i)
        {
            firstOfValue.emplace(Zeb_ValueAt(table.name, i), NameAt(table.name, i));
            firstOfName.emplace(NameAt(table.name, i), Zeb_ValueAt(table.name, i));
        }
        for (const auto& [value, name] : firstOfValue)
        {
            EXPECT_STREQ(Zeb_NameFromValue(table.name, value), name.c_str());
        }
        for (const auto& [name, value] : firstOfName)
        {
            ULONG found = 0xDEADBEEF;
            EXPECT_EQ(Zeb_ValueFromName(table.name, name.c_str(), &found), 1);
            EXPECT_EQ(found, value);
        }
        for (ULONG value = 0x70000000; value < 0x70000400; ++value)
        {
            EXPECT_EQ(Zeb_NameFromValue(table.name, value), nullptr);
        }
    }
}

TEST(Names, NameIsCopiedIntoABuffer)
{
    char buffer[44];
    EXPECT_EQ(Zeb_NameFromValue("proptags", 0x0037001E, buffer), buffer);
    EXPECT_STREQ(buffer, "PR_SUBJECT");
    EXPECT_EQ(Zeb_NameFromValue("PropTags", 0x12345678, buffer), nullptr);
    EXPECT_STREQ(buffer, "0x12345678");
    EXPECT_EQ(Zeb_NameFromValue("NoSuchTable", 0xABCDEF, buffer), nullptr);
    EXPECT_STREQ(buffer, "0x00ABCDEF");
    EXPECT_EQ(Zeb_NameFromValue(nullptr, 0, buffer), nullptr);
    EXPECT_STREQ(buffer, "0x00000000");
    EXPECT_EQ(Zeb_NameFromValue("PropTags", 0x12345678), nullptr);
}

TEST(Names, NamesHave43CharactersAtMost)
{
    size_t longest = 0;
    for (const TableSize& table : tables)
    {
        for (ULONG i = 0; i < table.count; ++i)
        {
            longest = std::max(longest, std::strlen(Zeb_NameFromValue(table.name, Zeb_ValueAt(table.name, i))));
        }
    }
    EXPECT_EQ(longest, 43u);
}

TEST(Names, RowPastTheLastSaysSo)
{
    char buffer[44];
    EXPECT_EQ(Zeb_NameAt("Priority", 2, buffer), buffer);
    EXPECT_STREQ(buffer, "PRIO_NONURGENT");
    EXPECT_EQ(Zeb_NameAt("Priority", 3, buffer), nullptr);
    EXPECT_STREQ(buffer, "Row 3 Not Found");
    EXPECT_EQ(Zeb_NameAt("NoSuchTable", 0xFFFFFFFF, buffer), nullptr);
    EXPECT_STREQ(buffer, "Row 4294967295 Not Found");
    EXPECT_EQ(Zeb_ValueAt("Priority", 2), 0xFFFFFFFFu);
    EXPECT_EQ(Zeb_ValueAt("Priority", 3), 0u);
    EXPECT_EQ(Zeb_ValueAt("NoSuchTable", 0), 0u);
}

TEST(Names, ConstantNamesCompareWithCase)
{
    ULONG value = 77;
    EXPECT_EQ(Zeb_ValueFromName("PropTags", "pr_subject", &value), 0);
    EXPECT_EQ(Zeb_ValueFromName("PropTags", "PR_SUBJEC", &value), 0);
    EXPECT_EQ(Zeb_ValueFromName("PropTags", nullptr, &value), 0);
    EXPECT_EQ(Zeb_ValueFromName(nullptr, "PR_SUBJECT", &value), 0);
    EXPECT_EQ(value, 77u) << "left alone";
    EXPECT_EQ(Zeb_ValueFromName("PROPTAGS", "PR_SUBJECT", &value), 1);
    EXPECT_EQ(value, 0x0037001Eu);
    EXPECT_EQ(Zeb_ValueFromName("PropType", "PT_MV_TSTRING", &value), 1);
    EXPECT_EQ(value, 0x101Eu);
}

TEST(Names, OperatorsReadAsTheirSymbols)
{
    const char* const relops[] = {"<", "<=", ">", ">=", "==", "!=", "LIKE"};
    for (ULONG i = 0; i < 7; ++i)
    {
        EXPECT_STREQ(Zeb_NameFromValue("RelOp", i), relops[i]);
    }
    EXPECT_STREQ(Zeb_NameFromValue("Bmr", 0), "==0");
    EXPECT_STREQ(Zeb_NameFromValue("Bmr", 1), "!=0");
}

TEST(Names, ErrorDisplayedHasItsHeaderValue)
{
    EXPECT_STREQ(Zeb_NameFromValue("CMCErrors", 0x8000), "CMC_ERROR_DISPLAYED");
    EXPECT_EQ(Zeb_ValueAt("CMCErrors", 37), 37u);
}

TEST(Names, TablesHaveTheirNamesInOrder)
{
    // The 32-bit FNV-1a sums of the names, each followed by a line feed.
    const std::map<std::string, ULONG> sums = {
        {"MAPIErrors", 0x5886A84B},   {"CMCErrors", 0xD948782F},   {"PropTags", 0xB7DB35C3},
        {"PropType", 0x84D93395},     {"FolderType", 0x9354ED37},  {"TableStatus", 0xE005D65E},
        {"TableType", 0xF71D88CE},    {"SortOrder", 0xA6BDCA32},   {"RestrictionType", 0x5A5661C2},
        {"RelOp", 0xEDA03862},        {"Bmr", 0x57A06719},         {"FuzzyLevel", 0x060DD973},
        {"MAPIObjTypes", 0x40640B79}, {"NotifEvents", 0x7E641264}, {"TableEvents", 0x06DA6D0F},
        {"MsgFlags", 0xD2AA3DBE},     {"RecipType", 0xC3470A71},   {"EIDFlags", 0xDC184E8E},
        {"ResourceType", 0x831CF6F6}, {"Priority", 0x12200DF2},    {"AttachMethod", 0xC4F67EF0},
    };
    for (const auto& [table, expected] : sums)
    {
        ULONG sum = 0x811C9DC5;
        for (ULONG i = 0; i < Zeb_TableCount(table.c_str()); ++i)
        {
            for (const char c : NameAt(table.c_str(), i) + '\n')
            {
                sum = (sum ^ static_cast<unsigned char>(c)) * 0x01000193;
            }
        }
        EXPECT_EQ(sum, expected) << table;
    }
}

TEST(Names, RowsAreInTheirOrder)
{
    EXPECT_EQ(NameAt("MAPIErrors", 0), "SUCCESS_SUCCESS");
    EXPECT_EQ(NameAt("MAPIErrors", 97), "E_ABORT");
    EXPECT_EQ(NameAt("PropTags", 0), "PR_ACKNOWLEDGEMENT_MODE");
    EXPECT_EQ(NameAt("PropTags", 337), "PR_INITIAL_DETAILS_PANE");
    EXPECT_EQ(NameAt("FolderType", 0), "FOLDER_GENERIC");
    EXPECT_EQ(NameAt("FolderType", 1), "FOLDER_ROOT");
    EXPECT_EQ(NameAt("NotifEvents", 6), "fnevSearchComplete");
    EXPECT_EQ(NameAt("NotifEvents", 7), "fnevObjectCopied");
    EXPECT_EQ(NameAt("EIDFlags", 0), "MAPI_SHORTTERM");
    EXPECT_EQ(NameAt("PropType", 12), "PT_SYSTIME");
    EXPECT_EQ(NameAt("PropType", 29), "PT_MV_TSTRING");
}

} // namespace zeb::test
