// The properties of one object in the form in which the store keeps them.
#pragma once

#include "platform/mapi.h"
#include "zebstore/storage/LargeValue.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace zebstore
{

/// A look at one encoded value (see Encoding.h); valid while its set, blob or row lives.
struct EncodedValue
{
    ULONG tag = 0; ///< identifier and stored type; 0: no such property
    std::string_view bytes;
    const LargeValue* large = nullptr; ///< the value is there instead of in `bytes`

    explicit operator bool() const { return tag != 0; }
    ULONG Type() const { return PROP_TYPE(tag); }
};

/// Where values are looked up by property identifier: a set, a stored blob, a row of a table.
class ValueSource
{
public:
    virtual ~ValueSource() = default;
    /// The value of the property with the identifier of `tag`; the type of `tag` does not matter here.
    virtual EncodedValue Find(ULONG tag) const = 0;
    /// Tries the rows of a sub-table (PR_MESSAGE_RECIPIENTS, PR_MESSAGE_ATTACHMENTS) until `test` holds for one.
    /// @return whether one was found; false where there is no such table.
    virtual bool AnyOf(ULONG tag, const std::function<bool(const ValueSource&)>& test) const;
};

/// The properties of one object, at most one for each identifier, in the order of their identifiers.
///
/// A set copies what it is given. A value keeps the type with which it was written; a PT_STRING8 and a
/// PT_UNICODE tag find the same text. Narrow text is kept with its bytes and, where these are not what both
/// systems read alike, with its UTF-8 text: the bytes come back where they mean that text, the text converted
/// elsewhere. Copies share large values. Threads: none of its own.
class PropertySet : public ValueSource
{
public:
    struct Item
    {
        ULONG tag;
        std::string bytes;
        LargeValuePtr large;
    };

    bool IsEmpty() const { return m_items.empty(); }
    size_t Count() const { return m_items.size(); }
    const std::vector<Item>& Items() const { return m_items; }
    /// The tags with their stored types.
    std::vector<ULONG> Tags() const;

    EncodedValue Find(ULONG tag) const override;
    bool Has(ULONG tag) const { return static_cast<bool>(Find(tag)); }
    /// The value when it is held as a large one, else null.
    LargeValuePtr Large(ULONG tag) const;

    /// Sets or replaces one property (whatever type it had). PT_ERROR, PT_NULL, PT_OBJECT and PT_UNSPECIFIED
    /// are no values.
    /// @throws Error MAPI_E_INVALID_TYPE for these and unknown types, MAPI_E_INVALID_PARAMETER for a null text,
    ///   binary or array that claims to have content; the set is then as before.
    void Set(const SPropValue& value);
    /// Sets a PT_BINARY, PT_STRING8 or PT_UNICODE property to a value held elsewhere.
    void SetLarge(ULONG tag, LargeValuePtr value);
    /// @return false when there was none.
    bool Remove(ULONG tag);
    void Clear() { m_items.clear(); }

    /// Typed setters for the provider's own properties; `tag` must have the fitting type.
    void SetLong(ULONG tag, LONG value);
    void SetBool(ULONG tag, bool value);
    void SetTime(ULONG tag, const FILETIME& value);
    void SetBinary(ULONG tag, const void* bytes, size_t size);
    /// `utf8` becomes a PT_UNICODE value.
    void SetText(ULONG tag, std::string_view utf8);
    /// An encoded value as it is.
    void SetEncoded(ULONG tag, std::string_view bytes, LargeValuePtr large = nullptr);

    /// Typed readers; a missing value or another type gives the default. Text and binaries are read whole,
    /// also large ones.
    LONG Long(ULONG tag, LONG otherwise = 0) const;
    bool Bool(ULONG tag, bool otherwise = false) const;
    FILETIME Time(ULONG tag) const;
    std::string Binary(ULONG tag) const;
    /// As UTF-8, of PT_STRING8 and PT_UNICODE alike.
    std::string Text(ULONG tag) const;

private:
    std::vector<Item>::iterator Place(ULONG tag);
    std::vector<Item> m_items;
};

} // namespace zebstore
