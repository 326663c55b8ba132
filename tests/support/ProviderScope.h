// Distinguishes the library's code from that of a double acting as provider.
#pragma once

#include "platform/mapi.h"

#include <optional>
#include <string>
#include <utility>

namespace zeb::test
{

/// While it lives, this thread runs a provider's code, or a host's: its allocations are exempt from simulated failures.
class ProviderScope
{
public:
    ProviderScope() { ++Depth(); }
    ~ProviderScope() { --Depth(); }
    ProviderScope(const ProviderScope&) = delete;
    ProviderScope& operator=(const ProviderScope&) = delete;

    static bool IsInside() { return Depth() != 0; }

private:
    static int& Depth()
    {
        static thread_local int depth = 0;
        return depth;
    }
};

/// What a call of a double returns in place of its own result.
struct ProviderAnswer
{
    HRESULT result = MAPI_E_NETWORK_ERROR;
    bool givesNothing = false; ///< with success: its objects, buffers and counts are null
    std::string text;          ///< of the extended error
};

/// While it lives, calls of doubles on this thread get `answer` after the next `after` ones; with
/// `once` only the first of those. One at a time.
class FailingCalls
{
public:
    FailingCalls(int after, bool once, ProviderAnswer answer = {})
    {
        The() = {after, once, false, false, std::move(answer)};
    }
    ~FailingCalls() { The() = {}; }
    FailingCalls(const FailingCalls&) = delete;
    FailingCalls& operator=(const FailingCalls&) = delete;

    bool HasFailed() const { return The().failed; }
    /// Whether a call has succeeded and not given the object that its caller asked for.
    bool HasWithheld() const { return The().withheld; }
    static void NoteWithheld() { The().withheld = true; }

    /// Counts a call. @return the answer it must get, if any
    static std::optional<ProviderAnswer> Next()
    {
        State& state = The();
        if (state.left != 0)
        {
            state.left -= state.left > 0 ? 1 : 0;
            return std::nullopt;
        }
        state.left = state.once ? -1 : 0;
        state.failed = true;
        return state.answer;
    }
    /// After an answer of an object that has no extended errors.
    static void ForgetText() { The().answer.text.clear(); }
    /// The text of the answer once it was given.
    static const std::string& Text()
    {
        static const std::string none;
        return The().failed ? The().answer.text : none;
    }

private:
    struct State
    {
        int left = -1; // none fails
        bool once = false;
        bool failed = false;
        bool withheld = false;
        ProviderAnswer answer;
    };
    static State& The()
    {
        static thread_local State state;
        return state;
    }
};

} // namespace zeb::test
