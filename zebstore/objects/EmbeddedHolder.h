// An attachment as the message inside it uses it.
#pragma once

#include "zebstore/storage/MessageContent.h"

#include <memory>

namespace zebstore
{

/// The attachment that holds an embedded message.
class EmbeddedHolder
{
public:
    /// The attachment as its callers see it; the embedded message holds a reference on it.
    virtual IAttach* HolderInterface() = 0;
    /// Takes over the saved embedded message.
    virtual void PutEmbedded(std::shared_ptr<MessageContent> content) = 0;

protected:
    ~EmbeddedHolder() = default;
};

} // namespace zebstore
