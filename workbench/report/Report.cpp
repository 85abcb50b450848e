// SPDX-License-Identifier: Apache-2.0
#include "report/Report.h"

#include <veskar/Config.h>

#include "adapter/HostAdapter.h"
#include "io/InputError.h"
#include "recording/RecordingReader.h"
#include "replay/FusedReader.h"
#include "report/ExplanationTable.h"
#include "report/RunTable.h"
#include "report/SceneOutline.h"
#include "report/SensorTable.h"
#include "report/TruthTable.h"
#include "report/Words.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <optional>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

constexpr int reportVersion = 1;

Veskar::Config configOf(const FusedReader& reader) {
    try {
        return Veskar::Config::parse_json_string(reader.header().configuration);
    } catch (const std::exception&) {
        throw InputError(reader.input().name() + ":1: configuration: the fusion refuses it");
    }
}

/// What the first line of a run says must be about this recording.
void refuseOtherRecording(const FusedReader& fused, const RecordingReader& recording) {
    if (fused.header().name != recording.header().name) {
        throw InputError(
            fmt::format("{}:1: name: these tracks are of the recording \"{}\", not of "
                        "\"{}\" ({})",
                        fused.input().name(), fused.header().name, recording.header().name,
                        recording.input().name()));
    }
}

/// The span of everything that is shown.
struct Span {
    double from = std::numeric_limits<double>::infinity();
    double to = -std::numeric_limits<double>::infinity();

    void include(double time) {
        from = std::min(from, time);
        to = std::max(to, time);
    }
};

/// The recording, its sensors' tracks on the way that the first run used.
class RecordingPart {
public:
    RecordingPart(const RecordingHeader& header, const Veskar::Config& config, Words& words)
        : adapter(header, config), video(adapter, words), radar(adapter, words) {}

    void add(const RecordingLine& line) {
        if (const auto* frame = std::get_if<SensorFrame>(&line)) {
            span.include(frame->time);
            (frame->source == Veskar::Radar ? radar : video).add(*frame);
        } else {
            truth.push_back(std::get<TruthFrame>(line));
            span.include(truth.back().time);
        }
    }

    HostAdapter adapter;
    SensorTable video;
    SensorTable radar;
    std::vector<TruthFrame> truth;
    Span span;
};

/// Where a file lies is nobody's business but that of the person who made the report.
std::string fileNameOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

Json aboutRecording(const RecordingHeader& header) {
    Json about = toJson(header);
    about.erase("camera");
    about.erase("radar");
    about.erase("format");
    about.erase("version");
    return about;
}

}  // namespace

Json reportData(const ReportInputs& inputs, const ReportProgress& progress) {
    RecordingReader recording(inputs.recording);
    std::vector<std::unique_ptr<FusedReader>> readers;
    for (const ReportRun& run : inputs.runs) {
        readers.push_back(std::make_unique<FusedReader>(run.fused));
        refuseOtherRecording(*readers.back(), recording);
    }

    Words words;
    RecordingHeader header = recording.header();
    header.camera = readers.front()->header().camera;
    RecordingPart part(header, configOf(*readers.front()), words);
    while (const auto line = recording.next()) {
        progress(recording.input());
        part.add(*line);
    }

    std::vector<RunTable> tables;
    for (std::size_t i = 0; i < readers.size(); ++i) {
        RunTable& table = tables.emplace_back(words);
        while (const auto frame = readers[i]->next()) {
            progress(readers[i]->input());
            part.span.include(frame->time);
            table.add(*frame);
        }
    }
    if (!(part.span.from <= part.span.to)) {
        throw InputError(recording.input().name() + ": the recording has no frame");
    }

    const double start = part.span.from;
    Json data{{"version", reportVersion},
              {"program", VESKAR_VERSION},
              {"recording", aboutRecording(header)},
              {"start", start},
              {"duration", part.span.to - start},
              {"scene", sceneOutline(part.adapter.projection(), header.camera, header.radar)},
              {"video", part.video.json(start)},
              {"radar", part.radar.json(start)}};
    data["truth"] = part.truth.empty()
                        ? Json(nullptr)
                        : truthTable(part.truth, part.adapter.projection(), words, start);
    data["runs"] = Json::array();
    for (std::size_t i = 0; i < readers.size(); ++i) {
        Json run = tables[i].json(start);
        run["label"] = fileNameOf(inputs.runs[i].fused);
        run["configuration"] = Json::parse(readers[i]->header().configuration);
        run["explanation"] = inputs.runs[i].explain.empty()
                                 ? Json(nullptr)
                                 : explanationTable(inputs.runs[i].explain, words, start);
        data["runs"].push_back(std::move(run));
    }
    data["words"] = words.list();
    return data;
}

std::string embeddable(const Json& data) {
    const std::string text = data.dump(-1, ' ', true, Json::error_handler_t::replace);
    std::string safe;
    safe.reserve(text.size());
    for (const char c : text) {
        // Outside strings JSON has none of these characters.
        if (c == '<' || c == '>' || c == '&') {
            safe += fmt::format("\\u{:04x}", static_cast<unsigned>(c));
        } else {
            safe += c;
        }
    }
    return safe;
}

}  // namespace Workbench
