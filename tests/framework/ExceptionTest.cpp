#include "framework/Exception.h"

#include "framework/Containers.h"

#include "tests/framework/probe/ProbeException.h"
#include "tests/support/Slot.h"

#include <gtest/gtest.h>

#include <sstream>

using zeb::test::EntryOfSlot;
using zeb::test::SlotOf;

namespace
{

class LocalException : public CException
{
    DECLARE_DYNAMIC(LocalException)

public:
    explicit LocalException(bool onHeap = true)
        : CException(onHeap)
    {
    }
};
IMPLEMENT_DYNAMIC(LocalException, CException)

class DerivedProbe : public ProbeException
{
    DECLARE_DYNAMIC(DerivedProbe)

public:
    DerivedProbe()
        : ProbeException(7)
    {
    }
};
IMPLEMENT_DYNAMIC(DerivedProbe, ProbeException)

TEST(Exception, SlotsFollowThoseOfTheObject)
{
    constexpr size_t destructor = 1;
    EXPECT_EQ(SlotOf(&CObject::GetRuntimeClass), 0u);
    EXPECT_EQ(SlotOf(&CObject::Serialize), EntryOfSlot(2, destructor));
    EXPECT_EQ(SlotOf(&CObject::AssertValid), EntryOfSlot(3, destructor));
    EXPECT_EQ(SlotOf(&CObject::Dump), EntryOfSlot(4, destructor));
    EXPECT_EQ(SlotOf(&CException::GetRuntimeClass), 0u);
    EXPECT_EQ(SlotOf(&CException::GetErrorMessage), EntryOfSlot(5, destructor));
    EXPECT_EQ(SlotOf(&CException::ReportError), EntryOfSlot(6, destructor));
    EXPECT_EQ(SlotOf(&ProbeException::GetErrorMessage), EntryOfSlot(5, destructor));
    EXPECT_EQ(SlotOf(&ProbeException::GetNumber), EntryOfSlot(8, destructor)) << "after the base's two other slots";
}

TEST(Exception, EachClassCatchesItAcrossBinaries)
{
    const int before = ProbeException::Alive();
    try
    {
        ThrowProbe(1);
    }
    catch (ProbeException* error)
    {
        EXPECT_EQ(error->GetNumber(), 1);
        error->Delete();
    }
    try
    {
        ThrowProbe(2);
    }
    catch (CException* error)
    {
        char text[32] = {};
        EXPECT_EQ(error->GetErrorMessage(text, sizeof text, nullptr), TRUE);
        EXPECT_STREQ(text, "probe 2");
        error->Delete();
    }
    try
    {
        ThrowProbe(3);
    }
    catch (CObject* object)
    {
        EXPECT_TRUE(object->IsKindOf(RUNTIME_CLASS(CException)));
        EXPECT_EQ(ProbeException::Alive(), before + 1);
        delete object;
    }
    EXPECT_EQ(ProbeException::Alive(), before);
}

TEST(Exception, DeleteDeletesIt)
{
    const int before = ProbeException::Alive();
    auto* error = new ProbeException(1);
    EXPECT_EQ(ProbeException::Alive(), before + 1);
    error->Delete();
    EXPECT_EQ(ProbeException::Alive(), before);
}

TEST(Exception, DeleteLeavesOneOnTheStack)
{
    LocalException kept(false);
    kept.Delete();
    EXPECT_STREQ(kept.GetRuntimeClass()->m_lpszClassName, "LocalException");
}

TEST(Exception, TheBaseHasNoDescription)
{
    LocalException error(false);
    char text[4] = "abc";
    unsigned int help = 5;
    EXPECT_EQ(error.GetErrorMessage(text, sizeof text, &help), FALSE);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(help, 0u);
    EXPECT_EQ(error.GetErrorMessage(nullptr, 0, nullptr), FALSE);
}

TEST(Exception, ReportErrorWritesDescriptionOrClass)
{
    ::testing::internal::CaptureStderr();
    LocalException error(false);
    EXPECT_EQ(error.ReportError(), 1);
    auto* probe = new ProbeException(4);
    probe->ReportError();
    probe->Delete();
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "LocalException\nprobe 4\n");
}

TEST(RuntimeClass, RecordsNameClassesAcrossBinaries)
{
    const CRuntimeClass* record = RUNTIME_CLASS(ProbeException);
    EXPECT_STREQ(record->m_lpszClassName, "ProbeException");
    EXPECT_EQ(record->m_nObjectSize, int(sizeof(ProbeException)));
    EXPECT_STREQ(record->m_pfnGetBaseClass()->m_lpszClassName, "CException");
    EXPECT_TRUE(record->IsDerivedFrom(RUNTIME_CLASS(ProbeException)));
    EXPECT_TRUE(record->IsDerivedFrom(RUNTIME_CLASS(CException)));
    EXPECT_TRUE(record->IsDerivedFrom(RUNTIME_CLASS(CObject)));
    EXPECT_FALSE(record->IsDerivedFrom(RUNTIME_CLASS(LocalException)));
    EXPECT_FALSE(RUNTIME_CLASS(CException)->IsDerivedFrom(record));
    EXPECT_FALSE(record->IsDerivedFrom(nullptr));
}

TEST(RuntimeClass, ObjectsAreOfClassAndBases)
{
    DerivedProbe object;
    EXPECT_TRUE(object.IsKindOf(RUNTIME_CLASS(DerivedProbe)));
    EXPECT_TRUE(object.IsKindOf(RUNTIME_CLASS(ProbeException)));
    EXPECT_TRUE(object.IsKindOf(RUNTIME_CLASS(CException)));
    EXPECT_FALSE(object.IsKindOf(RUNTIME_CLASS(LocalException)));
    EXPECT_FALSE(object.IsKindOf(RUNTIME_CLASS(CPtrArray)));
}

TEST(Object, DumpWritesTheClassName)
{
    std::ostringstream text;
    CPtrArray().Dump(text);
    EXPECT_EQ(text.str(), "CPtrArray");
}

} // namespace
