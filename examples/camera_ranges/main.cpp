// SPDX-License-Identifier: Apache-2.0
// Loads a fusion configuration and a camera, prints their main values, and the range from the
// camera to the ground along the image's centre column.
#include <veskar/Camera.h>
#include <veskar/Config.h>
#include <veskar/JsonNode.h>

#include <cstdlib>
#include <exception>
#include <iomanip>
#include <iostream>

namespace {

constexpr double degreesPerRadian = 57.29577951308232;

void printConfig(const Veskar::Config& config) {
    const Veskar::Config::ModuleConfig& module = config.module;
    std::cout << "Fusion: " << (module.useJVA ? "optimal" : "greedy") << " assignment, "
              << (module.splitGating ? "position and velocity gated apart" : "one combined gate")
              << ", confirmation above " << module.systemTrackConfirmationLimitUpper
              << " with one sensor, above " << module.systemTrackConfirmationLimitLower
              << " with both\n";
}

void printCamera(const Veskar::Camera& camera) {
    const Eigen::Vector2d view = 2.0 * degreesPerRadian * camera.getFieldOfView();
    std::cout << "Camera: " << camera.getResolution()[0] << " x " << camera.getResolution()[1]
              << " pixels, " << view[0] << " x " << view[1] << " degrees, "
              << camera.getPosition()[2] << " m above ground\n";
}

void printRanges(const Veskar::Camera& camera, double minimumAngle) {
    std::cout << "Range to what stands on the ground, by height in the image:\n";
    for (const double v : {0.9, 0.6, 0.3, 0.0, -0.3, -0.6, -0.9}) {
        const Veskar::Camera::RangeToTarget target = camera.getRangeToTarget(0.0, v, minimumAngle);
        std::cout << "  v = " << std::setw(4) << v << ": " << std::setw(6) << target.range << " m"
                  << (target.clamped ? " (or more)" : "") << '\n';
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: camera_ranges FUSION.json CAMERA.json\n";
        return EXIT_FAILURE;
    }
    try {
        const Veskar::Config config = Veskar::Config::parse(argv[1]);
        const Veskar::Camera camera = Veskar::Camera::parse(Veskar::JsonNode::fromFile(argv[2]));
        std::cout << std::fixed << std::setprecision(2);
        printConfig(config);
        printCamera(camera);
        printRanges(camera, config.inputs.video.minimumAngle);
    } catch (const std::exception& error) {
        std::cerr << "camera_ranges: " << error.what() << " (the system log says more)\n";
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
