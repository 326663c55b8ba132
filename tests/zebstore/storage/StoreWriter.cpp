// A process that saves messages until it dies in the middle of its work: store_writer STORE LOG MILLISECONDS.
// The number of each message whose save returned is appended to LOG.
#include "zebstore/storage/StoreFile.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

int main(int count, char** arguments)
{
    if (count != 4)
    {
        return 2;
    }
    try
    {
        const auto store = zebstore::StoreFile::Open(arguments[1], {});
        std::FILE* log = std::fopen(arguments[2], "ab");
        if (!log)
        {
            return 2;
        }
        const std::chrono::milliseconds life(std::atoi(arguments[3]));
        // Ends the process from aside, wherever the saving thread is, with nothing closed or written.
        std::thread([life]
        {
            std::this_thread::sleep_for(life);
            std::_Exit(9);
        }).detach();
        zebstore::MessageContent content;
        content.properties.SetText(PR_SUBJECT_W, "written");
        content.properties.SetEncoded(PR_BODY_W, std::string(20000, 'b'));
        content.recipients = std::vector<zebstore::PropertySet>{content.properties};
        for (;;)
        {
            const zebstore::MessageId message =
                store->Messages().Create({zebstore::IdOf(zebstore::StandardFolder::Inbox), false}, content);
            std::fprintf(log, "%lld\n", static_cast<long long>(message));
            std::fflush(log);
        }
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "store_writer: %s\n", error.what());
        return 1;
    }
}
