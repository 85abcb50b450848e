// SPDX-License-Identifier: Apache-2.0
// Checks of the command line's values.
#pragma once

#include <CLI/CLI.hpp>

namespace Workbench {

/// Refuses NaN, which passes every check of CLI11 that compares.
/// @return the check
CLI::Validator number();

/// @param least smallest legal value
/// @param most largest legal value
/// @return the check of a real value
CLI::Validator within(double least, double most);

/// An integer of 64 bits without sign; the parser takes "-1" for the largest one.
/// @return the check
CLI::Validator wholeNumber();

}  // namespace Workbench
