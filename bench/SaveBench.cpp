// save-load: "zeb save" and "zeb load", against writing and reading the same JSON and inserting the same rows by hand.
#include "bench/Benches.h"
#include "bench/Process.h"
#include "bench/StoredMessages.h"
#include "bench/Stores.h"

#include <nlohmann/json.hpp>

#include <fstream>

namespace bench
{

namespace
{

struct SaveState
{
    ULONG count;
    std::string lines;       // the file that "zeb save" writes
    std::string linesByHand; // and the baseline
    std::string store;       // that "zeb load" fills
    std::string storeByHand;
    std::vector<nlohmann::json> values;
    std::unique_ptr<StoredMessages> rows;
};

double SaveAndLoad(SaveState& state)
{
    DeleteStore(state.store);
    MakeProfile("save-load", state.store);
    return Seconds([&]
    {
        RunTool({"zeb", "save", "Inbox", "--profile", "save", "-o", state.lines});
        RunTool({"zeb", "load", "--profile", "save-load", state.lines});
    });
}

void ReadResults(SaveState& state)
{
    std::ifstream file(state.lines, std::ios::binary);
    for (std::string line; std::getline(file, line);)
    {
        state.values.push_back(nlohmann::json::parse(line));
    }
    if (state.values.size() < state.count)
    {
        throw std::runtime_error("save-load: messages are missing in the file.");
    }
    state.rows = std::make_unique<StoredMessages>(state.store, state.count);
}

void WriteLines(const SaveState& state)
{
    std::ofstream file(state.linesByHand, std::ios::binary | std::ios::trunc);
    for (const nlohmann::json& value : state.values)
    {
        file << value.dump() << '\n';
    }
    if (!file.flush())
    {
        throw std::runtime_error("save-load: the file cannot be written.");
    }
}

void ReadLines(const SaveState& state)
{
    std::ifstream file(state.linesByHand, std::ios::binary);
    size_t read = 0;
    for (std::string line; std::getline(file, line); ++read)
    {
        Keep(nlohmann::json::parse(line).size());
    }
    if (read != state.values.size())
    {
        throw std::runtime_error("save-load: the file is not the one that was written.");
    }
}

double WriteReadInsert(SaveState& state)
{
    if (!state.rows)
    {
        ReadResults(state);
    }
    MakeStore("save-load", state.storeByHand);
    return Seconds([&]
    {
        WriteLines(state);
        ReadLines(state);
        state.rows->InsertInto(state.storeByHand);
    });
}

} // namespace

Measurement SaveLoad(const Options& options)
{
    auto state = std::make_shared<SaveState>();
    state->count = options.brief ? 1000 : 100000;
    state->lines = options.folder + "/save-ours.jsonl";
    state->linesByHand = options.folder + "/save-baseline.jsonl";
    state->store = options.folder + "/load-ours.zeb";
    state->storeByHand = options.folder + "/load-baseline.zeb";
    StoreOf source(options.folder, state->count);
    MakeProfile("save", source.Path());
    return {"save-load", 1.5, [state] { return SaveAndLoad(*state); }, [state] { return WriteReadInsert(*state); },
            options.brief ? 1 : 3};
}

} // namespace bench
