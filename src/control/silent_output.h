#pragma once
/// Keeps standard output silent.

/// What is printed while it lives goes nowhere.
class SilentOutput {
 public:
  SilentOutput();
  ~SilentOutput();
  SilentOutput(SilentOutput const&) = delete;
  SilentOutput& operator=(SilentOutput const&) = delete;

 private:
  int const original;
};
