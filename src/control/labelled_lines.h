#pragma once
/// The lines that a child process writes, on their way to one of our own streams.

#include <string>

/// Owner of an open descriptor.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int open_number) : number(open_number) {}
  ~Descriptor();
  Descriptor(Descriptor&& other) noexcept;
  Descriptor& operator=(Descriptor&& other) noexcept;

  int get() const { return number; }
  bool is_open() const { return number >= 0; }

 private:
  int number = -1;
};

/// Passes on whole lines, so that those of several children never mix. A line gets its child's
/// label in front, one of our own diagnostics behind its "tavelo: ".
class LabelledLines {
 public:
  LabelledLines(Descriptor from, int to, std::string const& name);

  /// What can be waited for; -1 when the child has closed its end.
  int descriptor() const { return source.get(); }
  bool has_ended() const { return !source.is_open(); }
  /// Takes what there is, up to a buffer full, and writes the lines that are whole; at the end of
  /// the source also one that isn't.
  void pass_on();

 private:
  std::string labelled(std::string const& line) const;

  Descriptor source;
  int target;
  std::string label;
  std::string rest;  ///< of a line that isn't whole yet
};
