// Measuring how long a scope takes.
#pragma once

#include <chrono>
#include <functional>

/// Measures from construction to destruction and passes name and seconds to the reporter, if one is set.
class CTimeProfile
{
public:
    using Reporter = std::function<void(const char* name, double seconds)>;

    /// @param name must outlive the object; null counts as empty
    explicit CTimeProfile(const char* name);
    ~CTimeProfile();
    CTimeProfile(const CTimeProfile&) = delete;
    CTimeProfile& operator=(const CTimeProfile&) = delete;

    /// Seconds since construction.
    double Elapsed() const;

    /// Sets the reporter of all measured scopes, called on the thread that leaves the scope; empty (the default)
    /// reports nothing.
    static void SetReporter(Reporter reporter);

private:
    const char* m_name; // not a copy: there may be no memory for it
    std::chrono::steady_clock::time_point m_start;
};
