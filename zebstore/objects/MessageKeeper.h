// Keeps the unsaved changes of a message while a call changes it.
#pragma once

#include "zebstore/objects/OwnMessage.h"

#include <functional>

namespace zebstore
{

/// Restores a message of this provider to its state before a copy, unless the copy was completed.
class MessageKeeper
{
public:
    explicit MessageKeeper(IUnknown* target);
    ~MessageKeeper();
    MessageKeeper(const MessageKeeper&) = delete;
    MessageKeeper& operator=(const MessageKeeper&) = delete;
    void Done() { m_message = {}; }

private:
    Ref<OwnMessage> m_message;
    std::function<void()> m_restore;
};

} // namespace zebstore
