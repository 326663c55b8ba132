// The steps of random sequences. Each says what it does before it does it; without anything to do it to, nothing.
#pragma once

#include "tests/zebstore/model/World.h"

namespace zebstore::model
{

const std::vector<Step>& FolderSteps();
const std::vector<Step>& MailSteps();
const std::vector<Step>& TableSteps();

} // namespace zebstore::model
