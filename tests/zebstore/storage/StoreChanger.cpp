// A process that changes a store while others have it open: store_changer STORE COUNT. Of COUNT changes in all,
// messages are added to the inbox, changed there, moved to the sent items and deleted.
#include "zebstore/storage/StoreFile.h"

#include <cstdio>
#include <cstdlib>
#include <random>

using namespace zebstore;

namespace
{

MessageContent Content(std::mt19937& random)
{
    const auto number = static_cast<LONG>(random() % 100);
    MessageContent content;
    content.properties.SetText(PR_SUBJECT_W, "changed " + std::to_string(number % 7));
    content.properties.SetLong(PR_IMPORTANCE, number);
    return content;
}

void ChangeOnce(StoreFile& store, std::vector<MessageId>& mine, std::mt19937& random)
{
    constexpr FolderId Inbox = IdOf(StandardFolder::Inbox);
    if (mine.size() < 3 || random() % 3 == 0)
    {
        mine.push_back(store.Messages().Create({Inbox, false}, Content(random)));
        return;
    }
    MessageId& message = mine[random() % mine.size()];
    switch (random() % 3)
    {
    case 0:
        store.Messages().Save(message, Content(random), 0);
        return;
    case 1:
        message = store.Messages().Move(
            {message}, ContentsKey::Of(message).Folder() == Inbox ? IdOf(StandardFolder::SentItems) : Inbox)[0];
        return;
    default:
        store.Messages().Delete({message});
        std::swap(message, mine.back());
        mine.pop_back();
    }
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 3)
    {
        return 2;
    }
    try
    {
        const auto store = StoreFile::Open(arguments[1], {});
        std::vector<MessageId> mine;
        std::mt19937 random(7);
        for (int left = std::atoi(arguments[2]); left > 0; --left)
        {
            ChangeOnce(*store, mine, random);
        }
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "store_changer: %s\n", error.what());
        return 1;
    }
}
