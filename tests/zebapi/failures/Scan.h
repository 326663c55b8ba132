// Runs a call again and again, each time with another thing failing on its way.
#pragma once

#include "framework/ComError.h"
#include "tests/support/FailingNew.h"
#include "tests/support/FailingSystem.h"
#include "tests/support/MapiMemory.h"
#include "tests/support/ProviderScope.h"
#include "zebapi/Exception.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <optional>
#include <string>

namespace zeb::test
{

/// One operation of the library as a host calls it. `World` holds what it is called on.
template <class World>
struct Call
{
    /// As the library exports it, without its parameters: "CZebRow::Count", "CZebBinary::operator type".
    const char* name;
    void (*body)(World& world);
};

/// What can fail on the way of a call.
enum class Kind
{
    AnAllocation,   ///< one block of `new` or of the memory that strings and containers share
    AllMemory,      ///< every such block from one on
    MapiAllocation, ///< one block of MAPI's
    AProviderCall,  ///< one call of an object of the provider's, by MAPI_E_NETWORK_ERROR
    AProviderWarning,
    AProviderMemory,
    AnUnknownResult,
    AProviderText, ///< one call, with an extended error
    AnEmptyResult, ///< one call, which succeeds and gives nothing
    EveryProviderCall,
    ASystemCall, ///< one call of the operating system
    EverySystemCall,
};

inline const char* KindName(Kind kind)
{
    static const char* const names[] = {"an allocation",
                                        "all memory",
                                        "a MAPI allocation",
                                        "a provider call",
                                        "a provider call with a warning",
                                        "a provider call without memory",
                                        "a provider call with an unknown result",
                                        "a provider call with an extended error",
                                        "a provider call that gives nothing",
                                        "every provider call",
                                        "a system call",
                                        "every system call"};
    return names[static_cast<int>(kind)];
}

inline ProviderAnswer AnswerOf(Kind kind)
{
    switch (kind)
    {
    case Kind::AProviderWarning:
        return {MAPI_W_ERRORS_RETURNED, false, ""};
    case Kind::AProviderMemory:
        return {E_OUTOFMEMORY, false, ""};
    case Kind::AnUnknownResult:
        return {static_cast<HRESULT>(0x8BADF00D), false, ""};
    case Kind::AProviderText:
        return {MAPI_E_EXTENDED_ERROR, false, "The store's server says no"};
    case Kind::AnEmptyResult:
        return {S_OK, true, ""};
    default:
        return {};
    }
}

/// Lets one thing fail for its lifetime: of its kind the one after the next `after`.
class Failing
{
public:
    Failing(Kind kind, int after, MapiMemory* memory)
        : m_memory(memory)
    {
        switch (kind)
        {
        case Kind::AnAllocation:
        case Kind::AllMemory:
            m_new.emplace(after, kind == Kind::AnAllocation);
            break;
        case Kind::MapiAllocation:
            m_memory->FailOwnAllocation(static_cast<size_t>(after) + 1);
            break;
        case Kind::ASystemCall:
        case Kind::EverySystemCall:
            m_system.emplace(after, kind == Kind::ASystemCall);
            break;
        default:
            m_calls.emplace(after, kind != Kind::EveryProviderCall, AnswerOf(kind));
            break;
        }
    }

    /// Whether it has come to the failure.
    bool HasFailed() const
    {
        return m_new      ? m_new->HasFailed()
               : m_calls  ? m_calls->HasFailed()
               : m_system ? m_system->HasFailed()
                          : m_memory->HasFailedOwn();
    }

    /// Whether a call of the provider has failed, or has not given what it was asked for: the host must get an exception
    /// or the log a line.
    bool MustBeHeard(Kind kind) const
    {
        switch (kind)
        {
        case Kind::AProviderCall:
        case Kind::AProviderMemory:
        case Kind::AnUnknownResult:
        case Kind::AProviderText:
            return m_calls->HasFailed();
        case Kind::AnEmptyResult:
            return m_calls->HasWithheld();
        default:
            return false;
        }
    }

private:
    MapiMemory* m_memory;
    std::optional<FailingNew> m_new;
    std::optional<FailingCalls> m_calls;
    std::optional<FailingSystem> m_system;
};

/// What the host hears of a failure by the CZebException that left a call.
struct Heard
{
    HRESULT result = S_OK; ///< S_OK when none left
    std::string text;
};

/// Whether the host has heard of a provider's failure: by an exception with its result and its text, or in the log.
/// @param text of the failure
inline bool WasHeard(const ProviderAnswer& answer, const std::string& text, const Heard& heard, bool wasLogged)
{
    if (heard.result == S_OK)
    {
        return wasLogged;
    }
    return (answer.givesNothing || heard.result == answer.result) && heard.text.find(text) != std::string::npos;
}

/// What left a call: empty for nothing and for what may leave the library, else its
/// description. What was caught is deleted.
template <class World>
std::string UnstatedException(const Call<World>& call, World& world, Heard& heard)
{
    try
    {
        call.body(world);
    }
    catch (CZebException* exception)
    {
        const ProviderScope host;
        heard = {exception->GetResult(), Zeb_GetExceptionDescription(exception).GetString()};
        exception->Delete();
    }
    catch (const _com_error& error)
    {
        if (error.Error() != E_POINTER)
        {
            return "a _com_error " + std::to_string(error.Error());
        }
    }
    catch (const std::bad_alloc&)
    {
        return "std::bad_alloc";
    }
    catch (const std::exception& error)
    {
        return std::string("a standard exception: ") + error.what();
    }
    catch (CException* exception)
    {
        exception->Delete();
        return "another CException";
    }
    catch (...)
    {
        return "something unknown";
    }
    return "";
}

/// A world that nothing has failed in: a new one, or where that takes long the old one, cleaned up.
template <class World>
World& NextWorld(std::optional<World>& world)
{
    if (World::TakesLong && world)
    {
        world->CleanUp();
        return *world;
    }
    world.reset(); // before there is another
    return world.emplace();
}

/// Runs `call` with the first, the second... thing of `kind` failing until nothing fails any more; each time on a world
/// that nothing has failed in, and once more afterwards on what the failure left of it.
/// @return how often something failed
template <class World>
int Scan(const Call<World>& call, Kind kind)
{
    constexpr int Limit = 5000;
    std::optional<World> own;
    for (int after = 0; after < Limit; ++after)
    {
        World& world = NextWorld(own);
        bool failed = false;
        std::string unstated;
        bool mustBeHeard = false;
        std::string text;
        Heard heard;
        const size_t lines = world.LogLines();
        {
            const Failing failing(kind, after, world.Memory());
            unstated = UnstatedException(call, world, heard);
            failed = failing.HasFailed();
            mustBeHeard = failing.MustBeHeard(kind);
            text = FailingCalls::Text();
        }
        if (mustBeHeard)
        {
            EXPECT_TRUE(WasHeard(AnswerOf(kind), text, heard, world.LogLines() > lines))
                << call.name << " with " << KindName(kind) << " failing after " << after << " says nothing of it";
        }
        EXPECT_EQ(unstated, "") << call.name << " with " << KindName(kind) << " failing after " << after;
        if (!failed)
        {
            return after;
        }
        EXPECT_EQ(UnstatedException(call, world, heard), "")
            << call.name << " again after " << KindName(kind) << " failed after " << after;
    }
    ADD_FAILURE() << call.name << " never ends with " << KindName(kind) << " failing";
    return Limit;
}

} // namespace zeb::test
