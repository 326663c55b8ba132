#include "platform/imagefile.h"

#include "platform/module.h"
#include "platform/text.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace zeb::platform
{
namespace
{

class ImageFileTest : public ::testing::Test
{
protected:
    /// Writes a file. @return the header that is read from it
    ImageFile Read(const std::string& bytes)
    {
        const std::string path = m_folder.Path() + "/library.dll";
        std::ofstream(path, std::ios::binary) << bytes;
        return ReadImageFile(path);
    }

    /// The header of a Windows library for a machine.
    static std::string Windows(const std::string& machine)
    {
        std::string head(0x80, '\0');
        head.replace(0, 2, "MZ");
        head[0x3C] = '\x80';
        return head + std::string("PE\0\0", 4) + machine + std::string(32, '\0');
    }

    test::TempFolder m_folder;
};

TEST_F(ImageFileTest, WindowsLibrariesNameTheirMachine)
{
    const ImageFile narrow = Read(Windows("\x4C\x01"));
    EXPECT_EQ(narrow.machine, "x86");
    EXPECT_EQ(narrow.bits, 32u);
    const ImageFile wide = Read(Windows("\x64\x86"));
    EXPECT_EQ(wide.machine, "x64");
    EXPECT_EQ(wide.bits, 64u);
    EXPECT_EQ(Read(Windows("\x64\xAA")).machine, "ARM64");
}

TEST_F(ImageFileTest, OtherMachinesAreNamedByNothing)
{
    const ImageFile other = Read(Windows("\x66\x01"));
    EXPECT_TRUE(other.exists);
    EXPECT_EQ(other.machine, "");
    EXPECT_EQ(other.bits, 0u);
}

TEST_F(ImageFileTest, LinuxLibrariesNameTheirMachine)
{
    std::string head(64, '\0');
    head.replace(0, 4,
                 "\x7F"
                 "ELF");
    head[18] = 3;
    EXPECT_EQ(Read(head).bits, 32u);
    head[18] = 62;
    EXPECT_EQ(Read(head).machine, "x64");
    head[18] = '\xB7';
    EXPECT_EQ(Read(head).machine, "ARM64");
    head[18] = 8;
    EXPECT_EQ(Read(head).machine, "");
    EXPECT_EQ(Read(head).bits, 0u);
}

TEST_F(ImageFileTest, OtherSignaturesAreNoLibrary)
{
    std::string head = Windows("\x64\x86");
    head.replace(0x80, 2, "NE");
    for (const std::string& bytes : {head, std::string(200, 'x')})
    {
        const ImageFile other = Read(bytes);
        EXPECT_TRUE(other.exists);
        EXPECT_EQ(other.machine, "");
        EXPECT_EQ(other.bits, 0u);
    }
}

TEST_F(ImageFileTest, ATruncatedHeaderIsNoLibrary)
{
    const std::string whole = Windows("\x64\x86");
    for (const size_t size : {0, 1, 2, 63, 64, 0x81, 0x85})
    {
        const ImageFile cut = Read(whole.substr(0, size));
        EXPECT_TRUE(cut.exists) << size;
        EXPECT_EQ(cut.bits, 0u) << size;
    }
    EXPECT_EQ(Read(whole.substr(0, 0x86)).bits, 64u);
}

TEST_F(ImageFileTest, AnOversizedOffsetIsNoLibrary)
{
    std::string head = Windows("\x64\x86");
    head.replace(0x3C, 4, "\xFF\xFF\xFF\xFF");
    EXPECT_EQ(Read(head).bits, 0u);
}

TEST_F(ImageFileTest, FoldersAndMissingFilesAreAbsent)
{
    EXPECT_FALSE(ReadImageFile(m_folder.Path() + "/none.dll").exists);
    EXPECT_FALSE(ReadImageFile(m_folder.Path()).exists);
    EXPECT_FALSE(ReadImageFile("").exists);
}

TEST_F(ImageFileTest, TheProgramsOwnLibrariesAreRead)
{
    const ImageFile probe = ReadImageFile(OwnFolder() + "probe_adjacent.dll");
    EXPECT_TRUE(probe.exists);
    EXPECT_EQ(probe.bits, 64u);
    EXPECT_EQ(probe.machine, "x64");
}

} // namespace
} // namespace zeb::platform
