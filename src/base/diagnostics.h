#pragma once
/// Messages to the person who runs the program, and the ways in which a run ends early.
///
/// Standard output carries the program's fixed messages; every further diagnostic goes to standard
/// error and begins "tavelo: ". Both kinds of end flush all files and leave with exit status 1.

#include <string>

/// Refuses input. `where` names the file (and line or section), `what` the key or field, `got` the
/// offending value, `accepted` what would have been taken. Prints one line and exits.
[[noreturn]] void refuse(std::string const& where, std::string const& what, std::string const& got,
                         std::string const& accepted);

/// Ends the run with one line on standard error.
[[noreturn]] void stop(std::string const& message);

/// Ends the run with a fixed message, a line of its own on standard output, and `detail` (what,
/// where, what is accepted) on standard error.
[[noreturn]] void stop_with_message(char const* message, std::string const& detail);

/// Tells something in one line on standard error and goes on.
void tell(std::string const& message);

/// Tells of something unusual on standard error and goes on.
void warn(std::string const& message);

/// Tells on standard output that the probabilities of a draw add up to more than 1, and goes on.
/// `drawn` is what the draw decides.
void tell_excess(char const* drawn, double sum);

/// The same for the record of the run alone.
void note_excess(char const* drawn, double sum);

/// The clock as messages name it: " at time 0.5, step 7".
std::string at_step();

/// A number as messages show it: as short as it can be told apart, never rounded to 0.
std::string shown(double number);

/// The text on one line: white space folded, characters that can't be printed shown as '?', and cut
/// where it grows beyond some hundred characters.
std::string single_line(std::string const& text);
