// SPDX-License-Identifier: Apache-2.0
// The metrics of the workbench over plain arrays; veskar/metrics.py gives them their Python form.
#include "Bindings.h"
#include "Table.h"
#include "evaluate/metrics/ClearMot.h"
#include "evaluate/metrics/Hota.h"
#include "evaluate/metrics/Identity.h"
#include "evaluate/metrics/PairNumbers.h"
#include "evaluate/metrics/SetDistance.h"
#include "import/ResultRows.h"

#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include <pybind11/numpy.h>

namespace Bindings {
namespace {

using Workbench::Instant;
using Workbench::NearPairs;

using Reals = py::array_t<double, py::array::c_style | py::array::forcecast>;
using Integers = py::array_t<std::int32_t, py::array::c_style | py::array::forcecast>;

/// An object or a track at one moment.
struct Member {
    int moment;
    int id;
    Eigen::Vector2d position;
};

std::vector<Member> membersOf(const Integers& moments, const Integers& ids,
                              const Reals& positions) {
    std::vector<Member> members;
    const auto moment = moments.unchecked<1>();
    const auto id = ids.unchecked<1>();
    const auto position = positions.unchecked<2>();
    for (py::ssize_t i = 0; i < moment.shape(0); ++i) {
        members.push_back({moment(i), id(i), {position(i, 0), position(i, 1)}});
    }
    return members;
}

/// Numbers ids from 0 in the order of their appearance.
class Numbers {
public:
    int of(int id) {
        return numbers_.try_emplace(id, static_cast<int>(numbers_.size())).first->second;
    }

private:
    std::unordered_map<int, int> numbers_;
};

std::vector<Instant> instantsOf(std::size_t count, const std::vector<Member>& truths,
                                const std::vector<Member>& tracks) {
    std::vector<Instant> instants(count);
    Numbers objectNumbers;
    for (const Member& member : truths) {
        Workbench::TrueObject object;
        object.id = member.id;
        object.number = objectNumbers.of(member.id);
        object.position = member.position;
        instants[static_cast<std::size_t>(member.moment)].truths.push_back(object);
    }
    Numbers trackNumbers;
    for (const Member& member : tracks) {
        Workbench::JudgedTrack track;
        track.id = member.id;
        track.number = trackNumbers.of(member.id);
        track.position = member.position;
        instants[static_cast<std::size_t>(member.moment)].tracks.push_back(track);
    }
    return instants;
}

/// All metrics; positions may also be points of one moment.
class ArrayJudgement {
public:
    ArrayJudgement(double cutoff, double order)
        : setDistance_{cutoff, order},
          gospaMean_(setDistance_),
          ospaMean_(setDistance_),
          clearMot_({cutoff, 0.5}),
          identity_({cutoff, 0.5}),
          hota_(cutoff) {}

    void judge(const std::vector<Instant>& instants) {
        std::vector<NearPairs> near;
        for (const Instant& instant : instants) {
            NearPairs& pairs = near.emplace_back(nearPairs(instant, setDistance_.cutoff));
            pairNumbers_.number(pairs, instant);
            const Workbench::Gospa costs =
                gospa(instant, matchWithinCutoff(instant, pairs, setDistance_), setDistance_);
            moments_.push_back(costs);
            gospaMean_.add(costs);
            ospaMean_.add(costs);
            clearMot_.add(instant, pairs);
            identity_.add(instant, pairs);
            hota_.add(instant, pairs);
        }
        hota_.beginAgain();
        for (std::size_t i = 0; i < instants.size(); ++i) {
            hota_.addAgain(instants[i], near[i]);
        }
    }

    py::dict figures() const {
        const auto g = gospaMean_.result();
        const auto m = clearMot_.result();
        const auto i = identity_.result();
        const auto h = hota_.result();
        using py::operator""_a;
        return py::dict("GOSPA"_a = g.mean, "GOSPA_rms"_a = g.rootMeanPower,
                        "GOSPA_localisation"_a = g.localisation, "GOSPA_missed"_a = g.missed,
                        "GOSPA_false"_a = g.falseTracks, "OSPA"_a = ospaMean_.result(),
                        "MOTA"_a = m.MOTA, "MOTP"_a = m.MOTP, "MOTP_distance"_a = m.motpDistance,
                        "TP"_a = m.TP, "FN"_a = m.FN, "FP"_a = m.FP, "IDSW"_a = m.IDSW,
                        "Frag"_a = m.Frag, "MT"_a = m.MT, "PT"_a = m.PT, "ML"_a = m.ML,
                        "tracks_per_object"_a = m.tracksPerObject, "IDF1"_a = i.IDF1,
                        "IDP"_a = i.IDP, "IDR"_a = i.IDR, "HOTA"_a = h.HOTA, "DetA"_a = h.DetA,
                        "AssA"_a = h.AssA, "LocA"_a = h.LocA);
    }

    /// @return (GOSPA, OSPA, localisation cost, missed, false) of every moment
    std::vector<std::array<double, 5>> moments() const {
        std::vector<std::array<double, 5>> rows;
        for (const Workbench::Gospa& costs : moments_) {
            rows.push_back({costs.distance, ospa(costs, setDistance_), costs.localisationCost,
                            static_cast<double>(costs.missed),
                            static_cast<double>(costs.falseTracks)});
        }
        return rows;
    }

private:
    Workbench::SetDistanceParameters setDistance_;
    Workbench::PairNumbers pairNumbers_;
    Workbench::GospaMean gospaMean_;
    Workbench::OspaMean ospaMean_;
    Workbench::ClearMot clearMot_;
    Workbench::Identity identity_;
    Workbench::Hota hota_;
    std::vector<Workbench::Gospa> moments_;
};

py::tuple judgeArrays(std::size_t count, const Integers& truthMoments, const Integers& truthIds,
                      const Reals& truthPositions, const Integers& trackMoments,
                      const Integers& trackIds, const Reals& trackPositions, double cutoff,
                      double order) {
    const auto truths = membersOf(truthMoments, truthIds, truthPositions);
    const auto tracks = membersOf(trackMoments, trackIds, trackPositions);
    ArrayJudgement judgement(cutoff, order);
    {
        const py::gil_scoped_release unlocked;
        judgement.judge(instantsOf(count, truths, tracks));
    }
    return py::make_tuple(judgement.figures(), judgement.moments());
}

/// @return the rows of a tracker's results as columns
py::dict readResults(const std::string& path, bool isMot) {
    std::vector<Workbench::ResultRow> rows;
    {
        const py::gil_scoped_release unlocked;
        rows = isMot ? Workbench::readMotResults(path) : Workbench::readKittiResults(path);
    }
    std::vector<std::int64_t> lines;
    std::vector<std::int64_t> ids;
    std::vector<double> frames;
    std::vector<double> confidences;
    Eigen::MatrixX4d boxes(rows.size(), 4);
    Eigen::MatrixX2d positions(rows.size(), 2);
    py::list classes;
    for (const Workbench::ResultRow& row : rows) {
        const auto place = static_cast<Eigen::Index>(lines.size());
        boxes.row(place) = row.box;
        positions.row(place) = row.position;
        lines.push_back(static_cast<std::int64_t>(row.line));
        ids.push_back(row.id);
        frames.push_back(row.frame);
        confidences.push_back(row.confidence);
        classes.append(row.className);
    }
    using py::operator""_a;
    return py::dict("line"_a = toArray(std::move(lines)), "frame"_a = toArray(std::move(frames)),
                    "id"_a = toArray(std::move(ids)), "class"_a = classes,
                    "confidence"_a = toArray(std::move(confidences)), "box"_a = boxes,
                    "position"_a = positions);
}

}  // namespace

void bindMetrics(py::module_& module) {
    module.def("_judge_arrays", judgeArrays);
    module.def("_read_results", readResults);
}

}  // namespace Bindings
