// zebbench [--folder DIR] [--short] [NAME...]: measures and prints "RATIO name value goal".
#include "bench/Benches.h"
#include "bench/Stores.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>

namespace
{

struct Entry
{
    const char* name;
    bench::Measurement (*make)(const bench::Options&);
};

const Entry Entries[] = {
    {"inbox-read", bench::InboxRead},
    {"value-read", bench::ValueRead},
    {"store-write", bench::StoreWrite},
    {"store-open", bench::StoreOpen},
    {"store-window", bench::StoreWindow},
    {"store-sort", bench::StoreSort},
    {"store-memory", bench::StoreMemory},
    {"value-text", bench::ValueText},
    {"array-build", bench::ArrayBuild},
    {"name-lookup", bench::NameLookup},
    {"eid-dump", bench::EidDump},
    {"store-notify", bench::StoreNotify},
    {"cached-scroll", bench::CachedScroll},
    {"cached-hit", bench::CachedHit},
    {"cached-random", bench::CachedRandom},
    {"ab-open", bench::AddressBookOpen},
    {"store-restrict", bench::StoreRestrict},
    {"load-growth", bench::LoadGrowth},
    {"attachments", bench::Attachments},
    {"restrict-wide", bench::RestrictWide},
    {"message-write", bench::MessageWrite},
    {"start-up", bench::StartUp},
    {"find-text", bench::SearchText},
    {"write-indexed", bench::WriteIndexed},
};

int Measure(const bench::Options& options, const std::vector<std::string>& names)
{
    bench::UseOwnRegistry(options.folder);
    Zeb_GetMAPI().Initialize(false);
    std::vector<bench::Outcome> outcomes;
    for (const Entry& entry : Entries)
    {
        if (!names.empty() && std::find(names.begin(), names.end(), entry.name) == names.end())
        {
            continue;
        }
        outcomes.push_back(bench::Run(entry.make(options)));
        bench::Print(outcomes.back());
    }
    Zeb_GetMAPI().Uninitialize(nullptr);
    bench::WriteJson(options.folder + "/results.json", outcomes);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app("Measures the library and the provider against hand-written baselines.");
    bench::Options options;
    options.folder = "build/bench";
    std::vector<std::string> known;
    for (const Entry& entry : Entries)
    {
        known.push_back(entry.name);
    }
    std::vector<std::string> names;
    app.add_option("--folder", options.folder, "The folder of stores and results");
    app.add_flag("--short", options.brief, "Small stores, few pairs: shows that it works");
    app.add_option("--texts", options.texts, "The messages of find-text, of 1 KB each (1,000,000 take 3 GB)");
    app.add_option("names", names, "The measurements to run; all by default")->check(CLI::IsMember(known));
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::ParseError& e)
    {
        return app.exit(e) == 0 ? 0 : 2;
    }
    if (options.brief)
    {
        options.folder += "/short";
    }
    try
    {
        return Measure(options, names);
    }
    catch (CException* failure)
    {
        std::fprintf(stderr, "zebbench: %s\n", static_cast<const char*>(Zeb_GetExceptionDescription(failure)));
        failure->Delete();
    }
    catch (const std::exception& failure)
    {
        std::fprintf(stderr, "zebbench: %s\n", failure.what());
    }
    return 1;
}
