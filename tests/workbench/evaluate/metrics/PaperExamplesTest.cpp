// SPDX-License-Identifier: Apache-2.0
// The examples by which the papers explain HOTA, CLEAR MOT and IDF1, with values by hand. Objects
// and tracks coincide, unless a distance is given.
#include "evaluate/Instants.h"
#include "evaluate/metrics/ClearMot.h"
#include "evaluate/metrics/Hota.h"
#include "evaluate/metrics/Identity.h"

#include <cmath>

#include <gtest/gtest.h>

namespace Workbench {
namespace {

/// Similarity 1 - d / 4, matches up to 2 m.
constexpr double zeroDistance = 4.0;
constexpr SimilarityParameters parameters{zeroDistance, 0.5};

/// Appends instants until there are so many, each made from its number.
template <typename MakeInstant>
void extend(std::vector<Instant>& instants, int count, MakeInstant makeInstant) {
    instants.reserve(static_cast<std::size_t>(count));
    for (auto i = static_cast<int>(instants.size()); i < count; ++i) {
        instants.push_back(makeInstant(i));
    }
}

/// The track of one object at consecutive instants: an id and how often it is seen. Id 0 is none.
using Spells = std::vector<std::pair<int, int>>;

std::vector<Instant> oneObject(const Spells& spells) {
    std::vector<Instant> instants;
    for (const auto& [id, count] : spells) {
        for (int i = 0; i < count; ++i) {
            const std::vector<At> tracks = id == 0 ? std::vector<At>{} : std::vector<At>{{id, 0}};
            instants.push_back(instantOf(static_cast<double>(instants.size()), {{1, 0}}, tracks));
        }
    }
    return instants;
}

Hota::Result hotaOf(const std::vector<Instant>& instants) {
    Hota metric(zeroDistance);
    addTwice(metric, instants);
    return metric.result();
}

ClearMot::Result clearMotOf(const std::vector<Instant>& instants) {
    ClearMot metric(parameters);
    for (const Instant& instant : instants) {
        add(metric, instant);
    }
    return metric.result();
}

Identity::Result identityOf(const std::vector<Instant>& instants) {
    Identity metric(parameters);
    for (const Instant& instant : instants) {
        add(metric, instant);
    }
    return metric.result();
}

// Luiten et al. 2021, figure 1: one object and three trackers, of which each detects more than the
// one before and associates worse. HOTA ranks them as equal, MOTA by detection, IDF1 by
// association. A sees the object for 50 % of its life as one track, B for 70 % as two, C always as
// four. A track of n instants within an object of 100 overlaps it by n / 100.

TEST(HotaPaper, RanksTheThreeTrackersOfFigureOneEqual) {
    const Hota::Result a = hotaOf(oneObject({{7, 50}, {0, 50}}));
    EXPECT_NEAR(a.DetA, 0.50, 1e-12);
    EXPECT_NEAR(a.AssA, 0.50, 1e-12);
    EXPECT_NEAR(a.HOTA, 0.50, 1e-12);
    const Hota::Result b = hotaOf(oneObject({{7, 35}, {0, 30}, {8, 35}}));
    EXPECT_NEAR(b.DetA, 0.70, 1e-12);
    EXPECT_NEAR(b.AssA, 0.35, 1e-12);
    EXPECT_NEAR(b.HOTA, std::sqrt(0.70 * 0.35), 1e-12);  // 0.495
    const Hota::Result c = hotaOf(oneObject({{7, 25}, {8, 25}, {9, 25}, {10, 25}}));
    EXPECT_NEAR(c.DetA, 1.00, 1e-12);
    EXPECT_NEAR(c.AssA, 0.25, 1e-12);
    EXPECT_NEAR(c.HOTA, 0.50, 1e-12);
}

TEST(HotaPaper, ShowsThatMotaRanksThemByDetection) {
    // 1 - (misses + switches) / 100: B has one switch, C three.
    EXPECT_NEAR(clearMotOf(oneObject({{7, 50}, {0, 50}})).MOTA, 0.50, 1e-12);
    EXPECT_NEAR(clearMotOf(oneObject({{7, 35}, {0, 30}, {8, 35}})).MOTA, 0.69, 1e-12);
    EXPECT_NEAR(clearMotOf(oneObject({{7, 25}, {8, 25}, {9, 25}, {10, 25}})).MOTA, 0.97, 1e-12);
}

TEST(HotaPaper, ShowsThatIdentityRanksThemByAssociation) {
    // The best track's n instants: 2 n / (100 + instants of all tracks).
    EXPECT_NEAR(identityOf(oneObject({{7, 50}, {0, 50}})).IDF1, 100.0 / 150.0, 1e-12);
    EXPECT_NEAR(identityOf(oneObject({{7, 35}, {0, 30}, {8, 35}})).IDF1, 70.0 / 170.0, 1e-12);
    EXPECT_NEAR(identityOf(oneObject({{7, 25}, {8, 25}, {9, 25}, {10, 25}})).IDF1, 50.0 / 200.0,
                1e-12);
}

TEST(HotaPaper, RewardsFurtherRightDetectionsForWhichIdentityFalls) {
    // Another 20 % of the object are found as another track. IDF1 falls from 100 / 150 to
    // 100 / 170; HOTA rises from 0.5 to sqrt(0.7 (50 * 0.5 + 20 * 0.2) / 70) = sqrt(0.29).
    const auto more = oneObject({{7, 50}, {8, 20}, {0, 30}});
    EXPECT_NEAR(identityOf(more).IDF1, 100.0 / 170.0, 1e-12);
    EXPECT_NEAR(hotaOf(more).HOTA, std::sqrt(0.29), 1e-12);
}

TEST(HotaPaper, MeasuresTheAssociationOfAMatchByBothIdentities) {
    // The match of object 1 and track 7 at instant 0 as the paper defines its true positive, false
    // negative and false positive associations. TPA: instants 0 and 1, where both match. FNA:
    // object 1 at instant 2 (matched with track 8) and 3 (missed). FPA: track 7 at instants 2
    // (matched with object 2) and 3, 4 (false). Overlap of (1, 7): 2 / (2 + 2 + 3); of (1, 8):
    // 1 / (1 + 3 + 0); of (2, 7): 1 / (1 + 0 + 4).
    const Hota::Result result =
        hotaOf({instantOf(0, {{1, 0}}, {{7, 0}}), instantOf(1, {{1, 0}}, {{7, 0}}),
                instantOf(2, {{1, 0}, {2, 50}}, {{8, 0}, {7, 50}}),
                instantOf(3, {{1, 0}}, {{7, 90}}), instantOf(4, {}, {{7, 90}})});
    EXPECT_NEAR(result.AssA, (2.0 * 2.0 / 7.0 + 1.0 / 4.0 + 1.0 / 5.0) / 4.0, 1e-12);
    // Four matches, one miss, two false tracks.
    EXPECT_NEAR(result.DetA, 4.0 / 7.0, 1e-12);
}

// Bernardin, Stiefelhagen 2008.

TEST(ClearMotPaper, SumsTheErrorsBeforeItDivides) {
    // The paper's example of error ratios: four objects are visible and missed for four instants,
    // then one of them is visible and tracked for four. A mean of the ratios of the instants would
    // be 1/2; summed up, 16 of 20 are missed.
    std::vector<Instant> instants;
    extend(instants, 4, [](int i) {
        return instantOf(i, {{1, 0}, {2, 50}, {3, 100}, {4, 150}}, {});
    });
    extend(instants, 8, [](int i) { return instantOf(i, {{4, 150}}, {{7, 150}}); });
    const ClearMot::Result result = clearMotOf(instants);
    EXPECT_EQ(result.FN, 16);
    EXPECT_EQ(result.TP, 4);
    EXPECT_NEAR(result.MOTA, 1.0 - 16.0 / 20.0, 1e-12);
}

TEST(ClearMotPaper, TakesAnObjectBeyondTheThresholdAsMissedAndItsTrackAsFalse) {
    // The track drifts away from its object: 0, 1, 2 and 3 m, the threshold is 2 m.
    std::vector<Instant> instants;
    extend(instants, 4, [](int i) { return instantOf(i, {{1, 0}}, {{7, 1.0 * i}}); });
    const ClearMot::Result result = clearMotOf(instants);
    EXPECT_EQ(result.TP, 3);
    EXPECT_EQ(result.FN, 1);
    EXPECT_EQ(result.FP, 1);
    EXPECT_NEAR(result.MOTA, (3.0 - 1.0) / 4.0, 1e-12);
    // The paper's MOTP is the mean distance of the matches.
    EXPECT_NEAR(result.motpDistance, 1.0, 1e-12);
}

TEST(ClearMotPaper, CountsAMismatchOncePerChange) {
    // A track follows object 1, changes over to object 2 when they meet, and later to object 3;
    // the objects it leaves are missed. However long it follows a wrong object, the change alone
    // counts, and only where the object had another track: object 2 had track 8, object 3 track 9.
    std::vector<Instant> instants;
    const std::vector<At> objects{{1, 0}, {2, 50}, {3, 100}};
    extend(instants, 4, [&](int i) { return instantOf(i, objects, {{7, 0}, {8, 50}, {9, 100}}); });
    extend(instants, 8, [&](int i) { return instantOf(i, objects, {{7, 50}, {9, 100}}); });
    extend(instants, 12, [&](int i) { return instantOf(i, objects, {{7, 100}}); });
    const ClearMot::Result result = clearMotOf(instants);
    EXPECT_EQ(result.IDSW, 2);
    EXPECT_EQ(result.FN, 4 + 8);
    EXPECT_EQ(result.FP, 0);
    EXPECT_NEAR(result.MOTA, 1.0 - (12.0 + 2.0) / 36.0, 1e-12);
}

TEST(ClearMotPaper, CountsBothWhenTracksAreSwapped) {
    // Two tracks are swapped and swapped back: two mismatches at each change. A mapping over the
    // whole sequence would charge every instant between them instead.
    std::vector<Instant> instants;
    extend(instants, 9, [](int i) {
        const bool isSwapped = i >= 3 && i < 6;
        return instantOf(i, {{1, 0}, {2, 50}},
                         {{7, isSwapped ? 50.0 : 0.0}, {8, isSwapped ? 0.0 : 50.0}});
    });
    EXPECT_EQ(clearMotOf(instants).IDSW, 4);
    EXPECT_NEAR(clearMotOf(instants).MOTA, 1.0 - 4.0 / 18.0, 1e-12);
}

TEST(ClearMotPaper, KeepsAValidMatchAgainstACloserTrack) {
    // Track 8 comes closer than track 7, which stays valid.
    const ClearMot::Result result =
        clearMotOf({instantOf(0, {{1, 0}}, {{7, 0.5}}), instantOf(1, {{1, 0}}, {{7, 1.5}, {8, 0}}),
                    instantOf(2, {{1, 0}}, {{7, 1.5}, {8, 0}})});
    EXPECT_EQ(result.IDSW, 0);
    EXPECT_EQ(result.FP, 2);
    EXPECT_NEAR(result.motpDistance, (0.5 + 1.5 + 1.5) / 3.0, 1e-12);
}

TEST(ClearMotPaper, TakesTheCloserTrackAfterALossUnlikeThePaper) {
    // The paper's example of a track that is lost for an instant and found beside a closer one: it
    // remembers the match over the loss and reports no mismatch. TrackEval, and thus this program,
    // remembers the matches of the previous instant only.
    const ClearMot::Result result =
        clearMotOf({instantOf(0, {{1, 0}}, {{7, 0.5}}), instantOf(1, {{1, 0}}, {{7, 3.0}}),
                    instantOf(2, {{1, 0}}, {{7, 1.0}, {8, 0}})});
    EXPECT_EQ(result.IDSW, 1);
    EXPECT_NEAR(result.motpDistance, (0.5 + 0.0) / 2.0, 1e-12);
}

TEST(ClearMotPaper, PassesOverInstantsWithoutAnyTrackUnlikeThePaper) {
    // As in TrackEval, an instant at which there is no track at all ends no match: track 7 keeps
    // its object against a closer one afterwards, and the interruption is no fragment. It is one
    // when another track exists.
    const auto interrupted = [](const std::vector<At>& between) {
        return clearMotOf({instantOf(0, {{1, 0}}, {{7, 0.5}}), instantOf(1, {{1, 0}}, between),
                           instantOf(2, {{1, 0}}, {{7, 1.0}, {8, 0}})});
    };
    EXPECT_EQ(interrupted({}).IDSW, 0);
    EXPECT_EQ(interrupted({}).Frag, 0);
    EXPECT_EQ(interrupted({}).FN, 1);
    EXPECT_EQ(interrupted({{9, 90}}).IDSW, 1);
    EXPECT_EQ(interrupted({{9, 90}}).Frag, 1);
}

// Ristani et al. 2016: how long an object is identified rightly counts, not how often its identity
// changes.

TEST(IdentityPaper, DistinguishesTrackersWithEqualNumbersOfSwitches) {
    // A person gets a second identity for a sixth of the time or for a third. There is one change
    // in both, but the person is identified for 5/6 and for 2/3 of the time.
    const auto sixth = oneObject({{1, 50}, {2, 10}});
    const auto third = oneObject({{1, 40}, {2, 20}});
    EXPECT_EQ(clearMotOf(sixth).IDSW, 1);
    EXPECT_EQ(clearMotOf(third).IDSW, 1);
    // Object and tracks have 60 instants: precision, recall and F1 are the same.
    EXPECT_NEAR(identityOf(sixth).IDF1, 5.0 / 6.0, 1e-12);
    EXPECT_NEAR(identityOf(sixth).IDP, 5.0 / 6.0, 1e-12);
    EXPECT_NEAR(identityOf(sixth).IDR, 5.0 / 6.0, 1e-12);
    EXPECT_NEAR(identityOf(third).IDF1, 2.0 / 3.0, 1e-12);
}

TEST(IdentityPaper, DoesNotChargeHowOftenAnIdentityComesAndGoes) {
    // The same time under the second identity, in one piece or in five.
    const auto once = oneObject({{1, 40}, {2, 20}});
    const auto often =
        oneObject({{1, 8}, {2, 4}, {1, 8}, {2, 4}, {1, 8}, {2, 4}, {1, 8}, {2, 4}, {1, 8}, {2, 4}});
    EXPECT_EQ(clearMotOf(often).IDSW, 9);
    EXPECT_NEAR(identityOf(once).IDF1, 2.0 / 3.0, 1e-12);
    EXPECT_NEAR(identityOf(often).IDF1, 2.0 / 3.0, 1e-12);
}

TEST(IdentityPaper, GivesOneIdentityToOneObjectOnly) {
    // A merge: one track follows object 1 for 30 instants and then object 2 for 20, each of which
    // is alone then. It can be the identity of object 1 only: 30 hits, 20 false positives, 20
    // false negatives.
    std::vector<Instant> instants;
    extend(instants, 50, [](int i) { return instantOf(i, {{i < 30 ? 1 : 2, 0}}, {{7, 0}}); });
    const Identity::Result result = identityOf(instants);
    EXPECT_EQ(result.IDTP, 30);
    EXPECT_EQ(result.IDFP, 20);
    EXPECT_EQ(result.IDFN, 20);
    EXPECT_NEAR(result.IDF1, 60.0 / 100.0, 1e-12);
    // For CLEAR MOT nothing is wrong: each object has had one track only.
    EXPECT_NEAR(clearMotOf(instants).MOTA, 1.0, 1e-12);
}

TEST(IdentityPaper, LeavesAnObjectAloneWhenThatCostsLess) {
    // Object 1 (3 instants) meets track 7 (10 instants) once: matched, they cost 2 misses and 9
    // false positives; unmatched 3 and 10. One hit is gained in any case, as in the precision
    // 1 / 10 and the recall 1 / 3.
    std::vector<Instant> instants;
    extend(instants, 10, [](int i) {
        return instantOf(i, i < 3 ? std::vector<At>{{1, 0}} : std::vector<At>{},
                         {{7, i == 0 ? 0.0 : 50.0}});
    });
    const Identity::Result result = identityOf(instants);
    EXPECT_EQ(result.IDTP, 1);
    EXPECT_NEAR(result.IDP, 0.1, 1e-12);
    EXPECT_NEAR(result.IDR, 1.0 / 3.0, 1e-12);
    EXPECT_NEAR(result.IDF1, 2.0 / 13.0, 1e-12);
}

}  // namespace
}  // namespace Workbench
