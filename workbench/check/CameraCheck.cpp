// SPDX-License-Identifier: Apache-2.0
#include "check/CameraCheck.h"

#include "check/Rules.h"
#include "host/installation/InstallationKeys.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include <fmt/format.h>

namespace Workbench {
namespace {

constexpr double degreesPerRadian = 57.29577951308232;
/// Lens polynomials are sampled at this step of the image radius, up to 1, the edge of the image,
/// or up to its corner (1.25 in a 4:3 image).
constexpr double radiusStep = 0.05;
constexpr int edgeStep = 20;
constexpr int cornerStep = 25;

using Numbers = std::vector<double>;

/// @param rules rules for the members of a camera or of its rotation
/// @param real required type of a number that may have a fraction
/// @return the rules with this type
Rules withReals(Rules rules, Wanted real) {
    for (Rule& rule : rules) {
        if (rule.key.wanted == Wanted::Number) {
            rule.key.wanted = real;
        }
        // The library takes no fractions of pixels; the program does.
        const bool isPixels = rule.key.name == "resolution" && real == Wanted::Real;
        rule.element = isPixels ? Wanted::Integer : real;
    }
    return rules;
}

Rules cameraRules(Wanted real) {
    constexpr Range image{-1.0, 1.0};
    constexpr Range halfAngle{0.0, 3.1416, false, true};
    static const Rules rules =
        rulesOf(cameraKeys,
                {
                    {"bdc", "pinhole instead of lens polynomials"},
                    {"rotation", "mounting angles"},
                    {"resolution", "width and height in pixels", {160.0, 16384.0}},
                    {"sensorOffset", "optical centre on the image plane", {-0.2, 0.2}, image},
                    {"imageToRadiansPolynomial",
                     "c0 to c3 from image radius to angle, radians",
                     {-10.0, 10.0}},
                    {"radiansToImagePolynomial",
                     "c0 to c3 from angle in radians to image radius",
                     {-10.0, 10.0}},
                    {"fov", "horizontal and vertical half-angles, radians", {0.02, 1.5}, halfAngle},
                    {"position", "x forward, y left, height, m", {-1000.0, 1000.0}},
                });
    return withReals(rules, real);
}

Rules cameraRotationRules(Wanted real) {
    static const Rules rules = rotationRules({2.0, 90.0});
    return withReals(rules, real);
}

/// @return the numbers of an array of this length; nothing for other values
std::optional<Numbers> numbersAt(const LocatedValue& object, std::string_view key,
                                 std::size_t count) {
    const LocatedValue* array = object.find(key);
    if (array == nullptr || array->elements.size() != count) {
        return std::nullopt;
    }
    Numbers numbers;
    for (const LocatedValue& element : array->elements) {
        if (!element.isNumber()) {
            return std::nullopt;
        }
        numbers.push_back(element.number);
    }
    return numbers;
}

double evaluate(const Numbers& c, double t) {
    return c[0] + t * (c[1] + t * (c[2] + t * c[3]));
}

class GeometryCheck {
public:
    GeometryCheck(const LocatedValue& camera, const std::string& path, Findings& findings)
        : camera_(camera), path_(path), findings_(findings) {}

    void run() {
        checkHeight();
        const auto toRadians = numbersAt(camera_, "imageToRadiansPolynomial", 4);
        const auto toImage = numbersAt(camera_, "radiansToImagePolynomial", 4);
        const LocatedValue* bdc = camera_.find("bdc");
        if (bdc == nullptr || bdc->text != "false" || !toRadians) {
            return;
        }
        if (checkGrowth(*toRadians) && toImage) {
            checkInverse(*toRadians, *toImage);
            checkFieldOfView(*toRadians);
        }
        checkGroundInView(*toRadians);
    }

private:
    void add(Severity severity, std::string_view key, std::string message, std::string value = {}) {
        findings_.push_back({severity, static_cast<std::uint64_t>(camera_.find(key)->line),
                             joinPath(path_, key), std::move(value), std::move(message)});
    }

    void checkHeight() {
        const auto position = numbersAt(camera_, "position", 3);
        if (!position) {
            return;
        }
        const double height = (*position)[2];
        const std::string shown = camera_.find("position")->elements[2].text;
        if (!(height > 0.0)) {
            add(Severity::Fault, "position",
                "expected a height above 0, m: without it no image point has a range", shown);
        } else if (height < 1.0 || height > 50.0) {
            add(Severity::Warning, "position",
                "unusual for a height in metres; usual is between 1 and 50", shown);
        }
    }

    bool checkGrowth(const Numbers& toRadians) {
        for (int step = 0; step < cornerStep; ++step) {
            const double inner = radiusStep * step;
            const double outer = inner + radiusStep;
            if (evaluate(toRadians, outer) <= evaluate(toRadians, inner)) {
                add(Severity::Fault, "imageToRadiansPolynomial",
                    fmt::format("expected angles that grow with the radius; from radius {:.2f} to "
                                "{:.2f} it goes from {:.4f} to {:.4f}",
                                inner, outer, evaluate(toRadians, inner),
                                evaluate(toRadians, outer)));
                return false;
            }
        }
        if (std::abs(toRadians[0]) > 0.01) {
            add(Severity::Warning, "imageToRadiansPolynomial",
                fmt::format("the optical centre is seen at {:.3f} radians instead of 0",
                            toRadians[0]));
        }
        return true;
    }

    void checkInverse(const Numbers& toRadians, const Numbers& toImage) {
        constexpr double tolerance = 0.02;
        double worst = 0.0;
        double worstRadius = 0.0;
        for (int step = 1; step <= edgeStep; ++step) {
            const double r = radiusStep * step;
            const double error = std::abs(evaluate(toImage, evaluate(toRadians, r)) - r);
            if (error > worst) {
                worst = error;
                worstRadius = r;
            }
        }
        if (worst > tolerance) {
            add(Severity::Warning, "radiansToImagePolynomial",
                fmt::format("is not the inverse of imageToRadiansPolynomial: radius {:.2f} comes "
                            "back as {:.3f}",
                            worstRadius, evaluate(toImage, evaluate(toRadians, worstRadius))));
        }
    }

    void checkFieldOfView(const Numbers& toRadians) {
        const auto halfAngles = numbersAt(camera_, "fov", 2);
        const double fromLens = evaluate(toRadians, 1.0);
        if (halfAngles && std::abs((*halfAngles)[0] - fromLens) > 0.05) {
            add(Severity::Warning, "fov",
                fmt::format("the lens polynomial says {:.4f} radians to the right edge, and that "
                            "is what counts",
                            fromLens),
                camera_.find("fov")->elements[0].text);
        }
    }

    /// The lower edge of the image must show the ground.
    void checkGroundInView(const Numbers& toRadians) {
        const auto resolution = numbersAt(camera_, "resolution", 2);
        const LocatedValue* rotation = objectAt(camera_, "rotation");
        const LocatedValue* pitch = rotation ? numberAt(*rotation, "pitch") : nullptr;
        if (!resolution || pitch == nullptr ||
            !((*resolution)[0] > 0.0 && (*resolution)[1] > 0.0)) {
            return;
        }
        const double lowerHalf =
            degreesPerRadian * evaluate(toRadians, (*resolution)[1] / (*resolution)[0]);
        if (pitch->number + lowerHalf <= 0.0) {
            findings_.push_back(
                {Severity::Fault, static_cast<std::uint64_t>(pitch->line),
                 joinPath(joinPath(path_, "rotation"), "pitch"), pitch->text,
                 fmt::format("the whole image lies above the horizon; expected more "
                             "than {:.1f} degrees downward",
                             -lowerHalf)});
        }
    }

    const LocatedValue& camera_;
    const std::string& path_;
    Findings& findings_;
};

}  // namespace

Rules rotationRules(const Range& usualPitch) {
    constexpr Range turn{-360.0, 360.0};
    return rulesOf(rotationKeys, {
                                     {"pitch", "downward, degrees", usualPitch, turn},
                                     {"yaw", "to the left, degrees", {-180.0, 180.0}, turn},
                                     {"roll", "right side down, degrees", {-15.0, 15.0}, turn},
                                 });
}

void checkCamera(const LocatedValue& camera, const std::string& path, Wanted real,
                 Findings& findings) {
    // The library ignores unknown keys.
    const Severity unknown = real == Wanted::Real ? Severity::Warning : Severity::Fault;
    checkMembers(camera, path, cameraRules(real), unknown, findings);
    if (const LocatedValue* rotation = objectAt(camera, "rotation")) {
        checkMembers(*rotation, joinPath(path, "rotation"), cameraRotationRules(real), unknown,
                     findings);
    }
    GeometryCheck(camera, path, findings).run();
}

}  // namespace Workbench
