#include "zebstore/objects/MessageKeeper.h"

#include "zebstore/objects/Interfaces.h"

namespace zebstore
{

MessageKeeper::MessageKeeper(IUnknown* target)
    : m_message(Ask<OwnMessage>(target, OwnMessageId))
{
    if (m_message)
    {
        m_restore = m_message->DraftRestorer();
    }
}

MessageKeeper::~MessageKeeper()
{
    if (m_message)
    {
        m_restore();
    }
}

} // namespace zebstore
