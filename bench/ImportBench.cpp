// import-mbox: "zeb-import mbox", against parsing the same file and inserting the same rows by hand. import-peer: the import and
// ten searches, against another local mail index.
#include "bench/Benches.h"
#include "bench/Mail.h"
#include "bench/Process.h"
#include "bench/StoredMessages.h"
#include "bench/Stores.h"

#include <gmime/gmime.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace bench
{

namespace
{

namespace fs = std::filesystem;

struct ObjectFree
{
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <class T>
using Object = std::unique_ptr<T, ObjectFree>;

struct MboxState
{
    ULONG count;
    std::string mbox;
    std::string store;
    std::string storeByHand;
    std::unique_ptr<StoredMessages> rows;
};

void WriteMbox(const std::string& path, ULONG count)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    MailWriter mail;
    for (ULONG i = 0; i < count; ++i)
    {
        file << "From sender@example.org Thu Jan  1 00:00:00 2026\n" << mail.Next() << '\n';
    }
    if (!file.flush())
    {
        throw std::runtime_error("'" + path + "' cannot be written.");
    }
}

double ImportByTool(MboxState& state)
{
    DeleteStore(state.store);
    MakeProfile("import", state.store);
    return Seconds([&] { RunTool({"zeb-import", "mbox", state.mbox, "--profile", "import"}); });
}

void ReadText(GMimeObject*, GMimeObject* part, gpointer)
{
    if (GMIME_IS_TEXT_PART(part))
    {
        char* const text = g_mime_text_part_get_text(GMIME_TEXT_PART(part));
        Keep(text != nullptr ? std::char_traits<char>::length(text) : 0);
        g_free(text);
    }
}

void ReadMessage(GMimeMessage* message)
{
    Keep(g_mime_message_get_subject(message) != nullptr ? 1 : 0);
    Keep(g_mime_message_get_message_id(message) != nullptr ? 1 : 0);
    Keep(g_mime_message_get_date(message) != nullptr ? 1 : 0);
    Keep(static_cast<unsigned>(internet_address_list_length(g_mime_message_get_from(message))));
    Keep(static_cast<unsigned>(internet_address_list_length(g_mime_message_get_to(message))));
    g_mime_message_foreach(message, &ReadText, nullptr);
}

size_t ParseMbox(const std::string& path)
{
    const Object<GMimeStream> stream(g_mime_stream_file_open(path.c_str(), "r", nullptr));
    const Object<GMimeParser> parser(g_mime_parser_new_with_stream(stream.get()));
    g_mime_parser_set_format(parser.get(), GMIME_FORMAT_MBOX);
    size_t parsed = 0;
    while (!g_mime_parser_eos(parser.get()))
    {
        const Object<GMimeMessage> message(g_mime_parser_construct_message(parser.get(), nullptr));
        if (message)
        {
            ReadMessage(message.get());
            ++parsed;
        }
    }
    return parsed;
}

double ImportByHand(MboxState& state)
{
    if (!state.rows)
    {
        state.rows = std::make_unique<StoredMessages>(state.store, state.count);
    }
    MakeStore("import", state.storeByHand);
    size_t parsed = 0;
    const double seconds = Seconds([&]
    {
        parsed = ParseMbox(state.mbox);
        state.rows->InsertInto(state.storeByHand);
    });
    if (parsed != state.count)
    {
        throw std::runtime_error("import-mbox: the parser found " + std::to_string(parsed) + " messages.");
    }
    return seconds;
}

struct PeerState
{
    std::string mail; // a Maildir
    std::string store;
    std::string peer; // the folder of the peer's index and settings
    std::vector<std::string> words;
};

void WriteMaildir(PeerState& state, ULONG count)
{
    fs::remove_all(state.mail);
    for (const char* folder : {"/cur", "/new", "/tmp"})
    {
        fs::create_directories(state.mail + folder);
    }
    MailWriter mail;
    for (ULONG i = 0; i < count; ++i)
    {
        std::ofstream(state.mail + "/cur/" + std::to_string(1500000000 + i) + ".M1.host:2,S", std::ios::binary)
            << mail.Next();
    }
    for (size_t rank = 1000; state.words.size() < 10; rank += 300)
    {
        state.words.push_back(mail.Words().At(rank));
    }
}

double ImportAndFind(PeerState& state)
{
    DeleteStore(state.store);
    MakeProfile("peer", state.store, "on");
    return Seconds([&]
    {
        RunTool({"zeb-import", "eml", state.mail, "--profile", "peer"});
        for (const std::string& word : state.words)
        {
            RunTool({"zeb", "find", "/", "-r", "--text", word, "--profile", "peer"});
        }
    });
}

double ImportAndFindByPeer(PeerState& state)
{
    fs::remove_all(state.peer);
    fs::create_directories(state.peer);
    const std::string settings = state.peer + "/config";
    std::ofstream(settings) << "[database]\npath=" << state.peer << "/index\nmail_root=" << state.mail
                            << "\n[new]\ntags=new\n[user]\nname=Ada\nprimary_email=ada@example.org\n";
    fs::create_directories(state.peer + "/index");
    setenv("NOTMUCH_CONFIG", settings.c_str(), 1);
    return Seconds([&]
    {
        RunTool({"notmuch", "new", "--quiet"});
        for (const std::string& word : state.words)
        {
            RunTool({"notmuch", "search", word});
        }
    });
}

} // namespace

Measurement ImportMbox(const Options& options)
{
    auto state = std::make_shared<MboxState>();
    state->count = options.brief ? 500 : 100000;
    state->mbox = options.folder + "/import.mbox";
    state->store = options.folder + "/import-ours.zeb";
    state->storeByHand = options.folder + "/import-baseline.zeb";
    g_mime_init();
    WriteMbox(state->mbox, state->count);
    return {"import-mbox", 1.25, [state] { return ImportByTool(*state); }, [state] { return ImportByHand(*state); },
            options.brief ? 1 : 3};
}

Measurement ImportPeer(const Options& options)
{
    auto state = std::make_shared<PeerState>();
    state->mail = fs::absolute(options.folder).string() + "/peer-mail";
    state->store = options.folder + "/peer-ours.zeb";
    state->peer = fs::absolute(options.folder).string() + "/peer-index";
    WriteMaildir(*state, options.brief ? 200 : 20000);
    return {"import-peer", 0.6, [state] { return ImportAndFind(*state); },
            [state] { return ImportAndFindByPeer(*state); }, options.brief ? 1 : 3};
}

} // namespace bench
