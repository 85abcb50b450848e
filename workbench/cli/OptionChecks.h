// SPDX-License-Identifier: Apache-2.0
// Validators for values on the command line.
#pragma once

#include <CLI/CLI.hpp>

namespace Workbench {

/// Rejects NaN, which passes the comparing validators of CLI11.
/// @return the validator
CLI::Validator number();

/// @param least smallest allowed value
/// @param most largest allowed value
/// @return the validator of a real value
CLI::Validator within(double least, double most);

/// Accepts unsigned 64-bit integers; CLI11 alone would convert "-1" to the largest one.
/// @return the validator
CLI::Validator wholeNumber();

}  // namespace Workbench
