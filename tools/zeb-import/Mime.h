// Owners of GMime objects.
#pragma once

#include "tools/zeb-import/Notes.h"

#include <gmime/gmime.h>

#include <memory>

namespace zeb::tools
{

struct Unref
{
    void operator()(void* object) const { g_object_unref(object); }
};
/// A counted GMime object.
template <class T>
using GRef = std::unique_ptr<T, Unref>;

struct GFree
{
    void operator()(void* memory) const { g_free(memory); }
};
/// A text that GLib allocated.
using GText = std::unique_ptr<char, GFree>;

/// Starts GMime; once per process.
void StartMime();

} // namespace zeb::tools
