// load-growth: the tool "zeb load" fed with messages through a pipe, its last tenth against its first.
#include "bench/Benches.h"
#include "bench/Stores.h"

#include "platform/module.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <stdexcept>

namespace bench
{

namespace
{

using Clock = std::chrono::steady_clock;

const char* const Words[] = {"budget", "meeting", "contract", "draft", "schedule", "review", "invoice", "travel"};

/// One message as the tool reads it.
std::string LineOf(ULONG number)
{
    const ULONG mixed = number * 2654435761u;
    const unsigned long long date = 132000000000000000ull + mixed * 10000000ull;
    char text[1024];
    std::snprintf(text, sizeof(text),
                  "{\"folder\":\"Inbox\",\"properties\":{\"PR_SUBJECT\":\"%s %s of week %u (%08x)\","
                  "\"PR_MESSAGE_CLASS\":\"IPM.Note\",\"PR_SENDER_NAME\":\"Sender %u\","
                  "\"PR_SENDER_EMAIL_ADDRESS\":\"sender%u@example.org\",\"PR_DISPLAY_TO\":\"Everybody\","
                  "\"PR_MESSAGE_DELIVERY_TIME\":\"0x%016llX\",\"PR_CLIENT_SUBMIT_TIME\":\"0x%016llX\","
                  "\"PR_IMPORTANCE\":%u,\"PR_MESSAGE_FLAGS\":%u,\"0x1035001F\":\"<%08x.%08x@example.org>\","
                  "\"PR_SEARCH_KEY\":\"%08X%08X\",\"PR_BODY\":\"The %s is attached. Please read it.\"}}\n",
                  Words[mixed >> 29], Words[(mixed >> 26) & 7], mixed % 53, number, mixed % 97, mixed % 97, date, date,
                  mixed % 3, mixed & 1, number, mixed, number, mixed, Words[(mixed >> 23) & 7]);
    return text;
}

/// The tool, reading its messages from us.
class Loader
{
public:
    explicit Loader(const std::string& profile)
    {
        std::signal(SIGPIPE, SIG_IGN);
        const std::string command =
            "'" + zeb::platform::OwnFolder() + "zeb' load --profile " + profile + " /dev/stdin >/dev/null";
        m_pipe = popen(command.c_str(), "w");
        if (!m_pipe)
        {
            throw std::runtime_error("zeb cannot be started.");
        }
    }
    ~Loader()
    {
        if (m_pipe)
        {
            pclose(m_pipe);
        }
    }
    Loader(const Loader&) = delete;
    Loader& operator=(const Loader&) = delete;

    void Write(const std::string& line)
    {
        if (std::fwrite(line.data(), 1, line.size(), m_pipe) != line.size())
        {
            throw std::runtime_error("zeb load ended early.");
        }
    }
    /// Waits until everything is in the store.
    void Finish()
    {
        const int status = pclose(m_pipe);
        m_pipe = nullptr;
        if (status != 0)
        {
            throw std::runtime_error("zeb load failed.");
        }
    }

private:
    FILE* m_pipe = nullptr;
};

struct LoadState
{
    std::string path;
    ULONG count;
    bool isWarm = false;
    double first = 0, last = 0;
};

/// Loads all messages into a new store and measures the first and the last tenth. The content of the pipe is small
/// compared to a tenth.
void LoadAll(LoadState& state, ULONG count)
{
    DeleteStore(state.path);
    MakeProfile("load", state.path);
    const ULONG tenth = count / 10;
    const auto since = [](Clock::time_point begin)
    { return std::chrono::duration<double>(Clock::now() - begin).count(); };
    auto begin = Clock::now();
    Loader loader("load");
    for (ULONG number = 0; number < count; ++number)
    {
        loader.Write(LineOf(number));
        if (number + 1 == tenth)
        {
            state.first = since(begin);
        }
        if (number + 1 == count - tenth)
        {
            begin = Clock::now();
        }
    }
    loader.Finish();
    state.last = since(begin);
    DeleteStore(state.path);
}

} // namespace

Measurement LoadGrowth(const Options& options)
{
    auto state = std::make_shared<LoadState>();
    state->path = options.folder + "/load.zeb";
    state->count = options.brief ? 5000 : 1000000;
    return {"load-growth", 1.2, [state]
    {
        // The first pair only warms up.
        LoadAll(*state, state->isWarm ? state->count : 5000);
        state->isWarm = true;
        return state->last;
    }, [state] { return state->first; }, options.brief ? 1 : 3};
}

} // namespace bench
