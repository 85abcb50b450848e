// SPDX-License-Identifier: Apache-2.0
#include "live/onvif/ColorWords.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>

namespace Veskar::Live {
namespace {

/// A colour whose word is beyond doubt.
struct Reference {
    const char* word;
    std::uint32_t rgb;  ///< sRGB, 0xRRGGBB
};

/// The first one of each word represents it. All are colours of CSS (CSS Color Module Level 4,
/// named colours); "blue" stands for cyan, too, "gray" for silver, and "pink" for magenta, as in
/// the synonyms of imports. Colours between two words, such as maroon, teal or salmon, are missing.
/// The second white is where the exposure of cameras usually puts it.
constexpr Reference references[] = {
    {"beige", 0xF5F5DC},  {"beige", 0xFAEBD7},  {"beige", 0xF5DEB3},  {"beige", 0xFFE4C4},
    {"beige", 0xDEB887},  {"beige", 0xD2B48C},  {"black", 0x000000},  {"blue", 0x0000FF},
    {"blue", 0x00008B},   {"blue", 0x191970},   {"blue", 0x4169E1},   {"blue", 0x4682B4},
    {"blue", 0x1E90FF},   {"blue", 0x00BFFF},   {"blue", 0x6495ED},   {"blue", 0x87CEEB},
    {"blue", 0xADD8E6},   {"blue", 0xB0C4DE},   {"blue", 0x5F9EA0},   {"blue", 0x6A5ACD},
    {"blue", 0x483D8B},   {"blue", 0x00FFFF},   {"blue", 0x00CED1},   {"brown", 0x8B4513},
    {"brown", 0xA0522D},  {"brown", 0xCD853F},  {"gray", 0x808080},   {"gray", 0x696969},
    {"gray", 0xA9A9A9},   {"gray", 0xC0C0C0},   {"gray", 0x708090},   {"gray", 0x2F4F4F},
    {"green", 0x008000},  {"green", 0x00FF00},  {"green", 0x32CD32},  {"green", 0x006400},
    {"green", 0x2E8B57},  {"green", 0x3CB371},  {"green", 0x6B8E23},  {"green", 0x808000},
    {"green", 0x556B2F},  {"green", 0x9ACD32},  {"green", 0x98FB98},  {"green", 0x8FBC8F},
    {"green", 0x00FF7F},  {"orange", 0xFFA500}, {"orange", 0xFF8C00}, {"orange", 0xFF7F50},
    {"pink", 0xFFC0CB},   {"pink", 0xFF69B4},   {"pink", 0xFF1493},   {"pink", 0xDB7093},
    {"pink", 0xFF00FF},   {"purple", 0x800080}, {"purple", 0x4B0082}, {"purple", 0x663399},
    {"purple", 0x9400D3}, {"purple", 0x8A2BE2}, {"purple", 0x9932CC}, {"purple", 0x9370DB},
    {"purple", 0xBA55D3}, {"purple", 0x8B008B}, {"red", 0xFF0000},    {"red", 0xDC143C},
    {"red", 0xB22222},    {"red", 0x8B0000},    {"red", 0xCD5C5C},    {"white", 0xFFFFFF},
    {"white", 0xDCDCDC},  {"yellow", 0xFFFF00}, {"yellow", 0xFFD700}, {"yellow", 0xF0E68C},
    {"yellow", 0xBDB76B}};

using Rgb = std::array<double, 3>;  ///< sRGB, 0..255

Rgb rgbOf(std::uint32_t rgb) {
    return {static_cast<double>(rgb >> 16 & 0xFF), static_cast<double>(rgb >> 8 & 0xFF),
            static_cast<double>(rgb & 0xFF)};
}

/// The inverse of the conversion of JPEG files (ISO/IEC 10918-5, JFIF).
Rgb rgbOfYCbCr(const std::array<double, 3>& value) {
    const double y = value[0];
    const double cb = value[1] - 128.0;
    const double cr = value[2] - 128.0;
    return {y + 1.402 * cr, y - 0.344136 * cb - 0.714136 * cr, y + 1.772 * cb};
}

/// IEC 61966-2-1.
double linear(double part) {
    const double value = std::clamp(part / 255.0, 0.0, 1.0);
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

/// CIE 15, with its exact constants.
double compressed(double ratio) {
    constexpr double epsilon = 216.0 / 24389.0;
    constexpr double kappa = 24389.0 / 27.0;
    return ratio > epsilon ? std::cbrt(ratio) : (kappa * ratio + 16.0) / 116.0;
}

CieLab cieLab(const Rgb& rgb) {
    const double r = linear(rgb[0]);
    const double g = linear(rgb[1]);
    const double b = linear(rgb[2]);
    // sRGB to XYZ relative to its white, D65.
    const double x = compressed((0.4124564 * r + 0.3575761 * g + 0.1804375 * b) / 0.95047);
    const double y = compressed(0.2126729 * r + 0.7151522 * g + 0.0721750 * b);
    const double z = compressed((0.0193339 * r + 0.1191920 * g + 0.9503041 * b) / 1.08883);
    return {116.0 * y - 16.0, 500.0 * (x - y), 200.0 * (y - z)};
}

struct KnownColor {
    const char* word;
    CieLab place;
};

const std::vector<KnownColor>& knownColors() {
    static const std::vector<KnownColor> colors = [] {
        std::vector<KnownColor> all;
        for (const Reference& reference : references) {
            all.push_back({reference.word, cieLab(rgbOf(reference.rgb))});
        }
        return all;
    }();
    return colors;
}

double squaredDistance(const CieLab& a, const CieLab& b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        sum += (a[i] - b[i]) * (a[i] - b[i]);
    }
    return sum;
}

}  // namespace

std::optional<CieLab> cieLabOf(const ColorCluster& cluster) {
    switch (cluster.space) {
        case ColorSpace::YCbCr:
            return cieLab(rgbOfYCbCr(cluster.value));
        case ColorSpace::Rgb:
            return cieLab(cluster.value);
        case ColorSpace::CieLab:
            return cluster.value;
        default:
            return std::nullopt;
    }
}

std::string nearestColor(const CieLab& color) {
    const char* nearest = "unknown";
    double least = std::numeric_limits<double>::infinity();
    for (const KnownColor& known : knownColors()) {
        const double distance = squaredDistance(known.place, color);
        if (distance < least) {
            least = distance;
            nearest = known.word;
        }
    }
    return nearest;
}

Host::Label bestColor(const std::vector<ColorCluster>& clusters, LeftOut& leftOut) {
    std::map<std::string, double> candidates;
    std::map<std::string, double> parts;
    double total = 0.0;
    for (const ColorCluster& cluster : clusters) {
        const std::optional<CieLab> place = cieLabOf(cluster);
        if (!place) {
            leftOut.add("Color of another colour space");
            continue;
        }
        const std::string word = nearestColor(*place);
        if (cluster.likelihood) {
            candidates[word] = std::max(candidates[word], *cluster.likelihood);
        } else {
            const double weight = cluster.weight.value_or(1.0);
            parts[word] += weight;
            total += weight;
        }
    }
    const bool isCandidate = !candidates.empty();
    Host::Label best;
    for (const auto& [word, amount] : isCandidate ? candidates : parts) {
        const double probability = isCandidate ? amount : amount / std::max(total, 1.0);
        if (probability > best.probability) {
            best = {word, probability};
        }
    }
    return best;
}

std::vector<ColorCluster> clustersFor(const Host::Label& label) {
    for (const Reference& reference : references) {
        if (label.name == reference.word) {
            return {{ColorSpace::Rgb, rgbOf(reference.rgb), std::nullopt, label.probability}};
        }
    }
    return {};
}

}  // namespace Veskar::Live
