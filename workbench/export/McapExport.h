// SPDX-License-Identifier: Apache-2.0
// Exports tracks as MCAP with the messages of Foxglove.
#pragma once

#include "export/Exporter.h"
#include "export/FoxgloveMessages.h"
#include "export/McapWriter.h"

#include <map>
#include <string>

namespace Workbench {

/// Topics: "/LAYER/scene", "/LAYER/locations" where the site is known, "/LAYER/image"; at the first
/// frame "/tf" and "/map". A message is logged when its frame had arrived, and published at the
/// time of its tracks.
class McapExport : public Exporter {
public:
    /// @param output receives the file; must outlive this
    /// @param header of the recording; must outlive this
    McapExport(OutputFile& output, const RecordingHeader& header);

    void add(const std::string& layer, const FusedFrame& frame) override;
    void finish() override { writer_.finish(); }

private:
    void send(const std::string& topic, const char* schema, const FusedFrame& frame,
              const Json& message);

    const RecordingHeader& header_;
    FoxgloveMessages messages_;
    McapWriter writer_;
    std::map<std::string, std::uint16_t> schemas_;
    std::map<std::string, std::uint16_t> channels_;
    bool isFirst_ = true;
};

}  // namespace Workbench
