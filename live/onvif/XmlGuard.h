// SPDX-License-Identifier: Apache-2.0
// Refuses XML that no sensor sends, before it is parsed.
#pragma once

#include "live/onvif/ElementTree.h"

#include <string_view>

namespace Veskar::Live {

/// Refuses a text that is too large, is not UTF-8, has more elements and attributes than allowed
/// (each takes several times the memory of its text), a document type declaration, or a reference
/// to an entity other than XML's own five: nothing is ever expanded.
///
/// @param text an XML document
/// @param limits what is allowed
/// @throw Host::InputError the reason
void refuseHostileXml(std::string_view text, const TextLimits& limits);

}  // namespace Veskar::Live
