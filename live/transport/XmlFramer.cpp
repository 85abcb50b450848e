// SPDX-License-Identifier: Apache-2.0
#include "live/transport/XmlFramer.h"

namespace Veskar::Live {
namespace {

constexpr std::string_view space = " \t\r\n";

bool isSpace(char character) {
    return space.find(character) != std::string_view::npos;
}

/// What ends a name in a tag, beside white space; in a broken document, too.
constexpr std::string_view delimiters = "/>\"'<";

/// What a declaration begins with, without the white space that makes it one.
constexpr std::string_view declaration = "<?xml";

/// The root element of scene descriptions, which never nests.
constexpr std::string_view root = "MetadataStream";

bool endsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

}  // namespace

std::string_view XmlFramer::separators() const {
    return space;
}

void XmlFramer::restart() {
    state_ = State::Text;
    recent_.clear();
    depth_ = 0;
    brackets_ = 0;
    hasBegun_ = false;
}

void XmlFramer::enter(State state) {
    state_ = state;
    recent_.clear();
}

Framer::Found XmlFramer::find(std::string_view text, std::size_t from) {
    for (std::size_t i = from; i < text.size(); ++i) {
        if (state_ == State::Text && text[i] != '<') {
            continue;
        }
        switch (step(text[i])) {
            case Step::Goes:
                break;
            case Step::Ends:
                restart();
                return {Found::End, i + 1};
            case Step::Cuts: {
                // Begins anew with the tag or the declaration that does not belong here, which may
                // have come when the text before it was too long and is gone.
                const std::size_t length = lengthOfNext();
                restart();
                return {Found::Cut, i + 1 > length ? i + 1 - length : 0};
            }
        }
    }
    return {};
}

/// What has been seen of the document whose begin cuts this one.
std::size_t XmlFramer::lengthOfNext() const {
    switch (state_) {
        case State::Instruction:
            return declaration.size() + 1;
        case State::Name:
            return nameLength_ + 2;
        default:
            return 1;
    }
}

/// Whether the name that has just ended is that of a root, whatever its prefix.
bool XmlFramer::isRoot() const {
    const std::string_view name = std::string_view(recent_).substr(0, recent_.size() - 1);
    return endsWith(name, root) &&
           (nameLength_ == root.size() || name[name.size() - root.size() - 1] == ':');
}

XmlFramer::Step XmlFramer::closeTag(bool isEmpty) {
    hasBegun_ = true;
    depth_ += isEmpty ? 0 : 1;
    enter(State::Text);
    return depth_ == 0 ? Step::Ends : Step::Goes;
}

XmlFramer::Step XmlFramer::step(char character) {
    constexpr std::size_t longestLookedAt = root.size() + 2;
    if (recent_.size() == longestLookedAt) {
        recent_.erase(0, 1);
    }
    recent_ += character;
    switch (state_) {
        case State::Text:
            enter(State::Opened);
            return Step::Goes;
        case State::Opened:
            if (character == '/') {
                enter(State::EndTag);
            } else if (character == '?') {
                enter(State::Instruction);
            } else if (character == '!') {
                enter(State::Bang);
            } else if (character == '<') {
                return Step::Cuts;
            } else {
                enter(State::Name);
                recent_ += character;
                nameLength_ = 1;
            }
            return Step::Goes;
        case State::Name:
            if (!isSpace(character) && delimiters.find(character) == std::string_view::npos) {
                ++nameLength_;
                return Step::Goes;
            }
            if (depth_ > 0 && isRoot()) {
                return Step::Cuts;
            }
            enter(State::Tag);
            recent_ += character;
            [[fallthrough]];
        case State::Tag:
            if (character == '"' || character == '\'') {
                quote_ = character;
                enter(State::Quoted);
            } else if (character == '>') {
                return closeTag(endsWith(recent_, "/>"));
            } else if (character == '<') {
                return Step::Cuts;
            }
            return Step::Goes;
        case State::Quoted:
            if (character == quote_) {
                enter(State::Tag);
            } else if (character == '<') {
                return Step::Cuts;
            }
            return Step::Goes;
        case State::EndTag:
            if (character == '<') {
                return Step::Cuts;
            }
            if (character != '>') {
                return Step::Goes;
            }
            depth_ -= depth_ > 0 ? 1 : 0;
            enter(State::Text);
            return depth_ == 0 ? Step::Ends : Step::Goes;
        case State::Instruction:
            if (endsWith(recent_, "?>")) {
                enter(State::Text);
            } else if (recent_.size() == 4 && recent_.substr(0, 3) == "xml" && isSpace(character)) {
                if (hasBegun_) {
                    return Step::Cuts;
                }
                hasBegun_ = true;
            }
            return Step::Goes;
        case State::Bang:
            if (recent_ == "--") {
                enter(State::Comment);
            } else if (recent_ == "[CDATA[") {
                enter(State::CharacterData);
            } else if (recent_.front() != '-' && recent_.front() != '[') {
                brackets_ = 0;
                enter(State::Doctype);
            }
            return Step::Goes;
        case State::Comment:
            if (endsWith(recent_, "-->")) {
                enter(State::Text);
            }
            return Step::Goes;
        case State::CharacterData:
            if (endsWith(recent_, "]]>")) {
                enter(State::Text);
            }
            return Step::Goes;
        case State::Doctype:
            if (character == '[') {
                ++brackets_;
            } else if (character == ']') {
                brackets_ -= brackets_ > 0 ? 1 : 0;
            } else if (character == '>' && brackets_ == 0) {
                enter(State::Text);
            }
            return Step::Goes;
    }
    return Step::Goes;
}

}  // namespace Veskar::Live
