// SPDX-License-Identifier: Apache-2.0
// What XML and JSON scene descriptions have in common: a tree of named elements.
#pragma once

#include "live/onvif/Scalar.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace Veskar::Live {

/// Limits of a message. A hostile message may not take memory far beyond its own size.
struct TextLimits {
    std::size_t bytes = std::size_t{16} << 20;  ///< of the text
    std::size_t elements = 400'000;             ///< elements and attributes together
    std::size_t depth = 64;                     ///< of nested elements
};

/// Bytes of text for which readers keep their memory from message to message.
constexpr std::size_t keptMemory = std::size_t{1} << 20;

/// The namespaces that a tree can be written with.
enum class Namespace : std::uint8_t { Schema, HumanBody };

/// Elements with attributes, a value and children, in the order of the document. Names are those of
/// ONVIF without prefix; elements and attributes of other namespaces have a name with a colon, as
/// "acme:ColorName", and their contents are not kept.
///
/// Borrows names and text from the document that it was made of, or from what is to be written.
class ElementTree {
public:
    using Index = std::uint32_t;
    static constexpr Index none = 0xFFFFFFFF;

    struct Element {
        std::string_view name;
        Scalar value;
        Index firstChild = none;
        Index lastChild = none;
        Index next = none;  ///< behind it in its parent
        Namespace space = Namespace::Schema;
        bool isAttribute = false;
        bool isListed = false;  ///< may occur several times: an array in JSON
    };

    ElementTree() { clear(); }

    /// Empties the tree, whose root remains. Memory beyond that of usual messages is returned.
    void clear();

    /// @return the nameless element that holds everything
    static constexpr Index root() { return 0; }
    /// @param parent an element
    /// @param name name of a new child
    /// @return the child, behind those that there are
    Index add(Index parent, std::string_view name);
    /// @param parent an element
    /// @param name name of a new attribute
    /// @param value its value
    void addAttribute(Index parent, std::string_view name, Scalar value);
    /// @param text copied
    /// @return text that lives as long as the tree is not cleared
    std::string_view keep(std::string text);

    /// @param index an element
    /// @return the element; valid until one is added
    Element& operator[](Index index) { return elements_[index]; }
    /// @copydoc operator[]
    const Element& operator[](Index index) const { return elements_[index]; }
    /// @return number of elements and attributes, with the root
    std::size_t size() const { return elements_.size(); }

private:
    std::vector<Element> elements_;
    std::deque<std::string> texts_;
};

/// @param name name of an element or attribute
/// @return whether it is of a namespace that is not ONVIF's
inline bool isForeign(std::string_view name) {
    return name.find(':') != std::string_view::npos;
}

}  // namespace Veskar::Live
