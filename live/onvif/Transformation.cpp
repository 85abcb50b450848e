// SPDX-License-Identifier: Apache-2.0
#include "live/onvif/Transformation.h"

namespace Veskar::Live {

Eigen::Vector2d Transformation::operator()(const Eigen::Vector2d& point) const {
    return scale.cwiseProduct(point) + translate;
}

Host::ImageBox Transformation::operator()(const Host::ImageBox& box) const {
    const Eigen::Vector2d one = (*this)(Eigen::Vector2d(box.left, box.bottom));
    const Eigen::Vector2d other = (*this)(Eigen::Vector2d(box.right, box.top));
    const Eigen::Vector2d least = one.cwiseMin(other);
    const Eigen::Vector2d most = one.cwiseMax(other);
    return {least[0], least[1], most[0], most[1]};
}

bool Transformation::isIdentity() const {
    return translate == Eigen::Vector2d::Zero() && scale == Eigen::Vector2d::Ones();
}

Transformation operator*(const Transformation& outer, const Transformation& inner) {
    return {outer(inner.translate), outer.scale.cwiseProduct(inner.scale)};
}

}  // namespace Veskar::Live
