// SPDX-License-Identifier: Apache-2.0
#include "check/DocumentCheck.h"

#include <veskar-host/InputError.h>
#include <veskar/Camera.h>
#include <veskar/Config.h>

#include "HostLibrary.h"
#include "check/CameraCheck.h"
#include "check/ConfigurationCheck.h"
#include "check/RunCheck.h"
#include "check/SceneCheck.h"
#include "io/LineReader.h"
#include "io/TextFile.h"
#include "simulate/scenario/Scenario.h"

#include <algorithm>
#include <string_view>

#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

/// The program accepts comments in scenarios; the library accepts none in its files.
Comments commentsOf(DocumentKind kind) {
    return kind == DocumentKind::Scenario ? Comments::Allowed : Comments::Refused;
}

void checkText(const std::string& text, DocumentKind kind, Findings& findings) {
    LocatedValue document;
    const JsonFault fault = parseLocated(text, commentsOf(kind), document);
    const bool isJson = fault.line == 0;
    if (kind == DocumentKind::Configuration) {
        checkConfiguration(Veskar::Config::findFaults(text), isJson ? document : LocatedValue(),
                           findings);
    } else if (!isJson) {
        findings.push_back(
            {Severity::Fault, static_cast<std::uint64_t>(fault.line), "", "", fault.reason});
    } else if (kind == DocumentKind::Run) {
        checkRun(text, document, findings);
    } else if (kind == DocumentKind::Camera) {
        checkCamera(document, "", Wanted::Real, findings);
    } else {
        checkScenario(document, findings);
    }
}

/// Finally lets the reader itself parse the document.
void checkByReading(const std::string& text, DocumentKind kind) {
    switch (kind) {
        case DocumentKind::Configuration:
            Veskar::Config::parse_json_string(text);
            break;
        case DocumentKind::Run:
            break;  // its check is the reader
        case DocumentKind::Camera:
            Veskar::Camera::parse(text);
            break;
        default:
            scenarioOf(parseJson(text, "scenario"));
    }
}

}  // namespace

DocumentKind kindOfDocument(const std::string& path) {
    LineReader lines(path);
    std::string start;
    std::string_view line;
    while (start.size() < 65536 && lines.next(line)) {
        start += line;
        start += '\n';
    }
    const auto names = [&start](const char* key) {
        return start.find(std::string("\"") + key + "\"") != std::string::npos;
    };
    if (names("sensors") && names("installation")) {
        return DocumentKind::Run;
    }
    if (names("veskar-recording") || names("tracks")) {
        return DocumentKind::Recording;
    }
    if (names("objects") || names("videoSensor") || names("radarSensor")) {
        return DocumentKind::Scenario;
    }
    if (names("imageToRadiansPolynomial") || names("radiansToImagePolynomial") || names("bdc")) {
        return DocumentKind::Camera;
    }
    return DocumentKind::Configuration;
}

Findings checkDocument(const std::string& path, DocumentKind kind) {
    const std::string text = readText(path);
    Findings findings;
    checkText(text, kind, findings);
    if (!hasFault(findings)) {
        try {
            checkByReading(text, kind);
        } catch (const std::exception& error) {
            findings.push_back({Severity::Fault, 0, "", "", error.what()});
        }
    }
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding& a, const Finding& b) { return a.line < b.line; });
    return findings;
}

}  // namespace Workbench
