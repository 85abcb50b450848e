// SPDX-License-Identifier: Apache-2.0
// All headers of the library for hosts.
#pragma once

#include <veskar-host/CameraSetup.h>
#include <veskar-host/FrameRecorder.h>
#include <veskar-host/FusedFrame.h>
#include <veskar-host/FusedTrack.h>
#include <veskar-host/FusionPipeline.h>
#include <veskar-host/GeographicPosition.h>
#include <veskar-host/GroundEstimate.h>
#include <veskar-host/HostAdapter.h>
#include <veskar-host/HostParameters.h>
#include <veskar-host/ImageBox.h>
#include <veskar-host/InputError.h>
#include <veskar-host/Installation.h>
#include <veskar-host/Labels.h>
#include <veskar-host/Mounting.h>
#include <veskar-host/Projection.h>
#include <veskar-host/RadarModel.h>
#include <veskar-host/RadarReport.h>
#include <veskar-host/RadarSetup.h>
#include <veskar-host/ReadyEstimate.h>
#include <veskar-host/ReportBase.h>
#include <veskar-host/SensorFrame.h>
#include <veskar-host/Site.h>
#include <veskar-host/UsualSize.h>
#include <veskar-host/VideoModel.h>
#include <veskar-host/VideoReport.h>
