#pragma once
/// Displacement of the nodes of a fibre, which is straight between a few of them.
///
/// Only the knots, the nodes on which something acts, have a displacement of their own; between two
/// knots it is linear in the node number, and worked out where it is read.
///
/// Units: nm.

#include <valarray>
#include <vector>

class FibreDisplacement {
 public:
  struct Knot {
    unsigned node;
    double u;
    double slope;  ///< up to the next knot [nm per node]
    double x;      ///< rest coordinate, here because those of all nodes are too long to cache
  };

  /// At least two nodes. The first and the last are the knots; nothing is displaced.
  explicit FibreDisplacement(unsigned n_nodes);

  unsigned size() const { return static_cast<unsigned>(knots_before.size()); }
  double operator[](unsigned node) const {
    Knot const& knot = knots[knots_before[node]];
    return knot.u + (node - knot.node) * knot.slope;
  }

  /// The nodes that are knots from now on, ascending, the first and the last of the fibre among
  /// them, and the rest coordinates of all nodes. Knots keep their displacements.
  void set_knots(std::vector<unsigned> const& nodes, std::valarray<double> const& x);
  std::vector<Knot> const& get_knots() const { return knots; }
  /// The last knot that stands not behind a node, by its place among the knots.
  unsigned knot_before(unsigned node) const { return knots_before[node]; }
  void move_knot(unsigned knot, double du) { knots[knot].u += du; }
  /// Lets the other nodes follow the knots. Returns the least slope [nm per node].
  double straighten();
  /// Moves all nodes to the same displacement.
  void fill(double u);

 private:
  std::vector<Knot> knots;
  std::vector<unsigned> knots_before;  ///< by node
  std::vector<Knot> previous;          ///< work space of `set_knots`
};

/// Current coordinates of the nodes of a fibre.
class NodePositions {
 public:
  /// Keeps references to both.
  NodePositions(std::valarray<double> const& rest, FibreDisplacement const& displacement)
      : x(rest), u(displacement) {}
  unsigned size() const { return u.size(); }
  double operator[](unsigned node) const { return x[node] + u[node]; }

 private:
  std::valarray<double> const& x;
  FibreDisplacement const& u;
};
