// The structure of a compound file: a header, sectors, a table with the successor of each sector, a second such table for small
// sectors inside a stream of their own, and a directory whose entries are trees.
#include "platform/compoundfile/Structure.h"

#include "platform/compoundfile.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace zeb::platform
{
namespace
{

constexpr size_t HeaderSize = 512;
constexpr size_t EntrySize = 128;
constexpr unsigned SmallShift = 6;
constexpr std::uint32_t End = 0xFFFFFFFE;
constexpr std::uint32_t None = 0xFFFFFFFF;
constexpr size_t FirstTables = 109; // tables that the header names
constexpr unsigned char Magic[] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};

enum EntryType : unsigned char
{
    TypeFolder = 1,
    TypeStream = 2,
    TypeRoot = 5,
};

[[noreturn]] void Damaged(const char* why)
{
    throw CompoundError(std::string("it is no undamaged compound file: ") + why);
}

template <class T>
T At(const std::vector<char>& bytes, size_t offset)
{
    T value;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

/// The successors of sectors. A sector belongs to one chain.
struct SectorTable
{
    std::vector<std::uint32_t> next;
    std::vector<bool> used;

    void Resize(size_t count)
    {
        next.resize(count, None);
        used.resize(count);
    }

    void Use(std::uint32_t sector)
    {
        if (sector >= next.size() || used[sector])
        {
            Damaged("a sector does not exist, or belongs to two chains");
        }
        used[sector] = true;
    }

    std::vector<std::uint32_t> Chain(std::uint32_t first)
    {
        std::vector<std::uint32_t> sectors;
        for (std::uint32_t sector = first; sector != End; sector = next[sector])
        {
            Use(sector);
            sectors.push_back(sector);
        }
        return sectors;
    }
};

class Structure
{
public:
    explicit Structure(const std::string& file)
        : m_file(std::filesystem::u8path(file), std::ios::binary | std::ios::ate)
    {
        if (!m_file)
        {
            throw CompoundError("it cannot be opened");
        }
        m_size = static_cast<std::uint64_t>(m_file.tellg());
    }

    void Check()
    {
        ReadHeader();
        ReadTable();
        const std::vector<std::uint32_t> directory = m_sectors.Chain(At<std::uint32_t>(m_header, 0x30));
        m_small.next = ReadNumbers(m_sectors.Chain(ChainOf(0x3C, 0x40)));
        m_small.Resize(m_small.next.size());
        CheckDirectory(ReadAll(directory));
    }

private:
    std::vector<char> ReadAt(std::uint64_t offset, size_t size)
    {
        std::vector<char> bytes(size);
        m_file.clear();
        m_file.seekg(static_cast<std::streamoff>(offset));
        m_file.read(bytes.data(), static_cast<std::streamsize>(size));
        return bytes; // what the last sector lacks is zero
    }

    // The first sector of a chain; End when the header counts no sector of it.
    std::uint32_t ChainOf(size_t first, size_t count) const
    {
        return At<std::uint32_t>(m_header, count) == 0 ? End : At<std::uint32_t>(m_header, first);
    }

    std::vector<char> ReadSector(std::uint32_t sector)
    {
        return ReadAt((std::uint64_t{sector} + 1) << m_shift, size_t{1} << m_shift);
    }

    std::vector<char> ReadAll(const std::vector<std::uint32_t>& sectors)
    {
        std::vector<char> all;
        for (const std::uint32_t sector : sectors)
        {
            const std::vector<char> bytes = ReadSector(sector);
            all.insert(all.end(), bytes.begin(), bytes.end());
        }
        return all;
    }

    std::vector<std::uint32_t> ReadNumbers(const std::vector<std::uint32_t>& sectors)
    {
        const std::vector<char> bytes = ReadAll(sectors);
        std::vector<std::uint32_t> numbers(bytes.size() / sizeof(std::uint32_t));
        std::copy_n(bytes.data(), numbers.size() * sizeof(std::uint32_t), reinterpret_cast<char*>(numbers.data()));
        return numbers;
    }

    void ReadHeader()
    {
        m_header = ReadAt(0, HeaderSize);
        m_shift = At<std::uint16_t>(m_header, 0x1E);
        if (m_size < HeaderSize || std::memcmp(m_header.data(), Magic, sizeof Magic) != 0 ||
            (m_shift != 9 && m_shift != 12) || At<std::uint16_t>(m_header, 0x20) != SmallShift)
        {
            Damaged("it has another header");
        }
        const std::uint64_t size = std::uint64_t{1} << m_shift;
        const std::uint64_t count = m_size <= size ? 0 : (m_size - size + size - 1) / size;
        m_sectors.Resize(static_cast<size_t>(std::min<std::uint64_t>(count, 0xFFFFFFFA)));
    }

    // The sectors of the table are named in the header, and then in a chain of sectors of their own.
    std::vector<std::uint32_t> SectorsOfTable()
    {
        const size_t count = At<std::uint32_t>(m_header, 0x2C);
        std::vector<std::uint32_t> found;
        for (size_t i = 0; i < std::min(count, FirstTables); ++i)
        {
            found.push_back(At<std::uint32_t>(m_header, 0x4C + i * sizeof(std::uint32_t)));
        }
        std::uint32_t sector = At<std::uint32_t>(m_header, 0x44);
        while (found.size() < count)
        {
            m_sectors.Use(sector);
            const std::vector<std::uint32_t> numbers = ReadNumbers({sector});
            const size_t most = std::min(count - found.size(), numbers.size() - 1);
            found.insert(found.end(), numbers.begin(), numbers.begin() + static_cast<std::ptrdiff_t>(most));
            sector = numbers.back();
        }
        return found;
    }

    void ReadTable()
    {
        const std::vector<std::uint32_t> sectors = SectorsOfTable();
        for (const std::uint32_t sector : sectors)
        {
            m_sectors.Use(sector);
        }
        const std::vector<std::uint32_t> numbers = ReadNumbers(sectors);
        std::copy_n(numbers.begin(), std::min(numbers.size(), m_sectors.next.size()), m_sectors.next.begin());
    }

    void CheckDirectory(const std::vector<char>& entries)
    {
        const size_t count = entries.size() / EntrySize;
        if (count == 0 || entries[0x42] != TypeRoot || At<std::uint32_t>(entries, 0x44) != None ||
            At<std::uint32_t>(entries, 0x48) != None)
        {
            Damaged("its directory does not begin with a root");
        }
        CheckContent(entries, 0);
        std::vector<bool> seen(count);
        std::vector<std::uint32_t> open = {At<std::uint32_t>(entries, 0x4C)};
        while (!open.empty())
        {
            const std::uint32_t entry = open.back();
            open.pop_back();
            if (entry == None)
            {
                continue;
            }
            if (entry == 0 || entry >= count || seen[entry])
            {
                Damaged("its directory is no tree");
            }
            seen[entry] = true;
            CheckEntry(entries, entry * EntrySize, open);
        }
    }

    void CheckEntry(const std::vector<char>& entries, size_t at, std::vector<std::uint32_t>& open)
    {
        const char type = entries[at + 0x42];
        if (type != TypeFolder && type != TypeStream)
        {
            Damaged("an entry of its directory is neither a folder nor a stream");
        }
        open.push_back(At<std::uint32_t>(entries, at + 0x44));
        open.push_back(At<std::uint32_t>(entries, at + 0x48));
        if (type == TypeFolder)
        {
            open.push_back(At<std::uint32_t>(entries, at + 0x4C));
            return;
        }
        CheckContent(entries, at);
    }

    // The root's content is the stream of all small sectors.
    void CheckContent(const std::vector<char>& entries, size_t at)
    {
        const std::uint64_t size =
            m_shift == 9 ? At<std::uint32_t>(entries, at + 0x78) : At<std::uint64_t>(entries, at + 0x78);
        if (size == 0)
        {
            return;
        }
        const bool isSmall = at != 0 && size < At<std::uint32_t>(m_header, 0x38);
        const unsigned shift = isSmall ? SmallShift : m_shift;
        const size_t sectors = (isSmall ? m_small : m_sectors).Chain(At<std::uint32_t>(entries, at + 0x74)).size();
        if (((size - 1) >> shift) >= sectors)
        {
            Damaged("a stream is longer than its sectors");
        }
    }

    std::ifstream m_file;
    std::uint64_t m_size = 0;
    std::vector<char> m_header;
    unsigned m_shift = 0;
    SectorTable m_sectors;
    SectorTable m_small;
};

} // namespace

void CheckCompoundStructure(const std::string& file)
{
    Structure(file).Check();
}

} // namespace zeb::platform
