#include "platform/compoundfile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

namespace
{

using namespace zeb::platform;

constexpr CompoundClass Kind = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
/// Streams below 4,096 bytes are stored in small sectors.
constexpr size_t Sizes[] = {0, 1, 63, 64, 4095, 4096, 4097, 1'000'000};

std::string Content(size_t size)
{
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; ++i)
    {
        bytes[i] = static_cast<char>(i * 31 + i / 251 + size);
    }
    return bytes;
}

CompoundSource SourceOf(const std::string& bytes, size_t piece = 777)
{
    return [bytes, piece, done = size_t{0}](char* buffer, size_t size) mutable
    {
        const size_t copied = bytes.copy(buffer, std::min(size, piece), std::min(done, bytes.size()));
        done += copied;
        return copied;
    };
}

std::string Read(CompoundFolder& folder, const std::string& name)
{
    const auto stream = folder.OpenStream(name);
    EXPECT_TRUE(stream) << name;
    std::string all;
    char piece[1000];
    for (size_t size = 1; stream && size != 0;)
    {
        size = stream->Read(piece, sizeof piece);
        all.append(piece, size);
    }
    EXPECT_TRUE(!stream || stream->Size() == all.size()) << name;
    return all;
}

class CompoundFile : public testing::Test
{
protected:
    void SetUp() override { std::filesystem::remove(m_path); }
    void TearDown() override { SetUp(); }

    void WriteSizes()
    {
        const auto top = CreateCompoundFile(File(), Kind);
        for (const size_t size : Sizes)
        {
            const auto folder = top->AddFolder("folder " + std::to_string(size));
            folder->AddStream("stream", SourceOf(Content(size)));
            folder->AddFolder("Inside")->AddStream("\xC3\xA4", SourceOf("deep"));
            folder->Finish();
            top->AddStream("stream " + std::to_string(size), SourceOf(Content(size)));
        }
        top->Finish();
    }

    std::string File() const { return m_path.u8string(); }

    const std::filesystem::path m_path =
        std::filesystem::temp_directory_path() /
        (std::string("zeb-compound-") + testing::UnitTest::GetInstance()->current_test_info()->name());
};

TEST_F(CompoundFile, StreamsOfAllSizesComeBack)
{
    WriteSizes();
    const auto top = OpenCompoundFile(File());
    EXPECT_EQ(top->Names().size(), 2 * std::size(Sizes));
    for (const size_t size : Sizes)
    {
        EXPECT_EQ(Read(*top, "stream " + std::to_string(size)), Content(size)) << size;
        const auto folder = top->OpenFolder("folder " + std::to_string(size));
        ASSERT_TRUE(folder) << size;
        EXPECT_EQ(Read(*folder, "STREAM"), Content(size)) << size;
        EXPECT_EQ(Read(*folder->OpenFolder("Inside"), "\xC3\xA4"), "deep");
    }
}

TEST_F(CompoundFile, AbsentAndOtherKindsAreNull)
{
    WriteSizes();
    const auto top = OpenCompoundFile(File());
    EXPECT_FALSE(top->OpenStream("absent"));
    EXPECT_FALSE(top->OpenFolder("absent"));
    EXPECT_FALSE(top->OpenStream("folder 0"));
    EXPECT_FALSE(top->OpenFolder("stream 0"));
}

TEST_F(CompoundFile, ClassAndSectorsAreInTheHeader)
{
    WriteSizes();
    std::ifstream stream(m_path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    EXPECT_EQ(bytes.compare(0, 8, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"), 0);
    EXPECT_NE(bytes.find(std::string(Kind.begin(), Kind.end())), std::string::npos);
}

TEST_F(CompoundFile, StreamsOutliveTheirFolders)
{
    WriteSizes();
    auto stream = OpenCompoundFile(File())->OpenFolder("folder 4096")->OpenStream("stream");
    char byte = 0;
    ASSERT_EQ(stream->Read(&byte, 1), 1u);
    EXPECT_EQ(byte, Content(4096)[0]);
}

TEST_F(CompoundFile, OtherFilesAreRefused)
{
    EXPECT_THROW(OpenCompoundFile(File()), CompoundError);
    std::ofstream(m_path, std::ios::binary) << std::string(2000, 'x');
    EXPECT_THROW(OpenCompoundFile(File()), CompoundError);
    EXPECT_THROW(CreateCompoundFile(File() + "/below/it", Kind), CompoundError);
}

// A table of sectors in which one sector follows itself, for each that is in a chain.
TEST_F(CompoundFile, ChainsWithoutAnEndAreRefused)
{
    WriteSizes();
    std::ifstream stream(m_path, std::ios::binary);
    const std::string whole((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    stream.close();
    std::uint32_t table = 0;
    whole.copy(reinterpret_cast<char*>(&table), sizeof table, 0x4C);
    const size_t at = (size_t{table} + 1) * 512;
    constexpr std::uint32_t LastSector = 0xFFFFFFFA;
    constexpr std::uint32_t End = 0xFFFFFFFE;
    int checked = 0;
    for (std::uint32_t sector = 0; sector < 128; ++sector)
    {
        std::string changed = whole;
        std::uint32_t next = 0;
        std::memcpy(&next, &changed[at + sector * sizeof sector], sizeof next);
        if (next > LastSector && next != End)
        {
            continue;
        }
        ++checked;
        std::memcpy(&changed[at + sector * sizeof sector], &sector, sizeof sector);
        std::ofstream(m_path, std::ios::binary | std::ios::trunc) << changed;
        EXPECT_THROW(OpenCompoundFile(File()), CompoundError) << sector;
    }
    EXPECT_GT(checked, 100);
}

TEST_F(CompoundFile, ManyEntriesOfOneFolder)
{
    constexpr int Count = 3000;
    {
        const auto top = CreateCompoundFile(File(), Kind);
        for (int i = 0; i < Count; ++i)
        {
            top->AddStream("stream " + std::to_string(i), SourceOf(std::to_string(i)));
        }
        top->Finish();
    }
    const auto top = OpenCompoundFile(File());
    ASSERT_EQ(top->Names().size(), static_cast<size_t>(Count));
    for (int i = 0; i < Count; ++i)
    {
        ASSERT_EQ(Read(*top, "stream " + std::to_string(i)), std::to_string(i));
    }
}

} // namespace
