// SPDX-License-Identifier: Apache-2.0
#include "live/onvif/SceneWriting.h"

#include "host/reports/JsonLine.h"

#include <string_view>

namespace Veskar::Live {
namespace {

using Index = ElementTree::Index;

using Host::Internal::angleDecimals;
using Host::Internal::geoDecimals;
using Host::Internal::imageDecimals;
using Host::Internal::metreDecimals;
using Host::Internal::ratioDecimals;
constexpr int colorDecimals = 3;

std::string_view uriOf(ColorSpace space) {
    switch (space) {
        case ColorSpace::YCbCr:
            return "http://www.onvif.org/ver10/colorspace/YCbCr";
        case ColorSpace::Rgb:
            return "http://www.onvif.org/ver10/colorspace/RGB";
        case ColorSpace::CieLab:
            return "http://www.onvif.org/ver10/colorspace/CIELAB";
        default:
            return "http://www.onvif.org/ver10/colorspace/Other";
    }
}

/// Writes the frames of a scene into a tree.
class SceneWriting {
public:
    explicit SceneWriting(ElementTree& tree) : tree_(tree) {}

    void frame(const SceneFrame& frame) {
        const Index at = list(ElementTree::root(), "Frame");
        tree_.addAttribute(at, "UtcTime", tree_.keep(utcText(frame.time)));
        if (!frame.source.empty()) {
            tree_.addAttribute(at, "Source", std::string_view(frame.source));
        }
        transformation(at, frame.transformation);
        for (const SceneObject& one : frame.objects) {
            object(at, one);
        }
        objectTree(at, frame);
    }

private:
    Index list(Index parent, std::string_view name) {
        const Index at = tree_.add(parent, name);
        tree_[at].isListed = true;
        return at;
    }
    Index inBody(Index parent, std::string_view name) {
        const Index at = tree_.add(parent, name);
        tree_[at].space = Namespace::HumanBody;
        return at;
    }
    void real(Index element, std::string_view name, double value, int decimals) {
        tree_.addAttribute(element, name, Real{value, decimals});
    }

    void vector(Index parent, std::string_view name, const Eigen::Vector2d& value, int decimals) {
        const Index at = tree_.add(parent, name);
        real(at, "x", value[0], decimals);
        real(at, "y", value[1], decimals);
    }

    /// Zeros lose their sign: in JSON, -0 is the integer 0.
    void exactVector(Index parent, std::string_view name, const Eigen::Vector2d& value) {
        const Index at = tree_.add(parent, name);
        tree_.addAttribute(at, "x", value[0] + 0.0);
        tree_.addAttribute(at, "y", value[1] + 0.0);
    }

    void transformation(Index parent, const Transformation& value) {
        if (!value.isIdentity()) {
            const Index at = tree_.add(parent, "Transformation");
            exactVector(at, "Translate", value.translate);
            exactVector(at, "Scale", value.scale);
        }
    }

    void name(Index at, const ObjectName& value) {
        if (!value.id.empty()) {
            tree_.addAttribute(at, "ObjectId", idOf(value.id));
        }
        if (!value.uuid.empty()) {
            tree_.addAttribute(at, "UUID", std::string_view(value.uuid));
        }
    }
    /// Integers that fit are numbers in JSON.
    static Scalar idOf(std::string_view id) {
        constexpr std::size_t surelyFit = 18;
        const bool isNumber = integerIn(id) == id && id.size() <= surelyFit;
        return isNumber ? Scalar(static_cast<std::int64_t>(std::stoll(std::string(id))))
                        : Scalar(id);
    }

    void object(Index parent, const SceneObject& object) {
        const Index at = list(parent, "Object");
        name(at, object.name);
        appearance(at, object);
        behaviour(at, object);
    }

    void appearance(Index parent, const SceneObject& object) {
        const bool isDressed = !object.tops.empty() || !object.bottoms.empty() || object.isDressed;
        const bool isThere = object.shape || !object.colors.empty() || !object.classes.empty() ||
                             object.geo || !object.vehicleTypes.empty() || isDressed ||
                             object.spherical || !object.vehicleColors.empty();
        if (!isThere) {
            return;
        }
        const Index at = tree_.add(parent, "Appearance");
        transformation(at, object.transformation);
        if (object.shape) {
            shape(at, *object.shape);
        }
        colors(at, object.colors, Namespace::Schema);
        if (!object.classes.empty()) {
            const Index list = tree_.add(at, "Class");
            for (const Candidate& one : object.classes) {
                candidate(list, "Type", one);
            }
        }
        if (object.geo) {
            const Index geo = tree_.add(at, "GeoLocation");
            real(geo, "lon", object.geo->longitude, geoDecimals);
            real(geo, "lat", object.geo->latitude, geoDecimals);
        }
        vehicle(at, object);
        if (isDressed) {
            body(at, object);
        }
        spherical(at, object);
    }

    void shape(Index parent, const Shape& shape) {
        const Index at = tree_.add(parent, "Shape");
        if (shape.box) {
            const Index box = tree_.add(at, "BoundingBox");
            real(box, "left", shape.box->left, imageDecimals);
            real(box, "top", shape.box->top, imageDecimals);
            real(box, "right", shape.box->right, imageDecimals);
            real(box, "bottom", shape.box->bottom, imageDecimals);
        }
        if (shape.centre) {
            vector(at, "CenterOfGravity", *shape.centre, imageDecimals);
        }
        for (const auto& outline : shape.polygons) {
            const Index polygon = tree_.add(at, "Polygon");
            for (const Eigen::Vector2d& point : outline) {
                vector(polygon, "Point", point, imageDecimals);
            }
        }
    }

    void colors(Index parent, const std::vector<ColorCluster>& clusters, Namespace space) {
        if (clusters.empty()) {
            return;
        }
        const Index at = tree_.add(parent, "Color");
        tree_[at].space = space;
        for (const ColorCluster& cluster : clusters) {
            const Index one = list(at, "ColorCluster");
            const Index color = tree_.add(one, "Color");
            real(color, "X", cluster.value[0], colorDecimals);
            real(color, "Y", cluster.value[1], colorDecimals);
            real(color, "Z", cluster.value[2], colorDecimals);
            tree_.addAttribute(color, "Colorspace", uriOf(cluster.space));
            if (cluster.likelihood) {
                real(color, "Likelihood", *cluster.likelihood, ratioDecimals);
            }
            if (cluster.weight) {
                tree_[tree_.add(one, "Weight")].value = Real{*cluster.weight, ratioDecimals};
            }
        }
    }

    void candidate(Index parent, std::string_view name, const Candidate& candidate) {
        const Index at = list(parent, name);
        real(at, "Likelihood", candidate.likelihood, ratioDecimals);
        tree_[at].value = std::string_view(candidate.word);
    }

    void vehicle(Index parent, const SceneObject& object) {
        // The schema wants a type in each, and allows colours in each.
        for (std::size_t i = 0; i < object.vehicleTypes.size(); ++i) {
            const Index at = list(parent, "VehicleInfo");
            candidate(at, "Type", object.vehicleTypes[i]);
            if (i == 0) {
                colors(at, object.vehicleColors, Namespace::Schema);
            }
        }
    }

    void body(Index parent, const SceneObject& object) {
        const Index clothing = inBody(tree_.add(parent, "HumanBody"), "Clothing");
        if (!object.tops.empty() || object.isDressed) {
            const Index tops = inBody(clothing, "Tops");
            colors(tops, object.tops, Namespace::HumanBody);
            if (object.isDressed) {
                tree_[inBody(tops, "Style")].value = std::string_view("Dress");
            }
        }
        if (!object.bottoms.empty()) {
            colors(inBody(clothing, "Bottoms"), object.bottoms, Namespace::HumanBody);
        }
    }

    void spherical(Index parent, const SceneObject& object) {
        if (!object.spherical) {
            return;
        }
        const Index at = tree_.add(parent, "SphericalCoordinate");
        const SphericalPlace& place = *object.spherical;
        if (place.distance) {
            real(at, "Distance", *place.distance, metreDecimals);
        }
        if (place.elevation) {
            real(at, "ElevationAngle", *place.elevation, angleDecimals);
        }
        if (place.azimuth) {
            real(at, "AzimuthAngle", *place.azimuth, angleDecimals);
        }
    }

    void behaviour(Index parent, const SceneObject& object) {
        if (!object.isRemoved && !object.isIdle && !object.speed && !object.direction) {
            return;
        }
        const Index at = tree_.add(parent, "Behaviour");
        if (object.isRemoved) {
            tree_.add(at, "Removed");
        }
        if (object.isIdle) {
            tree_.add(at, "Idle");
        }
        if (object.speed) {
            tree_[tree_.add(at, "Speed")].value = Real{*object.speed, metreDecimals};
        }
        if (object.direction) {
            const Index direction = tree_.add(at, "Direction");
            real(direction, "pitch", object.direction->pitch, angleDecimals);
            real(direction, "yaw", object.direction->yaw, angleDecimals);
        }
    }

    void names(Index parent, std::string_view word, const std::vector<ObjectName>& list) {
        for (const ObjectName& one : list) {
            name(tree_.add(parent, word), one);
        }
    }

    void regrouping(Index parent, std::string_view word, const Regrouping& value) {
        const Index at = list(parent, word);
        names(at, "from", value.from);
        names(at, "to", value.to);
    }

    void objectTree(Index parent, const SceneFrame& frame) {
        if (frame.renames.empty() && frame.splits.empty() && frame.merges.empty() &&
            frame.deletes.empty()) {
            return;
        }
        const Index at = tree_.add(parent, "ObjectTree");
        for (const Renaming& one : frame.renames) {
            const Index rename = list(at, "Rename");
            name(tree_.add(rename, "from"), one.from);
            name(tree_.add(rename, "to"), one.to);
        }
        for (const Regrouping& one : frame.splits) {
            regrouping(at, "Split", one);
        }
        for (const Regrouping& one : frame.merges) {
            regrouping(at, "Merge", one);
        }
        for (const ObjectName& one : frame.deletes) {
            name(list(at, "Delete"), one);
        }
    }

    ElementTree& tree_;
};

}  // namespace

void writeScene(const Scene& scene, ElementTree& tree) {
    tree.clear();
    SceneWriting writing(tree);
    for (const SceneFrame& frame : scene) {
        writing.frame(frame);
    }
}

}  // namespace Veskar::Live
