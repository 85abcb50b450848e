// SPDX-License-Identifier: Apache-2.0
// veskar run and veskar record.
#include <veskar-host/InputError.h>

#include "calibrate/WindowWatch.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Files.h"
#include "cli/FramePublisher.h"
#include "cli/Inputs.h"
#include "cli/RunChanges.h"
#include "cli/ViewContent.h"
#include "io/Interruption.h"
#include "live/service/RunConfiguration.h"
#include "live/service/SensorPublisher.h"
#include "live/service/Service.h"
#include "replay/Settings.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace Workbench {
namespace {

namespace Live = Veskar::Live;

struct LiveOptions {
    std::string run = "/etc/veskar/run.json";
    std::vector<std::string> changes;
    std::string record;
    std::optional<std::string> view;  ///< address; may be empty
};

Live::RunConfiguration readRun(const LiveOptions& options, const RunChanges& changes) {
    const std::string text = readChanged(options.run, changes.ofRun);
    try {
        Live::RunConfiguration run = Live::RunConfiguration::parse(text);
        if (!options.record.empty()) {
            if (!run.record) {
                run.record.emplace();
            }
            run.record->path = options.record;
        }
        if (options.view) {
            run.showAt(*options.view);
        }
        return run;
    } catch (const InputError& error) {
        throw InputError(options.run, error);
    }
}

/// What is written must not be what is read.
void checkFiles(const Live::RunConfiguration& run, const LiveOptions& options) {
    std::vector<NamedFile> outputs;
    if (run.record) {
        outputs.push_back({"recording", run.record->path});
    }
    for (const Live::OutputSettings& output : run.outputs) {
        if (const auto* file = std::get_if<Live::FilePlace>(&output.to)) {
            outputs.push_back({"output " + output.name, file->path});
        } else if (std::holds_alternative<Live::StandardStream>(output.to)) {
            outputs.push_back({"output " + output.name, "-"});
        }
    }
    refuseClashes({{"configuration", options.run},
                   {"installation", run.installationFile},
                   {"configuration of the fusion", run.fusion}},
                  outputs);
}

void warnOf(const std::string& text) {
    warn(text);
}

int serve(const Live::RunConfiguration& run, const Live::Service::ReadSettings& readSettings,
          Live::ViewContent content = {}) {
    Live::Faults faults(warnOf);
    Live::Service::MakeWatch makeWatch;
    if (run.watch) {
        makeWatch = [&run] { return watchMounting(run.installation, *run.watch); };
    }
    Live::Service service(run, readSettings, faults, std::move(content), makeWatch);
    if (const std::uint16_t port = service.viewPort(); port != 0) {
        const std::string& host = run.view->place.host;
        const bool isIPv6 = host.find(':') != std::string::npos;
        writeError(fmt::format(
            isIPv6 ? "Live view: http://[{}]:{}/\n" : "Live view: http://{}:{}/\n", host, port));
    }
    service.run();
    return Success;
}

int run(const LiveOptions& options) {
    const RunChanges changes = RunChanges::of(options.changes);
    const Live::RunConfiguration run = readRun(options, changes);
    checkFiles(run, options);
    const auto readFusion = [path = run.fusion, ofFusion = changes.ofFusion] {
        auto [config, parameters] = readSettings(path, ofFusion, warn);
        return Live::FusionSettings{config, parameters};
    };
    return serve(run, readFusion, run.view ? viewContentOf(run) : Live::ViewContent());
}

int record(const LiveOptions& options) {
    const RunChanges changes = RunChanges::of(options.changes);
    if (!changes.ofFusion.empty()) {
        throw InputError(fmt::format("--set {}: no key of run.json", changes.ofFusion.front()));
    }
    const Live::RunConfiguration run = readRun(options, changes);
    if (!run.record) {
        throw InputError("say with -o, or in run.json, where to record");
    }
    checkFiles(run, options);
    return serve(run, {});
}

void addRunOption(CLI::App& command, LiveOptions& options) {
    command.add_option("run", options.run,
                       "sensors, outputs and brokers (default: " + options.run + ")");
}

void addRun(CLI::App& program, Action& action) {
    auto options = std::make_shared<LiveOptions>();
    CLI::App* command = program.add_subcommand("run", "Fuse sensors live");
    addRunOption(*command, *options);
    command->add_option("--record", options->record, "recording of the sensors' frames to write");
    command
        ->add_option("--set", options->changes,
                     "KEY=VALUE: another value in run.json (sensors.0.latency=0.1), for a constant "
                     "of the host or for a key of the fusion's configuration; may be repeated")
        ->allow_extra_args(false);
    command
        ->add_option_function<std::string>(
            "--view", [options](const std::string& address) { options->view = address; },
            "shows what happens to browsers at ADDRESS:PORT (default: that of run.json, or "
            "127.0.0.1:8650); behind the configuration, or as --view=ADDRESS:PORT")
        ->type_name("ADDRESS:PORT")
        ->expected(0, 1);
    command->footer(
        "Runs until SIGTERM or Ctrl-C. SIGHUP reads the fusion's configuration again and begins a "
        "new recording; connections stay.\n"
        "\n"
        "Example:\n  veskar run run.json --record today.jsonl\n");
    command->callback([options, &action] { action = [options] { return run(*options); }; });
}

void addRecord(CLI::App& program, Action& action) {
    auto options = std::make_shared<LiveOptions>();
    CLI::App* command =
        program.add_subcommand("record", "Record sensors live, for `veskar replay`");
    addRunOption(*command, *options);
    command->add_option("-o,--output", options->record,
                        "recording to write (default: that of run.json)");
    command
        ->add_option("--set", options->changes,
                     "KEY=VALUE: another value in run.json; may be repeated")
        ->allow_extra_args(false);
    command->footer("Example:\n  veskar record run.json -o today.jsonl\n");
    command->callback([options, &action] { action = [options] { return record(*options); }; });
}

/// The frames stand in for the sensors of a run.json.
class LivePublisher : public FramePublisher {
public:
    LivePublisher(Live::RunConfiguration run, const Veskar::Host::Installation& installation)
        : run_(std::move(run)), publisher_(run_, installation, faults_, throwIfInterrupted) {}

    void publish(const SensorFrame& frame) override { publisher_.publish(frame); }
    void finish() override { publisher_.finish(); }

private:
    Live::RunConfiguration run_;
    Live::Faults faults_{warnOf};
    Live::SensorPublisher publisher_;
};

}  // namespace

std::unique_ptr<FramePublisher> publisherFor(const std::string& run,
                                             const Veskar::Host::Installation& installation) {
    LiveOptions options;
    options.run = run;
    Live::RunConfiguration configuration = readRun(options, {});
    try {
        return std::make_unique<LivePublisher>(std::move(configuration), installation);
    } catch (const InputError& error) {
        throw InputError(run, error);
    }
}

void addLiveCommands(CLI::App& program, Action& action) {
    addRun(program, action);
    addRecord(program, action);
}

}  // namespace Workbench
