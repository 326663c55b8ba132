#include "bench/Harness.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace bench
{

namespace
{

std::atomic<unsigned long long> g_kept{0};

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 != 0 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

} // namespace

Outcome Run(const Measurement& measurement)
{
    Outcome outcome{measurement.name, 0, measurement.goal, {}, {}};
    std::vector<double> ratios;
    for (int pair = -1; pair < measurement.pairs; ++pair)
    {
        const double ours = measurement.ours();
        const double baseline = measurement.baseline ? measurement.baseline() : 1;
        if (pair < 0)
        {
            continue;
        }
        outcome.ours.push_back(ours);
        outcome.baseline.push_back(baseline);
        ratios.push_back(ours / baseline);
    }
    outcome.value = Median(ratios);
    return outcome;
}

void Print(const Outcome& outcome)
{
    std::printf("RATIO %s %.4g %.4g\n", outcome.name.c_str(), outcome.value, outcome.goal);
    std::fflush(stdout);
}

void WriteJson(const std::string& path, const std::vector<Outcome>& outcomes)
{
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const Outcome& outcome : outcomes)
    {
        list.push_back({{"name", outcome.name},
                        {"value", outcome.value},
                        {"goal", outcome.goal},
                        {"met", outcome.value <= outcome.goal},
                        {"ours", outcome.ours},
                        {"baseline", outcome.baseline}});
    }
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << list.dump(2) << '\n';
    file.close();
    if (!file)
    {
        throw std::runtime_error("The results could not be written to '" + path + "'.");
    }
}

double Seconds(const std::function<void()>& body)
{
    const auto begin = std::chrono::steady_clock::now();
    body();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

double FastestSeconds(int rounds, const std::function<void()>& body)
{
    double fastest = Seconds(body);
    for (int i = 1; i < rounds; ++i)
    {
        fastest = std::min(fastest, Seconds(body));
    }
    return fastest;
}

void Keep(unsigned long long value)
{
    g_kept.fetch_add(value, std::memory_order_relaxed);
}

} // namespace bench
