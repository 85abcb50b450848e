// SPDX-License-Identifier: Apache-2.0
// Starts GStreamer, and keeps its objects.
#pragma once

#include <memory>

#include <gst/gst.h>

namespace Veskar::Live {

/// Gives back a reference.
struct UnrefGstObject {
    void operator()(gpointer object) const noexcept { gst_object_unref(object); }
};
/// A reference to an object of GStreamer.
template <typename Object>
using GstHandle = std::unique_ptr<Object, UnrefGstObject>;

/// Starts GStreamer, once per process, with the plugins that RTSP needs and no others: it would
/// otherwise load every plugin of the system to see what it is good for, and keep the answer in the
/// user's home. Sets environment variables, and therefore belongs before other threads.
/// @throw InputError when a plugin is not installed
void startGStreamer();

}  // namespace Veskar::Live
