// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Scorecard.h"

namespace Workbench {

Scorecard::Scorecard(double cutoff, const Eigen::Vector2d& observer)
    : setDistance_{cutoff, 2.0},
      gospaMean_(setDistance_),
      ospaMean_(setDistance_),
      clearMot_({cutoff, 0.5}),
      identity_({cutoff, 0.5}),
      hota_(cutoff),
      quality_(0.5 * cutoff),
      accuracy_(observer) {}

void Scorecard::add(const JudgedScene& scene) {
    const auto& [instant, near, matches] = scene;
    const Gospa costs = gospa(instant, matches, setDistance_);
    gospaMean_.add(costs);
    ospaMean_.add(costs);
    clearMot_.add(instant, near);
    identity_.add(instant, near);
    hota_.add(instant, near);
    quality_.add(instant, near);
    accuracy_.add(instant, matches);
    consistency_.add(instant, matches);
    delay_.add(instant, matches);
}

void Scorecard::beginAgain() {
    hota_.beginAgain();
    accuracy_.beginAgain();
}

void Scorecard::addAgain(const JudgedScene& scene) {
    hota_.addAgain(scene.instant, scene.near);
    accuracy_.addAgain(scene.instant, scene.matches);
}

std::vector<Figure> Scorecard::figures() const {
    const GospaMean::Result g = gospaMean_.result();
    const ClearMot::Result m = clearMot_.result();
    const Identity::Result i = identity_.result();
    const Hota::Result h = hota_.result();
    const PictureQuality::Result q = quality_.result();
    const Accuracy::Result a = accuracy_.result();
    const Consistency::Result c = consistency_.result();
    const ConfirmationDelay::Result d = delay_.result();
    constexpr bool all = true;  // needs complete truth
    constexpr bool any = false;
    constexpr bool yes = true;  // essential
    constexpr bool no = false;
    return {
        {"GOSPA", "GOSPA [m]", 3, all, yes, g.mean},
        {"GOSPA_rms", "GOSPA, root mean square [m]", 3, all, no, g.rootMeanPower},
        {"GOSPA_localisation", "  localisation part [m]", 3, any, no, g.localisation},
        {"GOSPA_missed", "  missed part [m]", 3, any, yes, g.missed},
        {"GOSPA_false", "  false part [m]", 3, all, yes, g.falseTracks},
        {"missed_per_instant", "missed objects at a time", 3, any, no, g.missedPerInstant},
        {"false_per_instant", "false tracks at a time", 3, all, no, g.falsePerInstant},
        {"OSPA", "OSPA [m]", 3, all, no, ospaMean_.result()},
        {"MOTA", "MOTA", 3, all, yes, m.MOTA},
        {"MOTP", "MOTP", 3, any, no, m.MOTP},
        {"MOTP_distance", "MOTP as distance [m]", 3, any, no, m.motpDistance},
        {"IDSW", "IDSW", 0, any, yes, static_cast<double>(m.IDSW)},
        {"Frag", "Frag", 0, any, no, static_cast<double>(m.Frag)},
        {"MT", "MT", 0, any, no, static_cast<double>(m.MT)},
        {"PT", "PT", 0, any, no, static_cast<double>(m.PT)},
        {"ML", "ML", 0, any, no, static_cast<double>(m.ML)},
        {"IDF1", "IDF1", 3, all, yes, i.IDF1},
        {"IDP", "IDP", 3, all, no, i.IDP},
        {"IDR", "IDR", 3, any, no, i.IDR},
        {"HOTA", "HOTA", 3, all, yes, h.HOTA},
        {"DetA", "DetA", 3, all, no, h.DetA},
        {"AssA", "AssA", 3, any, no, h.AssA},
        {"LocA", "LocA", 3, any, no, h.LocA},
        {"tracks_per_object", "tracks per object", 2, any, no, m.tracksPerObject},
        {"completeness", "completeness", 3, any, no, q.completeness},
        {"duplicates_per_object", "duplicates per object", 3, any, no, q.duplicatesPerObject},
        {"spuriousness", "spuriousness", 3, all, no, q.spuriousness},
        {"position_rmse", "position error, RMS [m]", 3, any, yes, a.positionRmse},
        {"position_median", "position error, median [m]", 3, any, no, a.positionMedian},
        {"radial_rmse", "  radial, RMS [m]", 3, any, no, a.radialRmse},
        {"cross_range_rmse", "  cross-range, RMS [m]", 3, any, no, a.crossRangeRmse},
        {"radial_bias", "  radial, mean [m]", 3, any, no, a.radialBias},
        {"cross_range_bias", "  cross-range, mean [m]", 3, any, no, a.crossRangeBias},
        {"velocity_rmse", "velocity error, RMS [m/s]", 3, any, no, a.velocityRmse},
        {"class_agreement", "class agreement", 3, any, no, a.classAgreement},
        {"confirmation_delay", "delay to confirmation [s]", 2, any, yes, d.mean},
        {"confirmation_delay_longest", "  longest [s]", 2, any, no, d.longest},
        {"never_found", "objects never found", 0, any, no,
         static_cast<double>(d.objectsNeverFound)},
        {"NEES", "NEES (2 when consistent)", 2, any, no, c.meanNees},
        {"NEES_within_95", "within 95 % (0.95)", 3, any, no, c.shareWithin95},
    };
}

}  // namespace Workbench
