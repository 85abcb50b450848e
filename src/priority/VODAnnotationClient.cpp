// SPDX-License-Identifier: Apache-2.0
#include <veskar/HostApplication.h>
#include <veskar/VODAnnotationClient.h>

#include "net/LocalDatagramSocket.h"

#include <locale>
#include <sstream>

namespace Veskar::VODAnnotation {
namespace {

std::string format(const Annotation& annotation) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    const Eigen::Vector4d& box = annotation.bbox;
    text << "{\"id\":" << annotation.id << ",\"type\":\"" << annotation.type << "\",\"bbox\":["
         << box(0) << ',' << box(1) << ',' << box(2) << ',' << box(3)
         << "],\"timestamp\":" << annotation.timestamp << '}';
    return text.str();
}

}  // namespace

VODAnnotationClient::VODAnnotationClient()
    : socketPath_("/tmp/vod_annotation"), enabled_(calledFromQWR()) {}

VODAnnotationClient& VODAnnotationClient::getInstance() {
    static VODAnnotationClient client;
    return client;
}

void VODAnnotationClient::send(const Annotation& annotation) const {
    if (!enabled_) {
        return;
    }
    const LocalDatagramSocket socket(socketPath_);
    if (socket.isConnected()) {
        socket.send(format(annotation));
    }
}

}  // namespace Veskar::VODAnnotation
