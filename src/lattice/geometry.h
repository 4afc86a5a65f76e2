#pragma once
/// How the thick and thin filaments of one mechanical unit stand to each other.
///
/// A lattice knows which fibres, nodes and heads exist, how stiff each fibre is, which free sites a
/// detached head can reach at present and with what steric weight, and how the sites group into the
/// chains and segments that regulation works on. One object serves all filaments of a run and does
/// not change while it runs.

#include <initializer_list>
#include <optional>
#include <string>
#include <valarray>
#include <vector>

#include "base/factory.h"

struct BindingSite_s;
struct BondEnds_s;
struct CrossSection_s;
struct Facing_s;
struct FilamentData;
struct MyosinHead_s;
class ParameterSection;

namespace dealii {
class ParameterHandler;
}

/// Argument of every lattice's constructor; a lattice reads a file of its own.
struct GeometryParameter_s {};

class Geometry {
 public:
  Geometry() = default;
  virtual ~Geometry() = default;
  Geometry(Geometry const&) = delete;
  Geometry& operator=(Geometry const&) = delete;

  virtual bool is_actin(unsigned fibre) const { return fibre != 0; }

  /// Appends a candidate for each free, available site that the detached head can reach. The order
  /// of the candidates is the order in which the stepper lays them on its scale.
  virtual void get_binding_sites(FilamentData const& data, MyosinHead_s const& head,
                                 std::vector<BindingSite_s>& candidates) const;

  /// Upper bound of the sum of the weights that a head of this crown code can be offered with the
  /// present `most_sites_in_reach`, for sites whose `k_on_factor` is at most 1; infinity where the
  /// lattice knows none.
  virtual double weight_bound(FilamentData const& data, MyosinHead_s const& head) const;
  /// Half width of a head's axial reach [nm].
  double reach() const { return xamax; }
  /// How many sites of a fibre fit into a head's reach when neighbours stand at least `spacing` nm
  /// apart.
  unsigned most_sites_in_reach(double spacing) const;

  /// Where the ends of a bound head's bond stand seen end-on; nothing where a lattice has no
  /// angles or, like "Tolen", no distances.
  virtual std::optional<BondEnds_s> bond_ends(MyosinHead_s const& head) const;
  /// How a head, bound or not, stands to a thin filament; nothing where a lattice has no angles.
  virtual std::optional<Facing_s> facing(MyosinHead_s const& head, unsigned fibre) const;
  /// Azimuth of a site's first face on its thin filament [rad], in the frame of `facing`; each
  /// further face is half a turn on.
  virtual std::optional<double> azimuth_of_site(unsigned site) const;
  /// Faces of a site by which it can be bound; 0 where a lattice has no angles.
  virtual unsigned faces_of_site() const { return 0; }
  /// Which of them, counted from 0, a bound head holds.
  virtual unsigned bound_face(MyosinHead_s const&) const { return 0; }
  /// Nothing where a lattice has no distances.
  virtual std::optional<CrossSection_s> cross_section() const;

  /// Lays out fibres, nodes and heads of a new filament. Draws random numbers where heads or
  /// filament lengths are distributed.
  virtual void initialize_filament(FilamentData& data) const = 0;

  /// Young's modulus [pN/nm^2] and cross-section [nm^2] of a fibre; 0 for one that isn't there.
  virtual void get_fibre_stiffness(unsigned fibre, double& e_fibre, double& a_fibre) const;

  /// Number of regulated chains of sites.
  virtual unsigned n_actin_chains() const { return 0; }
  /// Writes the number of segments of each chain.
  virtual void n_actin_segments(unsigned segment_size, std::vector<unsigned>& segments) const;
  /// Fibre and node of a place in a segment; the node of a last segment may lie past the end.
  virtual unsigned get_fibre(unsigned segment_size, unsigned chain, unsigned segment,
                             unsigned index) const;
  virtual unsigned get_site(unsigned segment_size, unsigned chain, unsigned segment,
                            unsigned index) const;

  unsigned n_myosin_nodes = 0;  ///< nodes on fibre 0, the end node included
  unsigned n_actin_nodes = 0;   ///< nodes on each actin fibre
  unsigned titin_enabled = 0;   ///< 1: a titin spring joins the last nodes of fibres 0 and 1
  std::string titin_stiffness;  ///< name of the titin law
  double titin_length = 0.0;
  double titin_extension = 0.0;     ///< extension of titin with all displacements zero [nm]
  double actin_end = 0.0;           ///< rest coordinate of the actin end [nm]
  double myosin_stiffness = 0.0;    ///< of the whole thick filament [pN/nm]
  std::string see_stiffness;        ///< name of the law of the series elastic element
  double see_damping_factor = 0.0;  ///< [pN time/nm]
  unsigned proteinC_enabled = 0;
  unsigned proteinCStartPosition = 0;  ///< first crown index that may carry protein-C
  unsigned proteinCNumber = 0;         ///< crowns with protein-C
  std::string parameter_file_name;     ///< what this lattice was read from

 protected:
  /// Names of the laws that titin and the series elastic element can have.
  static constexpr char const* series_laws = "ConstantStiffness|StiffnessFunction";

  /// Section `see` of a lattice that can do without: empty by default, and a whole run then stops.
  static void declare_optional_see(dealii::ParameterHandler& handler);
  void get_see(dealii::ParameterHandler& handler, std::string const& file_name);
  /// Section `myosin` as far as the lattices agree; `count_key` names the number of crowns or
  /// nodes.
  static void declare_thick_filament(ParameterSection const& myosin, std::string const& count_key,
                                     std::string const& count, std::string const& dx,
                                     std::string const& modulus, std::string const& area);
  /// Reads the same and returns the count.
  unsigned get_thick_filament(ParameterSection const& myosin, std::string const& count_key);
  /// Section `actin` of a lattice with `n` numbered thin filaments whose sites repeat by a period.
  static void declare_thin_filaments(ParameterSection const& actin, unsigned n);
  /// Reads the same and returns the length [nm].
  double get_thin_filaments(ParameterSection const& actin, unsigned n);
  /// Reads `length_actin` [nm] and sets the number of sites, `dx_actin` apart, that it has room
  /// for.
  double get_actin_length(ParameterSection const& actin);

  /// A whole number from 1 to a million, which is more than fits any filament.
  static unsigned get_count(ParameterSection const& section, std::string const& key);

  /// Rest coordinates of the nodes from number `first` on.
  static void place_nodes(std::valarray<double>& x, unsigned first, double start, double spacing);
  /// Appends the unbound heads of one crown, all driven by the slow model.
  static void add_crown(FilamentData& data, unsigned node, unsigned crown_class,
                        std::initializer_list<unsigned> head_numbers);

  double myosin_offset = 0.0;  ///< rest coordinate of the first crown [nm]
  double dx_myosin = 0.0;      ///< between crowns [nm]
  double dx_actin = 0.0;       ///< between sites [nm]
  unsigned actin_period = 0;   ///< of the pattern of site angles, as the lattice counts it
  double xamax = 0.0;          ///< half width of a head's axial reach [nm]
  std::vector<double> e;       ///< Young's moduli of the fibres [pN/nm^2]
  std::vector<double> a;       ///< their cross-sections [nm^2]
};

#define REGISTER_GEOMETRY(Derived, name) \
  REGISTER_COMPONENT(Derived, Geometry, GeometryParameter_s, name)
