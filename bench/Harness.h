// Ratios against a baseline, measured in interleaved pairs.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench
{

/// One measurement: the cost of the library or the provider relative to hand-written code with the same result.
struct Measurement
{
    std::string name;
    double goal;
    /// Runs once, and returns the seconds (or bytes) of the measured part.
    std::function<double()> ours;
    /// The baseline; when empty, the result of `ours` is the value itself.
    std::function<double()> baseline;
    /// The number of pairs; one more is run first and discarded.
    int pairs;
};

struct Outcome
{
    std::string name;
    double value;
    double goal;
    std::vector<double> ours;
    std::vector<double> baseline;
};

/// Runs the pairs ours, baseline, ours, baseline, ... and takes the median of the ratios of each pair.
Outcome Run(const Measurement& measurement);

/// Prints "RATIO name value goal".
void Print(const Outcome& outcome);

/// Writes all outcomes, with every single figure. @throws std::runtime_error naming the file
void WriteJson(const std::string& path, const std::vector<Outcome>& outcomes);

/// The duration of `body` in seconds.
double Seconds(const std::function<void()>& body);
/// The same of the fastest of `rounds` runs: for bodies so short that an interruption changes the ratio.
double FastestSeconds(int rounds, const std::function<void()>& body);

/// Keeps the compiler from dropping a computation whose result is not used.
void Keep(unsigned long long value);

/// Seconds of `rounds` times `read` with every item, whose results are added up and kept.
template <class Items, class Read>
double SecondsOfEach(int rounds, Items& items, const Read& read)
{
    return Seconds([&]
    {
        unsigned long long sum = 0;
        for (int round = 0; round < rounds; ++round)
        {
            for (auto& item : items)
            {
                sum += read(item);
            }
        }
        Keep(sum);
    });
}

} // namespace bench
