// Measuring how long a scope takes.
#pragma once

#include <chrono>
#include <functional>

/// Measures from construction to destruction and hands name and seconds to the reporter, when there is one.
class CTimeProfile
{
public:
    using Reporter = std::function<void(const char* name, double seconds)>;

    /// @param name outlives the object; null counts as empty
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
    const char* m_name; // not a copy, for which there may be no memory
    std::chrono::steady_clock::time_point m_start;
};
