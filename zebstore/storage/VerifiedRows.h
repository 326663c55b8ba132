// Which rows of a table were compared with their checksums.
#pragma once

#include <bitset>
#include <cstdint>
#include <unordered_map>

namespace zebstore
{

/// A set of keys that lie close together: a bit each. Tables verify a row when they first read it, which is when its bytes
/// come from the file; verifying each time would take 6 % of the time to read it. Threads: one at a time.
class VerifiedRows
{
public:
    bool Has(std::int64_t key)
    {
        Find(key);
        return m_page->test(PlaceOf(key));
    }
    void Add(std::int64_t key)
    {
        Find(key);
        m_page->set(PlaceOf(key));
    }

private:
    static constexpr int PageBits = 15;
    static constexpr size_t PageSize = size_t(1) << PageBits;
    using Page = std::bitset<PageSize>;

    static size_t PlaceOf(std::int64_t key) { return static_cast<size_t>(key) & (PageSize - 1); }
    /// Makes m_page the page of a key.
    void Find(std::int64_t key)
    {
        const std::int64_t number = key >> PageBits;
        if (m_page == nullptr || number != m_number)
        {
            m_page = &m_pages[number];
            m_number = number;
        }
    }

    std::unordered_map<std::int64_t, Page> m_pages;
    Page* m_page = nullptr; ///< the page of the last key
    std::int64_t m_number = 0;
};

} // namespace zebstore
