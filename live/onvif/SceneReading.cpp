// SPDX-License-Identifier: Apache-2.0
#include "live/onvif/SceneReading.h"

#include "live/onvif/ElementFields.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace Veskar::Live {
namespace {

/// A likelihood or weight, 0 to 1; what is off by rounding is accepted.
std::optional<double> fraction(const ElementFields& fields, std::string_view name) {
    constexpr double slack = 1e-3;
    const auto found = fields.optionalNumber(name, {-slack, 1.0 + slack});
    return found ? std::optional(std::clamp(*found, 0.0, 1.0)) : std::nullopt;
}

/// Reads the frames of a tree.
class SceneReading {
public:
    explicit SceneReading(LeftOut& leftOut) : leftOut_(leftOut) {}

    void read(const ElementFields& fields) {
        contents(fields, {"MetadataStream", "VideoAnalytics", "Frame"});
        const auto further = [this](const ElementFields& inner) { read(inner); };
        fields.forEach("MetadataStream", further);
        fields.forEach("VideoAnalytics", further);
        fields.forEach("Frame", [this](const ElementFields& inner) { frame(inner); });
    }
    Scene take() { return std::move(scene_); }

private:
    /// For elements that hold elements and attributes only: counts those that are not used.
    void contents(const ElementFields& fields, std::initializer_list<std::string_view> used) const {
        fields.refuseText();
        fields.leaveOutAllBut(used, leftOut_);
    }

    void frame(const ElementFields& fields) {
        contents(fields,
                 {"UtcTime", "Source", "Colorspace", "Transformation", "Object", "ObjectTree"});
        SceneFrame frame;
        frame.time = time(fields);
        frame.source = fields.text("Source");
        space_ =
            fields.has("Colorspace") ? colorSpace(fields.text("Colorspace")) : ColorSpace::YCbCr;
        frame.transformation = transformation(fields);
        fields.forEach("Object",
                       [&](const ElementFields& inner) { frame.objects.push_back(object(inner)); });
        fields.child("ObjectTree", [&](const ElementFields& inner) { tree(inner, frame); });
        scene_.push_back(std::move(frame));
    }

    static UtcTime time(const ElementFields& fields) {
        if (!fields.has("UtcTime")) {
            fields.refuse("UtcTime", "missing");
        }
        const std::string text = fields.text("UtcTime");
        const std::optional<UtcTime> time = parseUtcTime(text);
        if (!time) {
            fields.refuse("UtcTime", "expected a time such as 2026-05-01T12:00:00.25Z");
        }
        return *time;
    }

    Transformation transformation(const ElementFields& fields) {
        Transformation result;
        fields.child("Transformation", [&](const ElementFields& inner) {
            contents(inner, {"Translate", "Scale"});
            inner.child("Translate",
                        [&](const ElementFields& point) { result.translate = vector(point); });
            inner.child("Scale", [&](const ElementFields& point) {
                result.scale = vector(point);
                for (const auto& [axis, factor] :
                     {std::pair("x", result.scale[0]), std::pair("y", result.scale[1])}) {
                    if (factor == 0.0) {
                        point.refuse(axis, "a scale of 0");
                    }
                }
            });
        });
        return result;
    }

    Eigen::Vector2d vector(const ElementFields& fields) const {
        contents(fields, {"x", "y"});
        return {fields.number("x"), fields.number("y")};
    }

    /// The names in use: "RGB", "http://www.onvif.org/ver10/colorspace/RGB".
    static ColorSpace colorSpace(const std::string& uri) {
        std::string word = uri.substr(uri.rfind('/') + 1);
        std::transform(word.begin(), word.end(), word.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        return word == "rgb"      ? ColorSpace::Rgb
               : word == "ycbcr"  ? ColorSpace::YCbCr
               : word == "cielab" ? ColorSpace::CieLab
                                  : ColorSpace::Other;
    }

    static ObjectName name(const ElementFields& fields) {
        ObjectName name;
        if (const std::optional<Scalar> id = fields.value("ObjectId")) {
            const bool isId = std::holds_alternative<std::int64_t>(*id) ||
                              std::holds_alternative<std::string_view>(*id);
            if (!isId) {
                fields.refuse("ObjectId", "expected an integer or text");
            }
            const std::string text = fields.text("ObjectId");
            name.id = integerIn(*id).value_or(text);
        }
        name.uuid = fields.text("UUID");
        if (name.id.empty() && name.uuid.empty()) {
            fields.refuse("ObjectId", "missing, and so is UUID");
        }
        return name;
    }

    SceneObject object(const ElementFields& fields) {
        contents(fields, {"ObjectId", "UUID", "Appearance", "Behaviour", "SphericalCoordinate"});
        SceneObject object;
        object.name = name(fields);
        fields.child("Appearance", [&](const ElementFields& inner) { appearance(inner, object); });
        fields.child("Behaviour", [&](const ElementFields& inner) { behaviour(inner, object); });
        // ONVIF's example has it here, its schema in the appearance.
        place(fields, object);
        return object;
    }

    void appearance(const ElementFields& fields, SceneObject& object) {
        contents(fields, {"Transformation", "Shape", "Color", "Class", "GeoLocation", "VehicleInfo",
                          "HumanBody", "SphericalCoordinate"});
        object.transformation = transformation(fields);
        fields.child("Shape", [&](const ElementFields& inner) { object.shape = shape(inner); });
        object.colors = colors(fields);
        fields.child("Class", [&](const ElementFields& inner) { classes(inner, object.classes); });
        fields.child("GeoLocation", [&](const ElementFields& inner) {
            contents(inner, {"lat", "lon"});
            const auto latitude = inner.optionalNumber("lat", {-90.0, 90.0});
            const auto longitude = inner.optionalNumber("lon", {-360.0, 360.0});
            if (latitude && longitude) {
                object.geo = GeoPlace{*latitude, *longitude};
            } else {
                leftOut_.add("GeoLocation without lat and lon");
            }
        });
        fields.forEach("VehicleInfo", [&](const ElementFields& inner) {
            contents(inner, {"Type", "Color"});
            inner.child("Type", [&](const ElementFields& type) {
                object.vehicleTypes.push_back(candidate(type));
            });
            append(object.vehicleColors, colors(inner));
        });
        fields.child("HumanBody", [&](const ElementFields& inner) { body(inner, object); });
        place(fields, object);
    }

    Shape shape(const ElementFields& fields) {
        contents(fields, {"BoundingBox", "CenterOfGravity", "Polygon"});
        Shape shape;
        fields.child("BoundingBox", [&](const ElementFields& box) {
            contents(box, {"left", "top", "right", "bottom"});
            shape.box = Host::ImageBox{box.number("left"), box.number("bottom"),
                                       box.number("right"), box.number("top")};
        });
        fields.child("CenterOfGravity",
                     [&](const ElementFields& point) { shape.centre = vector(point); });
        fields.forEach("Polygon", [&](const ElementFields& polygon) {
            contents(polygon, {"Point"});
            std::vector<Eigen::Vector2d>& outline = shape.polygons.emplace_back();
            polygon.forEach("Point",
                            [&](const ElementFields& point) { outline.push_back(vector(point)); });
        });
        return shape;
    }

    std::vector<ColorCluster> colors(const ElementFields& fields) {
        std::vector<ColorCluster> clusters;
        fields.child("Color", [&](const ElementFields& descriptor) {
            contents(descriptor, {"ColorCluster"});
            descriptor.forEach("ColorCluster", [&](const ElementFields& inner) {
                contents(inner, {"Color", "Weight"});
                ColorCluster& cluster = clusters.emplace_back();
                cluster.weight = fraction(inner, "Weight");
                if (!inner.has("Color")) {
                    inner.refuse("Color", "missing");
                }
                inner.child("Color", [&](const ElementFields& color) {
                    contents(color, {"X", "Y", "Z", "Colorspace", "Likelihood"});
                    cluster.value = {color.number("X"), color.number("Y"), color.number("Z")};
                    cluster.space =
                        color.has("Colorspace") ? colorSpace(color.text("Colorspace")) : space_;
                    cluster.likelihood = fraction(color, "Likelihood");
                });
            });
        });
        return clusters;
    }

    static void append(std::vector<ColorCluster>& all, std::vector<ColorCluster> further) {
        all.insert(all.end(), further.begin(), further.end());
    }

    /// A word with its likelihood as attribute, which is 1 when it is missing.
    Candidate candidate(const ElementFields& fields) const {
        fields.leaveOutAllBut({"Likelihood"}, leftOut_);
        return {fields.ownText(), fraction(fields, "Likelihood").value_or(1.0)};
    }

    /// A word and its likelihood as children, in the form of old devices.
    Candidate oldCandidate(const ElementFields& fields) const {
        contents(fields, {"Type", "Likelihood"});
        return {fields.text("Type"), fraction(fields, "Likelihood").value_or(1.0)};
    }

    void classes(const ElementFields& fields, std::vector<Candidate>& candidates) {
        contents(fields, {"Type", "ClassCandidate", "Extension"});
        fields.forEach("Type",
                       [&](const ElementFields& inner) { candidates.push_back(candidate(inner)); });
        const auto addOld = [&](const ElementFields& inner) {
            candidates.push_back(oldCandidate(inner));
        };
        fields.forEach("ClassCandidate", addOld);
        fields.child("Extension", [&](const ElementFields& inner) {
            contents(inner, {"OtherTypes"});
            inner.forEach("OtherTypes", addOld);
        });
    }

    void body(const ElementFields& fields, SceneObject& object) {
        contents(fields, {"Clothing"});
        fields.child("Clothing", [&](const ElementFields& clothing) {
            contents(clothing, {"Tops", "Bottoms"});
            clothing.child("Tops", [&](const ElementFields& tops) {
                contents(tops, {"Color", "Style"});
                object.tops = colors(tops);
                object.isDressed = tops.text("Style") == "Dress";
            });
            clothing.child("Bottoms", [&](const ElementFields& bottoms) {
                contents(bottoms, {"Color"});
                object.bottoms = colors(bottoms);
            });
        });
    }

    void place(const ElementFields& fields, SceneObject& object) const {
        fields.child("SphericalCoordinate", [&](const ElementFields& inner) {
            contents(inner, {"Distance", "ElevationAngle", "AzimuthAngle"});
            constexpr Host::Internal::Range distances{0.0, 1e6};
            constexpr Host::Internal::Range elevations{-90.0, 90.0};
            constexpr Host::Internal::Range azimuths{-360.0, 360.0};
            object.spherical = SphericalPlace{inner.optionalNumber("Distance", distances),
                                              inner.optionalNumber("ElevationAngle", elevations),
                                              inner.optionalNumber("AzimuthAngle", azimuths)};
        });
    }

    void behaviour(const ElementFields& fields, SceneObject& object) {
        contents(fields, {"Removed", "Idle", "Speed", "Direction"});
        object.isRemoved = fields.has("Removed");
        object.isIdle = fields.has("Idle");
        object.speed = fields.optionalNumber("Speed", {0.0, 1e4});
        fields.child("Direction", [&](const ElementFields& inner) {
            contents(inner, {"yaw", "pitch"});
            const auto yaw = inner.optionalNumber("yaw", {-360.0, 360.0});
            const auto pitch = inner.optionalNumber("pitch", {-90.0, 90.0});
            if (yaw) {
                object.direction = MotionDirection{*yaw, pitch.value_or(0.0)};
            } else {
                leftOut_.add("Direction without yaw");
            }
        });
    }

    void tree(const ElementFields& fields, SceneFrame& frame) {
        contents(fields, {"Rename", "Split", "Merge", "Delete"});
        fields.forEach("Rename", [&](const ElementFields& inner) {
            const Regrouping both = regrouping(inner, 1, 1, 1, 1);
            frame.renames.push_back({both.from[0], both.to[0]});
        });
        fields.forEach("Split", [&](const ElementFields& inner) {
            frame.splits.push_back(regrouping(inner, 1, 1, 1, many));
        });
        fields.forEach("Merge", [&](const ElementFields& inner) {
            frame.merges.push_back(regrouping(inner, 1, many, 1, 1));
        });
        fields.forEach("Delete",
                       [&](const ElementFields& inner) { frame.deletes.push_back(name(inner)); });
    }

    static constexpr std::size_t many = 10'000;

    /// The schema writes "from" and "to", ONVIF's examples write "From" and "To".
    static Regrouping regrouping(const ElementFields& fields, std::size_t leastFrom,
                                 std::size_t mostFrom, std::size_t leastTo, std::size_t mostTo) {
        Regrouping result;
        const auto names = [&](std::initializer_list<std::string_view> words, std::size_t least,
                               std::size_t most, std::vector<ObjectName>& list) {
            for (const std::string_view word : words) {
                fields.forEach(word,
                               [&](const ElementFields& inner) { list.push_back(name(inner)); });
            }
            if (list.size() < least) {
                fields.refuse(*words.begin(), "missing");
            }
            if (list.size() > most) {
                fields.refuse(*words.begin(), "more than " + std::to_string(most));
            }
        };
        names({"from", "From"}, leastFrom, mostFrom, result.from);
        names({"to", "To"}, leastTo, mostTo, result.to);
        return result;
    }

    LeftOut& leftOut_;
    Scene scene_;
    ColorSpace space_ = ColorSpace::YCbCr;  ///< of the frame
};

}  // namespace

Scene readScene(const ElementTree& tree, LeftOut& leftOut) {
    SceneReading reading(leftOut);
    reading.read(ElementFields(tree, ElementTree::root()));
    return reading.take();
}

}  // namespace Veskar::Live
