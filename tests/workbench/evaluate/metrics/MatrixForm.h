// SPDX-License-Identifier: Apache-2.0
// HOTA, CLEAR MOT and IDF1 written down a second time, in the matrix form of the papers.
#pragma once

#include "evaluate/metrics/Instant.h"

#include <utility>
#include <vector>

#include <Eigen/Core>

namespace MatrixForm {

/// A whole recording as matrices. Objects and tracks are numbered over the whole recording.
struct Recording {
    /// @param zeroDistance distance of zero similarity, m
    Recording(const std::vector<Workbench::Instant>& instants, double zeroDistance);

    Eigen::MatrixXd truths;  ///< 1 where an object (row) exists at an instant (column), else 0
    Eigen::MatrixXd tracks;  ///< the same of the tracks
    /// Per instant: similarity of objects (rows) and tracks (columns), 0 where one is absent.
    std::vector<Eigen::MatrixXd> similarity;
    double zeroDistance;  ///< m
};

/// (object, track) by number.
using Matching = std::vector<std::pair<Eigen::Index, Eigen::Index>>;

/// All one-to-one matchings of the greatest total, found by trying every one. More than one when
/// there are ties.
/// @param gain only positive entries can be matched
std::vector<Matching> bestMatchings(const Eigen::MatrixXd& gain);

/// The least cost of a complete assignment of a square problem, by dynamic programming over sets of
/// columns.
double leastCost(const Eigen::MatrixXd& cost);

/// The figures of a metric, in a fixed order that each function states. Where matchings tie, the
/// metrics leave open which one counts: each function returns the figures of every choice.
using Figures = std::vector<double>;

/// HOTA, DetA, AssA, LocA.
std::vector<Figures> hota(const Recording& recording);

/// MOTA, MOTP, mean distance, TP, FN, FP, IDSW, Frag, MT, PT, ML, tracks per object.
std::vector<Figures> clearMot(const Recording& recording, double threshold);

/// IDF1, IDP, IDR, IDTP, IDFP, IDFN. The least cost is unique, even where assignments tie.
Figures identity(const Recording& recording, double threshold);

}  // namespace MatrixForm
