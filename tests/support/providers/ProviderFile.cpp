#include "tests/support/providers/ProviderFile.h"

#include "platform/module.h"
#include "zebapi/constants/internal/EntryPoints.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace zeb::test
{

namespace
{

using Image = std::vector<unsigned char>;

template <class T>
T Read(const Image& image, size_t offset)
{
    T value;
    if (offset > image.size() || image.size() - offset < sizeof value)
    {
        throw std::runtime_error("the library's image ends too early");
    }
    std::memcpy(&value, image.data() + offset, sizeof value);
    return value;
}

template <class T>
void Write(Image& image, size_t offset, T value)
{
    Read<T>(image, offset);
    std::memcpy(image.data() + offset, &value, sizeof value);
}

std::string TextAt(const Image& image, size_t offset)
{
    Read<char>(image, offset);
    return std::string(reinterpret_cast<const char*>(image.data()) + offset);
}

/// A Windows library: names are found by binary search, so they stay sorted.
class PortableExecutable
{
public:
    explicit PortableExecutable(Image& image)
        : m_image(image)
        , m_header(Read<uint32_t>(image, 0x3C))
    {
        const size_t exports = OffsetOf(Read<uint32_t>(image, m_header + 24 + 112));
        m_count = Read<uint32_t>(image, exports + 24);
        m_names = OffsetOf(Read<uint32_t>(image, exports + 32));
        m_ordinals = OffsetOf(Read<uint32_t>(image, exports + 36));
    }

    /// The offset of the name; 0 when it is not an export.
    size_t Find(const std::string& name) const
    {
        for (uint32_t i = 0; i < m_count; ++i)
        {
            const size_t offset = OffsetOf(Read<uint32_t>(m_image, m_names + 4 * i));
            if (TextAt(m_image, offset) == name)
            {
                return offset;
            }
        }
        return 0;
    }

    void Reindex()
    {
        struct Name
        {
            std::string text;
            uint32_t address;
            uint16_t ordinal;
        };
        std::vector<Name> names;
        for (uint32_t i = 0; i < m_count; ++i)
        {
            const auto address = Read<uint32_t>(m_image, m_names + 4 * i);
            names.push_back({TextAt(m_image, OffsetOf(address)), address, Read<uint16_t>(m_image, m_ordinals + 2 * i)});
        }
        std::sort(names.begin(), names.end(), [](const Name& a, const Name& b) { return a.text < b.text; });
        for (uint32_t i = 0; i < m_count; ++i)
        {
            Write(m_image, m_names + 4 * i, names[i].address);
            Write(m_image, m_ordinals + 2 * i, names[i].ordinal);
        }
    }

private:
    size_t OffsetOf(uint32_t address) const
    {
        const auto sections = Read<uint16_t>(m_image, m_header + 6);
        size_t section = m_header + 24 + Read<uint16_t>(m_image, m_header + 20);
        for (uint16_t i = 0; i < sections; ++i, section += 40)
        {
            const auto start = Read<uint32_t>(m_image, section + 12);
            if (address >= start && address - start < Read<uint32_t>(m_image, section + 16))
            {
                return address - start + Read<uint32_t>(m_image, section + 20);
            }
        }
        throw std::runtime_error("an address lies in no section");
    }

    Image& m_image;
    size_t m_header;
    uint32_t m_count;
    size_t m_names;
    size_t m_ordinals;
};

/// A Linux library linked with --hash-style=sysv: names are found by hash, so the buckets are rebuilt.
class SharedObject
{
public:
    explicit SharedObject(Image& image)
        : m_image(image)
    {
        ReadSegments();
        m_bucketCount = Read<uint32_t>(image, m_hash);
        m_symbolCount = Read<uint32_t>(image, m_hash + 4);
    }

    size_t Find(const std::string& name) const
    {
        for (uint32_t i = 1; i < m_symbolCount; ++i)
        {
            const bool isDefined = Read<uint16_t>(m_image, m_symbols + i * SymbolSize + 6) != 0;
            if (isDefined && TextAt(m_image, NameOf(i)) == name)
            {
                return NameOf(i);
            }
        }
        return 0;
    }

    void Reindex()
    {
        const size_t buckets = m_hash + 8;
        const size_t chains = buckets + 4 * m_bucketCount;
        for (uint32_t i = 0; i < m_bucketCount + m_symbolCount; ++i)
        {
            Write(m_image, buckets + 4 * i, uint32_t(0));
        }
        for (uint32_t i = 1; i < m_symbolCount; ++i)
        {
            const size_t bucket = buckets + 4 * (HashOf(TextAt(m_image, NameOf(i))) % m_bucketCount);
            Write(m_image, chains + 4 * i, Read<uint32_t>(m_image, bucket));
            Write(m_image, bucket, i);
        }
    }

private:
    static constexpr size_t SymbolSize = 24;

    static uint32_t HashOf(const std::string& name)
    {
        uint32_t hash = 0;
        for (unsigned char character : name)
        {
            hash = (hash << 4) + character;
            const uint32_t high = hash & 0xF0000000;
            hash = (hash ^ (high >> 24)) & ~high;
        }
        return hash;
    }

    size_t NameOf(uint32_t symbol) const
    {
        return m_strings + Read<uint32_t>(m_image, m_symbols + symbol * SymbolSize);
    }

    void ReadSegments()
    {
        const auto table = Read<uint64_t>(m_image, 32);
        const auto count = Read<uint16_t>(m_image, 56);
        for (uint16_t i = 0; i < count; ++i)
        {
            const size_t segment = table + 56 * i;
            if (Read<uint32_t>(m_image, segment) == 2)
            {
                ReadDynamic(Read<uint64_t>(m_image, segment + 8));
            }
        }
    }

    void ReadDynamic(size_t entry)
    {
        // The tables are in the first segment, where address and file offset are equal.
        for (; Read<uint64_t>(m_image, entry) != 0; entry += 16)
        {
            const auto value = Read<uint64_t>(m_image, entry + 8);
            switch (Read<uint64_t>(m_image, entry))
            {
            case 4:
                m_hash = value;
                break;
            case 5:
                m_strings = value;
                break;
            case 6:
                m_symbols = value;
                break;
            default:
                break;
            }
        }
        if (m_hash == 0 || m_strings == 0 || m_symbols == 0)
        {
            throw std::runtime_error("the library has no symbol table with a System V hash");
        }
    }

    Image& m_image;
    size_t m_hash = 0;
    size_t m_strings = 0;
    size_t m_symbols = 0;
    uint32_t m_bucketCount = 0;
    uint32_t m_symbolCount = 0;
};

template <class Format>
void RenameIn(Image& image, const std::string& from, const std::string& to)
{
    Format format(image);
    const size_t offset = format.Find(from);
    if (offset == 0 || from.size() != to.size())
    {
        throw std::runtime_error("cannot rename export " + from + " to " + to);
    }
    std::copy(to.begin(), to.end(), image.begin() + static_cast<std::ptrdiff_t>(offset));
    format.Reindex();
}

bool IsDecorated(const std::string& name)
{
    return name.find('@') != std::string::npos;
}

std::vector<std::string> DecoratedNames()
{
    std::vector<std::string> names = {"PropCopyMore@16"};
    for (const char* const* name = DecoratedTestList; *name != nullptr; ++name)
    {
        if (IsDecorated(*name))
        {
            names.emplace_back(*name);
        }
    }
    return names;
}

} // namespace

ProviderFile::ProviderFile(std::vector<unsigned char> image)
    : m_image(std::move(image))
{
}

ProviderFile ProviderFile::Template()
{
    // Test programs are in the same folder or one folder deeper.
    const std::string name = ZEB_FAKE_PROVIDER_FILE;
    std::ifstream file(platform::OwnFolder() + name, std::ios::binary);
    if (!file)
    {
        file.open(platform::OwnFolder() + "../" + name, std::ios::binary);
    }
    if (!file)
    {
        throw std::runtime_error("cannot read " + name);
    }
    return ProviderFile(Image(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()));
}

ProviderFile ProviderFile::Undecorated()
{
    return Template();
}

ProviderFile ProviderFile::Both()
{
    ProviderFile file = Template();
    for (const std::string& name : DecoratedNames())
    {
        std::string placeholder = name;
        std::replace(placeholder.begin(), placeholder.end(), '@', '_');
        file.Rename(placeholder, name);
    }
    return file;
}

ProviderFile ProviderFile::Decorated()
{
    ProviderFile file = Both();
    for (const std::string& name : DecoratedNames())
    {
        file.Remove(name.substr(0, name.find('@')));
    }
    return file;
}

ProviderFile& ProviderFile::Rename(const std::string& from, const std::string& to)
{
    if (m_image.size() > 2 && m_image[0] == 'M' && m_image[1] == 'Z')
    {
        RenameIn<PortableExecutable>(m_image, from, to);
    }
    else
    {
        RenameIn<SharedObject>(m_image, from, to);
    }
    return *this;
}

ProviderFile& ProviderFile::Remove(const std::string& name)
{
    return Rename(name, name.substr(0, name.size() - 1) + "~");
}

void ProviderFile::Save(const std::string& path) const
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(m_image.data()), static_cast<std::streamsize>(m_image.size()));
    file.close();
    if (!file)
    {
        throw std::runtime_error("cannot write " + path);
    }
}

} // namespace zeb::test
