// SPDX-License-Identifier: Apache-2.0
#include "export/Export.h"

#include <veskar-host/GeographicPosition.h>
#include <veskar-host/HostAdapter.h>

#include "evaluate/FusedFeed.h"
#include "export/TruthTracks.h"
#include "host/fused/SensorTrackReading.h"

#include <memory>
#include <variant>

namespace Workbench {
namespace {

const std::string truthLayer = "truth";
const std::string fusedLayer = "fused";

/// A run, handed on in step with its recording.
struct ExportedRun {
    using Sink = FusedFeed::Sink;

    ExportedRun(const std::string& file, Sink sink) : reader(file), feed(reader, std::move(sink)) {}

    FusedReader reader;
    FusedFeed feed;
};

class Export {
public:
    Export(const ExportTask& task, const ExportFormat& format, const Provenance& provenance)
        : task_(task), provenance_(provenance), recording_(task.recording) {
        recording_.keepOnly(task_.excerpt);
        for (std::size_t i = 0; i < task_.runs.size(); ++i) {
            const std::string layer = fusedLayer + (i == 0 ? "" : std::to_string(i + 1));
            runs_.push_back(std::make_unique<ExportedRun>(
                task_.runs[i], [this, layer](const FusedFrame& frame) { addFused(layer, frame); }));
            provenance_.compareNames(runs_.back()->reader, recording_);
        }
        header_ = recording_.header();
        if (!runs_.empty()) {
            header_ = headerOfRun(runs_.front()->reader, header_);
        }
        if (task_.site) {
            header_.site = task_.site;
        }
        adapter_ = std::make_unique<HostAdapter>(
            header_, runs_.empty() ? Veskar::Config::defaults() : runs_.front()->reader.config());
        exporter_ = format.open(task_.output, header_);
    }

    void run(const std::function<void(const LineReader&)>& progress) {
        while (const auto line = recording_.next()) {
            for (const auto& run : runs_) {
                run->feed.follow(*line);
            }
            add(*line);
            progress(recording_.input());
        }
        for (const auto& run : runs_) {
            while (run->feed.handOne()) {
                progress(recording_.input());
            }
            provenance_.compareRun(run->reader, recording_);
        }
        exporter_->finish();
    }

private:
    bool takes(const std::string& layer) const {
        return task_.layers.empty() || task_.layers.count(layer) > 0;
    }

    void add(const RecordingLine& line) {
        if (const auto* truth = std::get_if<TruthFrame>(&line)) {
            exporter_->atMoment(truth->time);
            if (takes(truthLayer)) {
                exporter_->add(truthLayer, readTruth(*truth, *adapter_));
            }
            return;
        }
        const auto& frame = std::get<SensorFrame>(line);
        const std::string layer = sourceName(frame.source);
        if (takes(layer) && !exporter_->takeReports(frame)) {
            exporter_->add(layer, readTracks(frame, *adapter_));
        }
        if (header_.truth == TruthKind::None && frame.source == Veskar::VideoObject) {
            exporter_->atMoment(frame.time);
        }
    }

    void addFused(const std::string& layer, FusedFrame frame) {
        if (!takes(fusedLayer)) {
            return;
        }
        for (FusedTrack& track : frame.tracks) {
            if (header_.site && track.ground && (task_.site || !track.geo)) {
                track.geo = geographicPosition(*header_.site, track.ground->position);
            }
        }
        exporter_->add(layer, frame);
    }

    const ExportTask& task_;
    const Provenance& provenance_;
    RecordingReader recording_;
    RecordingHeader header_;
    std::unique_ptr<HostAdapter> adapter_;
    std::unique_ptr<Exporter> exporter_;
    std::vector<std::unique_ptr<ExportedRun>> runs_;
};

}  // namespace

std::vector<std::string> exportLayers() {
    return {truthLayer, sourceName(Veskar::VideoObject), sourceName(Veskar::Radar), fusedLayer};
}

void exportTo(const ExportTask& task, const ExportFormat& format, const Provenance& provenance,
              const std::function<void(const LineReader&)>& progress) {
    Export(task, format, provenance).run(progress);
}

}  // namespace Workbench
