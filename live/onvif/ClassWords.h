// SPDX-License-Identifier: Apache-2.0
// ONVIF's words for classes, and those of the vocabulary.
#pragma once

#include <veskar-host/Labels.h>

#include "live/onvif/LeftOut.h"
#include "live/onvif/SceneDescription.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Veskar::Live {

/// @param word a class of ONVIF, in its new or old form, or any word that imports understand
/// @return the vocabulary's class; nothing when it has none for it
std::optional<std::string> classOf(std::string_view word);

/// The class with the greatest likelihood; the first one of equal ones. A kind of vehicle, such as
/// "Car" beside "Vehicle", replaces the general word when its own likelihood is at least 0.5.
///
/// @param candidates classes of an object
/// @param leftOut counts words that the vocabulary has no class for, as "Class Fire"
/// @return the class; "unknown" when there is none
Host::Label bestClass(const std::vector<Candidate>& candidates, LeftOut& leftOut);

/// @param label class of a fused track
/// @return ONVIF's classes for it, from the general to the special one; none for "unknown"
std::vector<Candidate> candidatesFor(const Host::Label& label);

}  // namespace Veskar::Live
