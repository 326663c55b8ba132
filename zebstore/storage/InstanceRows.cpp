#include "zebstore/storage/InstanceRows.h"

#include "zebstore/storage/Encoding.h"
#include "zebstore/storage/InstanceTag.h"
#include "zebstore/storage/RowSelection.h"

#include <algorithm>

namespace zebstore
{

namespace
{

ULONG ValuesOf(const ValueSource& values, ULONG tag)
{
    const EncodedValue value = values.Find(tag);
    return value.Type() & MV_FLAG ? ElementCount(value.Type(), value.bytes) : 0;
}

/// One value of the chosen property in place of all.
class InstanceValues : public ValueSource
{
public:
    InstanceValues(const ValueSource& values, ULONG tag, ULONG place)
        : m_values(values)
        , m_tag(tag)
        , m_place(place)
    {
    }

    EncodedValue Find(ULONG tag) const override
    {
        const EncodedValue value = m_values.Find(tag);
        if (PROP_ID(tag) == PROP_ID(PR_INSTANCE_KEY) && value)
        {
            return KeyOf(value);
        }
        if (PROP_ID(tag) != PROP_ID(m_tag) || !IsInstanceTag(tag) || !(value.Type() & MV_FLAG))
        {
            return value;
        }
        if (m_place >= ElementCount(value.Type(), value.bytes))
        {
            return {};
        }
        const ULONG single = value.Type() & ~static_cast<ULONG>(MV_FLAG);
        return {CHANGE_PROP_TYPE(value.tag, single), Element(value.Type(), value.bytes, m_place), nullptr};
    }

    bool AnyOf(ULONG tag, const std::function<bool(const ValueSource&)>& test) const override
    {
        return m_values.AnyOf(tag, test);
    }

private:
    EncodedValue KeyOf(const EncodedValue& row) const
    {
        m_key = row.bytes;
        AppendNumber(m_key, m_place);
        return {row.tag, m_key, nullptr};
    }

    const ValueSource& m_values;
    const ULONG m_tag;
    const ULONG m_place;
    mutable std::string m_key;
};

} // namespace

InstanceRows::InstanceRows(std::shared_ptr<RowSource> rows)
    : m_rows(std::move(rows))
{
}

void InstanceRows::Choose(ULONG tag)
{
    m_tag = tag;
    m_instances.clear();
    m_keys.clear();
}

RowKey InstanceRows::KeyOf(const Instance& instance)
{
    const auto [place, isNew] = m_keys.emplace(instance, static_cast<RowKey>(m_instances.size() + 1));
    if (isNew)
    {
        m_instances.push_back(instance);
    }
    return place->second;
}

ULONG InstanceRows::Count()
{
    return m_tag ? static_cast<ULONG>(Keys(nullptr, nullptr).size()) : m_rows->Count();
}

std::uint64_t InstanceRows::Generation()
{
    return m_rows->Generation();
}

RowChanges InstanceRows::ChangesSince(std::uint64_t generation)
{
    RowChanges changes = m_rows->ChangesSince(generation);
    // Which values of a row were added or removed is not listed.
    if (m_tag && changes.extent == RowChanges::Extent::Listed)
    {
        return {};
    }
    return changes;
}

std::optional<RowKey> InstanceRows::KeyBefore(RowKey key)
{
    return m_tag ? std::nullopt : m_rows->KeyBefore(key);
}

std::vector<RowKey> InstanceRows::Keys(const Restriction* restriction, const SortOrder* order)
{
    if (!m_tag)
    {
        return m_rows->Keys(restriction, order);
    }
    const std::vector<RowKey> rows = m_rows->Keys(nullptr, nullptr);
    RowSelection selection(restriction, order);
    m_rows->Read(rows.data(), rows.size(), [&](size_t index, const ValueSource& values)
    {
        const ULONG count = std::max<ULONG>(ValuesOf(values, m_tag), 1);
        for (ULONG place = 0; place < count; ++place)
        {
            selection.Add(KeyOf({rows[index], place}), InstanceValues(values, m_tag, place));
        }
    });
    return selection.Take();
}

std::vector<RowKey> InstanceRows::KeysAfter(std::optional<RowKey> after, size_t count)
{
    if (!m_tag)
    {
        return m_rows->KeysAfter(after, count);
    }
    std::vector<RowKey> keys = Keys(nullptr, nullptr);
    if (after)
    {
        const auto found = std::find(keys.begin(), keys.end(), *after);
        keys.erase(keys.begin(), found == keys.end() ? found : found + 1);
    }
    keys.resize(std::min(count, keys.size()));
    return keys;
}

void InstanceRows::Read(const RowKey* keys, size_t count, const Visitor& visit)
{
    if (!m_tag)
    {
        return m_rows->Read(keys, count, visit);
    }
    std::vector<RowKey> rows;
    for (size_t i = 0; i < count; ++i)
    {
        rows.push_back(m_instances.at(static_cast<size_t>(keys[i] - 1)).first);
    }
    m_rows->Read(rows.data(), count, [&](size_t index, const ValueSource& values)
    {
        const ULONG place = m_instances[static_cast<size_t>(keys[index] - 1)].second;
        visit(index, InstanceValues(values, m_tag, place));
    });
}

} // namespace zebstore
