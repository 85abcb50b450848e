// SPDX-License-Identifier: Apache-2.0
#include "check/LocatedJson.h"

#include "io/TextFile.h"

#include <iterator>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

/// Line of the parser's position. The parser reads one character beyond a number, which may be the
/// end of the number's line.
struct Position {
    int line = 1;
    char last = '\0';

    int lineOfToken() const { return last == '\n' ? line - 1 : line; }
};

/// Iterates over the text and counts its lines.
class CountingIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    CountingIterator(const char* start, Position* count) : place_(start), position_(count) {}

    reference operator*() const { return *place_; }
    CountingIterator& operator++() {
        position_->last = *place_;
        position_->line += *place_ == '\n' ? 1 : 0;
        ++place_;
        return *this;
    }
    bool operator==(const CountingIterator& other) const { return place_ == other.place_; }
    bool operator!=(const CountingIterator& other) const { return place_ != other.place_; }

private:
    const char* place_;
    Position* position_;
};

using Kind = LocatedValue::Kind;

/// Builds the document from the parser's events.
class Builder : public nlohmann::json_sax<nlohmann::json> {
public:
    Builder(LocatedValue& document, const Position& where) : root_(document), position_(where) {}

    bool null() override { return scalar(Kind::Null, "null", 0.0); }
    bool boolean(bool value) override {
        return scalar(Kind::Boolean, value ? "true" : "false", 0.0);
    }
    bool number_integer(number_integer_t value) override {
        return scalar(Kind::Integer, std::to_string(value), static_cast<double>(value));
    }
    bool number_unsigned(number_unsigned_t value) override {
        return scalar(Kind::Integer, std::to_string(value), static_cast<double>(value));
    }
    bool number_float(number_float_t value, const string_t& written) override {
        return scalar(Kind::Real, written, value);
    }
    bool string(string_t& value) override { return scalar(Kind::Text, value, 0.0); }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return open(Kind::Object); }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(Kind::Array); }
    bool end_array() override { return close(); }
    bool key(string_t& name) override {
        open_.back()->members.push_back({name, {}});
        keyLine_ = position_.lineOfToken();
        return true;
    }
    bool parse_error(std::size_t, const std::string&,
                     const nlohmann::detail::exception& error) override {
        fault = {position_.lineOfToken(), reasonOf(error)};
        return false;
    }

    JsonFault fault;

private:
    /// @return the place of the next value: the member just named, a new element, or the root
    LocatedValue& place() {
        if (open_.empty()) {
            root_.line = position_.lineOfToken();
            return root_;
        }
        LocatedValue& parent = *open_.back();
        if (parent.kind == Kind::Object) {
            parent.members.back().value.line = keyLine_;
            return parent.members.back().value;
        }
        parent.elements.emplace_back();
        parent.elements.back().line = position_.lineOfToken();
        return parent.elements.back();
    }

    bool scalar(Kind kind, std::string written, double number) {
        LocatedValue& value = place();
        value.kind = kind;
        value.text = std::move(written);
        value.number = number;
        return true;
    }

    bool open(Kind kind) {
        if (open_.size() == deepestNesting) {
            fault = {position_.lineOfToken(),
                     fmt::format("nested more than {} levels deep", deepestNesting)};
            return false;
        }
        LocatedValue& value = place();
        value.kind = kind;
        open_.push_back(&value);
        return true;
    }

    bool close() {
        open_.pop_back();
        return true;
    }

    LocatedValue& root_;
    const Position& position_;
    int keyLine_ = 0;
    std::vector<LocatedValue*> open_;
};

}  // namespace

const LocatedValue* LocatedValue::find(std::string_view key) const {
    for (auto member = members.rbegin(); member != members.rend(); ++member) {
        if (member->key == key) {
            return &member->value;
        }
    }
    return nullptr;
}

std::string LocatedValue::shown() const {
    switch (kind) {
        case Kind::Text:
            return fmt::format("\"{}\"", text);
        case Kind::Array:
            return fmt::format("an array of {}", elements.size());
        case Kind::Object:
            return "an object";
        default:
            return text;
    }
}

JsonFault parseLocated(std::string_view text, Comments comments, LocatedValue& document) {
    Position position;
    Builder builder(document, position);
    nlohmann::json::sax_parse(CountingIterator(text.data(), &position),
                              CountingIterator(text.data() + text.size(), &position), &builder,
                              nlohmann::json::input_format_t::json, true,
                              comments == Comments::Allowed);
    return builder.fault;
}

}  // namespace Workbench
