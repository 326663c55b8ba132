// Which sequences of three characters the texts of a message have.
#pragma once

#include "zebstore/storage/PropertySet.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace zebstore
{

/// Three consecutive code points of a widest folded text and the field in which they are, as a hash. Different ones may
/// share a hash: what the index finds is only a candidate.
using Gram = std::uint32_t;

/// What is searched apart from each other.
enum class TextField
{
    Subject,
    Sender, ///< names and addresses of the sender and of the author
    Recipient,
    Body
};

/// The field that a property of a message is indexed in; nothing for one that is not.
std::optional<TextField> TextFieldOf(ULONG tag);
/// The same for a property of a recipient.
std::optional<TextField> RecipientFieldOf(ULONG tag);

/// The grams of a text that is searched for; empty for one of less than three characters. A long text gives only some.
std::vector<Gram> GramsWanted(TextField field, std::string_view stored);

/// Gathers the grams of one message, each once.
class GramSet
{
public:
    GramSet();

    /// The indexed properties of a message or, as `fieldOf` tells, of a recipient.
    void Add(const ValueSource& values, bool ofRecipient);
    /// True when the index cannot tell whether the message fits, so it is always looked at: one of its texts is very
    /// long, or reads differently on each system.
    bool IsOpen() const { return m_isOpen; }
    const std::vector<Gram>& Grams() const { return m_grams; }
    /// For the next message.
    void Clear();

private:
    void AddValue(TextField field, const EncodedValue& value);
    void AddText(TextField field, std::string_view stored);
    void Insert(Gram gram);
    void Grow();

    std::vector<Gram> m_grams;
    std::vector<Gram> m_table; ///< open addressing, 0: free
    bool m_isOpen = false;
};

} // namespace zebstore
