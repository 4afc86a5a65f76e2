#pragma once

/// What an experiment prescribes: a length [nm] or a force [pN], and how much of it.
struct Prescribed {
  enum class Quantity { length, force };

  Quantity quantity = Quantity::length;
  double value = 0.0;

  bool is_length() const { return quantity == Quantity::length; }
};
