// The check finds a text index that does not match the messages, and the repair makes it again.
#include "tests/zebstore/storage/TextIndexFixture.h"

#include "zebstore/storage/Repair.h"

namespace zebstore::test
{
namespace
{

class TextDamageTest : public TextIndexTest
{
protected:
    void SetUp() override
    {
        TextIndexTest::SetUp();
        for (int i = 0; i < 40; ++i)
        {
            Create({Inbox, false});
        }
        TurnOn();
        ASSERT_EQ(Problems(), std::vector<std::string>());
    }

    /// The check names a problem that begins so, and the repair removes it.
    void ExpectFoundAndRepaired(const std::string& begin)
    {
        const std::vector<std::string> problems = Store().CheckWhole();
        ASSERT_FALSE(problems.empty());
        EXPECT_EQ(problems[0].substr(0, begin.size()), begin);
        std::vector<std::string> found;
        WorkReport report = Silent();
        report.found = [&](const std::string& finding) { found.push_back(finding); };
        RepairStore(Store(), report);
        ASSERT_EQ(found.size(), 1u);
        EXPECT_NE(found[0].find(": rebuilt"), std::string::npos) << found[0];
        EXPECT_EQ(Store().CheckWhole(), std::vector<std::string>());
        EXPECT_TRUE(Store().Texts().IsOn());
        EXPECT_GT(Compare(100), 20);
    }
};

TEST_F(TextDamageTest, AMissingMessageIsFound)
{
    Run("DELETE FROM text_member WHERE place=(SELECT min(place) FROM text_member)");
    ExpectFoundAndRepaired("the text index: message ");
}

TEST_F(TextDamageTest, AMessageThatDoesNotExistIsFound)
{
    Run("INSERT INTO text_waiting(id) VALUES(99999999999)");
    ExpectFoundAndRepaired("the text index: message 99999999999 is listed and does not exist");
}

TEST_F(TextDamageTest, TextsOfAnotherMessageAreFound)
{
    Run("UPDATE text_member SET message=-message WHERE (place & 2047) < 2; "
        "UPDATE text_member SET message=(SELECT id FROM message ORDER BY id LIMIT 1) WHERE (place & 2047)=1; "
        "UPDATE text_member SET message=(SELECT id FROM message ORDER BY id LIMIT 1 OFFSET 1) WHERE (place & 2047)=0");
    ExpectFoundAndRepaired("the text index: message ");
}

TEST_F(TextDamageTest, MissingGramsAreFound)
{
    Run("DELETE FROM text_gram WHERE id=(SELECT min(id) FROM text_gram)");
    ExpectFoundAndRepaired("the text index: message ");
}

TEST_F(TextDamageTest, DamagedPartsAreFound)
{
    Run("UPDATE text_gram SET slots=substr(slots, 1, length(slots) / 2)");
    ExpectFoundAndRepaired("the text index: message ");
}

TEST_F(TextDamageTest, WrongCountsAndBoundsAreFound)
{
    Run("UPDATE text_block SET rows=rows+1");
    ExpectFoundAndRepaired("the text index: block 1 counts 41 messages and has 40");
    Run("UPDATE text_block SET last=first");
    ExpectFoundAndRepaired("the text index: block 1 has 39 messages beyond its bounds");
}

// A text that changed without the index: what a missing trigger would leave.
TEST_F(TextDamageTest, AMissingTriggerIsFound)
{
    Run("DROP TRIGGER text_changed");
    EXPECT_FALSE(Store().Texts().IsOn());
    EXPECT_TRUE(Store().Texts().State().isForeign);
    ExpectFoundAndRepaired("the text index is incomplete or of another version: it is not used");
}

TEST_F(TextDamageTest, AMissingTableIsFound)
{
    Run("DROP TABLE text_waiting");
    ExpectFoundAndRepaired("the text index is incomplete or of another version: it is not used");
}

// The text of a message with an incomplete value cannot be compared: the index is not what is wrong, and stays.
TEST_F(TextDamageTest, AnIncompleteValueIsNotOfTheIndex)
{
    MessageContent content;
    content.properties.SetText(PR_BODY_W, std::string(50000, 'b'));
    Store().Messages().Create({Inbox, false}, content);
    Store().Texts().Complete(Silent());
    Run("DELETE FROM chunk WHERE id=(SELECT max(id) FROM chunk)");
    EXPECT_EQ(Problems(), std::vector<std::string>());
    RepairStore(Store(), Silent());
    EXPECT_EQ(Store().CheckWhole(), std::vector<std::string>());
    EXPECT_EQ(Problems(), std::vector<std::string>());
}

// The properties of a damaged message cannot be indexed; a search still comes across it.
TEST_F(TextDamageTest, DamagedMessagesStayCandidates)
{
    Run("UPDATE message SET props=substr(props, 1, length(props) - 1) || x'00' WHERE id=(SELECT min(id) FROM message)");
    Store().Texts().Complete(Silent());
    EXPECT_EQ(Number("SELECT count(*) FROM text_waiting"), 1);
    TextCondition condition;
    condition.tag = PR_BODY_W;
    condition.fuzzy = FL_SUBSTRING;
    condition.text = Wide(3, WCHAR('q'));
    Reopen();
    EXPECT_EQ(CodeOf([&] { Keys(condition, {Inbox, false}); }), MAPI_E_CORRUPT_DATA);
    Run("DELETE FROM message WHERE id=(SELECT min(id) FROM message); "
        "UPDATE contents SET rows=rows-1, unread=unread-1 WHERE rows=40");
    m_store.reset();
}

} // namespace
} // namespace zebstore::test
