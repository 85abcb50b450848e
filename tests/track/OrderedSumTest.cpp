// SPDX-License-Identifier: Apache-2.0
#include "track/OrderedSum.h"

#include <gtest/gtest.h>

namespace Veskar {
namespace {

using Vector6 = Eigen::Matrix<double, 6, 1>;
using Matrix6 = Eigen::Matrix<double, 6, 6>;

// Each 1 is lost beside the large numbers unless these cancel first: in order the sum is 2;
// pairwise, in halves or over every other element it differs.
const Vector6 terms = (Vector6() << 1.0, 1e17, -1e17, 1.0, 1.0, 0.0).finished();

TEST(OrderedDot, AddsFromTheFirstTermToTheLast) {
    EXPECT_EQ(orderedDot<6>(terms, Vector6::Ones()), 2.0);
    EXPECT_EQ(orderedDot<6>(Vector6::Ones(), terms), 2.0);
}

TEST(OrderedDot, RoundsEveryProductBeforeItIsAdded) {
    // The product is 1 + 2^-29 + 2^-60; its last term is rounded away, but would remain in a fused
    // multiply-add.
    const double a = 1.0 + 0x1p-30;
    const Eigen::Vector3d x(-(1.0 + 0x1p-29), a, 0.0);
    const Eigen::Vector3d y(1.0, a, 0.0);
    EXPECT_EQ(orderedDot<3>(x, y), 0.0);
}

TEST(OrderedProduct, AddsFromTheFirstColumnToTheLastInEveryRow) {
    Matrix6 A = Matrix6::Zero();
    for (int row = 0; row < 6; row += 2) {
        A.row(row) = terms.transpose();
        A.row(row + 1) = -terms.transpose();
    }
    const Vector6 expected = (Vector6() << 2.0, -2.0, 2.0, -2.0, 2.0, -2.0).finished();
    EXPECT_EQ(orderedProduct<6>(A, Vector6::Ones()), expected);
}

TEST(OrderedProduct, IsTheProduct) {
    Eigen::Matrix3d A;
    A << 1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 10.0;
    EXPECT_EQ(orderedProduct<3>(A, Eigen::Vector3d(1.0, -2.0, 3.0)),
              Eigen::Vector3d(6.0, 12.0, 21.0));
}

}  // namespace
}  // namespace Veskar
