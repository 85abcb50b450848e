// SPDX-License-Identifier: Apache-2.0
#include <veskar/Camera.h>
#include <veskar/JsonNode.h>

#include "support/JsonDocument.h"
#include "support/SyslogCapture.h"

#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Veskar::Camera;
using Veskar::JsonNode;
using VeskarTest::JsonDocument;
using VeskarTest::SyslogCapture;

static_assert(std::has_virtual_destructor_v<Camera>);
static_assert(std::is_base_of_v<Veskar::Sensor, Camera>);
static_assert(std::is_copy_constructible_v<Camera> && std::is_copy_assignable_v<Camera>);

constexpr double pi = 3.141592653589793;
const Eigen::Vector4d straightLens(0.0, 0.75, 0.0, 0.0);
const Eigen::Vector4d lens(0.01, 0.8, -0.05, 0.03);
const Eigen::Vector4d inverseLens(-0.0125, 1.25, 0.1, -0.06);
const Eigen::Vector2d halfAngles(0.7, 0.4);

/// Aspect ratio 2, viewing direction along the first axis.
Camera lensCamera() {
    return {Eigen::Vector2i(2000, 1000),
            Eigen::Vector2d(0.0, 0.0),
            lens,
            inverseLens,
            halfAngles,
            false};
}

Camera pinholeCamera() {
    return {Eigen::Vector2i(2000, 1000),
            Eigen::Vector2d(0.0, 0.0),
            lens,
            inverseLens,
            halfAngles,
            true};
}

/// A camera at a height of 5 whose centre ray is @p degrees below the horizon.
Camera lookingDown(double degrees) {
    Camera camera(Eigen::Vector2i(2000, 1000), Eigen::Vector2d(0.0, 0.0), straightLens, inverseLens,
                  halfAngles, false);
    camera.setRotation(0.0, degrees, 0.0);
    camera.setPosition(0.0, 0.0, 5.0);
    return camera;
}

double degreesToRadians(double degrees) {
    return degrees * pi / 180.0;
}

// Construction and properties

TEST(Camera, KeepsWhatItIsMadeOf) {
    const Camera camera = pinholeCamera();
    EXPECT_EQ(camera.getResolution(), Eigen::Vector2i(2000, 1000));
    EXPECT_EQ(camera.getSensorOffset(), Eigen::Vector2d(0.0, 0.0));
    EXPECT_EQ(camera.getLensPolynomImageToRadians(), lens);
    EXPECT_EQ(camera.getFieldOfView(), halfAngles);
    EXPECT_EQ(camera.getAspectRatio(), 2.0);
    EXPECT_TRUE(camera.hasBDCEnabled());
    EXPECT_FALSE(lensCamera().hasBDCEnabled());
}

TEST(Camera, StartsAtTheOriginWithoutRotation) {
    EXPECT_EQ(lensCamera().getPosition(), Eigen::Vector3d(0.0, 0.0, 0.0));
    EXPECT_EQ(lensCamera().getRotation(), Eigen::Matrix3d(Eigen::Matrix3d::Identity()));
}

TEST(Camera, DerivesTheFieldOfViewFromTheLensWhateverWasGiven) {
    const Eigen::Vector2d fieldOfView = lensCamera().getFieldOfView();
    EXPECT_EQ(fieldOfView[0], 0.01 + 0.8 + -0.05 + 0.03) << "summed in this order";
    EXPECT_DOUBLE_EQ(fieldOfView[1], 0.01 + 0.8 / 2.0 - 0.05 / 4.0 + 0.03 / 8.0);
}

TEST(Camera, KeepsTheFieldOfViewOfAPinhole) {
    EXPECT_EQ(pinholeCamera().getFieldOfView(), halfAngles);
}

TEST(Camera, UpdatesTheAspectRatioButNotTheFieldOfViewWithTheResolution) {
    Camera camera = lensCamera();
    const Eigen::Vector2d fieldOfView = camera.getFieldOfView();
    camera.setResolution(1000, 800);
    EXPECT_EQ(camera.getResolution(), Eigen::Vector2i(1000, 800));
    EXPECT_EQ(camera.getAspectRatio(), 1.25);
    EXPECT_EQ(camera.getFieldOfView(), fieldOfView);
}

TEST(Camera, DividesTheResolutionInDouble) {
    Camera camera = lensCamera();
    camera.setResolution(1920, 1080);
    EXPECT_EQ(camera.getAspectRatio(), 1920.0 / 1080.0);
}

TEST(Camera, SetsOpticalCentreAndLens) {
    Camera camera = lensCamera();
    const Eigen::Vector2d fieldOfView = camera.getFieldOfView();
    camera.setSensorOffset(0.125, -0.25);
    camera.setLensPolynomImageToRadians(1.0, 2.0, 3.0, 4.0);
    EXPECT_EQ(camera.getSensorOffset(), Eigen::Vector2d(0.125, -0.25));
    EXPECT_EQ(camera.getLensPolynomImageToRadians(), Eigen::Vector4d(1.0, 2.0, 3.0, 4.0));
    EXPECT_EQ(camera.evaluatePolynomImageToRadians(1.0), 10.0);
    EXPECT_EQ(camera.getFieldOfView(), fieldOfView);
}

// Polynomials

TEST(CameraLens, EvaluatesBothPolynomials) {
    const Camera camera = lensCamera();
    EXPECT_DOUBLE_EQ(camera.evaluatePolynomImageToRadians(0.5),
                     0.01 + 0.8 * 0.5 - 0.05 * 0.25 + 0.03 * 0.125);
    EXPECT_DOUBLE_EQ(camera.evaluatePolynomRadiansToImage(0.5),
                     -0.0125 + 1.25 * 0.5 + 0.1 * 0.25 - 0.06 * 0.125);
    EXPECT_EQ(camera.evaluatePolynomImageToRadians(0.0), 0.01);
    EXPECT_EQ(camera.evaluatePolynomRadiansToImage(0.0), -0.0125);
}

TEST(CameraLens, RoundsTheCubeOnce) {
    Camera camera = lensCamera();
    camera.setLensPolynomImageToRadians(0.0, 0.0, 0.0, 1.0);
    int differing = 0;
    for (int i = 1; i <= 100; ++i) {
        const double t = i / 77.0;
        EXPECT_EQ(camera.evaluatePolynomImageToRadians(t), std::pow(t, 3.0));
        differing += std::pow(t, 3.0) == t * t * t ? 0 : 1;
    }
    EXPECT_GT(differing, 10);  // the test covers actual differences
}

TEST(CameraLens, KeepsTheSignOfTheCube) {
    EXPECT_DOUBLE_EQ(lensCamera().evaluatePolynomImageToRadians(-1.0), 0.01 - 0.8 - 0.05 - 0.03);
}

TEST(CameraLens, DerivativesAreThoseOfThePolynomials) {
    const Camera camera = lensCamera();
    constexpr double step = 1e-5;
    for (const double t : {-1.5, -0.3, 0.0, 0.2, 1.0, 2.0}) {
        EXPECT_NEAR(camera.evaluatePolynomDerivativeImageToRadians(t),
                    (camera.evaluatePolynomImageToRadians(t + step) -
                     camera.evaluatePolynomImageToRadians(t - step)) /
                        (2.0 * step),
                    1e-9);
        EXPECT_NEAR(camera.evaluatePolynomDerivativeRadiansToImage(t),
                    (camera.evaluatePolynomRadiansToImage(t + step) -
                     camera.evaluatePolynomRadiansToImage(t - step)) /
                        (2.0 * step),
                    1e-9);
    }
    EXPECT_EQ(camera.evaluatePolynomDerivativeImageToRadians(0.0), 0.8);
}

// Range

TEST(CameraRange, IsHeightOverTheSineOfTheAngleInTheCentre) {
    const Camera::RangeToTarget target = lookingDown(30.0).getRangeToTarget(0.0, 0.0, 1.0);
    EXPECT_FALSE(target.clamped);
    EXPECT_NEAR(target.range, 10.0, 1e-12);
}

TEST(CameraRange, TakesTheSmallestStepFromOneForTheRadiusOfTheCentre) {
    // A lens so steep that the smallest radius, 2^-52, corresponds to a noticeable angle: 0.222.
    Camera camera(Eigen::Vector2i(2000, 1000), Eigen::Vector2d(0.0, 0.0),
                  Eigen::Vector4d(0.0, 1e15, 0.0, 0.0), inverseLens, halfAngles, false);
    camera.setRotation(0.0, 30.0, 0.0);
    camera.setPosition(0.0, 0.0, 5.0);
    const double forward = std::cos(1e15 * 2.220446049250313e-16);
    EXPECT_DOUBLE_EQ(camera.getRangeToTarget(0.0, 0.0, 1.0).range,
                     5.0 / (forward * std::sin(degreesToRadians(30.0))));
}

TEST(CameraRange, IsClampedAboveTheHorizon) {
    const Camera camera = lookingDown(10.0);
    const Camera::RangeToTarget target = camera.getRangeToTarget(0.0, 1.0, 2.0);
    EXPECT_TRUE(target.clamped);
    EXPECT_DOUBLE_EQ(target.range, 5.0 / std::sin(degreesToRadians(2.0)));
}

TEST(CameraRange, IsClampedOnlyBelowTheMinimumAngle) {
    const Camera camera = lookingDown(12.0);
    const double range = 5.0 / std::sin(degreesToRadians(12.0));
    // At exactly the minimum angle the ray itself is used.
    EXPECT_FALSE(camera.getRangeToTarget(0.0, 0.0, 12.0).clamped);
    EXPECT_DOUBLE_EQ(camera.getRangeToTarget(0.0, 0.0, 12.0).range, range);
    EXPECT_FALSE(camera.getRangeToTarget(0.0, 0.0, 12.0 - 1e-9).clamped);
    EXPECT_TRUE(camera.getRangeToTarget(0.0, 0.0, 12.0 + 1e-9).clamped);
    EXPECT_LT(camera.getRangeToTarget(0.0, 0.0, 13.0).range, range);
}

TEST(CameraRange, IsZeroWithoutHeight) {
    Camera camera = lookingDown(30.0);
    camera.setPosition(3.0, 4.0, 0.0);
    EXPECT_EQ(camera.getRangeToTarget(0.1, -0.2, 1.0).range, 0.0);
    EXPECT_EQ(camera.getRangeToTarget(0.0, 1.0, 40.0).range, 0.0);
}

TEST(CameraRange, HasADirectionInTheOpticalCentre) {
    Camera camera = lookingDown(30.0);
    camera.setLensPolynomImageToRadians(0.1, 0.7, 0.0, 0.0);
    camera.setSensorOffset(0.25, -0.125);
    const Camera::RangeToTarget target = camera.getRangeToTarget(0.25, -0.125, 1.0);
    // The lens gives 0.1 there, but without a direction to tilt towards, only its cosine remains.
    EXPECT_FALSE(target.clamped);
    EXPECT_NEAR(target.range, 10.0 / std::cos(0.1), 1e-12);

    const Camera pinhole = pinholeCamera();
    EXPECT_FALSE(std::isnan(pinhole.getRangeToTarget(0.0, 0.0, 1.0).range));
}

TEST(CameraRange, FollowsTheResolutionThatIsSet) {
    Camera camera = lookingDown(20.0);
    const double wide = camera.getRangeToTarget(0.0, -0.5, 1.0).range;
    camera.setResolution(1000, 1000);
    EXPECT_DOUBLE_EQ(camera.getRangeToTarget(0.0, -0.25, 1.0).range, wide);
}

TEST(CameraRange, UsesTheHorizontalHalfAngleOfAPinhole) {
    Camera camera = pinholeCamera();
    camera.setRotation(0.0, 20.0, 0.0);
    camera.setPosition(0.0, 0.0, 5.0);
    // A pinhole with focal length of one half-width sees the right edge at the half-angle.
    const double below = std::atan(0.25 * std::tan(halfAngles[0]));
    EXPECT_NEAR(camera.getRangeToTarget(0.0, -0.5, 1.0).range,
                5.0 / std::sin(degreesToRadians(20.0) + below), 1e-12);
}

TEST(CameraRange, IsNotANumberWhenThePointIsNone) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(std::isnan(lookingDown(20.0).getRangeToTarget(nan, 0.0, 1.0).range));
    EXPECT_TRUE(std::isnan(lookingDown(20.0).getRangeToTarget(0.0, nan, 1.0).range));
}

/// A direction or point in space.
using Space = std::array<long double, 3>;

/// Rotates two coordinates of a vector by an angle, from the first towards the second.
void turn(Space& vector, std::size_t first, std::size_t second, double degrees) {
    const long double angle = degrees * std::acos(-1.0L) / 180.0L;
    const long double x = vector[first];
    const long double y = vector[second];
    vector[first] = std::cos(angle) * x - std::sin(angle) * y;
    vector[second] = std::sin(angle) * x + std::cos(angle) * y;
}

struct Mounting {
    double yaw, pitch, roll;
    Eigen::Vector3d position;
};

/// The unit viewing ray in the world frame, by successive rotations.
Space viewingRay(const Camera& camera, const Mounting& mounting, double x, double y) {
    const long double dx = static_cast<long double>(x) - camera.getSensorOffset()[0];
    const long double dy = (static_cast<long double>(y) - camera.getSensorOffset()[1]) *
                           camera.getResolution()[1] / camera.getResolution()[0];
    const long double radius = std::hypot(dx, dy);
    const Eigen::Vector4d c = camera.getLensPolynomImageToRadians();
    const long double theta =
        camera.hasBDCEnabled()
            ? std::atan(radius * std::tan(static_cast<long double>(camera.getFieldOfView()[0])))
            : ((c[3] * radius + c[2]) * radius + c[1]) * radius + c[0];
    // At theta from the centre line, to the right along the first image coordinate.
    Space ray = {std::cos(theta), -dx / radius * std::sin(theta), dy / radius * std::sin(theta)};
    turn(ray, 1, 2, mounting.roll);
    turn(ray, 2, 0, mounting.pitch);
    turn(ray, 0, 1, mounting.yaw);
    return ray;
}

/// The distance from the camera to the intersection of the ray with the plane at height 0.
long double distanceToGround(const Mounting& mounting, const Space& ray) {
    const Eigen::Vector3d& from = mounting.position;
    const long double steps = -static_cast<long double>(from[2]) / ray[2];
    const Space ground = {from[0] + steps * ray[0], from[1] + steps * ray[1],
                          from[2] + steps * ray[2]};
    return std::hypot(ground[0] - from[0], ground[1] - from[1], ground[2] - from[2]);
}

TEST(CameraRange, AgreesWithTheRayMeetingTheGround) {
    std::mt19937 random(41);
    const auto within = [&random](double from, double to) {
        return std::uniform_real_distribution<double>(from, to)(random);
    };
    int onGround = 0;
    for (int round = 0; round < 20000; ++round) {
        Camera camera(Eigen::Vector2i(640 + static_cast<int>(random() % 3000),
                                      480 + static_cast<int>(random() % 2000)),
                      Eigen::Vector2d(within(-0.1, 0.1), within(-0.1, 0.1)),
                      Eigen::Vector4d(within(-0.01, 0.01), within(0.5, 1.0), within(-0.1, 0.1),
                                      within(-0.1, 0.1)),
                      inverseLens, Eigen::Vector2d(within(0.3, 1.2), 0.4), round % 2 == 0);
        const Mounting mounting = {within(-180.0, 180.0),
                                   within(-30.0, 60.0),
                                   within(-20.0, 20.0),
                                   {within(-9.0, 9.0), within(-9.0, 9.0), within(1.0, 20.0)}};
        camera.setRotation(mounting.yaw, mounting.pitch, mounting.roll);
        camera.setPosition(mounting.position[0], mounting.position[1], mounting.position[2]);
        const double x = within(-1.0, 1.0);
        const double y = within(-1.0, 1.0);
        const double minimumAngle = within(0.5, 10.0);

        const Space ray = viewingRay(camera, mounting, x, y);
        const Camera::RangeToTarget target = camera.getRangeToTarget(x, y, minimumAngle);
        const long double limit = -std::sin(minimumAngle * std::acos(-1.0L) / 180.0L);
        ASSERT_GT(std::abs(ray[2] - limit), 1e-9L) << "too close to the limit to compare";
        ASSERT_EQ(target.clamped, ray[2] > limit) << "round " << round;
        const long double expected =
            target.clamped ? mounting.position[2] / -limit : distanceToGround(mounting, ray);
        ASSERT_NEAR(target.range / static_cast<double>(expected), 1.0, 1e-12) << "round " << round;
        onGround += target.clamped ? 0 : 1;
    }
    EXPECT_GT(onGround, 5000);
    EXPECT_LT(onGround, 19000);
}

// Uncertainty of the range

TEST(CameraRangeUncertainty, IsTheSignedChangeInTheCentreColumn) {
    Camera camera = lookingDown(30.0);
    camera.setRotation(0.0, 30.0, 15.0);  // so that other columns have other ranges
    const Camera::RangeToTarget up = camera.getRangeToTargetUncertainty(-0.25, 1.0, 0.0625);
    EXPECT_FALSE(up.clamped);
    EXPECT_EQ(up.range, camera.getRangeToTarget(0.0, -0.125, 1.0).range -
                            camera.getRangeToTarget(0.0, -0.25, 1.0).range);
    EXPECT_GT(up.range, 0.0);
    EXPECT_LT(camera.getRangeToTargetUncertainty(-0.25, 1.0, -0.0625).range, 0.0);
    EXPECT_EQ(camera.getRangeToTargetUncertainty(-0.25, 1.0, 0.0).range, 0.0);
}

TEST(CameraRangeUncertainty, TakesTheColumnZeroAlsoBesideTheOpticalCentre) {
    Camera camera = lookingDown(30.0);
    camera.setRotation(0.0, 30.0, 15.0);
    camera.setSensorOffset(0.25, 0.0);
    EXPECT_EQ(camera.getRangeToTargetUncertainty(-0.25, 1.0, 0.0625).range,
              camera.getRangeToTarget(0.0, -0.125, 1.0).range -
                  camera.getRangeToTarget(0.0, -0.25, 1.0).range);
}

TEST(CameraRangeUncertainty, MultipliesTheMoveByTheAspectRatio) {
    Camera camera = lookingDown(30.0);
    camera.setResolution(1000, 1000);
    EXPECT_EQ(camera.getRangeToTargetUncertainty(0.0, 1.0, 0.125).range,
              camera.getRangeToTarget(0.0, 0.125, 1.0).range -
                  camera.getRangeToTarget(0.0, 0.0, 1.0).range);
}

TEST(CameraRangeUncertainty, IsClampedAsTheMovedPoint) {
    const Camera camera = lookingDown(3.0);
    EXPECT_FALSE(camera.getRangeToTarget(0.0, 0.0, 2.0).clamped);
    const Camera::RangeToTarget up = camera.getRangeToTargetUncertainty(0.0, 2.0, 0.2);
    EXPECT_TRUE(up.clamped);
    EXPECT_EQ(up.range, camera.getRangeToTarget(0.0, 0.4, 2.0).range -
                            camera.getRangeToTarget(0.0, 0.0, 2.0).range);
    // From above the horizon down onto the ground.
    const Camera::RangeToTarget down = camera.getRangeToTargetUncertainty(0.4, 2.0, -0.2);
    EXPECT_FALSE(down.clamped);
    EXPECT_EQ(down.range, -up.range);
}

// Parsing

JsonDocument document() {
    return JsonDocument("config/camera.json");
}

Camera load(const JsonDocument& json) {
    return Camera::parse(json.text());
}

/// Checks that parsing throws @p reason and logs its lines.
void expectRefusal(const JsonDocument& json, const std::string& reason) {
    const SyslogCapture log;
    try {
        load(json);
        ADD_FAILURE() << "was accepted";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(typeid(error), typeid(std::runtime_error));
        EXPECT_EQ(error.what(), reason);
    }
    EXPECT_THAT(log.errors(), ElementsAre("Failed to parse fusion config: " + reason + "\n"));
}

TEST(CameraParse, SetsEveryProperty) {
    JsonDocument json = document();
    json.set("bdc", "true").set("resolution", "[640, 320]").set("sensorOffset", "[0.25, -0.5]");
    json.set("imageToRadiansPolynomial", "[0.5, 1.5, 2.5, 3.5]");
    json.set("radiansToImagePolynomial", "[4.5, 5.5, 6.5, 7.5]").set("fov", "[0.75, 0.375]");
    json.set("position", "[1.5, -2.5, 6.5]");
    json.set("rotation", R"({"pitch": 20.0, "yaw": 30.0, "roll": 40.0})");
    const Camera camera = load(json);
    EXPECT_TRUE(camera.hasBDCEnabled());
    EXPECT_EQ(camera.getResolution(), Eigen::Vector2i(640, 320));
    EXPECT_EQ(camera.getAspectRatio(), 2.0);
    EXPECT_EQ(camera.getSensorOffset(), Eigen::Vector2d(0.25, -0.5));
    EXPECT_EQ(camera.getLensPolynomImageToRadians(), Eigen::Vector4d(0.5, 1.5, 2.5, 3.5));
    EXPECT_EQ(camera.evaluatePolynomRadiansToImage(1.0), 24.0);
    EXPECT_EQ(camera.evaluatePolynomRadiansToImage(0.0), 4.5);
    EXPECT_EQ(camera.evaluatePolynomDerivativeRadiansToImage(0.0), 5.5);
    EXPECT_EQ(camera.getFieldOfView(), Eigen::Vector2d(0.75, 0.375));
    EXPECT_EQ(camera.getPosition(), Eigen::Vector3d(1.5, -2.5, 6.5));
    Veskar::Sensor pose;
    pose.setRotation(30.0, 20.0, 40.0);
    EXPECT_EQ(camera.getRotation(), pose.getRotation());
}

TEST(CameraParse, DerivesTheFieldOfViewWithoutPinhole) {
    const Camera camera = load(document().set("fov", "[9.0, 9.0]"));
    EXPECT_FALSE(camera.hasBDCEnabled());
    EXPECT_NEAR(camera.getFieldOfView()[0], pi / 4.0, 1e-6);
}

TEST(CameraParse, ReadsNodeAndTextAlike) {
    const std::string text = document().text();
    EXPECT_EQ(Camera::parse(JsonNode::fromString(text)).getRotation(),
              Camera::parse(text).getRotation());
}

TEST(CameraParse, ReportsTheFirstMissingKeyInReadingOrder) {
    const JsonDocument complete = document();
    JsonDocument json = complete;
    const std::vector<std::string> order = {"bdc",
                                            "rotation",
                                            "rotation/pitch",
                                            "rotation/yaw",
                                            "rotation/roll",
                                            "resolution",
                                            "sensorOffset",
                                            "imageToRadiansPolynomial",
                                            "radiansToImagePolynomial",
                                            "fov",
                                            "position"};
    for (const std::string& path : complete.leaves()) {
        json.erase(path);
    }
    json.erase("rotation");
    for (const std::string& path : order) {
        expectRefusal(json, "No such key: " + path.substr(path.rfind('/') + 1));
        json.set(path, path == "rotation" ? "{}" : complete.text(path));
    }
    const SyslogCapture log;
    load(json);
    EXPECT_THAT(log.errors(), IsEmpty());
}

struct WrongValue {
    std::string name;
    std::string path;
    std::string value;
    std::string reason;
};

std::ostream& operator<<(std::ostream& out, const WrongValue& wrong) {
    return out << wrong.path << " = " << wrong.value;
}

class CameraParseWrongValue : public testing::TestWithParam<WrongValue> {};

TEST_P(CameraParseWrongValue, IsRefused) {
    expectRefusal(document().set(GetParam().path, GetParam().value), GetParam().reason);
}

std::string lengthRefusal(const std::string& key, int has, int needs) {
    return "Array of the wrong length: " + key + " has " + std::to_string(has) +
           " elements instead of " + std::to_string(needs);
}

const std::string noReal = "JsonNode is not a real number.";
const std::string noInteger = "JsonNode is not an integer.";
const std::string noBoolean = "JsonNode is not a boolean.";
const std::string noArray = "JsonNode is not an array";

INSTANTIATE_TEST_SUITE_P(
    Scalar, CameraParseWrongValue,
    testing::Values(WrongValue{"BdcInteger", "bdc", "1", noBoolean},
                    WrongValue{"BdcText", "bdc", R"("true")", noBoolean},
                    WrongValue{"BdcNull", "bdc", "null", noBoolean},
                    WrongValue{"RotationArray", "rotation", "[20.0, 0.0, 0.0]",
                               "No such key: pitch"},
                    WrongValue{"RotationNull", "rotation", "null", "No such key: pitch"},
                    WrongValue{"PitchInteger", "rotation/pitch", "20", noReal},
                    WrongValue{"YawText", "rotation/yaw", R"("0.0")", noReal},
                    WrongValue{"RollBoolean", "rotation/roll", "false", noReal}),
    [](const auto& wrong) { return wrong.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Element, CameraParseWrongValue,
    testing::Values(
        WrongValue{"ResolutionReal", "resolution", "[1920.0, 1080]", noInteger},
        WrongValue{"ResolutionText", "resolution", R"([1920, "1080"])", noInteger},
        WrongValue{"OffsetInteger", "sensorOffset", "[0, 0.0]", noReal},
        WrongValue{"LensInteger", "imageToRadiansPolynomial", "[0.0, 0.8, 0.0, 0]", noReal},
        WrongValue{"InverseNull", "radiansToImagePolynomial", "[0.0, null, 0.0, 0.0]", noReal},
        WrongValue{"FovBoolean", "fov", "[true, 0.4]", noReal},
        WrongValue{"PositionInteger", "position", "[0.0, 0.0, 5]", noReal}),
    [](const auto& wrong) { return wrong.param.name; });

INSTANTIATE_TEST_SUITE_P(
    NoArray, CameraParseWrongValue,
    testing::Values(WrongValue{"Resolution", "resolution", "1920", noArray},
                    WrongValue{"Offset", "sensorOffset", "0.0", noArray},
                    WrongValue{"Lens", "imageToRadiansPolynomial", "{}", noArray},
                    WrongValue{"Inverse", "radiansToImagePolynomial", R"("[]")", noArray},
                    WrongValue{"Fov", "fov", "null", noArray},
                    WrongValue{"Position", "position", "true", noArray}),
    [](const auto& wrong) { return wrong.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Length, CameraParseWrongValue,
    testing::Values(
        WrongValue{"ResolutionEmpty", "resolution", "[]", lengthRefusal("resolution", 0, 2)},
        WrongValue{"ResolutionOne", "resolution", "[1920]", lengthRefusal("resolution", 1, 2)},
        WrongValue{"ResolutionThree", "resolution", "[1920, 1080, 3]",
                   lengthRefusal("resolution", 3, 2)},
        WrongValue{"OffsetThree", "sensorOffset", "[0.0, 0.0, 0.0]",
                   lengthRefusal("sensorOffset", 3, 2)},
        WrongValue{"LensThree", "imageToRadiansPolynomial", "[0.0, 0.8, 0.0]",
                   lengthRefusal("imageToRadiansPolynomial", 3, 4)},
        WrongValue{"InverseFive", "radiansToImagePolynomial", "[0.0, 1.2, 0.0, 0.0, 0.0]",
                   lengthRefusal("radiansToImagePolynomial", 5, 4)},
        WrongValue{"FovOne", "fov", "[0.7]", lengthRefusal("fov", 1, 2)},
        WrongValue{"PositionTwo", "position", "[0.0, 5.0]", lengthRefusal("position", 2, 3)}),
    [](const auto& wrong) { return wrong.param.name; });

TEST(CameraParse, MissesItsFirstKeyWhenTheDocumentIsNoObject) {
    const SyslogCapture log;
    EXPECT_THAT([] { Camera::parse("[]"); },
                testing::ThrowsMessage<std::runtime_error>("No such key: bdc"));
    EXPECT_THAT([] { Camera::parse(JsonNode()); },
                testing::ThrowsMessage<std::runtime_error>("No such key: bdc"));
    EXPECT_THAT(log.errors(), ElementsAre("Failed to parse fusion config: No such key: bdc\n",
                                          "Failed to parse fusion config: No such key: bdc\n"));
}

TEST(CameraParse, PassesLoadingFailuresOnWithoutLogging) {
    const SyslogCapture log;
    EXPECT_THAT([] { Camera::parse("{\"bdc\": tru"); },
                testing::ThrowsMessage<std::runtime_error>(
                    "Failed to load json from string: {\"bdc\": tru, error=invalid token near "
                    "'tru'"));
    EXPECT_THAT(log.errors(), IsEmpty());
}

}  // namespace
