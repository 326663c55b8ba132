#include "platform/imagefile.h"

#include "platform/environment.h"

#include <array>
#include <cstring>
#include <memory>

namespace zeb::platform
{
namespace
{

struct CloseFile
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// Numbers in both formats are little-endian.
unsigned Number16(const unsigned char* bytes)
{
    return bytes[0] | bytes[1] << 8;
}

/// Reads `count` bytes at `offset`. @return false when the file is shorter
bool ReadAt(std::FILE* file, long offset, unsigned char* bytes, size_t count)
{
    return std::fseek(file, offset, SEEK_SET) == 0 && std::fread(bytes, 1, count, file) == count;
}

void SetMachine(ImageFile& image, const char* machine, unsigned bits)
{
    image.machine = machine;
    image.bits = bits;
}

/// A Windows library: "MZ", at 0x3C the offset of "PE\0\0", after it the machine.
void ReadPortableExecutable(std::FILE* file, const unsigned char* head, ImageFile& image)
{
    constexpr size_t OffsetOfHeader = 0x3C;
    const long header = static_cast<long>(Number16(head + OffsetOfHeader) | Number16(head + OffsetOfHeader + 2) << 16);
    unsigned char signature[6] = {};
    if (!ReadAt(file, header, signature, sizeof(signature)) || std::memcmp(signature, "PE\0\0", 4) != 0)
    {
        return;
    }
    switch (Number16(signature + 4))
    {
    case 0x014C:
        return SetMachine(image, "x86", 32);
    case 0x8664:
        return SetMachine(image, "x64", 64);
    case 0xAA64:
        return SetMachine(image, "ARM64", 64);
    default:
        return;
    }
}

/// A Linux library: the machine is at offset 18.
void ReadElf(const unsigned char* head, ImageFile& image)
{
    switch (Number16(head + 18))
    {
    case 3:
        return SetMachine(image, "x86", 32);
    case 62:
        return SetMachine(image, "x64", 64);
    case 183:
        return SetMachine(image, "ARM64", 64);
    default:
        return;
    }
}

} // namespace

ImageFile ReadImageFile(const std::string& path)
{
    ImageFile image;
    const File file(OpenFile(path, "rb"));
    std::array<unsigned char, 64> head{};
    // On Linux a folder can be opened, but not read.
    if (file == nullptr || (std::fread(head.data(), 1, 1, file.get()) != 1 && std::ferror(file.get()) != 0))
    {
        return image;
    }
    image.exists = true;
    if (!ReadAt(file.get(), 0, head.data(), head.size()))
    {
        return image;
    }
    if (std::memcmp(head.data(), "MZ", 2) == 0)
    {
        ReadPortableExecutable(file.get(), head.data(), image);
        image.version = FileVersion(path);
    }
    else if (std::memcmp(head.data(),
                         "\x7F"
                         "ELF",
                         4) == 0)
    {
        ReadElf(head.data(), image);
    }
    return image;
}

} // namespace zeb::platform
