// SPDX-License-Identifier: Apache-2.0
// Finds the ends of XML documents in a stream.
#pragma once

#include "live/transport/MessageSplitter.h"

namespace Veskar::Live {

/// Follows the depth of elements through tags, attribute values, comments, character data and
/// declarations. It takes constant memory for any nesting.
///
/// The grammar is that of XML 1.0 as far as delimiters go: "<" stands neither in a tag nor in an
/// attribute's value, and "<?xml" followed by white space nowhere but at the begin of a document.
/// A scene description has a MetadataStream for its root and nowhere else. All three are used to
/// find the next document behind a broken one.
class XmlFramer : public Framer {
public:
    Found find(std::string_view text, std::size_t from) override;
    void restart() override;
    std::string_view separators() const override;

private:
    enum class State {
        Text,         ///< between tags
        Opened,       ///< behind "<"
        Name,         ///< in the name of a start tag
        Tag,          ///< in a start tag, behind the name
        Quoted,       ///< in an attribute's value
        EndTag,       ///< in an end tag
        Instruction,  ///< behind "<?"
        Bang,         ///< behind "<!", the kind not known yet
        Comment,
        CharacterData,
        Doctype,
    };
    enum class Step { Goes, Ends, Cuts };

    Step step(char character);
    Step closeTag(bool isEmpty);
    std::size_t lengthOfNext() const;
    bool isRoot() const;
    void enter(State state);

    State state_ = State::Text;
    std::string recent_;  ///< the last characters of the construct, as many as are looked at
    std::size_t nameLength_ = 0;  ///< of the last start tag
    char quote_ = '"';
    std::uint64_t depth_ = 0;     ///< open elements
    std::uint64_t brackets_ = 0;  ///< open in a document type declaration
    bool hasBegun_ = false;       ///< a tag of this document was seen
};

}  // namespace Veskar::Live
