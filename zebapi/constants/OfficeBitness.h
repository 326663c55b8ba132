// The kinds of provider libraries.
#pragma once

#include "platform/mapi.h"

/// The form of a provider library's export names.
enum EnumOfficeBitness : LONG
{
    OfficeBitnessNone = 0, ///< not a MAPI provider
    OfficeBitness32 = 1,   ///< decorated: name, "@" and the size of the arguments
    OfficeBitness64 = 2,   ///< undecorated
};
