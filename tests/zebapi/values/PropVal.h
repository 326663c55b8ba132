// What the tests of property values share.
#pragma once

#include "tests/support/MapiMemory.h"
#include "tests/support/Thrown.h"
#include "tests/support/doubles/MapiUtilities.h"
#include "zebapi/OnePROPVAL.h"

#include <gtest/gtest.h>

#include <vector>

namespace zeb::test
{

class PropValTest : public ::testing::Test
{
protected:
    PropValTest()
        : parent(memory.Allocate(64))
    {
    }
    ~PropValTest() override { Zeb_MemFree(parent); }

    static SPropValue Tagged(ULONG type)
    {
        SPropValue value = {};
        value.ulPropTag = PROP_TAG(type, 0x6001);
        return value;
    }

    /// Puts a value of its own into `owner`, as MAPI calls do.
    SPropValue& Fill(CZebPropVal& owner, const SPropValue& value)
    {
        SPropValue** slot = &owner;
        *slot = static_cast<SPropValue*>(memory.Allocate(sizeof(SPropValue)));
        **slot = value;
        return **slot;
    }

    /// A view whose allocations hang on the test's parent.
    CZebOnePropVal View(SPropValue& value) { return CZebOnePropVal(&value, parent); }

    MapiMemory memory;
    MapiUtilities utilities;
    void* parent;
};

} // namespace zeb::test
