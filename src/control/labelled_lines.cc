#include "control/labelled_lines.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "base/diagnostics.h"

namespace {

std::string const own_mark = "tavelo: ";

void write_all(int target, std::string const& text) {
  for (std::size_t done = 0; done < text.size();) {
    ssize_t const n = write(target, text.data() + done, text.size() - done);
    if (n >= 0) {
      done += static_cast<std::size_t>(n);
    } else if (errno != EINTR) {
      stop(std::string("the lines of a run can't be written: ") + std::strerror(errno));
    }
  }
}

}  // namespace

Descriptor::~Descriptor() {
  if (is_open()) close(number);
}

Descriptor::Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  std::swap(number, other.number);
  return *this;
}

LabelledLines::LabelledLines(Descriptor from, int to, std::string const& name)
    : source(std::move(from)), target(to), label(name + ": ") {}

void LabelledLines::pass_on() {
  std::array<char, 65536> buffer;
  ssize_t const n = read(source.get(), buffer.data(), buffer.size());
  if (n < 0) return;
  rest.append(buffer.data(), static_cast<std::size_t>(n));
  if (n == 0) {
    source = Descriptor();
    if (!rest.empty()) rest += '\n';
  }
  std::string text;
  std::size_t begin = 0;
  for (std::size_t end; (end = rest.find('\n', begin)) != std::string::npos; begin = end + 1) {
    text += labelled(rest.substr(begin, end + 1 - begin));
  }
  rest.erase(0, begin);
  write_all(target, text);
}

std::string LabelledLines::labelled(std::string const& line) const {
  bool const is_own = line.compare(0, own_mark.size(), own_mark) == 0;
  return is_own ? own_mark + label + line.substr(own_mark.size()) : label + line;
}
