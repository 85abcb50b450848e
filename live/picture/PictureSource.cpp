// SPDX-License-Identifier: Apache-2.0
#include "live/picture/PictureSource.h"

#include "live/picture/PictureFolder.h"
#include "live/picture/Snapshot.h"

namespace Veskar::Live {

std::unique_ptr<PictureSource> makePictureSource(const PictureSettings& settings) {
    if (!settings.directory.empty()) {
        return std::make_unique<PictureFolder>(settings.directory);
    }
    return makeSnapshot(settings.url, settings.credentials);
}

}  // namespace Veskar::Live
