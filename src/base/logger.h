#pragma once
/// Diagnostic files that are chosen by number and opened at their first use.

#include <cstdio>

namespace Log {
/// The number of each file.
enum : int {
  model_vorn_rates,
  atp_ase_rates_6states,
  atp_ase_rates_8states,
  see_stiffness,
  myosin_head_states,
  titin_data,
  convergence_data,
  crossbridge_convergence,
  n_files
};
}  // namespace Log

class Logger {
 public:
  static FILE* model_vorn_rates;
  static FILE* atp_ase_rates_6states;
  static FILE* atp_ase_rates_8states;
  static FILE* see_stiffness;
  static FILE* myosin_head_states;
  static FILE* titin_data;
  static FILE* convergence_data;
  static FILE* crossbridge_convergence;

  /// Handle of the file of that number, opened if it isn't yet; null for any other number.
  static FILE* GetFile(int number);
  /// Opens `path` into an empty handle; leaves an open one alone.
  static void OpenFile(FILE** handle, char const* path);
  /// Writes the text as it stands and flushes. A filtered text is written only at the time -1.0
  /// (within 1e-6) and from 0.0 to 0.5, so that long runs keep short diagnostics.
  static void WriteToFile(char const* text, FILE* file, bool filtered);
  /// Opens the numbered file if need be; whether a text would be written to it now. Spares a caller
  /// the making of a text that the filter drops.
  static bool Takes(int number, bool filtered);
  /// `WriteToFile` to a numbered file; does nothing for a number without a file.
  static void Write(char const* text, int number, bool filtered);
  /// The same, but the text reaches the disk with the next `Flush` only: one write for many texts.
  static void Add(char const* text, int number, bool filtered);
  static void Flush(int number);
};
