#include "base/input_file.h"

#include <nettle/base16.h>
#include <nettle/sha2.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "base/run_state.h"

namespace {

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
  std::ifstream file(name, std::ios::binary);
  std::ostringstream text;
  // A directory opens, but has no first character to look at.
  if (!file || (file.peek() == EOF ? file.bad() : !(text << file.rdbuf()))) return std::nullopt;
  note_input(name, text.str());
  return text.str();
}

void note_input(std::string const& name, std::string const& text) {
  std::string& digits = run_facts.inputs[name];
  if (digits.empty()) digits = sha256(text);
}
