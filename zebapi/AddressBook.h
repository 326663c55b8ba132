#pragma once

#include "zebapi/objects/AddressBook.h"
