// SPDX-License-Identifier: Apache-2.0
#include "import/CsvRecipe.h"

#include <veskar-host/InputError.h>
#include <veskar-host/Projection.h>

#include "host/installation/HeaderFields.h"
#include "io/DocumentValue.h"
#include "io/TextFile.h"

#include <initializer_list>
#include <string_view>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

enum class Quantity { Time, Length, Angle, Speed, Image, Word };

struct Unit {
    const char* name;
    Quantity quantity;
    double scale;  ///< to the unit of recordings
};

constexpr Unit csvUnits[] = {
    {"s", Quantity::Time, 1.0},        {"ms", Quantity::Time, 1e-3},
    {"us", Quantity::Time, 1e-6},      {"ns", Quantity::Time, 1e-9},
    {"m", Quantity::Length, 1.0},      {"cm", Quantity::Length, 1e-2},
    {"km", Quantity::Length, 1e3},     {"ft", Quantity::Length, 0.3048},
    {"deg", Quantity::Angle, 1.0},     {"rad", Quantity::Angle, degrees(1.0)},
    {"m/s", Quantity::Speed, 1.0},     {"km/h", Quantity::Speed, 1.0 / 3.6},
    {"mph", Quantity::Speed, 0.44704}, {"kn", Quantity::Speed, 1852.0 / 3600.0},
    {"px", Quantity::Image, 1.0},      {"fraction", Quantity::Image, 1.0}};

struct CsvKey {
    const char* name;
    Quantity quantity;
};

constexpr std::initializer_list<CsvKey> commonKeys = {{"time", Quantity::Time},
                                                      {"received", Quantity::Time},
                                                      {"id", Quantity::Word},
                                                      {"coasting", Quantity::Time},
                                                      {"class", Quantity::Word}};
constexpr std::initializer_list<CsvKey> radarKeys = {
    {"range", Quantity::Length},     {"azimuth", Quantity::Angle}, {"x", Quantity::Length},
    {"y", Quantity::Length},         {"speed", Quantity::Speed},   {"direction", Quantity::Angle},
    {"radialSpeed", Quantity::Speed}};
constexpr std::initializer_list<CsvKey> videoKeys = {
    {"left", Quantity::Image},   {"top", Quantity::Image},   {"right", Quantity::Image},
    {"bottom", Quantity::Image}, {"width", Quantity::Image}, {"height", Quantity::Image}};

const Unit& unitOf(const Fields& fields, Quantity quantity) {
    const std::string name = fields.text("unit");
    std::string known;
    for (const Unit& unit : csvUnits) {
        if (unit.quantity == quantity) {
            if (unit.name == name) {
                return unit;
            }
            known += known.empty() ? unit.name : std::string(", ") + unit.name;
        }
    }
    fields.refuse("unit", fmt::format("\"{}\" is not one of {}", name, known));
}

CsvColumn readColumn(const Fields& fields, Quantity quantity, CsvTable& table) {
    CsvColumn column{fields.text("column")};
    if (quantity == Quantity::Word) {
        fields.allowOnly({"column"});
        return column;
    }
    fields.allowOnly({"column", "unit", "negate", "offset"});
    const Unit& unit = unitOf(fields, quantity);
    column.scale = fields.boolean("negate", false) ? -unit.scale : unit.scale;
    column.offset = fields.number("offset", 0.0);
    if (quantity == Quantity::Image) {
        table.isFraction = std::string_view(unit.name) == "fraction";
    }
    return column;
}

void requireColumns(const Fields& fields, const CsvTable& table, std::string_view either,
                    std::string_view other) {
    if (!table.has(std::string(either)) && !table.has(std::string(other))) {
        fields.refuse("columns", either == other
                                     ? fmt::format("{} is missing", either)
                                     : fmt::format("{} or {} is missing", either, other));
    }
}

CsvTable readTable(const Fields& fields, std::initializer_list<CsvKey> keys) {
    fields.allowOnly({"separator", "columns"});
    CsvTable table;
    const std::string separator = fields.text("separator", ",");
    if (separator.size() != 1) {
        fields.refuse("separator", "expected one character");
    }
    table.separator = separator.front();
    const Fields columns = fields.object("columns");
    for (const auto& list : {commonKeys, keys}) {
        for (const CsvKey& key : list) {
            if (columns.has(key.name)) {
                table.columns[key.name] = readColumn(columns.object(key.name), key.quantity, table);
            }
        }
    }
    DocumentValue::Members(fields.at("columns")).forEachName([&](std::string_view name) {
        if (columns.has(name) && !table.has(std::string(name))) {
            columns.refuse(name, "is nothing that this sensor reports");
        }
    });
    requireColumns(fields, table, "time", "time");
    return table;
}

}  // namespace

CsvRecipe readCsvRecipe(const std::string& path) {
    nlohmann::json document = readJson(path);
    try {
        const Fields fields(document);
        fields.allowOnly({"recording", "clock", "radar", "video"});
        fields.object("recording");
        document["recording"]["format"] = "veskar-recording";
        document["recording"]["version"] = recordingVersion;
        CsvRecipe recipe;
        recipe.header = readHeader(fields.object("recording"));
        const std::string clock = fields.text("clock", "own");
        if (clock != "own" && clock != "unix") {
            fields.refuse("clock", fmt::format("\"{}\" is not own or unix", clock));
        }
        recipe.isUnixTime = clock == "unix";
        if (fields.has("radar")) {
            const Fields radar = fields.object("radar");
            recipe.radar = readTable(radar, radarKeys);
            requireColumns(radar, *recipe.radar, "range", "x");
            requireColumns(radar, *recipe.radar, "azimuth", "y");
        }
        if (fields.has("video")) {
            const Fields video = fields.object("video");
            recipe.video = readTable(video, videoKeys);
            requireColumns(video, *recipe.video, "left", "left");
            requireColumns(video, *recipe.video, "top", "top");
            requireColumns(video, *recipe.video, "right", "width");
            requireColumns(video, *recipe.video, "bottom", "height");
        }
        return recipe;
    } catch (const InputError& fault) {
        throw InputError(path, fault);
    }
}

}  // namespace Workbench
