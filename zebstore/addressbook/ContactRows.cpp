#include "zebstore/addressbook/ContactRows.h"

#include "zebstore/addressbook/AddressValues.h"
#include "zebstore/addressbook/Contacts.h"
#include "zebstore/storage/PropertyBlob.h"
#include "zebstore/storage/RowParts.h"
#include "zebstore/storage/RowSelection.h"

namespace zebstore
{
namespace
{

constexpr ContentsKey Contents(IdOf(StandardFolder::Contacts), false);
constexpr RowKey RowsOfMessage = 4; ///< keys reserved for each message: one for each address, and one for lists
constexpr RowKey ListRow = 3;

class ContactValues final : public ValueSource
{
public:
    ContactValues(const StoreContext& store, const ContactTags& tags, const AddressName& contact,
                  const ValueSource& message)
        : m_store(store)
        , m_tags(tags)
        , m_contact(contact)
        , m_message(message)
    {
    }

    EncodedValue Find(ULONG tag) const override
    {
        const auto compute = [&](PropertySet& made)
        { return ComputeContact(m_store, m_tags, m_contact, m_message, tag, made); };
        if (const auto value = m_made.Find(tag, compute))
        {
            return *value;
        }
        return HasId(ComputedContactTags(), tag) ? EncodedValue() : m_message.Find(tag);
    }

private:
    const StoreContext& m_store;
    const ContactTags& m_tags;
    const AddressName& m_contact;
    const ValueSource& m_message;
    mutable ComputedValues m_made;
};

class ContactRows final : public RowSource
{
public:
    explicit ContactRows(const StorePtr& store)
        : m_context(store)
        , m_store(store->SharedFile())
    {
    }

    /// Only a message's properties tell whether it is a contact and how many addresses it has: all messages are read,
    /// once for each change of the folder.
    ULONG Count() override { return static_cast<ULONG>(AllKeys().size()); }

    std::uint64_t Generation() override { return m_store->Contents().Generation(Contents); }

    std::vector<RowKey> Keys(const Restriction* restriction, const SortOrder* order) override
    {
        if (restriction == nullptr && (order == nullptr || order->IsEmpty()))
        {
            return AllKeys();
        }
        RowSelection selection(restriction, order);
        Walk(std::nullopt, [&](RowKey key, const ValueSource& values)
        {
            selection.Add(key, values);
            return true;
        });
        return selection.Take();
    }

    std::vector<RowKey> KeysAfter(std::optional<RowKey> after, size_t count) override
    {
        std::vector<RowKey> keys;
        if (count == 0)
        {
            return keys;
        }
        Walk(after, [&](RowKey key, const ValueSource&)
        {
            keys.push_back(key);
            return keys.size() < count;
        });
        return keys;
    }

    void Read(const RowKey* keys, size_t count, const Visitor& visit) override
    {
        const std::lock_guard hold(m_store->Lock());
        const ReadScope snapshot(m_store->Connection().Db());
        const ContactTags& tags = Tags();
        const PropertySet none;
        Query query(m_store->Connection().Db(), "SELECT props FROM message WHERE id=?");
        for (size_t i = 0; i < count; ++i)
        {
            const MessageId message = MessageOf(keys[i]);
            bool shown = false;
            if (query.Bind(1, message).Step())
            {
                const PropertyBlob blob(query.Bytes(0), m_store->Connection());
                for (const AddressName& contact : ContactsIn(tags, message, blob))
                {
                    if (!shown && KeyOf(contact) == keys[i])
                    {
                        visit(i, ContactValues(*m_context, tags, contact, blob));
                        shown = true;
                    }
                }
            }
            if (!shown)
            {
                visit(i, none);
            }
            query.Reset();
        }
    }

    std::vector<ULONG> DefaultColumns() override { return ComputedContactTags(); }

    std::vector<ULONG> AllColumns() override
    {
        std::vector<ULONG> columns = ComputedContactTags();
        for (const ULONG tag :
             {PR_GIVEN_NAME_W, PR_SURNAME_W, PR_COMPANY_NAME_W, PR_BUSINESS_TELEPHONE_NUMBER_W,
              PR_MOBILE_TELEPHONE_NUMBER_W, PR_HOME_TELEPHONE_NUMBER_W, PR_TITLE_W, PR_DEPARTMENT_NAME_W})
        {
            columns.push_back(tag);
        }
        return columns;
    }

private:
    static RowKey KeyOf(const AddressName& contact)
    {
        const RowKey number = contact.key - Contents.FirstMessage();
        const bool list = contact.kind == AddressKind::ContactList;
        return number * RowsOfMessage + (list ? ListRow : static_cast<RowKey>(contact.index));
    }

    static MessageId MessageOf(RowKey key) { return Contents.FirstMessage() + key / RowsOfMessage; }

    // A named property gets its identifier with the first contact that uses it: the identifiers are valid until the
    // folder changes.
    const ContactTags& Tags()
    {
        const std::uint64_t generation = Generation();
        if (m_tagsOf != generation)
        {
            m_tags = ContactTagsOf(*m_store);
        }
        m_tagsOf = generation;
        return m_tags;
    }

    const std::vector<RowKey>& AllKeys()
    {
        const std::lock_guard hold(m_store->Lock());
        const ReadScope snapshot(m_store->Connection().Db());
        const std::uint64_t generation = Generation();
        if (m_keysOf == generation)
        {
            return m_keys;
        }
        m_keys.clear();
        Walk(std::nullopt, [&](RowKey key, const ValueSource&)
        {
            m_keys.push_back(key);
            return true;
        });
        m_keysOf = generation;
        return m_keys;
    }

    /// Visits the rows after `after` in order until `visit` returns false.
    template <class Visit>
    void Walk(std::optional<RowKey> after, Visit&& visit)
    {
        const std::lock_guard hold(m_store->Lock());
        const ReadScope snapshot(m_store->Connection().Db());
        const ContactTags& tags = Tags();
        Query query(m_store->Connection().Db(), "SELECT id, props FROM message WHERE id BETWEEN ? AND ? ORDER BY id");
        query.Bind(1, after ? MessageOf(*after) : Contents.FirstMessage());
        query.Bind(2, Contents.LastMessage());
        while (query.Step())
        {
            const PropertyBlob blob(query.Bytes(1), m_store->Connection());
            for (const AddressName& contact : ContactsIn(tags, query.Number(0), blob))
            {
                if ((!after || KeyOf(contact) > *after) &&
                    !visit(KeyOf(contact), ContactValues(*m_context, tags, contact, blob)))
                {
                    return;
                }
            }
        }
    }

    const StorePtr m_context;
    const std::shared_ptr<StoreFile> m_store;
    ContactTags m_tags;
    std::uint64_t m_tagsOf = 0;
    std::vector<RowKey> m_keys;
    std::uint64_t m_keysOf = 0;
};

} // namespace

std::shared_ptr<RowSource> MakeContactRows(const StorePtr& store)
{
    return std::make_shared<ContactRows>(store);
}

} // namespace zebstore
