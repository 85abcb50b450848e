// SPDX-License-Identifier: Apache-2.0
// Formatting that the lines of recordings and of fused tracks share.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/ImageBox.h>
#include <veskar-host/Labels.h>

#include "host/json/LineText.h"

#include <string_view>

#include <Eigen/Core>

namespace Veskar::Host::Internal {

// Decimals of each quantity: far below any sensor's resolution, and few enough that the bytes do
// not depend on rounding differences between mathematics libraries.
constexpr int timeDecimals = 6;
constexpr int imageDecimals = 6;
constexpr int metreDecimals = 3;
constexpr int angleDecimals = 4;
constexpr int ratioDecimals = 4;
constexpr int geoDecimals = 8;
constexpr int estimateDecimals = 9;

/// Appends a vector as a further member.
/// @param text receives the member
/// @param name its name
/// @param value the vector
/// @param decimals digits behind the point
VESKAR_HOST_EXPORT void appendVector(LineText& text, std::string_view name,
                                     const Eigen::Vector2d& value, int decimals);
/// Appends the labels that are known.
/// @param text receives the members
/// @param labels class and colours
VESKAR_HOST_EXPORT void appendLabels(LineText& text, const Labels& labels);
/// Appends a label and its probability, if the label is known.
/// @param text receives the members
/// @param name of the label
/// @param label the label
VESKAR_HOST_EXPORT void appendLabel(LineText& text, std::string_view name, const Label& label);
/// Appends a box as member "box".
/// @param text receives the member
/// @param box the box
VESKAR_HOST_EXPORT void appendBox(LineText& text, const ImageBox& box);

}  // namespace Veskar::Host::Internal
