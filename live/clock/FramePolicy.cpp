// SPDX-License-Identifier: Apache-2.0
#include "live/clock/FramePolicy.h"

namespace Veskar::Live {

bool FramePolicy::takes(Irregularity irregularity) {
    switch (irregularity) {
        case Irregularity::Late:
            ++counts_.late;
            return options_.takesLate;
        case Irregularity::Repeated:
            ++counts_.repeated;
            return options_.takesRepeated;
        case Irregularity::Reordered:
            ++counts_.reordered;
            return options_.takesReordered;
        case Irregularity::None:
            break;
    }
    return true;
}

}  // namespace Veskar::Live
