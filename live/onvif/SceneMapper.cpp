// SPDX-License-Identifier: Apache-2.0
#include "live/onvif/SceneMapper.h"

#include <veskar/Vocabulary.h>

#include <algorithm>
#include <set>
#include <utility>

namespace Veskar::Live {
namespace {

using Host::RadarReport;
using Host::Report;
using Host::VideoReport;

double seconds(UtcTime time) {
    return std::chrono::duration<double>(time).count();
}

Host::ReportBase& baseIn(Report& report) {
    return std::visit([](auto& form) -> Host::ReportBase& { return form; }, report);
}

void fill(Host::Label& label, const Host::Label& other) {
    if (label.name == Vocabulary::unknown) {
        label = other;
    }
}

/// Adds labels to those that are unknown.
void fill(Report& report, const Host::Labels& labels) {
    if (auto* video = std::get_if<VideoReport>(&report)) {
        fill(video->labels.objectClass, labels.objectClass);
        fill(video->labels.color, labels.color);
        fill(video->labels.upperClothingColor, labels.upperClothingColor);
        fill(video->labels.lowerClothingColor, labels.lowerClothingColor);
    } else if (auto* radar = std::get_if<RadarReport>(&report)) {
        fill(radar->objectClass, labels.objectClass);
    }
}

Host::Labels labelsIn(const Report& report) {
    if (const auto* video = std::get_if<VideoReport>(&report)) {
        return video->labels;
    }
    return {std::get<RadarReport>(report).objectClass, {}, {}, {}};
}

void stop(Report& report) {
    if (auto* video = std::get_if<VideoReport>(&report)) {
        video->velocity = Eigen::Vector2d::Zero();
    } else if (auto* radar = std::get_if<RadarReport>(&report)) {
        radar->speed = 0.0;
        radar->direction = 0.0;
        radar->radialSpeed.reset();
    }
}

bool contains(const std::vector<ObjectName>& names, const ObjectName& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// What the keys of a publisher's modules begin with. None is the begin of another one.
std::string beginOfKeys(const std::string& publisher) {
    return std::to_string(publisher.size()) + ":" + publisher;
}

/// A frame so far behind the last one of its module was not overtaken: its clock was set.
constexpr UtcTime farthestOvertaken = std::chrono::seconds(10);

}  // namespace

ModuleUse useByContents(const SceneObject& object) {
    if (object.shape) {
        return ModuleUse::Video;
    }
    return object.spherical || object.geo ? ModuleUse::Radar : ModuleUse::ByContents;
}

SceneMapper::SceneMapper(const Host::Installation& installation)
    : SceneMapper(installation, Options()) {}

SceneMapper::SceneMapper(const Host::Installation& installation, const Options& options)
    : maker_(installation), options_(options), video_(options), radar_(options) {}

std::vector<StampedFrame> SceneMapper::map(const Scene& scene, const std::string& publisher) {
    std::vector<StampedFrame> frames;
    for (const SceneFrame& frame : scene) {
        Module& module = moduleOf(frame, publisher);
        decide(module, frame);
        if (module.use == ModuleUse::Ignored) {
            ++counts_.ignored;
        } else if (module.use == ModuleUse::ByContents) {
            ++counts_.undecided;
        } else if (std::optional<StampedFrame> mapped = map(frame, module)) {
            ++counts_.mapped;
            frames.push_back(std::move(*mapped));
        } else {
            ++counts_.joined;
        }
    }
    return frames;
}

void SceneMapper::forget(const std::string& publisher) {
    const std::string begin = beginOfKeys(publisher);
    auto module = modules_.lower_bound(begin);
    while (module != modules_.end() && module->first.compare(0, begin.size(), begin) == 0) {
        module = modules_.erase(module);
    }
}

SceneMapper::Module& SceneMapper::moduleOf(const SceneFrame& frame, const std::string& publisher) {
    const std::string key = beginOfKeys(publisher) + frame.source;
    auto found = modules_.find(key);
    if (found == modules_.end()) {
        if (modules_.size() >= std::max<std::size_t>(options_.mostModules, 1)) {
            modules_.erase(std::min_element(modules_.begin(), modules_.end(),
                                            [](const auto& a, const auto& b) {
                                                return a.second.lastHeard < b.second.lastHeard;
                                            }));
        }
        found = modules_.emplace(key, Module()).first;
        found->second.key = key;
        const auto choice = options_.modules.find(frame.source);
        found->second.use =
            choice == options_.modules.end() ? options_.otherModules : choice->second;
    }
    found->second.lastHeard = ++heard_;
    return found->second;
}

void SceneMapper::decide(Module& module, const SceneFrame& frame) {
    for (const SceneObject& object : frame.objects) {
        if (module.use != ModuleUse::ByContents) {
            return;
        }
        module.use = useByContents(object);
    }
}

std::optional<StampedFrame> SceneMapper::map(const SceneFrame& frame, Module& module) {
    Sensor& sensor = sensorOf(module);
    const bool isBehind = module.last && frame.time <= *module.last;
    if (isBehind && *module.last - frame.time > farthestOvertaken) {
        module.held.clear();
        sensor.last.reset();
    } else if (isBehind) {
        // Whoever orders frames decides what becomes of it; what is known by now is newer.
        if (!frame.renames.empty() || !frame.splits.empty() || !frame.merges.empty() ||
            !frame.deletes.empty()) {
            leftOut_.add("ObjectTree of a late frame");
        }
        const HeldReports known = module.held;
        HeldReports reports = reportsOf(frame, module, sensor);
        module.held = known;
        return emit(frame, module, std::move(reports));
    }
    sensor.ids.sweep(frame.time);
    applyTree(frame, module, sensor);
    module.held = reportsOf(frame, module, sensor);
    module.last = frame.time;
    const HeldReports reports = module.held;
    for (const ObjectName& name : frame.deletes) {
        if (const auto id = sensor.ids.find(module.key, name)) {
            module.held.erase(*id);
            sensor.ids.forget(module.key, name);
        }
    }
    if (sensor.last && frame.time <= *sensor.last &&
        *sensor.last - frame.time <= farthestOvertaken) {
        return std::nullopt;
    }
    sensor.last = frame.time;
    return emit(frame, module, reports);
}

void SceneMapper::applyTree(const SceneFrame& frame, Module& module, Sensor& sensor) {
    for (const Renaming& one : frame.renames) {
        if (const auto former = sensor.ids.find(module.key, one.to)) {
            if (sensor.ids.find(module.key, one.from).value_or(*former) != *former) {
                module.held.erase(*former);
            }
        }
        sensor.ids.rename(module.key, one.from, one.to);
    }
    for (const Regrouping& one : frame.splits) {
        pass(one.from[0], one.to, module, sensor);
    }
    for (const Regrouping& one : frame.merges) {
        // What merges is seen no longer, except as the object that it became.
        pass(one.from[0], one.to, module, sensor);
        for (const ObjectName& from : one.from) {
            const auto id = sensor.ids.find(module.key, from);
            if (id && id != sensor.ids.find(module.key, one.to[0])) {
                module.held.erase(*id);
            }
        }
    }
}

/// Lets an object that ends go on as the first of its successors that was not known before.
void SceneMapper::pass(const ObjectName& from, const std::vector<ObjectName>& to, Module& module,
                       Sensor& sensor) {
    if (contains(to, from)) {
        return;
    }
    for (const ObjectName& successor : to) {
        if (!sensor.ids.find(module.key, successor)) {
            sensor.ids.rename(module.key, from, successor);
            return;
        }
    }
    if (const auto id = sensor.ids.find(module.key, from)) {
        module.held.erase(*id);
    }
}

SceneMapper::HeldReports SceneMapper::reportsOf(const SceneFrame& frame, Module& module,
                                                Sensor& sensor) {
    HeldReports reports;
    std::set<std::int32_t> listed;
    for (const SceneObject& object : frame.objects) {
        if (object.isRemoved) {
            leftOut_.add("Behaviour.Removed");
            continue;
        }
        if (listed.size() >= options_.mostObjects) {
            leftOut_.add("Object beyond the limit of a frame");
            continue;
        }
        const ObjectIds::Known known = sensor.ids.report(module.key, object.name, frame.time);
        if (!listed.insert(known.id).second) {
            leftOut_.add("Object listed twice");
            continue;
        }
        if (std::optional<Held> held = heldFor(object, frame, module, known)) {
            reports.emplace(known.id, std::move(*held));
        } else {
            lendLabels(object, known.id, module);
        }
    }
    for (const auto& [id, held] : module.held) {
        if (held.isIdle && listed.count(id) == 0 &&
            frame.time - held.seen <= options_.forgetAfter) {
            Held& still = reports.emplace(id, held).first->second;
            stop(still.report);
        }
    }
    return reports;
}

std::optional<SceneMapper::Held> SceneMapper::heldFor(const SceneObject& object,
                                                      const SceneFrame& frame, const Module& module,
                                                      const ObjectIds::Known& known) {
    const auto former = module.held.find(known.id);
    std::optional<Report> report = reportFor(object, frame, module.use);
    Held held;
    if (report) {
        held.report = std::move(*report);
        held.seen = frame.time;
        if (former != module.held.end()) {
            held.rangeRate = former->second.rangeRate;
            held.footRate = former->second.footRate;
        }
        addMotion(held);
    } else if (former != module.held.end()) {
        // Hidden: where it was when it was last seen.
        held = former->second;
        fill(held.report, SensorReports::labels(object, leftOut_));
    } else {
        return std::nullopt;
    }
    held.since = known.since;
    held.isIdle = object.isIdle;
    baseIn(held.report).id = known.id;
    baseIn(held.report).coasting = std::max(seconds(frame.time - held.seen), 0.0);
    return held;
}

/// Follows the places of an object, for reports that do not state its motion.
void SceneMapper::addMotion(Held& held) {
    if (auto* radar = std::get_if<RadarReport>(&held.report)) {
        const double rate = held.rangeRate.update(held.seen, radar->range);
        if (!radar->speed) {
            radar->radialSpeed = rate;
        }
    } else if (auto* video = std::get_if<VideoReport>(&held.report)) {
        auto& [across, up] = held.footRate;
        const Eigen::Vector2d rate(
            across.update(held.seen, 0.5 * (video->box.left + video->box.right)),
            up.update(held.seen, video->box.bottom));
        if (!video->velocity && across.hasRate()) {
            video->velocity = rate;
        }
    }
}

std::optional<Report> SceneMapper::reportFor(const SceneObject& object, const SceneFrame& frame,
                                             ModuleUse use) {
    if (use == ModuleUse::Video) {
        if (auto report = maker_.video(object, frame.transformation, leftOut_)) {
            return *report;
        }
    } else if (auto report = maker_.radar(object, leftOut_)) {
        return *report;
    }
    return std::nullopt;
}

/// A module that only classifies gives its words to the object of the module that tracks it.
void SceneMapper::lendLabels(const SceneObject& object, std::int32_t id, const Module& module) {
    const Host::Labels labels = SensorReports::labels(object, leftOut_);
    bool isLent = false;
    for (auto& [key, other] : modules_) {
        const auto held = other.held.find(id);
        if (other.use == module.use && held != other.held.end()) {
            fill(held->second.report, labels);
            isLent = true;
        }
    }
    if (!isLent) {
        leftOut_.add("Object without a place");
    }
}

StampedFrame SceneMapper::emit(const SceneFrame& frame, const Module& module, HeldReports reports) {
    for (const auto& [key, other] : modules_) {
        const bool isCarried = &other != &module && other.use == module.use && other.last &&
                               *other.last <= frame.time + options_.carryFor &&
                               frame.time <= *other.last + options_.carryFor;
        if (!isCarried) {
            continue;
        }
        for (const auto& [id, held] : other.held) {
            const auto [own, isNew] = reports.emplace(id, held);
            if (!isNew) {
                fill(own->second.report, labelsIn(held.report));
            }
        }
    }
    StampedFrame result;
    result.time = frame.time;
    result.frame.source = module.use == ModuleUse::Video ? VideoObject : Veskar::Radar;
    for (auto& [id, held] : reports) {
        if (auto* video = std::get_if<VideoReport>(&held.report)) {
            video->age = std::max(seconds(frame.time - held.since), 0.0);
        }
        result.frame.tracks.push_back(std::move(held.report));
    }
    return result;
}

}  // namespace Veskar::Live
