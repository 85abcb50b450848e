// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/MatrixForm.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <set>

namespace MatrixForm {
namespace {

/// Totals and similarities that differ by less than this are equal.
constexpr double tolerance = 1e-12;

template <typename Member>
std::map<int, Eigen::Index> numbered(const std::vector<Workbench::Instant>& instants,
                                     std::vector<Member> Workbench::Instant::*members) {
    std::map<int, Eigen::Index> numbers;
    for (const Workbench::Instant& instant : instants) {
        for (const Member& member : instant.*members) {
            numbers.try_emplace(member.id, static_cast<Eigen::Index>(numbers.size()));
        }
    }
    return numbers;
}

/// Tries every matching of the rows from one on.
class Search {
public:
    explicit Search(const Eigen::MatrixXd& gains)
        : gain_(gains), used_(static_cast<std::size_t>(gains.cols())) {
        tryRow(0, 0.0);
    }

    std::vector<Matching> best() const {
        std::vector<Matching> matchings;
        for (const auto& [total, matching] : found_) {
            if (total >= leastOfTies()) {
                matchings.push_back(matching);
            }
        }
        return matchings;
    }

private:
    double leastOfTies() const { return greatest_ - tolerance * std::max(1.0, greatest_); }

    void tryRow(Eigen::Index row, double total) {
        if (row == gain_.rows()) {
            if (total >= leastOfTies()) {
                greatest_ = std::max(greatest_, total);
                found_.emplace_back(total, chosen_);
            }
            return;
        }
        tryRow(row + 1, total);
        for (Eigen::Index column = 0; column < gain_.cols(); ++column) {
            const auto place = static_cast<std::size_t>(column);
            if (gain_(row, column) > 0.0 && !used_[place]) {
                used_[place] = true;
                chosen_.emplace_back(row, column);
                tryRow(row + 1, total + gain_(row, column));
                chosen_.pop_back();
                used_[place] = false;
            }
        }
    }

    const Eigen::MatrixXd& gain_;
    std::vector<bool> used_;
    Matching chosen_;
    double greatest_ = 0.0;
    std::vector<std::pair<double, Matching>> found_;
};

/// The matchings of all instants: one choice among those that tie.
using History = std::vector<Matching>;

/// Continues every history with each of the matchings that are open to it.
template <typename MatchingsAfter>
std::vector<History> histories(const Recording& recording, MatchingsAfter matchingsAfter) {
    std::vector<History> all{{}};
    for (std::size_t t = 0; t < recording.similarity.size(); ++t) {
        std::vector<History> longer;
        for (const History& history : all) {
            for (Matching& matching : matchingsAfter(history, t)) {
                longer.push_back(history);
                longer.back().push_back(std::move(matching));
            }
        }
        all = std::move(longer);
    }
    return all;
}

/// 1 where an object (row) and a track (column) are matched, and similar enough, else 0.
Eigen::MatrixXd matchMatrix(const Matching& matching, const Eigen::MatrixXd& similarity,
                            double threshold) {
    Eigen::MatrixXd matches = Eigen::MatrixXd::Zero(similarity.rows(), similarity.cols());
    for (const auto& [i, j] : matching) {
        matches(i, j) = similarity(i, j) >= threshold - tolerance ? 1.0 : 0.0;
    }
    return matches;
}

/// The sum of both lengths for every pair of an object and a track.
Eigen::MatrixXd lengthsOfBoth(const Recording& recording) {
    const Eigen::VectorXd truths = recording.truths.rowwise().sum();
    const Eigen::VectorXd tracks = recording.tracks.rowwise().sum();
    return truths.replicate(1, tracks.size()) + tracks.transpose().replicate(truths.size(), 1);
}

/// 0 / 0 is 0, as with an empty sum.
Eigen::MatrixXd quotient(const Eigen::MatrixXd& numerator, const Eigen::MatrixXd& denominator) {
    return numerator.binaryExpr(denominator,
                                [](double n, double d) { return n == 0.0 ? 0.0 : n / d; });
}

Figures hotaOf(const Recording& recording, const History& history) {
    constexpr int thresholds = 19;
    const double allTruths = recording.truths.sum();
    const double allTracks = recording.tracks.sum();
    const Eigen::MatrixXd lengths = lengthsOfBoth(recording);
    Eigen::Vector4d sum = Eigen::Vector4d::Zero();
    for (int k = 1; k <= thresholds; ++k) {
        Eigen::MatrixXd together = Eigen::MatrixXd::Zero(lengths.rows(), lengths.cols());
        double similarity = 0.0;
        for (std::size_t t = 0; t < history.size(); ++t) {
            const Eigen::MatrixXd matches =
                matchMatrix(history[t], recording.similarity[t], k / 20.0);
            together += matches;
            similarity += matches.cwiseProduct(recording.similarity[t]).sum();
        }
        const double matches = together.sum();
        const double either = allTruths + allTracks - matches;
        const double detection = either > 0.0 ? matches / either : 0.0;
        const Eigen::MatrixXd overlap = quotient(together, lengths - together);
        const double association =
            matches > 0.0 ? together.cwiseProduct(overlap).sum() / matches : 0.0;
        const double localisation = matches > 0.0 ? similarity / matches : 1.0;
        sum += Eigen::Vector4d(std::sqrt(detection * association), detection, association,
                               localisation);
    }
    sum /= thresholds;
    return {sum.begin(), sum.end()};
}

/// The matchings after a history: first the pairs of the last matching that are still valid, then
/// the others by the greatest total similarity.
std::vector<Matching> clearMotMatchings(const Recording& recording, double threshold,
                                        const History& history, std::size_t t) {
    Eigen::MatrixXd free = (recording.similarity[t].array() >= threshold - tolerance)
                               .select(recording.similarity[t], 0.0);
    Matching kept;
    // TrackEval passes over instants without objects or without tracks: they don't break a match.
    const auto isSkipped = [&](std::size_t instant) {
        const auto column = static_cast<Eigen::Index>(instant);
        return recording.truths.col(column).sum() == 0.0 ||
               recording.tracks.col(column).sum() == 0.0;
    };
    std::size_t before = t;
    while (before > 0 && isSkipped(before - 1)) {
        --before;
    }
    if (before > 0) {
        for (const auto& [i, j] : history[before - 1]) {
            if (free(i, j) > 0.0) {
                kept.emplace_back(i, j);
            }
        }
    }
    for (const auto& [i, j] : kept) {
        free.row(i).setZero();
        free.col(j).setZero();
    }
    std::vector<Matching> matchings = bestMatchings(free);
    for (Matching& matching : matchings) {
        matching.insert(matching.end(), kept.begin(), kept.end());
    }
    return matchings;
}

Figures clearMotOf(const Recording& recording, const History& history) {
    const Eigen::Index objects = recording.truths.rows();
    double matches = 0.0;
    double similarity = 0.0;
    // Over the instants with objects and tracks: the track of every object, -1 without.
    std::vector<std::vector<Eigen::Index>> trackOf(static_cast<std::size_t>(objects));
    for (std::size_t t = 0; t < history.size(); ++t) {
        const auto column = static_cast<Eigen::Index>(t);
        if (recording.truths.col(column).sum() * recording.tracks.col(column).sum() == 0.0) {
            continue;
        }
        const Eigen::MatrixXd now = matchMatrix(history[t], recording.similarity[t], 0.0);
        matches += now.sum();
        similarity += now.cwiseProduct(recording.similarity[t]).sum();
        for (Eigen::Index i = 0; i < objects; ++i) {
            Eigen::Index j = -1;
            trackOf[static_cast<std::size_t>(i)].push_back(
                now.row(i).maxCoeff(&j) > 0.0 ? j : Eigen::Index{-1});
        }
    }
    double switches = 0.0;
    double fragments = 0.0;
    double differentTracks = 0.0;
    double found = 0.0;
    Eigen::Vector3d shares = Eigen::Vector3d::Zero();
    for (Eigen::Index i = 0; i < objects; ++i) {
        const std::vector<Eigen::Index>& tracks = trackOf[static_cast<std::size_t>(i)];
        std::vector<Eigen::Index> matched;
        std::copy_if(tracks.begin(), tracks.end(), std::back_inserter(matched),
                     [](Eigen::Index j) { return j >= 0; });
        for (std::size_t k = 1; k < matched.size(); ++k) {
            switches += matched[k] != matched[k - 1] ? 1.0 : 0.0;
        }
        // An end that is followed by another match is a fragmentation.
        const auto last = std::find_if(tracks.rbegin(), tracks.rend(), [](Eigen::Index j) {
                              return j >= 0;
                          }).base();
        for (auto now = tracks.begin(); now != last && now + 1 != last; ++now) {
            fragments += *now >= 0 && *(now + 1) < 0 ? 1.0 : 0.0;
        }
        differentTracks +=
            static_cast<double>(std::set<Eigen::Index>(matched.begin(), matched.end()).size());
        found += matched.empty() ? 0.0 : 1.0;
        // Compared as whole numbers: 5 matches are 80 % of 5 present.
        const double fifths = 5.0 * static_cast<double>(matched.size());
        const double present = recording.truths.row(i).sum();
        shares[fifths > 4.0 * present ? 0 : fifths >= present ? 1 : 2] += 1.0;
    }
    const double allTruths = recording.truths.sum();
    const double falseTracks = recording.tracks.sum() - matches;
    const double none = std::numeric_limits<double>::quiet_NaN();
    return {allTruths > 0.0 ? 1.0 - (allTruths - matches + falseTracks + switches) / allTruths
                            : -falseTracks,
            matches > 0.0 ? similarity / matches : 0.0,
            matches > 0.0 ? recording.zeroDistance * (1.0 - similarity / matches) : none,
            matches,
            allTruths - matches,
            falseTracks,
            switches,
            fragments,
            shares[0],
            shares[1],
            shares[2],
            found > 0.0 ? differentTracks / found : none};
}

}  // namespace

Recording::Recording(const std::vector<Workbench::Instant>& instants, double distance)
    : zeroDistance(distance) {
    const auto truthNumbers = numbered(instants, &Workbench::Instant::truths);
    const auto trackNumbers = numbered(instants, &Workbench::Instant::tracks);
    const auto length = static_cast<Eigen::Index>(instants.size());
    truths.setZero(static_cast<Eigen::Index>(truthNumbers.size()), length);
    tracks.setZero(static_cast<Eigen::Index>(trackNumbers.size()), length);
    for (Eigen::Index t = 0; t < length; ++t) {
        const Workbench::Instant& instant = instants[static_cast<std::size_t>(t)];
        similarity.emplace_back(Eigen::MatrixXd::Zero(truths.rows(), tracks.rows()));
        for (const auto& truth : instant.truths) {
            truths(truthNumbers.at(truth.id), t) = 1.0;
            for (const auto& track : instant.tracks) {
                const double apart = std::hypot(track.position.x() - truth.position.x(),
                                                track.position.y() - truth.position.y());
                similarity.back()(truthNumbers.at(truth.id), trackNumbers.at(track.id)) =
                    std::max(0.0, (zeroDistance - apart) / zeroDistance);
            }
        }
        for (const auto& track : instant.tracks) {
            tracks(trackNumbers.at(track.id), t) = 1.0;
        }
    }
}

std::vector<Matching> bestMatchings(const Eigen::MatrixXd& gain) {
    return Search(gain).best();
}

double leastCost(const Eigen::MatrixXd& cost) {
    // least[set]: the first rows, as many as the set has columns, assigned to the set.
    const auto size = static_cast<unsigned>(cost.rows());
    std::vector<double> least(std::size_t{1} << size, std::numeric_limits<double>::infinity());
    least[0] = 0.0;
    for (std::size_t set = 0; set + 1 < least.size(); ++set) {
        Eigen::Index row = 0;
        for (unsigned column = 0; column < size; ++column) {
            row += static_cast<Eigen::Index>(set >> column & 1U);
        }
        for (unsigned column = 0; column < size; ++column) {
            const std::size_t with = set | std::size_t{1} << column;
            if (with != set) {
                least[with] = std::min(least[with], least[set] + cost(row, column));
            }
        }
    }
    return least.back();
}

std::vector<Figures> hota(const Recording& recording) {
    // The global alignment: sum over time of each pair's similarity, as a share of all
    // similarities of both, over the union of both lifetimes.
    Eigen::MatrixXd potential =
        Eigen::MatrixXd::Zero(recording.truths.rows(), recording.tracks.rows());
    for (const Eigen::MatrixXd& similarity : recording.similarity) {
        const Eigen::VectorXd ofTruth = similarity.rowwise().sum();
        const Eigen::RowVectorXd ofTrack = similarity.colwise().sum();
        potential += quotient(similarity, ofTruth.replicate(1, similarity.cols()) +
                                              ofTrack.replicate(similarity.rows(), 1) - similarity);
    }
    const Eigen::MatrixXd alignment = quotient(potential, lengthsOfBoth(recording) - potential);
    std::vector<Figures> figures;
    for (const History& history : histories(recording, [&](const History&, std::size_t t) {
             return bestMatchings(alignment.cwiseProduct(recording.similarity[t]));
         })) {
        figures.push_back(hotaOf(recording, history));
    }
    return figures;
}

std::vector<Figures> clearMot(const Recording& recording, double threshold) {
    std::vector<Figures> figures;
    for (const History& history : histories(recording, [&](const History&history, std::size_t t) {
             return clearMotMatchings(recording, threshold, history, t);
         })) {
        figures.push_back(clearMotOf(recording, history));
    }
    return figures;
}

Figures identity(const Recording& recording, double threshold) {
    const Eigen::Index truths = recording.truths.rows();
    const Eigen::Index tracks = recording.tracks.rows();
    Eigen::MatrixXd together = Eigen::MatrixXd::Zero(truths, tracks);
    for (const Eigen::MatrixXd& similarity : recording.similarity) {
        together += (similarity.array() >= threshold).cast<double>().matrix();
    }
    // The bipartite graph of the paper: each object may go without a track (a false negative node
    // of its own), each track without an object (a false positive node of its own).
    const double never = 1e9;
    Eigen::MatrixXd cost = Eigen::MatrixXd::Constant(truths + tracks, truths + tracks, never);
    cost.topLeftCorner(truths, tracks) = lengthsOfBoth(recording) - 2.0 * together;
    cost.topRightCorner(truths, truths).diagonal() = recording.truths.rowwise().sum();
    cost.bottomLeftCorner(tracks, tracks).diagonal() = recording.tracks.rowwise().sum();
    cost.bottomRightCorner(tracks, truths).setZero();
    const double allTruths = recording.truths.sum();
    const double allTracks = recording.tracks.sum();
    const double errors = leastCost(cost);
    const double hits = (allTruths + allTracks - errors) / 2.0;
    const auto ratio = [&](double whole) { return whole > 0.0 ? hits / whole : 0.0; };
    return {ratio((allTruths + allTracks) / 2.0),
            ratio(allTracks),
            ratio(allTruths),
            hits,
            allTracks - hits,
            allTruths - hits};
}

}  // namespace MatrixForm
