// SPDX-License-Identifier: Apache-2.0
// A host: takes the reports of a camera and a radar, one frame per line, and prints the fused
// tracks after each. Here the reports come from a recording on standard input; on a device they
// come from the sensors' interfaces, with frames stamped by the steady clock.
#include <veskar-host/veskar-host.h>

#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

namespace {

using Veskar::Host::FusedFrame;
using Veskar::Host::FusionPipeline;
using Veskar::Host::HostParameters;
using Veskar::Host::Installation;

/// A recording may also contain the truth, which is not a sensor's report.
bool isTruth(const std::string& line) {
    return line.find("\"source\":\"truth\"") != std::string::npos;
}

std::string contentOf(const char* path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// One line of JSON for every frame that was fused: tracks with position, latitude and longitude.
void print(const FusedFrame& frame) {
    std::cout << toJsonLine(frame);
}

void fuse(const std::string& configuration) {
    std::string line;
    std::getline(std::cin, line);
    FusionPipeline::Options options;
    // The times of a recording begin at 0, and this machine is not the device that made it.
    options.uptime = 100.0;
    options.asksForPosition = false;
    FusionPipeline pipeline(Installation::parseString(line),
                            Veskar::Config::parse_json_string(configuration), print,
                            HostParameters::fromConfig(configuration), options);
    while (std::getline(std::cin, line)) {
        if (!isTruth(line)) {
            // A device calls pipeline.advance(now), too, about ten times a second.
            pipeline.push(Veskar::Host::parseSensorFrame(line));
        }
    }
    if (pipeline.counts().failedFrames > 0) {
        std::cerr << "host: " << pipeline.counts().firstFailure << '\n';
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: host FUSION.json < RECORDING.jsonl\n";
        return EXIT_FAILURE;
    }
    try {
        fuse(contentOf(argv[1]));
    } catch (const std::exception& error) {
        std::cerr << "host: " << error.what() << " (the system log may say more)\n";
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
