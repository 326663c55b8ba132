// A restriction gives the same rows with and without the text index.
#include "tests/zebstore/storage/TextIndexFixture.h"

#include "platform/module.h"
#include "zebstore/tables/TableView.h"

#include <cstdlib>

namespace zebstore::test
{
namespace
{

TEST_F(TextIndexTest, SameRowsWithAndWithoutIndex)
{
    for (int i = 0; i < 300; ++i)
    {
        Create({i % 3 != 0 ? Inbox : Other, i % 10 == 0});
    }
    EXPECT_EQ(Compare(300), 0);
    TurnOn();
    EXPECT_EQ(Number("SELECT count(*) FROM text_waiting"), 0);
    EXPECT_GT(Compare(300), 100);
    for (int round = 0; round < 12; ++round)
    {
        for (int i = 0; i < 40; ++i)
        {
            ChangeOnce();
        }
        EXPECT_EQ(Problems(), std::vector<std::string>());
        EXPECT_GT(Compare(100), 30);
        if (round % 3 == 2)
        {
            Store().Texts().Complete(Silent());
        }
        if (round == 6)
        {
            Reopen();
        }
    }
    Store().Texts().TurnOff();
    EXPECT_EQ(Compare(100), 0);
}

TEST_F(TextIndexTest, BlocksAreMadeWhileMessagesAreSaved)
{
    Store().Texts().TurnOn();
    MessageContent mail = Mail("");
    for (size_t i = 0; i < BlockSlots * 2 + 10; ++i)
    {
        mail.properties.SetText(PR_SUBJECT_W, "number " + std::to_string(i));
        Store().Messages().Create({Inbox, false}, mail);
    }
    EXPECT_EQ(Number("SELECT count(*) FROM text_block"), 2);
    EXPECT_EQ(Number("SELECT count(*) FROM text_waiting"), 10);
    const auto rows = MakeContentsRows(m_store, {Inbox, false}, nullptr);
    const SRestriction& oneSource =
        *m_make.Content(FL_SUBSTRING | FL_IGNORECASE, NarrowValue(PR_SUBJECT_W, "NUMBER 1234"));
    const Restriction one(oneSource);
    EXPECT_EQ(rows->Keys(&one, nullptr).size(), 1u);
    EXPECT_LT(Candidates(oneSource, {Inbox, false}, 10000)->size(), 50u);
    EXPECT_FALSE(Candidates(oneSource, {Inbox, false}, 5).has_value());
    // A block of which most messages are gone is given up when the next one is made.
    std::vector<MessageId> most = Store().Messages().In({Inbox, false});
    most.resize(BlockSlots * 2 - 500);
    EXPECT_EQ(Store().Messages().Delete(most), most.size());
    EXPECT_EQ(Number("SELECT rows FROM text_block WHERE id=1"), 0);
    Store().Texts().Complete(Silent());
    EXPECT_EQ(Number("SELECT count(*) FROM text_block"), 1);
    EXPECT_EQ(Number("SELECT rows FROM text_block"), 510);
}

TEST_F(TextIndexTest, DeletedMessagesLeaveTheIndex)
{
    for (int i = 0; i < 20; ++i)
    {
        Create({i % 2 != 0 ? Inbox : Other, false});
    }
    TurnOn();
    const FolderId folder = Store().Folders().Create(IdOf(StandardFolder::IpmSubtree), Named("gone"));
    Store().Messages().Move({m_models.begin()->first}, folder);
    Store().Messages().Create({folder, false}, ContentOf(m_random.Message()));
    EXPECT_EQ(Number("SELECT count(*) FROM text_member"), 20);
    Store().Folders().Delete(folder, true, true);
    EXPECT_EQ(Number("SELECT count(*) FROM text_member"), 19);
    EXPECT_EQ(Number("SELECT count(*) FROM text_waiting"), 0);
    Store().Folders().Empty(Inbox, true);
    EXPECT_EQ(Number("SELECT count(*) FROM text_member"), Number("SELECT count(*) FROM message"));
}

TEST_F(TextIndexTest, RolledBackChangesLeaveNoTrace)
{
    TurnOn();
    {
        StoreTransaction transaction(Store().Connection());
        Create({Inbox, false});
    }
    EXPECT_EQ(Number("SELECT count(*) FROM text_waiting"), 0);
}

TEST_F(TextIndexTest, OnlyTextsOfThreeCharactersAreLookedUp)
{
    TurnOn();
    const auto content = [&](const char* text, ULONG tag = PR_BODY_W, ULONG fuzzy = FL_SUBSTRING)
    { return m_make.Content(fuzzy, NarrowValue(tag, text)); };
    EXPECT_TRUE(UsesIndex(*content("abc")));
    EXPECT_FALSE(UsesIndex(*content("ab")));
    EXPECT_TRUE(UsesIndex(*content("abc", PR_SUBJECT_W, FL_PREFIX)));
    EXPECT_TRUE(UsesIndex(*content("abc", PR_SENDER_NAME_W, FL_FULLSTRING | FL_LOOSE)));
    EXPECT_FALSE(UsesIndex(*content("abc", PR_DISPLAY_TO_W)));
    EXPECT_TRUE(UsesIndex(*m_make.Property(RELOP_EQ, NarrowValue(PR_SUBJECT_W, "abc"))));
    EXPECT_FALSE(UsesIndex(*m_make.Property(RELOP_GE, NarrowValue(PR_SUBJECT_W, "abc"))));
    EXPECT_TRUE(UsesIndex(*m_make.And({content("ab"), content("abc")})));
    EXPECT_FALSE(UsesIndex(*m_make.Or({content("ab"), content("abc")})));
    EXPECT_TRUE(UsesIndex(*m_make.Or({content("xyz"), content("abc")})));
    EXPECT_FALSE(UsesIndex(*m_make.Not(content("abc"))));
    EXPECT_TRUE(UsesIndex(*m_make.And({m_make.Not(content("abc")), content("abc")})));
    EXPECT_TRUE(UsesIndex(*m_make.Sub(PR_MESSAGE_RECIPIENTS, content("abc", PR_DISPLAY_NAME_W))));
    EXPECT_FALSE(UsesIndex(*m_make.Sub(PR_MESSAGE_ATTACHMENTS, content("abc", PR_DISPLAY_NAME_W))));
}

TEST_F(TextIndexTest, TextsOfOtherTypesAreFound)
{
    TurnOn();
    MessageContent several = Mail("several");
    LPSTR texts[] = {const_cast<char*>("first part"), const_cast<char*>("second part")};
    SPropValue value = Value(CHANGE_PROP_TYPE(PR_BODY, PT_MV_STRING8));
    value.Value.MVszA.cValues = 2;
    value.Value.MVszA.lppszA = texts;
    several.properties.Set(value);
    MessageContent narrow = Mail("narrow");
    narrow.properties.Set(NarrowValue(PR_BODY, (std::string(5000, 'x') + "second").c_str()));
    MessageContent number = Mail("number");
    number.properties.SetLong(PROP_TAG(PT_LONG, PROP_ID(PR_BODY)), 7);
    std::vector<RowKey> expected;
    for (const MessageContent* each : {&several, &narrow, &number})
    {
        const MessageId message = Store().Messages().Create({Inbox, false}, *each);
        if (each != &number)
        {
            expected.push_back(message);
        }
    }
    Store().Texts().Complete(Silent());
    const SRestriction& source = *m_make.Content(FL_SUBSTRING, NarrowValue(PR_BODY, "second"));
    const Restriction wanted(source);
    EXPECT_EQ(MakeContentsRows(m_store, {Inbox, false}, nullptr)->Keys(&wanted, nullptr), expected);
    EXPECT_EQ(*Candidates(source, {Inbox, false}, 10), expected);
}

// Its bytes in a code page are another text on another system, so such a message is always looked at.
TEST_F(TextIndexTest, LargeNarrowTextsStayCandidates)
{
    TurnOn();
    MessageContent narrow = Mail("narrow");
    narrow.properties.Set(NarrowValue(PR_BODY, (std::string(5000, 'x') + "\xC3\xA9").c_str()));
    const MessageId message = Store().Messages().Create({Inbox, false}, narrow);
    Store().Texts().Complete(Silent());
    const SRestriction& source = *m_make.Content(FL_SUBSTRING, NarrowValue(PR_BODY, "nothing of it"));
    EXPECT_EQ(*Candidates(source, {Inbox, false}, 10), std::vector<MessageId>{message});
    EXPECT_EQ(Problems(), std::vector<std::string>());
}

TEST_F(TextIndexTest, SortedRowsAreTheSame)
{
    for (int i = 0; i < 200; ++i)
    {
        Create({Inbox, false});
    }
    const auto rows = MakeContentsRows(m_store, {Inbox, false}, nullptr);
    const SortOrder order(*SortSet({{PR_SUBJECT_W, TABLE_SORT_DESCEND}, {PR_BODY_W, TABLE_SORT_ASCEND}}));
    std::vector<std::unique_ptr<Restriction>> restrictions;
    std::vector<std::vector<RowKey>> without;
    const std::vector<TextModel> models = Models();
    for (int i = 0; i < 100; ++i)
    {
        restrictions.push_back(std::make_unique<Restriction>(*Made(Cut(m_random.Condition(models)))));
        without.push_back(rows->Keys(restrictions.back().get(), &order));
    }
    TurnOn();
    for (size_t i = 0; i < without.size(); ++i)
    {
        EXPECT_EQ(rows->Keys(restrictions[i].get(), &order), without[i]) << i;
    }
}

TEST_F(TextIndexTest, FindRowFindsTheSameRow)
{
    for (int i = 0; i < 3000; ++i)
    {
        Store().Messages().Create({Inbox, false}, Mail("number " + std::to_string(i)));
    }
    TurnOn();
    TableView view(MakeContentsRows(m_store, {Inbox, false}, nullptr));
    LONG moved = 0;
    const auto find = [&](const char* text, bool backward)
    {
        const Restriction wanted(*m_make.Content(FL_SUBSTRING, NarrowValue(PR_SUBJECT_W, text)));
        view.Find(wanted, backward ? BOOKMARK_END : BOOKMARK_BEGINNING, backward);
        view.Seek(BOOKMARK_CURRENT, 0, moved);
        return Store().Messages().Load(view.Take(1, false)[0]).properties.Text(PR_SUBJECT_W);
    };
    EXPECT_EQ(find("2345", false), "number 2345");
    EXPECT_EQ(find("number 123", false), "number 123");
    EXPECT_EQ(find("number 123", true), "number 1239");
    EXPECT_EQ(CodeOf([&] { find("number 3000", false); }), MAPI_E_NOT_FOUND);
}

TEST_F(TextIndexTest, OpenTablesFollowChangesOfOtherSessions)
{
    for (LONG i = 0; i < 30; ++i)
    {
        Add(i);
    }
    TurnOn();
    const auto changed = [&](Ref<IMAPITable> table, const char* text)
    {
        EXPECT_EQ(table->Restrict(m_make.Content(FL_SUBSTRING, NarrowValue(PR_SUBJECT_W, text)), 0), S_OK);
        return table;
    };
    std::vector<Followed> tables;
    tables.emplace_back(changed(Contents(), "changed"));
    tables.emplace_back(changed(Sorted(Contents(), PR_IMPORTANCE), "subject 3"));
    tables.emplace_back(changed(Contents(Archive), "CHANGED 2"));
    const std::string command = zeb::platform::OwnFolder() + ZEB_STORE_CHANGER + " \"" + Path("test.zeb") + "\" 100";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
    for (Followed& each : tables)
    {
        ExpectFollowed(each);
    }
    EXPECT_FALSE(tables[0].Sink().Events().empty());
    EXPECT_EQ(Problems(), std::vector<std::string>());
}

TEST_F(TextIndexTest, AnotherSessionMaySwitchIt)
{
    for (int i = 0; i < 100; ++i)
    {
        Create({Inbox, false});
    }
    const auto other = StoreFile::Open(Path("test.zeb"), Observed());
    EXPECT_FALSE(other->Texts().IsOn());
    TurnOn();
    EXPECT_TRUE(other->Texts().IsOn());
    other->Messages().Create({Inbox, false}, Mail("from the other session"));
    const Restriction wanted(*m_make.Content(FL_SUBSTRING, NarrowValue(PR_SUBJECT_W, "other SESSION")));
    const Restriction right(*m_make.Content(FL_SUBSTRING, NarrowValue(PR_SUBJECT_W, "other session")));
    EXPECT_EQ(MakeContentsRows(m_store, {Inbox, false}, nullptr)->Keys(&right, nullptr).size(), 1u);
    EXPECT_TRUE(MakeContentsRows(m_store, {Inbox, false}, nullptr)->Keys(&wanted, nullptr).empty());
    other->Texts().TurnOff();
    EXPECT_FALSE(Store().Texts().IsOn());
    Store().Messages().Create({Inbox, false}, Mail("without index"));
    EXPECT_EQ(MakeContentsRows(m_store, {Inbox, false}, nullptr)->Keys(&right, nullptr).size(), 1u);
}

TEST_F(TextIndexTest, ReadOnlySessionsUseTheIndex)
{
    Create({Inbox, false});
    TurnOn();
    StoreFile::OpenOptions options;
    options.readOnly = true;
    const auto reader = StoreFile::Open(Path("test.zeb"), options);
    EXPECT_TRUE(reader->Texts().IsOn());
    EXPECT_EQ(CodeOf([&] { reader->Texts().TurnOff(); }), MAPI_E_NO_ACCESS);
    EXPECT_EQ(CodeOf([&] { reader->Texts().Complete(Silent()); }), MAPI_E_NO_ACCESS);
}

// An upgraded store has no index and can get one.
TEST_F(TextIndexTest, OldStoresAreUpgradedWithoutIndex)
{
    Create({Inbox, false});
    MakeOlder(Store(), 3);
    Reopen();
    EXPECT_FALSE(Store().Texts().State().isOn);
    TurnOn();
    EXPECT_EQ(Store().Texts().State().messages, 1u);
    EXPECT_EQ(Store().Texts().State().waiting, 0u);
}

} // namespace
} // namespace zebstore::test
