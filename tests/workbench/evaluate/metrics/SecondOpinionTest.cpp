// SPDX-License-Identifier: Apache-2.0
// The program's streaming metrics against the same metrics in matrix form, on random recordings.
#include "evaluate/Instants.h"
#include "evaluate/metrics/ClearMot.h"
#include "evaluate/metrics/Hota.h"
#include "evaluate/metrics/Identity.h"
#include "evaluate/metrics/MatrixForm.h"
#include "evaluate/metrics/RandomRecording.h"

#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>

namespace Workbench {
namespace {

using testing::ElementsAre;
using testing::Pair;
using testing::UnorderedElementsAre;

constexpr double zeroDistance = 4.0;
constexpr double threshold = 0.5;
constexpr unsigned recordings = 1800;
constexpr double accuracy = 1e-12;

MatrixForm::Figures programsHota(const std::vector<Instant>& instants) {
    Hota metric(zeroDistance);
    addTwice(metric, instants);
    const Hota::Result result = metric.result();
    return {result.HOTA, result.DetA, result.AssA, result.LocA};
}

MatrixForm::Figures programsClearMot(const std::vector<Instant>& instants) {
    ClearMot metric({zeroDistance, threshold});
    for (const Instant& instant : instants) {
        add(metric, instant);
    }
    const ClearMot::Result r = metric.result();
    MatrixForm::Figures figures{r.MOTA, r.MOTP, r.motpDistance};
    for (const int count : {r.TP, r.FN, r.FP, r.IDSW, r.Frag, r.MT, r.PT, r.ML}) {
        figures.push_back(count);
    }
    figures.push_back(r.tracksPerObject);
    return figures;
}

MatrixForm::Figures programsIdentity(const std::vector<Instant>& instants) {
    Identity metric({zeroDistance, threshold});
    for (const Instant& instant : instants) {
        add(metric, instant);
    }
    const Identity::Result r = metric.result();
    MatrixForm::Figures figures{r.IDF1, r.IDP, r.IDR};
    for (const int count : {r.IDTP, r.IDFP, r.IDFN}) {
        figures.push_back(count);
    }
    return figures;
}

/// The largest difference of two lists of figures; undefined figures are equal to each other only.
double difference(const MatrixForm::Figures& one, const MatrixForm::Figures& other) {
    double largest = 0.0;
    for (std::size_t i = 0; i < one.size(); ++i) {
        if (std::isnan(one[i]) != std::isnan(other[i])) {
            return std::numeric_limits<double>::infinity();
        }
        if (!std::isnan(one[i])) {
            largest = std::max(largest, std::abs(one[i] - other[i]));
        }
    }
    return largest;
}

const MatrixForm::Figures& nearest(const std::vector<MatrixForm::Figures>& choices,
                                   const MatrixForm::Figures& figures) {
    return *std::min_element(choices.begin(), choices.end(),
                             [&](const auto& one, const auto& other) {
                                 return difference(one, figures) < difference(other, figures);
                             });
}

std::vector<Instant> recordingOf(unsigned seed) {
    Mishaps ignored;
    return randomRecording(seed, ignored);
}

TEST(RandomRecording, HasEverythingThatATrackerCanDoWrong) {
    Mishaps happened;
    int clearMotTies = 0;
    int hotaTies = 0;
    for (unsigned seed = 0; seed < recordings; ++seed) {
        const std::vector<Instant> instants = randomRecording(seed, happened);
        const MatrixForm::Recording recording(instants, zeroDistance);
        clearMotTies += MatrixForm::clearMot(recording, threshold).size() > 1 ? 1 : 0;
        hotaTies += MatrixForm::hota(recording).size() > 1 ? 1 : 0;
    }
    EXPECT_GT(happened.misses, 5000);
    EXPECT_GT(happened.falseTracks, 1000);
    EXPECT_GT(happened.swaps, 1000);
    EXPECT_GT(happened.newTracks, 1000);
    EXPECT_GT(happened.absences, 1000);
    EXPECT_GT(happened.withoutTruth, 500);
    EXPECT_GT(happened.withoutTracks, 500);
    EXPECT_GT(happened.withNothing, 200);
    EXPECT_GT(clearMotTies, 100);
    EXPECT_GT(hotaTies, 15);
}

TEST(MatrixForm, FindsAllMatchingsThatTie) {
    Eigen::MatrixXd gain(2, 2);
    gain << 1, 1,  //
        0, 0;
    EXPECT_THAT(MatrixForm::bestMatchings(gain),
                UnorderedElementsAre(ElementsAre(Pair(0, 0)), ElementsAre(Pair(0, 1))));
    gain << 3, 2,  //
        2, 0;
    EXPECT_THAT(MatrixForm::bestMatchings(gain), ElementsAre(ElementsAre(Pair(0, 1), Pair(1, 0))));
}

TEST(MatrixForm, FindsTheLeastCost) {
    Eigen::MatrixXd cost(3, 3);
    cost << 1, 2, 9,  //
        1, 5, 9,      //
        9, 3, 4;
    // 2 + 1 + 4; the diagonal costs 10.
    EXPECT_EQ(MatrixForm::leastCost(cost), 7.0);
}

TEST(Hota, EqualsItsMatrixForm) {
    for (unsigned seed = 0; seed < recordings; ++seed) {
        const std::vector<Instant> instants = recordingOf(seed);
        const MatrixForm::Figures figures = programsHota(instants);
        const auto choices = MatrixForm::hota(MatrixForm::Recording(instants, zeroDistance));
        EXPECT_LE(difference(nearest(choices, figures), figures), accuracy)
            << "seed " << seed << ": " << testing::PrintToString(figures) << " instead of "
            << testing::PrintToString(nearest(choices, figures));
    }
}

TEST(ClearMot, EqualsItsMatrixForm) {
    for (unsigned seed = 0; seed < recordings; ++seed) {
        const std::vector<Instant> instants = recordingOf(seed);
        const MatrixForm::Figures figures = programsClearMot(instants);
        const auto choices =
            MatrixForm::clearMot(MatrixForm::Recording(instants, zeroDistance), threshold);
        EXPECT_LE(difference(nearest(choices, figures), figures), accuracy)
            << "seed " << seed << ": " << testing::PrintToString(figures) << " instead of "
            << testing::PrintToString(nearest(choices, figures));
    }
}

TEST(Identity, EqualsItsMatrixForm) {
    for (unsigned seed = 0; seed < recordings; ++seed) {
        const std::vector<Instant> instants = recordingOf(seed);
        const MatrixForm::Figures figures = programsIdentity(instants);
        const MatrixForm::Figures others =
            MatrixForm::identity(MatrixForm::Recording(instants, zeroDistance), threshold);
        EXPECT_LE(difference(others, figures), accuracy)
            << "seed " << seed << ": " << testing::PrintToString(figures) << " instead of "
            << testing::PrintToString(others);
    }
}

}  // namespace
}  // namespace Workbench
