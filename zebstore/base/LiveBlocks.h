// Which root blocks of MAPI memory are live.
#pragma once

#include <atomic>
#include <cstddef>

namespace zebstore
{

/// A set of addresses in several parts, each with a lock of its own, since every allocation and every free goes through
/// it. Holds no memory while it is small. Its end frees the tables; afterwards it takes every block for a live one,
/// since a host's own globals may free blocks later than that. Threads: any.
class LiveBlocks
{
public:
    ~LiveBlocks();
    /// @return false when there is no memory for it
    bool Add(void* block) noexcept;
    /// @return false when it was not in the set
    bool Remove(void* block) noexcept;
    bool Has(void* block) noexcept;

private:
    static constexpr size_t PartCount = 64; // a power of two
    static constexpr size_t OwnSlots = 16;  // a power of two

    class Part
    {
    public:
        bool Add(void* block) noexcept;
        bool Remove(void* block) noexcept;
        bool Has(void* block) noexcept;
        void End() noexcept;

    private:
        class Hold;

        void** Slots() { return m_more != nullptr ? m_more : m_own; }
        size_t PlaceOf(const void* block);
        bool Grow() noexcept;
        void CloseGap(size_t gap);

        std::atomic_flag m_lock = ATOMIC_FLAG_INIT;
        bool m_ended = false;
        size_t m_count = 0;
        size_t m_size = OwnSlots;
        void** m_more = nullptr; // m_size slots, when there are more than the own ones
        void* m_own[OwnSlots] = {};
    };

    Part& PartOf(const void* block);

    Part m_parts[PartCount];
};

/// The blocks that MAPIAllocateBuffer has given and MAPIFreeBuffer has not taken.
extern LiveBlocks g_roots;

} // namespace zebstore
