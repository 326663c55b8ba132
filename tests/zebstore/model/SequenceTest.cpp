// Random sequences of operations on a store, by two sessions, against the model; one that differs is made shorter and printed.
//
// ZEB_MODEL in the environment is the number of sequences, ZEB_MODEL_SEED the seed of the first one.
#include "tests/support/Count.h"
#include "tests/zebstore/model/Sequences.h"
#include "tests/zebstore/model/World.h"

#include <chrono>

namespace zebstore::model
{
namespace
{

constexpr size_t Length = 80;
constexpr auto LongestShrinking = std::chrono::seconds(120);

struct Outcome
{
    size_t done = 0;
    std::string difference; ///< empty: none
    std::vector<std::string> log;
};

Outcome Play(unsigned seed, const std::vector<Operation>& operations)
{
    const Words words(seed);
    Outcome outcome;
    World world(words);
    try
    {
        for (; outcome.done < operations.size(); ++outcome.done)
        {
            world.Run(operations[outcome.done]);
        }
        world.CompareAll();
    }
    catch (const Difference& difference)
    {
        outcome.difference = difference.what();
    }
    outcome.log = world.Log();
    return outcome;
}

// Leaves out halves, quarters, ... and single operations for as long as what is left differs too.
std::vector<Operation> Shortest(unsigned seed, std::vector<Operation> operations)
{
    const auto end = std::chrono::steady_clock::now() + LongestShrinking;
    for (size_t part = operations.size() / 2; part > 0;)
    {
        bool isShorter = false;
        for (size_t at = 0; at < operations.size() && std::chrono::steady_clock::now() < end;)
        {
            std::vector<Operation> fewer = operations;
            const auto from = fewer.begin() + static_cast<std::ptrdiff_t>(at);
            fewer.erase(from, from + static_cast<std::ptrdiff_t>(std::min(part, fewer.size() - at)));
            if (Play(seed, fewer).difference.empty())
            {
                at += part;
            }
            else
            {
                operations = fewer;
                isShorter = true;
            }
        }
        part = isShorter && part == 1 && std::chrono::steady_clock::now() < end ? 1 : part / 2;
    }
    return operations;
}

std::string Printed(unsigned seed, std::vector<Operation> operations, const Outcome& outcome)
{
    operations.resize(std::min(operations.size(), outcome.done + 1));
    const std::vector<Operation> shortest = Shortest(seed, operations);
    const Outcome again = Play(seed, shortest);
    std::string text = "sequence " + std::to_string(seed) + " differs after " + std::to_string(outcome.done) +
                       " operations: " + outcome.difference + "\nshortened to " + std::to_string(shortest.size()) +
                       ":\n";
    for (const std::string& line : again.log)
    {
        text += "  " + line + "\n";
    }
    return text + again.difference + "\nreplay it with ZEB_MODEL=1 ZEB_MODEL_SEED=" + std::to_string(seed);
}

TEST(ModelSequences, TheStoreIsWhatTheModelIs)
{
    long operations = 0;
    long differences = 0;
    for (unsigned seed = FirstSeed(); seed < FirstSeed() + static_cast<unsigned>(Sequences()); ++seed)
    {
        // For the case that this one crashes.
        std::printf("sequence %u\n", seed);
        std::fflush(stdout);
        const std::vector<Operation> sequence = RandomSequence(seed, Length);
        const Outcome outcome = Play(seed, sequence);
        operations += static_cast<long>(outcome.done);
        if (!outcome.difference.empty())
        {
            ++differences;
            ADD_FAILURE() << Printed(seed, sequence, outcome);
            break;
        }
    }
    zeb::test::PrintCount("operations", operations);
    zeb::test::PrintCount("differences", differences);
}

} // namespace
} // namespace zebstore::model
