// SPDX-License-Identifier: Apache-2.0
// What a JSON value may be.
#pragma once

namespace Workbench {

/// Kinds of JSON values; numbers are told apart by how they are written.
enum class JsonKind { Null, Object, Array, String, Boolean, Integer, Fraction };

}  // namespace Workbench
