// SPDX-License-Identifier: Apache-2.0
// In a program that was built without the library that asks for pictures.
#include <veskar-host/InputError.h>

#include "live/picture/Snapshot.h"

namespace Veskar::Live {

std::string snapshotMissing() {
    return VESKAR_LIVE_SNAPSHOT_MISSING;
}

std::unique_ptr<PictureSource> makeSnapshot(const std::string& /*url*/,
                                            const std::string& /*credentials*/) {
    throw Host::InputError(snapshotMissing());
}

}  // namespace Veskar::Live
