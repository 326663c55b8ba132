#include "zebstore/base/LiveBlocks.h"

#include <cstdint>
#include <cstdlib>
#include <thread>

namespace zebstore
{

LiveBlocks g_roots;

namespace
{

/// Blocks are 16 bytes apart; the multiplication spreads what is left of their addresses over all bits.
std::uint64_t HashOf(const void* block)
{
    return (reinterpret_cast<std::uintptr_t>(block) >> 4) * 0x9E3779B97F4A7C15ull;
}

} // namespace

/// Holds a part's lock, which is held for a few instructions only.
class LiveBlocks::Part::Hold
{
public:
    explicit Hold(Part& part)
        : m_lock(part.m_lock)
    {
        while (m_lock.test_and_set(std::memory_order_acquire))
        {
            std::this_thread::yield();
        }
    }
    ~Hold() { m_lock.clear(std::memory_order_release); }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

private:
    std::atomic_flag& m_lock;
};

LiveBlocks::~LiveBlocks()
{
    for (Part& part : m_parts)
    {
        part.End();
    }
}

LiveBlocks::Part& LiveBlocks::PartOf(const void* block)
{
    return m_parts[HashOf(block) >> 58];
}

bool LiveBlocks::Add(void* block) noexcept
{
    return PartOf(block).Add(block);
}

bool LiveBlocks::Remove(void* block) noexcept
{
    return PartOf(block).Remove(block);
}

bool LiveBlocks::Has(void* block) noexcept
{
    return PartOf(block).Has(block);
}

/// The slot that holds the block, or the free one that it would take. One slot in four is always free.
size_t LiveBlocks::Part::PlaceOf(const void* block)
{
    void** const slots = Slots();
    size_t place = (HashOf(block) >> 20) & (m_size - 1);
    while (slots[place] != nullptr && slots[place] != block)
    {
        place = (place + 1) & (m_size - 1);
    }
    return place;
}

bool LiveBlocks::Part::Grow() noexcept
{
    void** const larger = static_cast<void**>(std::calloc(m_size * 2, sizeof(void*)));
    if (larger == nullptr)
    {
        return false;
    }
    void** const old = Slots();
    const size_t oldSize = m_size;
    void** const oldMore = m_more;
    m_more = larger;
    m_size *= 2;
    for (size_t i = 0; i < oldSize; ++i)
    {
        if (old[i] != nullptr)
        {
            larger[PlaceOf(old[i])] = old[i];
        }
        old[i] = nullptr;
    }
    std::free(oldMore);
    return true;
}

void LiveBlocks::Part::End() noexcept
{
    const Hold hold(*this);
    std::free(m_more);
    m_more = nullptr;
    m_ended = true;
}

bool LiveBlocks::Part::Add(void* block) noexcept
{
    const Hold hold(*this);
    if (m_ended)
    {
        return true;
    }
    if ((m_count + 1) * 4 > m_size * 3 && !Grow())
    {
        return false;
    }
    Slots()[PlaceOf(block)] = block;
    ++m_count;
    return true;
}

bool LiveBlocks::Part::Has(void* block) noexcept
{
    const Hold hold(*this);
    return m_ended || Slots()[PlaceOf(block)] != nullptr;
}

bool LiveBlocks::Part::Remove(void* block) noexcept
{
    const Hold hold(*this);
    if (m_ended)
    {
        return true;
    }
    const size_t place = PlaceOf(block);
    if (Slots()[place] == nullptr)
    {
        return false;
    }
    Slots()[place] = nullptr;
    CloseGap(place);
    if (--m_count == 0 && m_more != nullptr)
    {
        std::free(m_more);
        m_more = nullptr;
        m_size = OwnSlots;
    }
    return true;
}

/// Moves blocks that were pushed past the gap back to it, so that a search which ends at a free slot finds them all.
void LiveBlocks::Part::CloseGap(size_t gap)
{
    void** const slots = Slots();
    const size_t mask = m_size - 1;
    for (size_t at = (gap + 1) & mask; slots[at] != nullptr; at = (at + 1) & mask)
    {
        const size_t wanted = (HashOf(slots[at]) >> 20) & mask;
        if (((at - wanted) & mask) < ((at - gap) & mask))
        {
            continue;
        }
        slots[gap] = slots[at];
        slots[at] = nullptr;
        gap = at;
    }
}

} // namespace zebstore
