// SPDX-License-Identifier: Apache-2.0
// Any two texts as the files of a data set, parted by a NUL: they are imported or refused with a
// reason, in bounded memory. The first byte says which data set, an 'A' for Autoferry and anything
// else for KITTI.
#include <veskar-host/InputError.h>

#include "import/Autoferry.h"
#include "import/Kitti.h"
#include "support/InputFile.h"
#include "support/Require.h"

#include <algorithm>
#include <string>
#include <string_view>

using namespace VeskarFuzz;

namespace {

void import(bool isAutoferry, const std::string& first, const std::string& second) {
    if (isAutoferry) {
        Workbench::AutoferryOptions options;
        options.detections = first;
        options.groundTruth = second;
        importAutoferry(options);
    } else {
        Workbench::KittiOptions options;
        options.labels = first;
        options.calibration = second;
        importKitti(options);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string_view texts = asText(data, size).substr(1);
    const std::size_t middle = std::min(texts.find('\0'), texts.size());
    const InputFile first(texts.substr(0, middle));
    const InputFile second(texts.substr(std::min(middle + 1, texts.size())));
    try {
        import(*data == 'A', first.path(), second.path());
    } catch (const Veskar::Host::InputError& error) {
        require(*error.what() != '\0', "a refusal has a reason");
    }
    return 0;
}
