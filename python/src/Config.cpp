// SPDX-License-Identifier: Apache-2.0
// Fields are named like the keys of a configuration file.
#include <veskar-host/InputError.h>
#include <veskar/Config.h>

#include "Progress.h"
#include "Record.h"
#include "io/TextFile.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Bindings {
namespace {

using Veskar::Config;
using Veskar::ConfigFault;
using Veskar::Host::InputError;

Config configOf(const std::string& text, const std::string& file) {
    const std::vector<ConfigFault> faults = Config::findFaults(text);
    for (const ConfigFault& fault : faults) {
        if (fault.effect == ConfigFault::Effect::Refused) {
            throw InputError(
                file + ":" + std::to_string(fault.line),
                fault.key.empty() ? InputError(fault.reason) : InputError(fault.key, fault.reason));
        }
    }
    for (const ConfigFault& fault : faults) {
        warnInPython(file + ": " + fault.text());
    }
    return Config::parse_json_string(text);
}

/// The limits of one class as a file has them, by two keys.
template <double std::pair<double, double>::*Limit>
void addHumanAspect(py::class_<Config::ModuleConfig>& module, const char* name, const char* text) {
    module.def_property(
        name,
        [](const Config::ModuleConfig& self) {
            const auto human = self.autocalibrationAspectLimits.find("human");
            return human == self.autocalibrationAspectLimits.end()
                       ? std::optional<double>()
                       : std::optional<double>(human->second.*Limit);
        },
        [](Config::ModuleConfig& self, double limit) {
            self.autocalibrationAspectLimits["human"].*Limit = limit;
        },
        text);
}

void bindSections(py::handle config) {
    Record<Config::VideoInput>(
        config, "VideoInput",
        "Measurement noise of the video sensor (\"video\" in \"veskarInputs\").")
        .field("uvCorrelation", &Config::VideoInput::uvCorrelation, "correlation of u and v")
        .field("uvVelocityStd", &Config::VideoInput::uvVelocityStd,
               "standard deviation of u and v rate, 1/s")
        .field("minimumPseudoRangeStd", &Config::VideoInput::minimumPseudoRangeStd,
               "least standard deviation of the pseudo range, m")
        .field("maximumPseudoRangeStd", &Config::VideoInput::maximumPseudoRangeStd,
               "largest standard deviation of the pseudo range, m")
        .field("pseudoRangeDotStd", &Config::VideoInput::pseudoRangeDotStd,
               "standard deviation of the pseudo-range rate, m/s")
        .field("minimumAngle", &Config::VideoInput::minimumAngle,
               "least angle below the horizon, degrees")
        .field("uvPositionStd", &Config::VideoInput::uvPositionStd,
               "standard deviation of u and v");
    Record<Config::FusionInputs>(config, "FusionInputs",
                                 "What the sensors deliver (\"veskarInputs\").")
        .field("video", &Config::FusionInputs::video, "key \"video\"");
    Record<Config::GainNegative>(
        config, "GainNegative",
        "Odds gains that lower the probability of a system track whose sensor coasts.")
        .field("radar", &Config::GainNegative::radar, "in a radar frame")
        .field("video", &Config::GainNegative::video, "in a video frame");
    Record<Config::ModuleConfig> module(
        config, "ModuleConfig", "Gating, association and track management (\"veskarModule\").");
    module.field("gainNegative", &Config::ModuleConfig::gainNegative, "see GainNegative")
        .field("splitGating", &Config::ModuleConfig::splitGating,
               "gate position and velocity apart")
        .field("gatingDistance", &Config::ModuleConfig::gatingDistance, "combined gate (exclusive)")
        .field("positionGatingDistance", &Config::ModuleConfig::positionGatingDistance,
               "position gate (exclusive)")
        .field("velocityGatingSimilarity", &Config::ModuleConfig::velocityGatingSimilarity,
               "least cosine (exclusive)")
        .field("velocityMinGatingLimit", &Config::ModuleConfig::velocityMinGatingLimit,
               "speed sum that makes it count")
        .field("stationaryBlockingMinSpeed", &Config::ModuleConfig::stationaryBlockingMinSpeed,
               "m/s; default 10 / 3.6")
        .field("stationaryBlockingMaxUVSpeed", &Config::ModuleConfig::stationaryBlockingMaxUVSpeed,
               "1/s; default 0.03")
        .field("stationaryBlockingMinVideoAge",
               &Config::ModuleConfig::stationaryBlockingMinVideoAge, "s; default 3.0")
        .field("trackKillTime", &Config::ModuleConfig::trackKillTime,
               "s, but the coasting limit is fixed at 0.5")
        .field("systemTrackConfirmationLimitUpper",
               &Config::ModuleConfig::systemTrackConfirmationLimitUpper, "for one sensor alone")
        .field("systemTrackConfirmationLimitLower",
               &Config::ModuleConfig::systemTrackConfirmationLimitLower, "for radar and video")
        .field("allowRadarToMultiple", &Config::ModuleConfig::allowRadarToMultiple,
               "share a radar track between objects")
        .field("useJVA", &Config::ModuleConfig::useJVA, "optimal instead of greedy assignment")
        .field("removeClassMismatches", &Config::ModuleConfig::removeClassMismatches,
               "classes may part radar and video; default false")
        .field("trackedOdMotionAnalyzerMaxHistoryLength",
               &Config::ModuleConfig::trackedOdMotionAnalyzerMaxHistoryLength,
               "positions; default 20")
        .field("trackedOdMotionAnalyzerMinHistoryLength",
               &Config::ModuleConfig::trackedOdMotionAnalyzerMinHistoryLength,
               "positions; default 3")
        .field("trackedOdMotionAnalyzerDistanceThreshold",
               &Config::ModuleConfig::trackedOdMotionAnalyzerDistanceThreshold,
               "image plane; default 0.2")
        .field("autocalibrationAgeLimit", &Config::ModuleConfig::autocalibrationAgeLimit,
               "s; default 1.0")
        .field("autocalibrationVideoCoastingLimit",
               &Config::ModuleConfig::autocalibrationVideoCoastingLimit, "s; default 0.1")
        .field("autocalibrationEdgeLimit", &Config::ModuleConfig::autocalibrationEdgeLimit,
               "image plane; default 0.99")
        .field("autocalibrationVideoNearLimit",
               &Config::ModuleConfig::autocalibrationVideoNearLimit, "image plane; default 0.2")
        .field("autocalibrationAspectLimits", &Config::ModuleConfig::autocalibrationAspectLimits,
               "(least, largest) width over height by class");
    addHumanAspect<&std::pair<double, double>::first>(
        module.type(), "autocalibrationHumanMinAspect", "least width over height of \"human\"");
    addHumanAspect<&std::pair<double, double>::second>(
        module.type(), "autocalibrationHumanMaxAspect", "largest width over height of \"human\"");
    Record<Config::PriorityConfig>(config, "PriorityConfig",
                                   "Detection priority (\"veskarDetectionPriority\").")
        .field("vuraWidthFractionLimit", &Config::PriorityConfig::vuraWidthFractionLimit,
               "fraction of the image; no rule reads it")
        .field("vuraHeightFractionLimit", &Config::PriorityConfig::vuraHeightFractionLimit,
               "least box height, fraction of the image")
        .field("vodWidthFractionLimit", &Config::PriorityConfig::vodWidthFractionLimit,
               "fraction of the image; no rule reads it")
        .field("vodHeightFractionLimit", &Config::PriorityConfig::vodHeightFractionLimit,
               "least box height, fraction of the image")
        .field("longlivedLimit", &Config::PriorityConfig::longlivedLimit,
               "age of a long-lived track, s")
        .field("travelledDistanceLimit", &Config::PriorityConfig::travelledDistanceLimit,
               "image plane")
        .field("radarFarLimitHuman", &Config::PriorityConfig::radarFarLimitHuman, "m")
        .field("radarFarLimitVehicle", &Config::PriorityConfig::radarFarLimitVehicle, "m")
        .field("nVideoFramesMissedLimitLow", &Config::PriorityConfig::nVideoFramesMissedLimitLow,
               "evaluations")
        .field("nVideoFramesMissedLimitHigh", &Config::PriorityConfig::nVideoFramesMissedLimitHigh,
               "evaluations")
        .field("autoAnnotationEnabled", &Config::PriorityConfig::autoAnnotationEnabled,
               "send annotations");
    Record<Config::Rules>(config, "Rules",
                          "Rules beyond the basic fusion (\"veskarRules\"); off unless set.")
        .field("radarKeepsSystemTrack", &Config::Rules::radarKeepsSystemTrack,
               "When a radar report does not fit a system track that both sensors support, video "
               "leaves and radar stays.")
        .field("pairGate", &Config::Rules::pairGate,
               "A report leaves a system track that both sensors support when its position is this "
               "far (inclusive) from the other sensor's track, as a fraction of "
               "positionGatingDistance; 0: no limit.")
        .field(
            "pairMemory", &Config::Rules::pairMemory,
            "Remember how well pairs of radar and video tracks agree, and how many others are as "
            "near: a report whose pair disagrees leaves, and system tracks merge by their memory.")
        .field("pairMemoryTime", &Config::Rules::pairMemoryTime, "time constant of the memory, s")
        .field("pairMemoryFreshness", &Config::Rules::pairMemoryFreshness,
               "longest coasting time that counts, s (inclusive)")
        .field("pairMemoryFar", &Config::Rules::pairMemoryFar,
               "Mahalanobis distance from which on (inclusive) pairs are equally far.")
        .field("pairMemoryNear", &Config::Rules::pairMemoryNear,
               "Mahalanobis distance below which another track is a rival.")
        .field("pairMemoryLimit", &Config::Rules::pairMemoryLimit,
               "Mean squared Mahalanobis distance above which a pair disagrees, in a crowd; a pair "
               "begins with it.")
        .field("pairMemoryCrowd", &Config::Rules::pairMemoryCrowd,
               "mean number of rivals above which it is a crowd")
        .field("takeOver", &Config::Rules::takeOver,
               "A system track takes a new sensor track while its own one coasts, when the sensor "
               "has never updated both in one of its last 32 frames. Needs freshReportsOnly.")
        .field("freshReportsOnly", &Config::Rules::freshReportsOnly,
               "Reports that coast start no system track and are assigned to none.")
        .field("coastingLimit", &Config::Rules::coastingLimit,
               "s; from it on (inclusive) the two rules above act")
        .field("orderedMerging", &Config::Rules::orderedMerging,
               "Of two system tracks that started at the same time the one with the smaller id "
               "counts as the older one, and the one with radar survives a merge unless only the "
               "other is confirmed.")
        .field("videoRangeStd", &Config::Rules::videoRangeStd,
               "A system track without radar is not confirmed before the standard deviation of its "
               "range is below this, m, while radar frames arrive; 0: no limit.")
        .field("radarSilence", &Config::Rules::radarSilence,
               "s since the last radar frame from which on radar is silent");
}

}  // namespace

void bindConfig(py::module_& module) {
    using Effect = ConfigFault::Effect;
    // The class is made before its sections, which are named in it, and they before its fields.
    Record<Config> config(module, "Config",
                          "The configuration of the fusion.\n\n"
                          "Fields have the names of the keys of a configuration file, see "
                          "docs/configuration.md.\nA Config() made without values lets nothing "
                          "through the gates: start from defaults() or load().");
    bindSections(config.type());
    config.field("inputs", &Config::inputs, "section \"veskarInputs\"")
        .field("module", &Config::module, "section \"veskarModule\"")
        .field("detectionPriority", &Config::detectionPriority,
               "section \"veskarDetectionPriority\"")
        .field("rules", &Config::rules, "section \"veskarRules\"");
    config.type()
        .def_static("defaults", &Config::defaults, "The shipped configuration.")
        .def_static(
            "load",
            [](const py::object& path) {
                return configOf(Workbench::readText(pathOf(path)), pathOf(path));
            },
            py::arg("path"),
            "Reads a configuration file.\n\n"
            "What the fusion does not use as written becomes a UserWarning.\n\n"
            "Raises\n------\nOSError\n    when the file cannot be read\n"
            "InputError\n    when the fusion refuses the configuration")
        .def_static(
            "from_dict",
            [](const py::dict& values, const py::object& base) {
                Config made = base.is_none() ? Config::defaults() : base.cast<Config>();
                assignNested(py::cast(&made, py::return_value_policy::reference), values,
                             {{"veskarInputs", "inputs"},
                              {"veskarModule", "module"},
                              {"veskarDetectionPriority", "detectionPriority"},
                              {"veskarRules", "rules"}});
                return made;
            },
            py::arg("values"), py::arg("base") = py::none(),
            "A configuration with some values changed.\n\n"
            "Parameters\n----------\n"
            "values : dict\n"
            "    by section, named as in a file (\"veskarModule\") or like the field (\"module\")\n"
            "base : Config, optional\n    the others; default: the shipped configuration\n\n"
            "Raises\n------\nValueError\n    for a key that is unknown")
        .def("to_json", &Config::toJson,
             "The configuration as JSON text that load() reads from a file.");

    py::class_<ConfigFault> fault(module, "ConfigFault",
                                  "What a configuration's text has that is not used as written.");
    py::enum_<Effect>(fault, "Effect", "What the fusion does about it.")
        .value("REFUSED", Effect::Refused, "the configuration is refused")
        .value("REPLACED", Effect::Replaced, "another value is used")
        .value("IGNORED", Effect::Ignored, "nothing reads it");
    fault.def_readonly("effect", &ConfigFault::effect, "what the fusion does about it")
        .def_readonly("line", &ConfigFault::line, "from 1")
        .def_readonly("key", &ConfigFault::key, "with dots; empty: the document")
        .def_readonly("value", &ConfigFault::value, "as written")
        .def_readonly("reason", &ConfigFault::reason, "what is wrong")
        .def("__str__", &ConfigFault::text);
    module.def("find_faults", &Config::findFaults, py::arg("json"),
               "What is wrong with the JSON text of a configuration, as ConfigFault.");
}

}  // namespace Bindings
