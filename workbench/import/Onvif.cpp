// SPDX-License-Identifier: Apache-2.0
#include "import/Onvif.h"

#include <veskar-host/InputError.h>

#include "io/Interruption.h"
#include "io/LineReader.h"
#include "io/Printable.h"
#include "live/onvif/LeftOut.h"
#include "live/onvif/SceneCodec.h"
#include "live/onvif/SceneMapper.h"
#include "live/transport/XmlFramer.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace Workbench {
namespace {

using Veskar::Live::ModuleUse;
using Veskar::Live::SceneMapper;
using Veskar::Live::StampedFrame;
using Veskar::Live::UtcTime;

constexpr const char* space = " \t\r\n";

/// Receives a message.
using MessageSink = std::function<void(std::string_view)>;

/// Hands on the documents that end in the text.
/// @param text receives what is left
/// @param scanned how much of it the framer has seen
void takeDocuments(Veskar::Live::XmlFramer& framer, std::string& text, std::size_t& scanned,
                   const MessageSink& sink) {
    using Found = Veskar::Live::Framer::Found;
    Found found = framer.find(text, scanned);
    for (; found.kind != Found::More; found = framer.find(text, 0)) {
        if (found.kind == Found::Cut) {
            throw InputError("an XML document breaks off");
        }
        sink(std::string_view(text).substr(0, found.position));
        text.erase(0, found.position);
    }
    scanned = text.size();
}

/// Cuts a log into messages.
void readLog(LineReader& lines, const MessageSink& sink) {
    Veskar::Live::XmlFramer framer;
    std::string xml;
    std::size_t scanned = 0;
    std::string_view line;
    while (lines.next(line)) {
        throwIfInterrupted();
        const std::size_t first = line.find_first_not_of(space);
        if (xml.empty() && first == line.npos) {
            continue;
        }
        if (xml.empty() && line[first] == '{') {
            sink(line);
            continue;
        }
        xml.append(line).append("\n");
        takeDocuments(framer, xml, scanned, sink);
        if (xml.find_first_not_of(space) == xml.npos) {
            xml.clear();
            scanned = 0;
            framer.restart();
        }
    }
    if (!xml.empty()) {
        throw InputError("an XML document breaks off");
    }
}

/// The frames of one module of a log.
struct Module {
    ModuleUse use = ModuleUse::ByContents;
    std::uint64_t frames = 0;
};

/// Reads logs, and makes sensor frames of them in the order of their times. The whole log is known,
/// so that also the frames before the first object of a module belong to its sensor.
class OnvifImport {
public:
    explicit OnvifImport(const OnvifOptions& options) : options_(options) {
        const auto use = [this](const std::vector<std::string>& modules, ModuleUse how) {
            for (const std::string& module : modules) {
                uses_[module] = how;
            }
        };
        use(options.video, ModuleUse::Video);
        use(options.radar, ModuleUse::Radar);
        use(options.ignored, ModuleUse::Ignored);
        static_cast<Installation&>(recording_.header) = Installation::parse(options.installation);
        recording_.header.name = "onvif";
        recording_.header.origin = "ONVIF scene descriptions";
        recording_.header.licence = "unknown";
    }

    ImportedRecording run() {
        for (std::size_t log = 0; log < options_.logs.size(); ++log) {
            read(log);
        }
        std::stable_sort(frames_.begin(), frames_.end(),
                         [](const auto& a, const auto& b) { return a.time < b.time; });
        SceneMapper mapper(recording_.header, mapperOptions());
        for (Veskar::Live::SceneFrame& frame : frames_) {
            Veskar::Live::Scene scene;
            scene.push_back(std::move(frame));
            for (StampedFrame& stamped : mapper.map(scene, "")) {
                add(std::move(stamped));
            }
        }
        if (recording_.frames.empty()) {
            throw InputError(options_.logs.front(), InputError("there is no frame of a sensor"));
        }
        warn(mapper);
        return std::move(recording_);
    }

private:
    SceneMapper::Options mapperOptions() const {
        SceneMapper::Options options;
        options.otherModules = ModuleUse::Ignored;
        for (const auto& [name, module] : modules_) {
            options.modules[name] =
                module.use == ModuleUse::ByContents ? ModuleUse::Ignored : module.use;
        }
        options.mostModules = std::max(options.mostModules, modules_.size());
        return options;
    }

    void read(std::size_t log) {
        LineReader lines(options_.logs[log]);
        try {
            readLog(lines, [&](std::string_view message) {
                message.remove_prefix(message.find_first_not_of(space));
                Veskar::Live::Scene scene = message.front() == '{'
                                                ? reader_.readJson(message, leftOut_)
                                                : reader_.readXml(message, leftOut_);
                for (Veskar::Live::SceneFrame& frame : scene) {
                    take(log, std::move(frame));
                }
            });
        } catch (const InputError& error) {
            throw InputError(lines.place(), error);
        }
    }

    /// Modules of two logs are different ones, whatever their names.
    void take(std::size_t log, Veskar::Live::SceneFrame frame) {
        const std::string name = fmt::format("{}:{}", log, frame.source);
        const auto [module, isNew] = modules_.try_emplace(name);
        if (const auto use = uses_.find(frame.source); isNew && use != uses_.end()) {
            module->second.use = use->second;
        }
        ++module->second.frames;
        for (const Veskar::Live::SceneObject& object : frame.objects) {
            if (module->second.use == ModuleUse::ByContents) {
                module->second.use = Veskar::Live::useByContents(object);
            }
        }
        frame.source = name;
        frames_.push_back(std::move(frame));
    }

    void add(StampedFrame stamped) {
        if (!recording_.header.epoch) {
            const auto epoch = std::chrono::duration_cast<std::chrono::seconds>(stamped.time);
            recording_.header.epoch = static_cast<double>(epoch.count());
            epoch_ = epoch;
        }
        const auto last = last_.find(stamped.frame.source);
        if (last != last_.end() && stamped.time <= last->second) {
            ++repeated_;
            return;
        }
        last_[stamped.frame.source] = stamped.time;
        stamped.frame.time = std::chrono::duration<double>(stamped.time - epoch_).count();
        stamped.frame.received = stamped.frame.time;
        recording_.frames.push_back(std::move(stamped.frame));
    }

    void warn(SceneMapper& mapper) {
        const auto tell = [this](std::uint64_t count, const char* what) {
            if (count > 0) {
                recording_.warnings.push_back(
                    fmt::format("{} {} {}", count, count == 1 ? "frame" : "frames", what));
            }
        };
        std::uint64_t undecided = 0;
        for (const auto& [name, module] : modules_) {
            undecided += module.use == ModuleUse::ByContents ? module.frames : 0;
        }
        tell(undecided, "of modules that no object tells as a camera or a radar: name them");
        tell(mapper.counts().joined, "joined with one of another module of the sensor");
        tell(repeated_, "left out: the sensor had one at that time");
        std::map<std::string, std::uint64_t> terms;
        for (const Veskar::Live::LeftOut* leftOut : {&leftOut_, &mapper.leftOut()}) {
            for (const auto& [term, count] : leftOut->counts()) {
                terms[term] += count;
            }
        }
        for (const auto& [term, count] : terms) {
            recording_.warnings.push_back(
                fmt::format("left out {} times: {}", count, printable(term)));
        }
    }

    const OnvifOptions& options_;
    std::map<std::string, ModuleUse> uses_;  ///< by name, as given
    ImportedRecording recording_;
    Veskar::Live::SceneReader reader_;
    Veskar::Live::LeftOut leftOut_;
    std::map<std::string, Module> modules_;  ///< by log and name
    Veskar::Live::Scene frames_;
    UtcTime epoch_{};
    std::map<Veskar::Source, UtcTime> last_;
    std::uint64_t repeated_ = 0;
};

}  // namespace

ImportedRecording importOnvif(const OnvifOptions& options) {
    return OnvifImport(options).run();
}

}  // namespace Workbench
