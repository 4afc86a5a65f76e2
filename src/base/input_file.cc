#include "base/input_file.h"

#include <nettle/base16.h>
#include <nettle/sha2.h>

#include <array>
#include <cerrno>
#include <cstdio>

#include "base/run_state.h"

namespace {

/// No input is that long; a device may be without end.
constexpr std::size_t longest_input = std::size_t{1} << 30;

/// In hexadecimal digits.
std::string sha256(std::string const& text) {
  sha256_ctx context;
  sha256_init(&context);
  sha256_update(&context, text.size(), reinterpret_cast<std::uint8_t const*>(text.data()));
  std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest;
  sha256_digest(&context, digest.size(), digest.data());
  std::string digits(BASE16_ENCODE_LENGTH(SHA256_DIGEST_SIZE), ' ');
  base16_encode_update(digits.data(), digest.size(), digest.data());
  return digits;
}

}  // namespace

std::optional<std::string> read_input(std::string const& name) {
  errno = 0;
  // Not a stream: those begin anew what a signal has interrupted, and would wait at a silent pipe
  // for ever.
  FILE* const file = std::fopen(name.c_str(), "rb");
  if (!file) return std::nullopt;
  std::string text;
  std::array<char, 65536> block;
  std::size_t n = 0;
  while (text.size() <= longest_input &&
         (n = std::fread(block.data(), 1, block.size(), file)) > 0) {
    text.append(block.data(), n);
  }
  int const reason = text.size() > longest_input ? EFBIG : errno;
  bool const is_whole = text.size() <= longest_input && std::ferror(file) == 0;
  std::fclose(file);
  errno = reason;
  if (!is_whole) return std::nullopt;
  note_input(name, text);
  return text;
}

void note_input(std::string const& name, std::string const& text) {
  std::string& digits = run_facts.inputs[name];
  if (digits.empty()) digits = sha256(text);
}
