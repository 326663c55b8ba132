// Every operation that the library exports, with a call of it.
#pragma once

#include "FrameWorld.h"
#include "World.h"

#include <vector>

namespace zeb::test
{

const std::vector<Call<World>>& ValueCalls();
const std::vector<Call<World>>& TableCalls();
const std::vector<Call<World>>& ObjectCalls();
const std::vector<Call<FrameWorld>>& FrameCalls();

} // namespace zeb::test
