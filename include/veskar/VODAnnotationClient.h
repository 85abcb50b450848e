// SPDX-License-Identifier: Apache-2.0
// Sends annotations of tracks to the video analytics.
#pragma once

#include <veskar/Export.h>

#include <cstdint>
#include <string>

#include <Eigen/Core>

namespace Veskar::VODAnnotation {

/// One annotated object.
struct Annotation {
    int id;                  ///< id of the radar track
    std::string type;        ///< a class name, or "unknown"
    Eigen::Vector4d bbox;    ///< image box [left, width, lower edge, height]
    std::int64_t timestamp;  ///< ms since the Unix epoch
};

/// Sends annotations as datagrams to "/tmp/vod_annotation", one JSON object each, only inside the
/// host application. Immutable after creation: concurrent senders are safe.
class VESKAR_EXPORT VODAnnotationClient {
public:
    /// @return the process-wide client, created by the first call
    static VODAnnotationClient& getInstance();

    /// Sends one annotation; a missing receiver is silent, other failures are logged at error
    /// priority.
    /// @param annotation the object; its label is written without escaping
    void send(const Annotation& annotation) const;

private:
    VODAnnotationClient();

    std::string socketPath_;
    bool enabled_;
};

}  // namespace Veskar::VODAnnotation
