// SPDX-License-Identifier: Apache-2.0
// Checked access to the attributes and children of an element.
#pragma once

#include "host/json/Fields.h"
#include "host/json/Keys.h"
#include "live/onvif/ElementTree.h"
#include "live/onvif/LeftOut.h"

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace Veskar::Live {

/// Checked access to the attributes and children of an element. Every fault names the place:
/// "Frame[0].Object[3].Appearance.Shape.BoundingBox.left: expected a number, found "abc"".
///
/// Borrows the tree and the fields of the enclosing element; both must outlive it.
class ElementFields {
public:
    /// @param tree the elements
    /// @param index one of them
    /// @param path its place; the root by default
    ElementFields(const ElementTree& tree, ElementTree::Index index,
                  const Host::Internal::JsonPath& path = {})
        : tree_(tree), element_(tree[index]), path_(path) {}
    ElementFields(const ElementFields&) = delete;
    ElementFields& operator=(const ElementFields&) = delete;
    ~ElementFields() = default;

    /// @param name name of an attribute or child
    /// @param what the fault
    [[noreturn]] void refuse(std::string_view name, const std::string& what) const;

    /// @param name an attribute, or a child with a value
    /// @return whether it is there
    bool has(std::string_view name) const;
    /// @param name an attribute, or a child with a value
    /// @param allowed range of the number
    /// @return the number, if it is there
    /// @throw Host::InputError when it is no finite number, out of range, or occurs twice
    std::optional<double> optionalNumber(std::string_view name,
                                         Host::Internal::Range allowed = {}) const;
    /// @param name an attribute, or a child with a value
    /// @return the number
    /// @throw Host::InputError as above, and when it is missing
    double number(std::string_view name) const;
    /// @param name an attribute, or a child with a value
    /// @return its text; empty when it is not there
    /// @throw Host::InputError when it occurs twice, or has more than 256 characters
    std::string text(std::string_view name) const;
    /// @return the element's own text
    /// @throw Host::InputError when it has more than 256 characters
    std::string ownText() const;
    /// @return the value of an attribute or child; nothing when it is not there
    /// @param name an attribute, or a child with a value
    /// @throw Host::InputError when it occurs twice
    std::optional<Scalar> value(std::string_view name) const;

    /// Reads a child.
    /// @param name its name
    /// @param read called with the child's fields, if it is there
    /// @throw Host::InputError when it occurs twice
    template <typename Read>
    void child(std::string_view name, Read read) const {
        const ElementTree::Index found = find(name, false);
        if (found != ElementTree::none) {
            read(ElementFields(tree_, found, {&path_, name, {}}));
        }
    }
    /// Reads every child of a name.
    /// @param name the name
    /// @param read called with the fields of each
    template <typename Read>
    void forEach(std::string_view name, Read read) const {
        Host::Internal::JsonPath place{&path_, name, 0};
        for (auto i = element_.firstChild; i != ElementTree::none; i = tree_[i].next) {
            if (!tree_[i].isAttribute && tree_[i].name == name) {
                read(ElementFields(tree_, i, place));
                ++*place.item;
            }
        }
    }
    /// @throw Host::InputError when the element has a value of its own
    void refuseText() const;
    /// Counts attributes and children that are not used.
    /// @param used names of those that are
    /// @param leftOut counts the others, as "Appearance.HumanFace"
    void leaveOutAllBut(std::initializer_list<std::string_view> used, LeftOut& leftOut) const;

private:
    ElementTree::Index find(std::string_view name, bool isAttributeToo) const;

    const ElementTree& tree_;
    const ElementTree::Element& element_;
    Host::Internal::JsonPath path_;
};

}  // namespace Veskar::Live
