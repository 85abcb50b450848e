// SPDX-License-Identifier: Apache-2.0
// Recognises the host application.
#pragma once

#include <veskar/Export.h>

#include <optional>

namespace Veskar {

/// Whether this process is the analytics application that the socket outputs are meant for: the
/// path of its executable contains "quandrelwatcher", unless setCalledFromHostApplication has said
/// otherwise.
///
/// Not cached; safe from any thread.
///
/// @return false also when the path cannot be read
VESKAR_EXPORT bool calledFromQWR();

/// Switches the socket outputs on or off, whatever the executable is called: a host of another name
/// switches them on, a tool that must never be taken for the device's application off.
///
/// Call it first of all. A FusionModule asks calledFromQWR when it is made, and whether annotations
/// are sent is settled with the first one; a later call changes neither. Safe from any thread.
///
/// @param answer what calledFromQWR answers from now on; nothing: what the path says, the default
VESKAR_EXPORT void setCalledFromHostApplication(std::optional<bool> answer);

}  // namespace Veskar
