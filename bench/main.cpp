// zebbench [--folder DIR] [--short] [NAME...]: measures and prints "RATIO name value goal".
#include "bench/Entries.h"
#include "bench/Stores.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>

namespace
{

using bench::Entries;
using bench::Entry;
using bench::Group;

bool IsChosen(const Entry& entry, Group group, const std::vector<std::string>& names)
{
    return names.empty() ? entry.group == group : std::find(names.begin(), names.end(), entry.name) != names.end();
}

int Measure(const bench::Options& options, Group group, const std::vector<std::string>& names)
{
    bench::UseOwnRegistry(options.folder);
    Zeb_GetMAPI().Initialize(false);
    std::vector<bench::Outcome> outcomes;
    for (const Entry& entry : Entries)
    {
        if (IsChosen(entry, group, names))
        {
            outcomes.push_back(bench::Run(entry.make(options)));
            bench::Print(outcomes.back());
        }
    }
    Zeb_GetMAPI().Uninitialize(nullptr);
    const std::string kind = group == Group::Huge ? "-huge" : group == Group::Peers ? "-peers" : bench::UsualKind;
    bench::WriteJson(options.folder + "/results" + kind + ".json", outcomes);
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
    bool huge = false, peers = false;
    app.add_option("--folder", options.folder, "The folder of stores and results");
    app.add_flag("--short", options.brief, "Small stores, few pairs: shows that it works");
    app.add_option("--texts", options.texts, "The messages of find-text, of 1 KB each (1,000,000 take 3 GB)");
    app.add_flag("--huge", huge, "The measurements of 10,000,000 messages (3.3 GB) instead");
    app.add_flag("--peers", peers, "The measurements against other programs instead");
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
        return Measure(options, huge ? Group::Huge : peers ? Group::Peers : Group::Usual, names);
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
