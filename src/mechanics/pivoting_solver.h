#pragma once
/// Reference and fallback of the spring system: the same springs in one matrix of deal.II's, with
/// its constraints and UMFPACK, which pivots where the spring system can't.

#include <vector>

#include "mechanics/boundary.h"
#include "mechanics/dealii_forward.h"
#include "mechanics/spring_block.h"

/// Displacements of all degrees of freedom under `forces` and the conditions at the ends; springs
/// with the numbers that `forces` has. False when the forces determine no displacements.
bool solve_with_pivoting(std::vector<Spring> const& springs, Ends const& ends,
                         dealii::Vector<double> const& forces,
                         dealii::Vector<double>& displacements);
