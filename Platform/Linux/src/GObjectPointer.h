#pragma once

#include <memory>

#include <glib-object.h>

namespace tessara {

struct UnrefGObject {
    void operator()(void* object) const noexcept { g_object_unref(object); }
};

/// Holds one reference of a GObject.
template <typename Object>
using GObjectPointer = std::unique_ptr<Object, UnrefGObject>;

}  // namespace tessara
