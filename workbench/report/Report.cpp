// SPDX-License-Identifier: Apache-2.0
#include "report/Report.h"

#include <veskar-host/HostAdapter.h>
#include <veskar-host/HostParameters.h>
#include <veskar-host/InputError.h>
#include <veskar/Config.h>
#include <veskar/Version.h>

#include "evaluate/FusedFeed.h"
#include "recording/RecordingReader.h"
#include "replay/FusedReader.h"
#include "report/ExplanationTable.h"
#include "report/RunJudgement.h"
#include "report/RunTable.h"
#include "report/SceneOutline.h"
#include "report/SensorTable.h"
#include "report/TruthTable.h"
#include "report/Words.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

constexpr int reportVersion = 1;

/// The time span of everything shown.
struct Span {
    double from = std::numeric_limits<double>::infinity();
    double to = -std::numeric_limits<double>::infinity();

    void include(double time) {
        from = std::min(from, time);
        to = std::max(to, time);
    }
    void include(const Span& other) {
        from = std::min(from, other.from);
        to = std::max(to, other.to);
    }
};

/// The recording, with its sensors' tracks converted as in the first run.
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

/// A run, read in step with its recording.
class RunPart {
public:
    RunPart(const std::string& file, const RecordingReader& recording, Words& words)
        : reader(file),
          header(headerOfRun(reader, recording.header())),
          config(reader.config()),
          table(words),
          judgement(header, config),
          feed_(reader, [this](const FusedFrame& frame) { take(frame); }) {}

    void add(const RecordingLine& line) {
        feed_.follow(line);
        judgement.add(line);
    }

    /// Reads the frames after the last line of the recording.
    void finish(const ReportProgress& progress) {
        while (feed_.handOne()) {
            progress(reader.input());
        }
    }

    FusedReader reader;
    RecordingHeader header;  ///< of the recording, with the installation of the run
    Veskar::Config config;
    RunTable table;
    RunJudgement judgement;
    Span span;

private:
    void take(const FusedFrame& frame) {
        span.include(frame.time);
        table.add(frame);
        judgement.add(frame);
    }

    FusedFeed feed_;
};

/// The page contains file names without directories, which would disclose paths of its author.
std::string fileNameOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

/// A configuration with the constants of the host, as files of configurations have them.
Json settingsOf(const Veskar::Config& config, const std::string& constants) {
    Json settings = Json::parse(config.toJson());
    if (!constants.empty()) {
        settings["veskarHost"] = Json::parse(constants);
    }
    return settings;
}

/// What a run uses when no configuration is named.
Json defaultSettings() {
    const std::string constants =
        HostParameters::fromConfig(Veskar::Config::defaultsText()).toJson();
    return settingsOf(Veskar::Config::defaults(), constants);
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

Json reportData(const ReportInputs& inputs, const Provenance& provenance,
                const ReportProgress& progress) {
    RecordingReader recording(inputs.recording);
    recording.keepOnly(inputs.excerpt);
    Words words;
    std::vector<std::unique_ptr<RunPart>> runs;
    for (const ReportRun& files : inputs.runs) {
        runs.push_back(std::make_unique<RunPart>(files.fused, recording, words));
        provenance.compareNames(runs.back()->reader, recording);
    }
    const RunPart& first = *runs.front();
    RecordingPart part(first.header, first.config, words);
    while (const auto line = recording.next()) {
        progress(recording.input());
        part.add(*line);
        for (const auto& run : runs) {
            run->add(*line);
        }
    }
    Span span = part.span;
    for (const auto& run : runs) {
        run->finish(progress);
        provenance.compareRun(run->reader, recording);
        span.include(run->span);
    }
    if (!(span.from <= span.to)) {
        throw InputError(recording.input().name(), InputError("the recording has no frame"));
    }

    const double start = span.from;
    const Projection& camera = part.adapter.projection();
    Json data{{"version", reportVersion},
              {"program", Veskar::veskarVersion()},
              {"recording", aboutRecording(first.header)},
              {"start", start},
              {"duration", span.to - start},
              {"scene", sceneOutline(camera, first.header)},
              {"video", part.video.json(start)},
              {"radar", part.radar.json(start)}};
    if (!inputs.map.url.empty()) {
        if (!first.header.site) {
            throw InputError(recording.input().name(),
                             InputError("has no site: a map needs the device's latitude, longitude "
                                        "and heading"));
        }
        data["map"] = {{"tiles", inputs.map.url}, {"attribution", inputs.map.attribution}};
    }
    data["truth"] =
        part.truth.empty() ? Json(nullptr) : truthTable(part.truth, camera, words, start);
    data["runs"] = Json::array();
    for (std::size_t i = 0; i < runs.size(); ++i) {
        Json& run = data["runs"].emplace_back(runs[i]->table.json(start));
        run["label"] = fileNameOf(inputs.runs[i].fused);
        run["configuration"] = settingsOf(runs[i]->config, runs[i]->reader.header().constants);
        run["judgement"] = runs[i]->judgement.json(start);
        run["explanation"] = nullptr;
        if (const std::string& path = inputs.runs[i].explain; !path.empty()) {
            ExplanationFile explanations = readExplanations(path, words, start);
            provenance.compareExplanations(path, explanations.digests, runs[i]->reader, recording);
            run["explanation"] = std::move(explanations.table);
        }
    }
    // Most runs use the defaults: then they are not written twice. The order of keys does not
    // matter.
    Json defaults = defaultSettings();
    const bool isUsual =
        nlohmann::json(defaults) == nlohmann::json(data["runs"][0]["configuration"]);
    data["defaults"] = isUsual ? Json(nullptr) : std::move(defaults);
    data["words"] = words.list();
    return data;
}

std::string embeddable(const Json& data) {
    const std::string text = data.dump(-1, ' ', true, Json::error_handler_t::replace);
    std::string safe;
    safe.reserve(text.size());
    for (const char c : text) {
        // In JSON these characters occur only within strings.
        if (c == '<' || c == '>' || c == '&') {
            safe += fmt::format("\\u{:04x}", static_cast<unsigned>(c));
        } else {
            safe += c;
        }
    }
    return safe;
}

}  // namespace Workbench
