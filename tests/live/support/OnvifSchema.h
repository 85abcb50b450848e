// SPDX-License-Identifier: Apache-2.0
// Validation by ONVIF's schemas.
#pragma once

#include "support/TemporaryDirectory.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include <SourceDirectory.h>

namespace VeskarTest {

/// ONVIF's texts and schemas, which are not part of this project: beside the working tree, where a
/// developer has put them.
inline std::string onvifDirectory() {
    return VESKAR_SOURCE_DIR "/../shared/data/onvif/";
}

/// @param documents metadata streams
/// @return what xmllint says against them, empty when all are valid; nothing, which is told, where
///         it or the schemas are missing
inline std::optional<std::string> faultsBySchema(const std::vector<std::string>& documents) {
    const std::string onvif = onvifDirectory();
    if (!std::filesystem::exists(onvif + "catalog.xml") ||
        std::system("command -v xmllint >/dev/null") != 0) {
        std::cout << "xmllint, or the schemas in " << onvif << ", are missing\n";
        return std::nullopt;
    }
    const TemporaryDirectory directory;
    std::string command = "cd '" + onvif +
                          "' && XML_CATALOG_FILES=catalog.xml xmllint --noout --nonet --schema "
                          "ver10/schema/metadatastream.xsd";
    for (std::size_t i = 0; i < documents.size(); ++i) {
        const std::string file = directory.file(std::to_string(i) + ".xml");
        std::ofstream(file) << documents[i];
        command += " '" + file + "'";
    }
    const std::string told = directory.file("told");
    if (std::system((command + " 2>'" + told + "'").c_str()) == 0) {
        return "";
    }
    std::ifstream faults(told);
    return std::string(std::istreambuf_iterator<char>(faults), {});
}

}  // namespace VeskarTest
