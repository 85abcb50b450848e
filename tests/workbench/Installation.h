// SPDX-License-Identifier: Apache-2.0
// A header of recordings for tests.
#pragma once

#include "host/TestInstallation.h"
#include "recording/Recording.h"

namespace VeskarTest {

/// @return a header with the installation of testInstallation
inline Workbench::RecordingHeader installation() {
    Workbench::RecordingHeader header;
    static_cast<Workbench::Installation&>(header) = testInstallation();
    return header;
}

}  // namespace VeskarTest
