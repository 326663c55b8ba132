#pragma once

#include "zebapi/frame/LogSink.h"
