// SPDX-License-Identifier: Apache-2.0
// What a host needs: configuration, camera, tracks, fusion, detection priority, device status and
// the version.
#pragma once

#include <veskar/Camera.h>
#include <veskar/Config.h>
#include <veskar/DetectionPriority.h>
#include <veskar/FusionModule.h>
#include <veskar/FusionObserver.h>
#include <veskar/GeoLocation.h>
#include <veskar/HostApplication.h>
#include <veskar/JsonNode.h>
#include <veskar/RadarStatus.h>
#include <veskar/SystemTrack.h>
#include <veskar/Track.h>
#include <veskar/Version.h>
#include <veskar/Vocabulary.h>
