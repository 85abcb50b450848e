// SPDX-License-Identifier: Apache-2.0
// A box in the image.
#pragma once

namespace Veskar::Host {

/// A box on the normalised image plane (-1..1, right and up).
struct ImageBox {
    double left = 0.0;    ///< least u
    double bottom = 0.0;  ///< least v
    double right = 0.0;   ///< largest u
    double top = 0.0;     ///< largest v
};

}  // namespace Veskar::Host
