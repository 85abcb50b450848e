// SPDX-License-Identifier: Apache-2.0
// Recordings and fused tracks as columns.
#include "Table.h"
#include "recording/Header.h"
#include "recording/RecordingReader.h"
#include "replay/FusedReader.h"

#include <nlohmann/json.hpp>

namespace Bindings {
namespace {

using Workbench::RecordingLine;

/// Reads a recording some rows at a time.
class RecordingRows {
public:
    RecordingRows(const std::string& path, bool withTruth)
        : reader_(path, withTruth ? Workbench::TruthLines::Read : Workbench::TruthLines::Skip) {}

    std::string header() const { return Workbench::toJson(reader_.header()).dump(); }

    /// @param rows that are enough
    /// @return columns; without rows at the end
    py::dict next(std::size_t rows) {
        {
            const py::gil_scoped_release unlocked;
            while (table_.rows() < rows) {
                const auto line = reader_.next();
                if (!line) {
                    break;
                }
                add(*line);
                ++frame_;
            }
        }
        return table_.take();
    }

private:
    void add(const RecordingLine& line) {
        if (const auto* truth = std::get_if<Workbench::TruthFrame>(&line)) {
            for (const Workbench::TruthObject& object : truth->objects) {
                add(*truth, object);
            }
            return;
        }
        const auto& frame = std::get<Workbench::SensorFrame>(line);
        for (const Workbench::Report& report : frame.tracks) {
            std::visit([&](const auto& track) { add(frame, track); }, report);
        }
    }

    void add(const Workbench::TruthFrame& frame, const Workbench::TruthObject& object) {
        static const std::string sensor = "truth";
        table_.add({frame_, object.id, 1},
                   {frame.time,
                    unknown,
                    unknown,
                    unknown,
                    unknown,
                    unknown,
                    unknown,
                    unknown,
                    unknown,
                    unknown,
                    unknown,
                    unknown,
                    unknown,
                    unknown,
                    unknown,
                    unknown,
                    object.position.x(),
                    object.position.y(),
                    object.velocity.x(),
                    object.velocity.y()},
                   {&sensor, &object.className});
    }

    void add(const Workbench::SensorFrame& frame, const Workbench::RadarReport& track) {
        table_.add({frame_, track.id, track.confirmed ? 1 : 0},
                   {frame.time,
                    frame.received,
                    track.coasting,
                    track.objectClass.probability,
                    track.range,
                    track.azimuth,
                    track.speed.value_or(unknown),
                    track.direction.value_or(unknown),
                    track.radialSpeed.value_or(unknown),
                    unknown,
                    unknown,
                    unknown,
                    unknown,
                    unknown,
                    unknown,
                    unknown,
                    unknown,
                    unknown,
                    unknown,
                    unknown},
                   {nameOf(frame), &track.objectClass.name});
    }

    void add(const Workbench::SensorFrame& frame, const Workbench::VideoReport& track) {
        const Eigen::Vector2d velocity = track.velocity.value_or(Eigen::Vector2d(unknown, unknown));
        table_.add(
            {frame_, track.id, track.confirmed ? 1 : 0},
            {frame.time,    frame.received, track.coasting,   track.labels.objectClass.probability,
             unknown,       unknown,        unknown,          unknown,
             unknown,       track.box.left, track.box.bottom, track.box.right,
             track.box.top, velocity.x(),   velocity.y(),     track.age,
             unknown,       unknown,        unknown,          unknown},
            {nameOf(frame), &track.labels.objectClass.name});
    }

    void add(const Workbench::SensorFrame& frame, const Workbench::ReadyEstimate& track) {
        const Workbench::ImageBox box =
            track.box.value_or(Workbench::ImageBox{unknown, unknown, unknown, unknown});
        table_.add(
            {frame_, track.id, track.confirmed ? 1 : 0},
            {frame.time,     frame.received, track.coasting, track.labels.objectClass.probability,
             track.state[4], unknown,        unknown,        unknown,
             unknown,        box.left,       box.bottom,     box.right,
             box.top,        track.state[1], track.state[3], unknown,
             unknown,        unknown,        unknown,        unknown},
            {nameOf(frame), &track.labels.objectClass.name});
    }

    static const std::string* nameOf(const Workbench::SensorFrame& frame) {
        static const std::string radar = "radar";
        static const std::string video = "video";
        return frame.source == Veskar::Radar ? &radar : &video;
    }

    Workbench::RecordingReader reader_;
    std::int64_t frame_ = 0;
    Table<3, 20, 2> table_{{"frame", "id", "confirmed"},
                           {"time",
                            "received",
                            "coasting",
                            "class_probability",
                            "range",
                            "azimuth",
                            "speed",
                            "direction",
                            "radial_speed",
                            "left",
                            "bottom",
                            "right",
                            "top",
                            "u_rate",
                            "v_rate",
                            "age",
                            "x",
                            "y",
                            "vx",
                            "vy"},
                           {"sensor", "class"}};
};

/// Reads the sensor frames of a recording one by one.
class RecordingFrames {
public:
    explicit RecordingFrames(const std::string& path)
        : reader_(path, Workbench::TruthLines::Skip) {}

    Workbench::SensorFrame next() {
        auto line = reader_.next();
        if (!line) {
            throw py::stop_iteration();
        }
        return std::get<Workbench::SensorFrame>(std::move(*line));
    }

    /// Known once all frames have been read.
    std::optional<double> end() const { return reader_.end(); }

private:
    Workbench::RecordingReader reader_;
};

/// Reads fused tracks some rows at a time.
class FusedRows {
public:
    explicit FusedRows(const std::string& path) : reader_(path) {}

    py::dict next(std::size_t rows) {
        {
            const py::gil_scoped_release unlocked;
            while (table_.rows() < rows) {
                const auto frame = reader_.next();
                if (!frame) {
                    break;
                }
                for (const Workbench::FusedTrack& track : frame->tracks) {
                    add(*frame, track);
                }
                ++frame_;
            }
        }
        return table_.take();
    }

private:
    void add(const Workbench::FusedFrame& frame, const Workbench::FusedTrack& track) {
        const std::string source = Veskar::Host::sourceName(frame.source);
        std::int64_t radar = 0;
        std::int64_t video = 0;
        for (const Workbench::Support& support : track.sensors) {
            (support.source == Veskar::Radar ? radar : video) += 1;
        }
        const auto& ground = track.ground;
        const auto onGround = [&](const Eigen::Vector2d Workbench::GroundPosition::*part,
                                  int place) {
            return ground ? ((*ground).*part)[place] : unknown;
        };
        using Ground = Workbench::GroundPosition;
        const Eigen::Matrix2d covariance =
            ground ? ground->covariance : Eigen::Matrix2d::Constant(unknown).eval();
        table_.add({frame_, track.id, track.confirmed ? 1 : 0, radar, video},
                   {frame.time,
                    frame.received,
                    track.probability,
                    track.labels.objectClass.probability,
                    track.age,
                    onGround(&Ground::position, 0),
                    onGround(&Ground::position, 1),
                    onGround(&Ground::velocity, 0),
                    onGround(&Ground::velocity, 1),
                    covariance(0, 0),
                    covariance(0, 1),
                    covariance(1, 1),
                    track.speed.value_or(unknown),
                    track.direction.value_or(unknown),
                    track.image.x(),
                    track.image.y(),
                    track.imageRate.x(),
                    track.imageRate.y(),
                    track.range,
                    track.rangeRate,
                    track.box.left,
                    track.box.bottom,
                    track.box.right,
                    track.box.top,
                    track.geo ? track.geo->latitude : unknown,
                    track.geo ? track.geo->longitude : unknown},
                   {&source, &track.labels.objectClass.name});
    }

    Workbench::FusedReader reader_;
    std::int64_t frame_ = 0;
    Table<5, 26, 2> table_{{"frame", "id", "confirmed", "radar", "video"},
                           {"time",     "received",  "probability", "class_probability",
                            "age",      "x",         "y",           "vx",
                            "vy",       "var_x",     "cov_xy",      "var_y",
                            "speed",    "direction", "u",           "v",
                            "u_rate",   "v_rate",    "range",       "range_rate",
                            "left",     "bottom",    "right",       "top",
                            "latitude", "longitude"},
                           {"sensor", "class"}};
};

}  // namespace

void bindRecordings(py::module_& module) {
    py::class_<RecordingRows>(module, "_RecordingRows")
        .def(py::init<const std::string&, bool>(), py::arg("path"), py::arg("truth"))
        .def("header", &RecordingRows::header)
        .def("next", &RecordingRows::next, py::arg("rows"));
    py::class_<RecordingFrames>(module, "RecordingFrames",
                                "Iterates over the sensor frames of a recording.")
        .def(py::init<const std::string&>(), py::arg("path"))
        .def("__iter__", [](const py::object& self) { return self; })
        .def("__next__", &RecordingFrames::next)
        .def_property_readonly("end", &RecordingFrames::end,
                               "until when the sensors were awaited, s, once all frames have been "
                               "read; None when the recording does not say it");
    py::class_<FusedRows>(module, "_FusedRows")
        .def(py::init<const std::string&>(), py::arg("path"))
        .def("next", &FusedRows::next, py::arg("rows"));
}

}  // namespace Bindings
