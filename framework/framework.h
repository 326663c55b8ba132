// Includes the whole framework.
#pragma once

#include "framework/App.h"
#include "framework/CString.h"
#include "framework/ComError.h"
#include "framework/ComPtr.h"
#include "framework/Containers.h"
#include "framework/Exception.h"
#include "framework/Object.h"
#include "framework/Sync.h"
