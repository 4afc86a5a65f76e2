#pragma once
/// Names of the linear algebra, so that headers need none of deal.II's own, which are slow to
/// compile.

namespace dealii {
template <typename Number>
class Vector;
template <typename Number>
class SparseMatrix;
template <typename Number>
class AffineConstraints;
class DynamicSparsityPattern;
}  // namespace dealii
