// What the provider computes, in small: one binary of the row's number.
#pragma once

#include "tests/zebstore/storage/Storage.h"

#include "zebstore/storage/ComputedProperties.h"
#include "zebstore/tables/Table.h"

#include <memory>

namespace zebstore::test
{

class ComputedNumber : public ComputedProperties
{
public:
    explicit ComputedNumber(ULONG tag)
        : m_tag(tag)
    {
    }
    bool OfMessage(ULONG tag, MessageId message, PropertySet& out) const override
    {
        if (PROP_ID(tag) != PROP_ID(m_tag))
        {
            return false;
        }
        out.SetBinary(m_tag, &message, sizeof(message));
        return true;
    }
    bool OfFolder(ULONG tag, const FolderInfo& folder, PropertySet& out) const override
    {
        return OfMessage(tag, folder.id, out);
    }
    std::vector<ULONG> MessageTags() const override { return {m_tag}; }
    std::vector<ULONG> FolderTags() const override { return {m_tag}; }

private:
    const ULONG m_tag;
};

inline std::shared_ptr<ComputedProperties> Computed(ULONG tag)
{
    return std::make_shared<ComputedNumber>(tag);
}

} // namespace zebstore::test
