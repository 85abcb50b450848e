// SPDX-License-Identifier: Apache-2.0
#include "live/view/Viewer.h"

#include "live/view/StateText.h"

#include <utility>

namespace Veskar::Live {

// A browser that has lost the server tries again after this time.
ViewNews::ViewNews(const std::string& hello) : hello_("retry: 1000\n" + eventOf("hello", hello)) {}

void ViewNews::add(ViewMailbox::Contents contents) {
    if (contents.state) {
        state_ = eventOf("state", textOf(*contents.state));
        ++stateNumber_;
    }
    if (contents.status) {
        status_ = eventOf("status", *contents.status);
        ++statusNumber_;
    }
    if (contents.picture) {
        pictureEvent_ = eventOf("picture", textOf(++pictureNumber_, *contents.picture));
        picture_ = std::move(contents.picture->picture);
    }
    for (Decision& decision : contents.decisions) {
        decision.line.pop_back();  // the line end
        decision.line = eventOf("decision", decision.line);
        decisions_.push_back({++decisionNumber_, std::move(decision)});
    }
    while (decisions_.size() > mostDecisions) {
        decisions_.pop_front();
    }
}

std::size_t Viewer::read(const ViewNews& news, char* buffer, std::size_t size) {
    if (sent_ == text_.size()) {
        compose(news);
    }
    const std::size_t count = text_.copy(buffer, size, sent_);
    sent_ += count;
    return count;
}

bool Viewer::isBehind(const ViewNews& news) const {
    return sent_ < text_.size() || !isGreeted_ || state_ < news.stateNumber() ||
           status_ < news.statusNumber() || picture_ < news.pictureNumber() ||
           (subject_ && decision_ < news.decisionNumber());
}

void Viewer::compose(const ViewNews& news) {
    text_.clear();
    sent_ = 0;
    if (!std::exchange(isGreeted_, true)) {
        text_ += news.hello();
    }
    if (std::exchange(status_, news.statusNumber()) < news.statusNumber()) {
        text_ += news.status();
    }
    if (std::exchange(picture_, news.pictureNumber()) < news.pictureNumber()) {
        text_ += news.pictureEvent();
    }
    // Decisions come before the state that they led to.
    for (const auto& [number, decision] : news.decisions()) {
        if (number > decision_ && subject_ && decision.subject == *subject_) {
            text_ += decision.line;
        }
    }
    decision_ = news.decisionNumber();
    if (std::exchange(state_, news.stateNumber()) < news.stateNumber()) {
        text_ += news.state();
    }
}

}  // namespace Veskar::Live
