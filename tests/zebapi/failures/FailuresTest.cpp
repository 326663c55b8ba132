// Nothing but what is stated leaves the library, whatever fails on the way of a call: a
// CZebException*, and the _com_error of an empty wrapper.
#include "Calls.h"

#include "tests/support/Count.h"

#include <ostream>

namespace zeb::test
{

/// For the test's messages.
void PrintTo(Kind kind, std::ostream* out)
{
    *out << KindName(kind);
}

namespace
{

/// Who fails.
const char* SourceName(Kind kind)
{
    switch (kind)
    {
    case Kind::AnAllocation:
    case Kind::AllMemory:
        return "new";
    case Kind::MapiAllocation:
        return "allocations";
    case Kind::ASystemCall:
    case Kind::EverySystemCall:
        return "system calls";
    default:
        return "calls";
    }
}

template <class World>
int ScanAll(const std::vector<Call<World>>& calls, Kind kind)
{
    int failures = 0;
    for (const Call<World>& call : calls)
    {
        failures += Scan(call, kind);
    }
    PrintCount((std::string("fault points, ") + SourceName(kind)).c_str(), failures);
    return failures;
}

class Failures : public ::testing::TestWithParam<Kind>
{
};

/// Kinds that wrappers and values meet.
class ObjectFailures : public Failures
{
};

/// Kinds that the search, the start and the registry meet.
class FrameFailures : public Failures
{
};

} // namespace

TEST_P(ObjectFailures, NothingElseLeavesAValue)
{
    const int failures = ScanAll(ValueCalls(), GetParam());
    EXPECT_TRUE(failures > 10 || GetParam() >= Kind::AProviderCall) << failures;
}

TEST_P(ObjectFailures, NothingElseLeavesATable)
{
    EXPECT_GT(ScanAll(TableCalls(), GetParam()), GetParam() >= Kind::ASystemCall ? 0 : 10);
}

TEST_P(ObjectFailures, NothingElseLeavesAPropertyObject)
{
    const int failures = ScanAll(ObjectCalls(), GetParam());
    EXPECT_TRUE(failures > 20 || GetParam() >= Kind::ASystemCall) << failures;
}

TEST_P(FrameFailures, NothingElseLeavesTheLibraryObject)
{
    EXPECT_GT(ScanAll(FrameCalls(), GetParam()), 20);
}

INSTANTIATE_TEST_SUITE_P(Every, ObjectFailures,
                         ::testing::Values(Kind::AnAllocation, Kind::AllMemory, Kind::MapiAllocation,
                                           Kind::AProviderCall, Kind::AProviderWarning, Kind::AProviderMemory,
                                           Kind::AnUnknownResult, Kind::AProviderText, Kind::AnEmptyResult,
                                           Kind::EveryProviderCall, Kind::ASystemCall, Kind::EverySystemCall));
INSTANTIATE_TEST_SUITE_P(Every, FrameFailures,
                         ::testing::Values(Kind::AnAllocation, Kind::AllMemory, Kind::ASystemCall,
                                           Kind::EverySystemCall));

} // namespace zeb::test
