// MAPI for as long as one command needs it.
#pragma once

#include "zebapi/ZebAPI.h"

#include <string>

namespace zeb::tools
{

/// MAPI initialised, until the object goes. @throws ToolError when no provider is found or it does not start.
class HostMapi
{
public:
    HostMapi();
    ~HostMapi();
    HostMapi(const HostMapi&) = delete;
    HostMapi& operator=(const HostMapi&) = delete;
};

/// A session on a profile. Everything opened from it must be gone before it is.
class HostSession
{
public:
    /// @param profile UTF-8; empty: the default profile.
    /// @throws ToolError naming the profile
    explicit HostSession(const std::string& profile);
    ~HostSession();
    HostSession(const HostSession&) = delete;
    HostSession& operator=(const HostSession&) = delete;

    CZebSession& Session() { return m_session; }

    /// The profile's default store, opened for writing when it can be.
    CZebMsgStore OpenStore();

private:
    const std::string m_profile;
    HostMapi m_mapi;
    CZebSession m_session;
};

/// Reads a property of a store, folder or message that may be missing.
/// @return the text, empty when there is none.
std::string TextOf(CZebIProp& object, ULONG wideTag);
/// The same of a cell of a row.
std::string TextOf(const CZebRow& row, ULONG wideTag);

} // namespace zeb::tools
