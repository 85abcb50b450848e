// SPDX-License-Identifier: Apache-2.0
#include "gating/NearSearch.h"
#include "support/Constants.h"
#include "support/RandomEstimates.h"
#include "support/TrackFactory.h"

#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

namespace VeskarTest {
namespace {

using Veskar::CoarseGate;
using Veskar::Marginals;
using Veskar::NearSearch;
using Veskar::StateVector;
using Veskar::Track;
using Numbers = std::vector<std::size_t>;

/// Looks at every pair.
Numbers findOneByOne(const std::vector<Marginals>& tracks, const Marginals& wanted) {
    Numbers near;
    for (std::size_t number = 0; number < tracks.size(); ++number) {
        if (!CoarseGate::areFar(wanted, tracks[number])) {
            near.push_back(number);
        }
    }
    return near;
}

void assign(NearSearch& search, const std::vector<Marginals>& tracks) {
    search.assign(tracks.size(), [&](std::size_t k) -> const Marginals& { return tracks[k]; });
}

Numbers find(const NearSearch& search, const Marginals& wanted) {
    Numbers found;
    search.forEachNear(wanted, [&found](std::size_t number) { found.push_back(number); });
    return found;
}

/// Random tracks in a scene that is stretched along one axis.
class Stretched : public testing::TestWithParam<int> {
protected:
    Marginals draw(bool unlimited) {
        StateVector x = 10.0 * random_.state();
        x[GetParam()] *= 20.0;
        Track track = *makeTrack(Veskar::Source::Radar, 1, {x, 0.1 * random_.covariance()});
        if (unlimited) {
            track.covariance *= -1.0;
        }
        return gate_.marginalsOf(track);
    }

private:
    RandomEstimates random_{42};
    CoarseGate gate_{true, 2.0};
};

TEST_P(Stretched, FindsInOrderWhatIsNotFarByPosition) {
    NearSearch search;
    std::size_t near = 0;
    std::size_t compared = 0;
    for (const int count : {0, 1, 3, 4, 5, 17, 64, 200, 64, 1}) {
        std::vector<Marginals> tracks;
        tracks.reserve(static_cast<std::size_t>(count));
        for (int k = 0; k < count; ++k) {
            tracks.push_back(draw(k % 50 == 49));
        }
        assign(search, tracks);
        for (int k = 0; k < 50; ++k) {
            const Marginals wanted = draw(k % 10 == 9);
            const Numbers expected = findOneByOne(tracks, wanted);
            ASSERT_EQ(find(search, wanted), expected);
            near += k % 10 == 9 ? 0 : expected.size();
            compared += k % 10 == 9 ? 0 : tracks.size();
        }
    }
    EXPECT_GT(near, 0U);
    EXPECT_LT(near, compared / 10) << "most must be far, or the order is not tested";
}

INSTANTIATE_TEST_SUITE_P(NearSearch, Stretched, testing::Values(0, 2, 4));

TEST(NearSearch, FindsTracksOfAllReaches) {
    RandomEstimates random(43);
    const double reaches[] = {0.0, 1e-300, 1e-12, 1e-4, 1.0, 1e4, 1e300, infinite, -1.0};
    constexpr int count = 300;
    std::vector<Marginals> tracks;
    tracks.reserve(count);
    const auto draw = [&](int k) {
        Marginals marginals{};
        for (std::size_t c = 0; c < Marginals::positionCount; ++c) {
            // Few places, so that many tracks are exactly as far apart as they reach.
            marginals.mean[c] = random.integer(-3, 3);
            marginals.reach[c] = reaches[k % 2 == 0 ? 4 : random.integer(0, 8)];
        }
        return marginals;
    };
    for (int k = 0; k < count; ++k) {
        tracks.push_back(draw(k));
    }
    NearSearch search;
    assign(search, tracks);
    for (int k = 0; k < count; ++k) {
        const Marginals wanted = draw(k);
        ASSERT_EQ(find(search, wanted), findOneByOne(tracks, wanted)) << k;
    }
}

TEST(NearSearch, FindsTracksWithNeighbouringNumbersAsPositions) {
    constexpr double position = 1e6;
    constexpr double next = 1e6 + 0x1p-33;
    std::vector<Marginals> tracks(6);
    for (Marginals& marginals : tracks) {
        marginals.mean.fill(position);
        marginals.reach.fill(0.0);
    }
    tracks[4].reach[0] = (next - position) * (next - position);
    NearSearch search;
    assign(search, tracks);
    Marginals wanted = tracks[0];
    wanted.mean[0] = next;
    EXPECT_EQ(find(search, wanted), Numbers{4});
    EXPECT_EQ(find(search, tracks[0]).size(), tracks.size());
}

}  // namespace
}  // namespace VeskarTest
