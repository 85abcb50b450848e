// SPDX-License-Identifier: Apache-2.0
// Pieces of the lines that recordings and fused tracks share.
#pragma once

#include "recording/Recording.h"

#include <initializer_list>
#include <string>
#include <string_view>

#include <Eigen/Core>

namespace Workbench {

// Decimals of each kind of number: far below any sensor's resolution, and few enough that the bytes
// do not depend on the last digit of a mathematics library.
constexpr int timeDecimals = 6;
constexpr int imageDecimals = 6;
constexpr int metreDecimals = 3;
constexpr int angleDecimals = 4;
constexpr int ratioDecimals = 4;
constexpr int geoDecimals = 8;
constexpr int estimateDecimals = 9;

/// Appends a member after others: a comma, the name and the number.
/// @param text receives the member
/// @param name its name
/// @param value the number
/// @param decimals digits behind the point
void appendMember(std::string& text, std::string_view name, double value, int decimals);
/// As above, with a list of numbers.
/// @param text receives the member
/// @param name its name
/// @param values the numbers
/// @param decimals digits behind the point
void appendMember(std::string& text, std::string_view name, std::initializer_list<double> values,
                  int decimals);
/// As above, with a vector.
/// @param text receives the member
/// @param name its name
/// @param value the vector
/// @param decimals digits behind the point
void appendMember(std::string& text, std::string_view name, const Eigen::Vector2d& value,
                  int decimals);
/// Appends those labels that are known.
/// @param text receives the members
/// @param labels class and colours
void appendLabels(std::string& text, const Labels& labels);
/// Appends one label, if it is known, and its probability.
/// @param text receives the members
/// @param name of the label
/// @param label the label
void appendLabel(std::string& text, std::string_view name, const Label& label);
/// Appends a box as member "box".
/// @param text receives the member
/// @param box the box
void appendBox(std::string& text, const ImageBox& box);

}  // namespace Workbench
