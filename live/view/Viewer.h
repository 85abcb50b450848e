// SPDX-License-Identifier: Apache-2.0
// One viewer of the live view, and what it has not been told yet.
#pragma once

#include "live/view/ViewMailbox.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>

struct MHD_Connection;

namespace Veskar::Live {

/// What there is to be told, each kind with a number that grows.
class ViewNews {
public:
    /// Older decisions are forgotten.
    static constexpr std::size_t mostDecisions = 512;

    struct NumberedDecision {
        std::uint64_t number;
        Decision decision;
    };

    /// @param hello what each viewer is told first, JSON on one line
    explicit ViewNews(const std::string& hello);

    /// @param contents what the fusion has handed over
    void add(ViewMailbox::Contents contents);

    /// @return events, each a whole text
    const std::string& hello() const { return hello_; }
    const std::string& state() const { return state_; }
    const std::string& status() const { return status_; }
    /// @return the last decisions, oldest first
    const std::deque<NumberedDecision>& decisions() const { return decisions_; }
    /// @return the event of the newest picture, or of its absence
    const std::string& pictureEvent() const { return pictureEvent_; }
    /// @return the newest picture; null: none
    const std::shared_ptr<const Picture>& picture() const { return picture_; }
    /// @return numbers of the last state, status, decision and picture; 0: none yet
    std::uint64_t stateNumber() const { return stateNumber_; }
    std::uint64_t statusNumber() const { return statusNumber_; }
    std::uint64_t decisionNumber() const { return decisionNumber_; }
    std::uint64_t pictureNumber() const { return pictureNumber_; }

private:
    std::string hello_;
    std::string state_;
    std::string status_;
    std::deque<NumberedDecision> decisions_;
    std::string pictureEvent_;
    std::shared_ptr<const Picture> picture_;
    std::uint64_t stateNumber_ = 0;
    std::uint64_t statusNumber_ = 0;
    std::uint64_t decisionNumber_ = 0;
    std::uint64_t pictureNumber_ = 0;
};

/// What a viewer was told, and the text under way to it: one at a time, so that a slow viewer
/// costs no memory and misses states instead of lagging behind.
class Viewer {
public:
    /// @param connection of the viewer
    /// @param subject what it has selected
    /// @param news what there is: only what comes later is told, for it may be that nobody has
    ///             watched for long; but the last picture, whose age is seen
    Viewer(MHD_Connection* connection, std::optional<Subject> subject, const ViewNews& news)
        : connection_(connection),
          subject_(subject),
          state_(news.stateNumber()),
          status_(news.statusNumber()),
          decision_(news.decisionNumber()) {}

    /// Copies what the viewer gets next.
    /// @param news what there is
    /// @param buffer receives it
    /// @param size of the buffer
    /// @return bytes that were copied; 0: the viewer knows everything
    std::size_t read(const ViewNews& news, char* buffer, std::size_t size);
    /// @return whether there is something that the viewer does not know
    bool isBehind(const ViewNews& news) const;

    MHD_Connection* connection() const { return connection_; }
    const std::optional<Subject>& subject() const { return subject_; }

    bool isWaiting = false;  ///< its connection is suspended

private:
    void compose(const ViewNews& news);

    MHD_Connection* connection_;
    std::optional<Subject> subject_;
    bool isGreeted_ = false;
    std::uint64_t state_;
    std::uint64_t status_;
    std::uint64_t decision_;
    std::uint64_t picture_ = 0;
    std::string text_;
    std::size_t sent_ = 0;
};

}  // namespace Veskar::Live
