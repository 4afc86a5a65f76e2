#pragma once
/// Name of the vectors of the linear algebra, so that headers need none of deal.II's own, which are
/// slow to compile.

namespace dealii {
template <typename Number>
class Vector;
}  // namespace dealii
