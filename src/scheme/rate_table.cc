#include "scheme/rate_table.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double widest_piece = 0.125;  // nm
constexpr double narrowest_piece = 1e-6;
constexpr double widest_with_jump = 1e-3;  // wider ones are halved without a look for jumps
constexpr double relative_error = 2.5e-7;  // at the midpoints, a quarter of what is promised
constexpr double negligible = 1e-200;      // 1/time; below, numbers lose their digits
constexpr double least_jump = 1e-9;        // of the rate
constexpr double smallest_jump = 1e-12;    // 1/time
constexpr std::size_t most_pieces = 1000000;

double tolerance(double value) { return relative_error * std::abs(value) + negligible; }

}  // namespace

RateTable::RateTable(Rate law, double from, double to)
    : rate(std::move(law)), first(from), last(to) {
  auto const n = static_cast<long>(std::ceil((last - first) / widest_piece));
  for (long i = 0; i < n; ++i) {
    double const start = first + static_cast<double>(i) * widest_piece;
    cover(start, std::min(last, start + widest_piece));
  }
  fill_buckets();
}

/// Both ends belong to it; a piece that starts at the other end stands behind it and goes first.
void RateTable::cover(double from, double to) {
  if (add_if_close(from, to)) return;
  bool const is_narrow = to - from < narrowest_piece || pieces.size() >= most_pieces;
  if (to - from < widest_with_jump && split_at_jump(from, to)) return;
  if (is_narrow) {
    add_asking(from, to);
    return;
  }
  double const middle = from + 0.5 * (to - from);
  cover(from, middle);
  cover(middle, to);
}

bool RateTable::add_if_close(double from, double to) {
  double const h = to - from;
  double const f0 = rate(from);
  if (h == 0.0) {
    pieces.push_back({from, f0, 0.0, 0.0, 0.0, f0, false});
    return true;
  }
  double const f1 = rate(from + h / 3.0);
  double const f2 = rate(from + 2.0 * h / 3.0);
  double const f3 = rate(to);
  // Through four points a third apart, in powers of the distance from the first.
  double const d1 = 3.0 / h;
  double const a1 = (-11.0 * f0 + 18.0 * f1 - 9.0 * f2 + 2.0 * f3) / 6.0 * d1;
  double const a2 = (2.0 * f0 - 5.0 * f1 + 4.0 * f2 - f3) / 2.0 * d1 * d1;
  double const a3 = (-f0 + 3.0 * f1 - 3.0 * f2 + f3) / 6.0 * d1 * d1 * d1;
  for (double const share : {1.0 / 6.0, 0.5, 5.0 / 6.0}) {
    double const s = share * h;
    double const exact = rate(from + s);
    double const found = f0 + s * (a1 + s * (a2 + s * a3));
    if (!(std::abs(found - exact) <= tolerance(exact))) return false;
  }
  // No cubic exceeds the largest of its coefficients in Bernstein's form.
  double const b1 = f0 + a1 * h / 3.0;
  double const b2 = f0 + 2.0 * a1 * h / 3.0 + a2 * h * h / 3.0;
  pieces.push_back({from, f0, a1, a2, a3, std::max({f0, b1, b2, f3}), false});
  return true;
}

/// Looks for two neighbouring doubles with different rates, on the side of the larger difference.
bool RateTable::split_at_jump(double from, double to) {
  double left = from;
  double right = to;
  double f_left = rate(left);
  double f_right = rate(right);
  while (std::nextafter(left, right) < right) {
    double const middle = left + 0.5 * (right - left);
    if (!(middle > left && middle < right)) break;
    double const f = rate(middle);
    bool const is_left = std::abs(f - f_left) >= std::abs(f_right - f);
    (is_left ? right : left) = middle;
    (is_left ? f_right : f_left) = f;
  }
  double const size = std::max(std::abs(f_left), std::abs(f_right));
  if (!(std::abs(f_right - f_left) > least_jump * size + smallest_jump)) return false;
  jump_list.push_back(left);
  cover(from, left);
  cover(right, to);
  return true;
}

void RateTable::add_asking(double from, double to) {
  double most = 0.0;
  for (int i = 0; i <= 8; ++i) most = std::max(most, rate(from + 0.125 * i * (to - from)));
  pieces.push_back({from, most, 0.0, 0.0, 0.0, 1.01 * most + negligible, true});
}

double RateTable::asked(Piece const& piece, double x) const {
  return std::min(rate(x), piece.most);
}

void RateTable::fill_buckets() {
  auto const n = static_cast<std::size_t>(std::ceil((last - first) * 64.0));
  buckets_per_nm = static_cast<double>(n) / (last - first);
  buckets.assign(n + 2, 0);
  std::size_t piece = 0;
  for (std::size_t i = 0; i < buckets.size(); ++i) {
    // A little early, as the bucket of a strain is rounded.
    double const start = first + (static_cast<double>(i) - 1e-6) / buckets_per_nm;
    while (piece + 1 < pieces.size() && pieces[piece + 1].start <= start) ++piece;
    buckets[i] = static_cast<std::uint32_t>(piece);
  }
}

double RateTable::bound(double reach) const {
  if (!(reach <= last && -reach >= first)) return std::numeric_limits<double>::infinity();
  double most = 0.0;
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    bool const ends_before = i + 1 < pieces.size() && pieces[i + 1].start < -reach;
    if (!ends_before && pieces[i].start <= reach) most = std::max(most, pieces[i].most);
  }
  return most;
}
