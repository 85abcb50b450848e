// SPDX-License-Identifier: Apache-2.0
// What a JSON value may be.
#pragma once

namespace Veskar::Host::Internal {

/// Kinds of JSON values; numbers are told apart by how they are written.
enum class JsonKind { Null, Object, Array, String, Boolean, Integer, Fraction };

}  // namespace Veskar::Host::Internal
