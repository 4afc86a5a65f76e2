#pragma once
/// The state of one mechanical unit: one thick filament (fibre 0) with the thin filaments beside
/// it.
///
/// Plain records that lattice, kinetics, activation and mechanics reach into directly. A node of
/// fibre 0 is the place of a crown of heads; a node of an actin fibre is one monomer and so one
/// binding site. Node numbers run in the order of growing rest coordinate. Lengths in nm.

#include <algorithm>
#include <limits>
#include <valarray>
#include <vector>

#include "records/fibre_displacement.h"

/// Value of `actin_site` and `actin_fibre` of a head that is bound to no site.
constexpr unsigned unbound = 99999999;

/// What a head is, and so which kinetic model drives it. The values are those of `model_index`.
enum class HeadKind : unsigned { slow, fast, protein_c };

/// One myosin head, or the protein-C beside one.
struct MyosinHead_s {
  unsigned node;            ///< node on fibre 0; the first crown is node 1
  unsigned fibre;           ///< the fibre that carries the head, always 0
  unsigned state;           ///< kinetic state, an index into the states of the head's model
  unsigned actin_site;      ///< node it is bound to on `actin_fibre`, or `unbound`
  unsigned actin_fibre;     ///< fibre it is bound to, or `unbound`
  unsigned crown_code;      ///< crown class above the lowest four bits, head number in these
  unsigned model_index;     ///< its kind: 0 slow, 1 fast, any other value protein-C
  unsigned detach_pending;  ///< 1 from leaving the bound states until the next state change

  HeadKind kind() const {
    return static_cast<HeadKind>(std::min(model_index, static_cast<unsigned>(HeadKind::protein_c)));
  }
  bool is_myosin() const { return kind() != HeadKind::protein_c; }
  /// Whether its bond pulls. An index that no kind has steps as protein-C, but pulls nothing.
  bool carries_force() const {
    return detach_pending != 1 && model_index <= static_cast<unsigned>(HeadKind::protein_c);
  }
  void set_kind(HeadKind kind) { model_index = static_cast<unsigned>(kind); }

  unsigned crown_class() const { return crown_code >> 4; }
  unsigned number_in_crown() const { return crown_code & 15; }
};

/// One binding site, as regulation leaves it.
struct ActinSite_s {
  unsigned state = 0;            ///< 0 open, 1 blocked, 2 closed
  double k_on_factor = 1.0;      ///< on the binding rate; the site is not offered unless above 0
  double k_stroke_factor = 1.0;  ///< on the forward rate out of the first bound state
  double k_off_factor = 1.0;     ///< on the release and reverse rates
  MyosinHead_s* head = nullptr;  ///< the head bound here; not owned
};

/// A site that the lattice offers to one detached head.
struct BindingSite_s {
  double weight = 1.0;  ///< steric weight, a factor on the binding rate, above 0
  unsigned site = 0;    ///< node on the actin fibre
  unsigned fibre = 1;
};

/// Per-fibre fields have one entry per fibre and, in it, one element per node.
///
/// A copy is deep, but the pointers in its `attached` and in the `head` fields of its sites still
/// point into the source's `heads`.
struct FilamentData {
  /// Appends one fibre per entry of `node_counts`; called once, on an empty record.
  void initialize(std::vector<unsigned> const& node_counts);

  std::vector<std::valarray<unsigned>> bound_count;  ///< heads attached at a node, at either end
  std::vector<std::valarray<ActinSite_s>> sites;     ///< the entry of fibre 0 is not used
  std::vector<std::valarray<double>> x;              ///< rest coordinate, ascending
  std::vector<FibreDisplacement> u;                  ///< accumulated displacement
  /// Current coordinates of a fibre's nodes, x + u.
  NodePositions position(unsigned fibre) const { return {x[fibre], u[fibre]}; }
  /// Crown after crown; the size never changes after the lattice has set it.
  std::vector<MyosinHead_s> heads;
  /// The heads of this step's mechanics, in the order of `heads`: those in a bound state and those
  /// with `detach_pending` set.
  std::vector<MyosinHead_s*> attached;
  /// Empty without nebulin deficiency; else, per actin fibre from fibre 1 on, the rest coordinate
  /// below which no site is offered.
  std::vector<double> nebulin_limit;
  /// No more sites of a fibre than this lie in a head's axial reach at present.
  unsigned most_sites_in_reach = ~0u;
  /// Upper bounds of the sum of the weights that a head can be offered then, by crown code.
  std::vector<double> weight_bounds;
  /// No site has ever had a larger factor.
  double most_factor = 1.0;
  /// No bond of the last mesh is longer than this along the axis, in either direction [nm].
  double longest_bond = std::numeric_limits<double>::infinity();
};
