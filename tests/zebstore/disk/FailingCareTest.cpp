// Each call that SQLite makes of the disk fails once while a store is made, upgraded or maintained, or while a large value
// is written: the content stays.
#include "tests/support/Count.h"
#include "tests/support/TempFolder.h"
#include "tests/zebstore/disk/DiskFaults.h"
#include "tests/zebstore/disk/WorkEffects.h"
#include "tests/zebstore/storage/Storage.h"
#include "zebstore/zebstore.h"

#include <filesystem>

namespace zebstore::test
{
namespace
{

/// Does it again when it fails once, as a host does with what its user wrote.
template <class Body>
void TryTwice(Body&& body)
{
    try
    {
        body();
    }
    catch (const Error&)
    {
        body();
    }
}

/// What the maintenance functions return with their error text.
using Care = HRESULT (*)(const char* path, const char* copy, char* text, ULONG size);

class FailingCare : public testing::Test
{
protected:
    void SetUp() override { Start(true); }

    void Start(bool indexed)
    {
        std::filesystem::remove(std::filesystem::u8path(m_original));
        MakeStoreToWorkOn(m_original, indexed);
        CopyStore(m_original, m_path);
        m_before = Content(m_path);
    }

    static Lines Content(const std::string& path)
    {
        Lines problems;
        Lines lines = DumpStore(path, problems);
        EXPECT_EQ(problems, Lines());
        return lines;
    }

    /// The result and the text of `body`, which throws Errors.
    template <class Body>
    bool RunWith(const DiskFault& fault, int number, Body&& body)
    {
        CopyStore(m_original, m_path);
        std::filesystem::remove(std::filesystem::u8path(m_copy));
        FailingDisk disk;
        {
            const DiskScope scope(disk);
            disk.Arm(fault, number);
            std::string text;
            m_code = CodeOf(body, &text);
            EXPECT_EQ(OpenDiskFiles(), 0);
            EXPECT_TRUE(m_code == S_OK || IsStated(m_code)) << std::hex << m_code << " " << text;
            EXPECT_EQ(m_code == S_OK, text.empty());
        }
        m_failed += m_code != S_OK ? 1 : 0;
        return disk.Happened();
    }

    /// Runs `body` with all faults; `check` looks at what is left.
    template <class Body, class Check>
    void RunAll(const char* what, Body&& body, Check&& check)
    {
        int points = 0;
        for (const auto* faults : {&OpenFaults, &ReadFaults, &WriteFaults, &SyncFaults, &TruncateFaults, &SizeFaults,
                                   &DeleteFaults, &AccessFaults, &LockFaults, &MapFaults, &SharedLockFaults})
        {
            points += EachFault(*faults, m_numbers, [&](const DiskFault& fault, int number)
            {
                SCOPED_TRACE(std::string(what) + ", " + NameOf(fault.call) + " " + std::to_string(number) + " " +
                             fault.name);
                const bool happened = RunWith(fault, number, body);
                check();
                return happened;
            });
        }
        std::printf("%s: %d calls of the disk failed, %d of them failed the host's call\n", what, points, m_failed);
        zeb::test::PrintCount("I/O faults", points);
        EXPECT_GT(m_failed, 0);
    }

    void ExpectSame() { EXPECT_EQ(Content(m_path), m_before); }

    void RunCare(const char* what, Care care)
    {
        RunAll(what,
               [&]
        {
            char text[500] = "";
            const HRESULT code = care(m_path.c_str(), m_copy.c_str(), text, sizeof(text));
            if (FAILED(code))
            {
                throw Error(code, text);
            }
        }, [&]
        {
            ExpectSame();
            const bool copied = StoreFile::Exists(m_copy);
            EXPECT_TRUE(!copied || m_code == S_OK) << "half a copy was left";
            if (copied)
            {
                EXPECT_EQ(Content(m_copy), m_before);
            }
        });
    }

    zeb::test::TempFolder m_folder;
    const std::string m_original = m_folder.File("original.zeb");
    const std::string m_path = m_folder.File("work.zeb");
    const std::string m_copy = m_folder.File("copy.zeb");
    Lines m_before;
    Numbers m_numbers;
    HRESULT m_code = S_OK;
    int m_failed = 0;
};

class FailingUpgrade : public FailingCare, public testing::WithParamInterface<int>
{
};

TEST_P(FailingUpgrade, LeavesTheContent)
{
    // The versions before checksums are upgraded alike: each takes its share of the calls.
    m_numbers = GetParam() < ChecksumVersion ? Numbers{GetParam(), 3} : Numbers();
    Start(false);
    MakeOlder(*StoreFile::Open(m_original, {}), GetParam());
    CopyStore(m_original, m_path);
    const Lines before = Content(m_path);
    RunAll("upgrade", [&] { StoreFile::Open(m_path, {}); }, [&] { EXPECT_EQ(Content(m_path), before); });
}

INSTANTIATE_TEST_SUITE_P(OfVersion, FailingUpgrade, testing::Values(1, 2, 3, 4, 5));

TEST_F(FailingCare, LeavesNoHalfNewStore)
{
    const auto make = [&] { StoreFile::Create(m_copy, "Test", {}); };
    RunAll("creation", make, [&]
    {
        EXPECT_EQ(StoreFile::Exists(m_copy), m_code == S_OK);
        if (m_code != S_OK)
        {
            make();
        }
        Lines problems;
        EXPECT_EQ(DumpStore(m_copy, problems).size(), 10u);
        EXPECT_EQ(problems, Lines());
    });
}

TEST_F(FailingCare, LeavesTheContentOfACompactedStore)
{
    m_numbers.stride = 3;
    RunCare("compact", [](const char* path, const char*, char* text, ULONG size)
    { return ZebStoreCompact(path, nullptr, nullptr, text, size); });
}

TEST_F(FailingCare, LeavesTheContentOfARepairedStore)
{
    RunCare("repair", [](const char* path, const char*, char* text, ULONG size)
    { return ZebStoreRepair(path, nullptr, nullptr, nullptr, text, size); });
}

TEST_F(FailingCare, LeavesNoHalfRepairedCopy)
{
    m_numbers.stride = 3;
    RunCare("repaired copy", [](const char* path, const char* copy, char* text, ULONG size)
    { return ZebStoreRepair(path, copy, nullptr, nullptr, text, size); });
}

TEST_F(FailingCare, LeavesNoHalfBackup)
{
    m_numbers.stride = 2;
    RunCare("backup", [](const char* path, const char* copy, char* text, ULONG size)
    { return ZebStoreBackup(path, copy, nullptr, nullptr, text, size); });
}

TEST_F(FailingCare, LeavesTheContentOfAStoreWhoseIndexGoes)
{
    RunCare("index off", [](const char* path, const char*, char* text, ULONG size)
    { return ZebStoreIndex(path, ZEBSTORE_INDEX_OFF, nullptr, nullptr, nullptr, text, size); });
}

TEST_F(FailingCare, LeavesTheContentOfAStoreWhoseIndexIsMade)
{
    Start(false);
    RunCare("index on", [](const char* path, const char*, char* text, ULONG size)
    { return ZebStoreIndex(path, ZEBSTORE_INDEX_ON, nullptr, nullptr, nullptr, text, size); });
}

TEST_F(FailingCare, LeavesTheContentOfAStoreThatIsRead)
{
    RunAll("reading", [&]
    {
        StoreFile::OpenOptions options;
        options.readOnly = true;
        StoreFile::Open(m_path, options)
            ->Messages()
            .LoadWhole(ContentsKey(IdOf(StandardFolder::Inbox), false).Message(1));
    }, [&] { ExpectSame(); });
}

// A value of this size is written to a temporary file before it is saved.
TEST_F(FailingCare, LeavesALargeValueWhole)
{
    m_numbers.stride = 250;
    constexpr size_t Size = 5'000'000;
    const std::string piece(65000, 'p');
    MessageId saved = 0;
    std::string read(Size, '\0');
    RunAll("large value",
           [&]
    {
        saved = 0;
        const std::shared_ptr<StoreFile> store = StoreFile::Open(m_path, {});
        const std::shared_ptr<StagedValue> staged = store->Stage();
        for (size_t done = 0; done < Size + 100000; done += piece.size())
        {
            TryTwice([&] { staged->Write(done, piece.data(), piece.size()); });
        }
        TryTwice([&] { staged->SetSize(Size); });
        MessageContent content;
        content.properties.SetLarge(PR_BODY_A, staged);
        TryTwice([&] { saved = store->Messages().Create({IdOf(StandardFolder::Inbox), false}, content); });
    }, [&]
    {
        if (saved == 0)
        {
            return ExpectSame();
        }
        const std::shared_ptr<StoreFile> store = StoreFile::Open(m_path, {});
        const LargeValuePtr value = store->Messages().Load(saved).properties.Large(PR_BODY_A);
        ASSERT_NE(value, nullptr);
        EXPECT_EQ(value->Size(), Size);
        EXPECT_EQ(value->Read(0, &read[0], Size), Size);
        EXPECT_EQ(read.find_first_not_of('p'), std::string::npos);
    });
}

} // namespace
} // namespace zebstore::test
