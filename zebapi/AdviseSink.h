#pragma once

#include "zebapi/tables/AdviseSink.h"
