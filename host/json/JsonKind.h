// SPDX-License-Identifier: Apache-2.0
// The kinds of JSON values.
#pragma once

namespace Veskar::Host::Internal {

/// Kinds of JSON values; integers are numbers written without fraction and exponent.
enum class JsonKind { Null, Object, Array, String, Boolean, Integer, Fraction };

}  // namespace Veskar::Host::Internal
