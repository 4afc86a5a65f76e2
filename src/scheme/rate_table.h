#pragma once
/// A rate over the strain as cubic pieces, with a bound of its error and of its size.
///
/// The table starts with pieces of 1/8 nm. A piece goes through the rate at its ends and thirds,
/// and is kept where it is off by at most a quarter of 1e-6 of the rate at the three midpoints
/// between them. Others are halved. Where two neighbouring doubles have different rates the table
/// jumps between just these two; a piece that would become narrower than 1e-6 nm (at a corner, say)
/// asks the rate itself, as strains outside of the table do. What a rate does within 0.02 nm
/// between the points that are looked at can be missed.

#include <cstdint>
#include <functional>
#include <vector>

class RateTable {
 public:
  using Rate = std::function<double(double)>;

  /// Over the strains from `first` to `last` [nm].
  RateTable(Rate rate, double first, double last);

  bool covers(double x) const { return x >= first && x <= last; }

  double operator()(double x) const {
    if (!covers(x)) return rate(x);
    Piece const* piece = &pieces[buckets[static_cast<std::size_t>((x - first) * buckets_per_nm)]];
    while (piece != end_piece() && x >= piece[1].start) ++piece;
    double const s = x - piece->start;
    double const cubic = piece->c0 + s * (piece->c1 + s * (piece->c2 + s * piece->c3));
    if (piece->asks) return asked(*piece, x);
    return cubic > 0.0 ? cubic : 0.0;
  }

  /// No strain of at most `reach` in size has a larger value; infinity beyond the table.
  double bound(double reach) const;
  std::size_t size() const { return pieces.size(); }
  /// Strains between which the rate jumps: the last one before each jump.
  std::vector<double> const& jumps() const { return jump_list; }

 private:
  struct Piece {
    double start;
    double c0, c1, c2, c3;
    double most;  ///< of its values
    bool asks;    ///< the rate itself holds, up to `most`
  };

  Piece const* end_piece() const { return &pieces.back(); }
  double asked(Piece const& piece, double x) const;
  void cover(double from, double to);
  bool add_if_close(double from, double to);
  bool split_at_jump(double from, double to);
  void add_asking(double from, double to);
  void fill_buckets();

  Rate rate;
  double first;
  double last;
  double buckets_per_nm = 0.0;
  std::vector<Piece> pieces;
  std::vector<std::uint32_t> buckets;  ///< the last piece that starts at or before each
  std::vector<double> jump_list;
};
