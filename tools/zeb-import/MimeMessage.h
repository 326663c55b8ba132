// Internet mail as a message with MAPI properties.
#pragma once

#include "tools/common/PropertyWriter.h"

#include <gmime/gmime.h>

#include <memory>

namespace zeb::tools
{

struct Unref
{
    void operator()(void* object) const { g_object_unref(object); }
};
/// A counted GMime object.
template <typename T>
using GRef = std::unique_ptr<T, Unref>;

/// Starts GMime; once a process.
void StartMime();

/// Turns a parsed message into properties: class, subject, sender, recipients, dates, identifiers, transport headers,
/// plain and HTML text, attachments.
MessageContent ContentOfMime(GMimeMessage* message);

} // namespace zeb::tools
