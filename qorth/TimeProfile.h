// Measuring how long a scope takes.
#pragma once

#include <chrono>
#include <functional>
#include <string>

/// Measures from construction to destruction and hands name and seconds to the reporter, when there is one.
class CTimeProfile
{
public:
    using Reporter = std::function<void(const char* name, double seconds)>;

    explicit CTimeProfile(const char* name);
    ~CTimeProfile();
    CTimeProfile(const CTimeProfile&) = delete;
    CTimeProfile& operator=(const CTimeProfile&) = delete;

    /// Seconds since construction.
    double Elapsed() const;

    /// Who hears of every measured scope, from the thread that leaves it; an empty one hears nothing, which
    /// is how a process starts.
    static void SetReporter(Reporter reporter);

private:
    std::string m_name;
    std::chrono::steady_clock::time_point m_start;
};
