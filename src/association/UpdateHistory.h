// SPDX-License-Identifier: Apache-2.0
// In which of the last frames a sensor has updated each of its tracks.
#pragma once

#include <veskar/Track.h>

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace Veskar {

/// A tracker that has updated two of its tracks in one frame says that they are two objects. One
/// that has not may have lost an object under one id and found it again under another.
///
/// Keeps 32 frames of radar and of video. A warm history does not allocate.
class UpdateHistory {
public:
    /// @param source Radar or VideoObject; frames of others are ignored
    /// @param reports the source's next frame; those that coast have not been updated
    void add(Source source, const std::vector<std::shared_ptr<Track>>& reports);
    void clear();

    /// @param source Radar or VideoObject
    /// @param id a track of that source
    /// @param otherId another one
    /// @return whether no frame has updated both
    bool areExclusive(Source source, int id, int otherId) const {
        return (framesOf(source, id) & framesOf(source, otherId)) == 0;
    }

private:
    /// The frames that have updated a track: bit k stands for the one k frames ago.
    struct Entry {
        int id;
        std::uint32_t frames;
    };
    using Entries = std::vector<Entry>;

    static std::size_t indexOf(Source source) { return source == Source::Radar ? 1 : 0; }
    std::uint32_t framesOf(Source source, int id) const;

    std::array<Entries, 2> entries_;  ///< by id, of video and radar
    std::vector<int> updatedIds_;     ///< working memory
    Entries merged_;                  ///< working memory
};

}  // namespace Veskar
