// SPDX-License-Identifier: Apache-2.0
#include "live/onvif/LeftOut.h"

namespace Veskar::Live {

void LeftOut::add(std::string_view term) {
    if (term.size() > longestTerm) {
        std::size_t length = longestTerm;
        // A character of UTF-8 is kept whole, or not at all.
        while (length > 0 && (static_cast<unsigned char>(term[length]) & 0xC0U) == 0x80U) {
            --length;
        }
        term = term.substr(0, length);
    }
    const auto found = counts_.find(term);
    if (found != counts_.end()) {
        ++found->second;
    } else if (counts_.size() < mostTerms) {
        counts_.emplace(term, 1);
    } else {
        ++counts_["other terms"];
    }
}

}  // namespace Veskar::Live
