// SPDX-License-Identifier: Apache-2.0
#include "calibrate/Calibration.h"

#include <veskar-host/Projection.h>

#include "calibrate/ImageErrors.h"
#include "check/Median.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Workbench {
namespace {

/// A value is significant beyond this many standard deviations.
constexpr double leastSignificance = 3.0;

/// Gates of the associations, which narrow as the estimate improves, degrees.
constexpr std::array gates{3.5, 2.5, 2.0, 2.0, 2.0, 2.0};
/// As long as pairs may be wrong, only what the coarse start gives is estimated.
constexpr std::size_t coarseRounds = 2;

bool has(const FreeParameters& free, MountingParameter parameter) {
    return free[static_cast<std::size_t>(parameter)];
}

FreeParameters coarseOf(const FreeParameters& asked) {
    FreeParameters free{};
    for (const MountingParameter parameter :
         {MountingParameter::CameraYaw, MountingParameter::CameraPitch,
          MountingParameter::CameraHeight, MountingParameter::Lag, MountingParameter::RadarYaw}) {
        free[static_cast<std::size_t>(parameter)] = has(asked, parameter);
    }
    return free;
}

/// 97.5 % quantile of Student's distribution (Cornish-Fisher expansion: Abramowitz,
/// Stegun, 26.7.5).
double quantile(std::size_t clusters) {
    constexpr double z = 1.959964;
    const double freedom = std::max(static_cast<double>(clusters) - 1.0, 2.0);
    return z + (z * z * z + z) / (4.0 * freedom) +
           (5.0 * std::pow(z, 5.0) + 16.0 * z * z * z + 3.0 * z) / (96.0 * freedom * freedom);
}

/// Errors of all samples at one placement.
struct Errors {
    std::vector<Eigen::Vector2d> angles;  ///< as PairError::before
    std::vector<double> lengths;          ///< in standard deviations
};

Errors errorsOf(const Installation& stated, const std::vector<CalibrationSample>& samples,
                const Placement& placement) {
    const std::vector<Eigen::Vector2d> inImage = imageErrors(stated, samples, placement);
    const ObjectModel model(stated, placement);
    Errors errors;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        Eigen::Vector2d angles = angularError(model, samples[i], inImage[i]);
        if (!samples[i].hasBearing()) {
            angles[0] = std::numeric_limits<double>::quiet_NaN();
        }
        errors.angles.push_back(angles);
        errors.lengths.push_back((samples[i].whitening * inImage[i]).norm());
    }
    return errors;
}

TypicalErrors typical(const Errors& errors) {
    if (errors.angles.empty()) {
        return {};
    }
    std::vector<double> bearings;
    std::vector<double> depressions;
    for (const Eigen::Vector2d& angles : errors.angles) {
        bearings.push_back(std::abs(angles[0]));
        depressions.push_back(std::abs(angles[1]));
    }
    return {medianOf(bearings), medianOf(depressions), medianOf(errors.lengths)};
}

TypicalErrors typicalErrors(const Installation& stated,
                            const std::vector<CalibrationSample>& samples,
                            const Placement& placement) {
    return typical(errorsOf(stated, samples, placement));
}

FreeParameters withModel(FreeParameters free) {
    for (const MountingParameter parameter : allParameters()) {
        free[static_cast<std::size_t>(parameter)] |= isOfModel(parameter);
    }
    return free;
}

class Estimation {
public:
    Estimation(const Installation& stated, const std::vector<CalibrationScene>& scenes,
               const FreeParameters& asked)
        : stated_(stated), scenes_(scenes), asked_(asked) {}

    CalibrationResult run() {
        estimate();
        judge();
        if (result_.corrects()) {
            holdOut();
        }
        compare();
        return result_;
    }

private:
    void estimate() {
        Placement placement = start();
        for (std::size_t round = 0; round < gates.size(); ++round) {
            samples_ = pairSamples(stated_, placement, scenes_, radians(gates[round]));
            all_ = fit(stated_, samples_, placement,
                       withModel(round < coarseRounds ? coarseOf(asked_) : asked_));
            placement = all_.placement;
        }
        result_.samples = all_.samples;
        result_.clusters = all_.clusters;
    }

    /// A turn that is asked of the radar is that of the camera the other way round.
    Placement start() const {
        Placement placement = coarseStart(stated_, scenes_);
        double& camera = placement[indexOf(MountingParameter::CameraYaw)];
        if (!has(asked_, MountingParameter::CameraYaw) &&
            has(asked_, MountingParameter::RadarYaw)) {
            placement[indexOf(MountingParameter::RadarYaw)] = -camera;
            camera = 0.0;
        }
        for (const MountingParameter parameter : allParameters()) {
            placement[indexOf(parameter)] *= has(asked_, parameter) ? 1.0 : 0.0;
        }
        return placement;
    }

    void judge() {
        const bool isEnough = all_.clusters >= leastClusters;
        const auto& P = all_.covariance;
        FreeParameters told{};
        for (const MountingParameter parameter : allParameters()) {
            if (!has(asked_, parameter)) {
                continue;
            }
            const Eigen::Index k = indexOf(parameter);
            CalibrationValue& value = result_.values[static_cast<std::size_t>(parameter)];
            value.value = all_.placement[k];
            value.std = std::sqrt(P(k, k));
            value.interval = quantile(all_.clusters) * value.std;
            const bool isTold = isEnough && value.std < traitsOf(parameter).usefulStd;
            told[static_cast<std::size_t>(parameter)] = isTold;
            value.verdict = isTold ? Verdict::AsStated : Verdict::CannotTell;
            for (const MountingParameter other : allParameters()) {
                const Eigen::Index l = indexOf(other);
                if (has(asked_, other)) {
                    result_.correlation(k, l) = P(k, l) / std::sqrt(P(k, k) * P(l, l));
                }
            }
        }
        select(told);
    }

    /// Leaves out the least significant value and estimates again, until all are significant:
    /// height and pitch, or yaw and roll, have similar effects, and one of them may explain both.
    void select(FreeParameters free) {
        while (std::count(free.begin(), free.end(), true) > 0) {
            const Fit fitted =
                fit(stated_, samples_, restricted(all_.placement, free), withModel(free));
            double least = 1.0;
            std::size_t weakest = parameterCount;
            for (const MountingParameter parameter : allParameters()) {
                const Eigen::Index k = indexOf(parameter);
                const double threshold =
                    std::max(traitsOf(parameter).negligible,
                             leastSignificance * std::sqrt(fitted.covariance(k, k)));
                const double ratio = std::abs(fitted.placement[k]) / threshold;
                if (has(free, parameter) && ratio < least) {
                    least = ratio;
                    weakest = static_cast<std::size_t>(parameter);
                }
            }
            if (weakest == parameterCount) {
                result_.correction = restricted(fitted.placement, free);
                correct(free);
                return;
            }
            free[weakest] = false;
        }
    }

    void correct(const FreeParameters& free) {
        chosen_ = free;
        for (std::size_t k = 0; k < parameterCount; ++k) {
            if (free[k]) {
                result_.values[k].verdict = Verdict::Corrected;
            }
        }
    }

    void compare() {
        const Errors before = errorsOf(stated_, samples_, Placement::Zero());
        const Errors after = errorsOf(stated_, samples_, result_.correction);
        result_.before = typical(before);
        result_.after = typical(after);
        for (std::size_t i = 0; i < samples_.size(); ++i) {
            result_.pairs.push_back({samples_[i].sinceMiddle, samples_[i].heard.range,
                                     samples_[i].seen, before.angles[i], after.angles[i]});
        }
    }

    static Placement restricted(Placement placement, const FreeParameters& free) {
        for (const MountingParameter parameter : allParameters()) {
            placement[indexOf(parameter)] *= has(free, parameter) ? 1.0 : 0.0;
        }
        return placement;
    }

    void holdOut() {
        std::vector<CalibrationSample> used;
        std::vector<CalibrationSample> kept;
        for (const CalibrationSample& sample : samples_) {
            (sample.timeBlock % 2 == 0 ? used : kept).push_back(sample);
        }
        const Placement part = restricted(
            fit(stated_, used, result_.correction, withModel(chosen_)).placement, chosen_);
        result_.heldOutBefore = typicalErrors(stated_, kept, Placement::Zero());
        result_.heldOutAfter = typicalErrors(stated_, kept, part);
        if (!(result_.heldOutAfter.whitened < result_.heldOutBefore.whitened)) {
            result_.refusal = "what one half of the time suggests does not hold in the other half";
            result_.correction.setZero();
            for (CalibrationValue& value : result_.values) {
                if (value.verdict == Verdict::Corrected) {
                    value.verdict = Verdict::CannotTell;
                }
            }
        }
    }

    const Installation& stated_;
    const std::vector<CalibrationScene>& scenes_;
    const FreeParameters& asked_;
    std::vector<CalibrationSample> samples_;
    Fit all_;
    FreeParameters chosen_{};
    CalibrationResult result_;
};

}  // namespace

bool CalibrationResult::isTold() const {
    return std::any_of(values.begin(), values.end(), [](const CalibrationValue& value) {
        return value.verdict == Verdict::AsStated || value.verdict == Verdict::Corrected;
    });
}

CalibrationResult calibrate(const Installation& stated, const std::vector<CalibrationScene>& scenes,
                            const FreeParameters& asked) {
    return Estimation(stated, scenes, asked).run();
}

}  // namespace Workbench
