// A message of this provider, as copies to it use it.
#pragma once

#include "zebstore/base/Object.h"

#include <functional>

namespace zebstore
{

/// Only this provider's messages answer to it, with OwnMessage: it identifies our own messages among those that a host
/// passes in.
constexpr IID OwnMessageId = {0x2E94C1F6, 0x8D03, 0x4B7A, {0xA5, 0x1C, 0x70, 0x3B, 0xD2, 0x48, 0x96, 0xEF}};

class OwnMessage : public IMessage
{
public:
    /// A call that gives the message its present unsaved changes back; valid once, while the message lives.
    virtual std::function<void()> DraftRestorer() = 0;

protected:
    ~OwnMessage() = default;
};

} // namespace zebstore
