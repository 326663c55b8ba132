// MAPI for the duration of one command.
#pragma once

#include "zebapi/ZebAPI.h"

#include <string>

namespace zeb::tools
{

/// Keeps MAPI initialised for the lifetime of the object. @throws ToolError when no provider is found or it cannot be
/// started
class HostMapi
{
public:
    HostMapi();
    ~HostMapi();
    HostMapi(const HostMapi&) = delete;
    HostMapi& operator=(const HostMapi&) = delete;
};

/// A session on a profile. All objects opened from it must be released before it is destroyed.
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

    /// The profile's default store, opened for writing when possible.
    CZebMsgStore OpenStore();

private:
    const std::string m_profile;
    HostMapi m_mapi;
    CZebSession m_session;
};

/// Reads an optional text property of a store, folder or message. @return the text, empty when the object does not have
/// it
std::string TextOf(CZebIProp& object, ULONG wideTag);
/// The same for a cell of a row.
std::string TextOf(const CZebRow& row, ULONG wideTag);
/// Reads an optional number of a cell. @return the number, 0 when the row does not have it
LONG NumberOf(const CZebRow& row, ULONG tag);

} // namespace zeb::tools
