// SPDX-License-Identifier: Apache-2.0
// Colours as numbers, and the vocabulary's words for them.
#pragma once

#include <veskar-host/Labels.h>

#include "live/onvif/LeftOut.h"
#include "live/onvif/SceneDescription.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace Veskar::Live {

/// A colour in CIE 1976 L*a*b* for the white point D65.
using CieLab = std::array<double, 3>;

/// @param cluster a colour; parts beyond the range of its colour space are limited to it
/// @return the colour; nothing in a colour space without a defined meaning
std::optional<CieLab> cieLabOf(const ColorCluster& cluster);

/// @param color a colour
/// @return the vocabulary's word for the reference colour at the least CIELAB distance
std::string nearestColor(const CieLab& color);

/// The colour of an object.
///
/// Clusters with a likelihood are candidates: the greatest one names the colour. Others are parts
/// of the object: those of one word are added up, and the word with the greatest share of all
/// weights names the colour, with its share as probability. A missing weight is 1.
///
/// @param clusters representative colours
/// @param leftOut counts those of a colour space without a defined meaning
/// @return the colour; "unknown" when there is none
Host::Label bestColor(const std::vector<ColorCluster>& clusters, LeftOut& leftOut);

/// @param label colour of a fused track
/// @return a representative colour with the probability as likelihood; none for "unknown" and words
///         outside the vocabulary
std::vector<ColorCluster> clustersFor(const Host::Label& label);

}  // namespace Veskar::Live
