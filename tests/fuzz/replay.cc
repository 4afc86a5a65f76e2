// Gives files to a reader, each in a process of its own: replay FILE ...

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "refusal.h"

extern "C" int LLVMFuzzerInitialize(int*, char***);
extern "C" int LLVMFuzzerTestOneInput(unsigned char const* data, std::size_t size);

void try_to(std::function<void()> const& act) {
  pid_t const child = fork();
  if (child == 0) {
    if (!std::freopen("/dev/null", "w", stdout) || !std::freopen("/dev/null", "w", stderr))
      _exit(3);
    act();
    std::exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  bool const is_orderly = WIFEXITED(status) && WEXITSTATUS(status) <= 1;
  if (!is_orderly) std::abort();
}

int main(int argc, char** argv) {
  std::vector<std::string> inputs;
  for (int i = 1; i < argc; ++i) {
    std::ifstream file(argv[i], std::ios::binary);
    if (!file) {
      std::fprintf(stderr, "replay: %s: can't be read\n", argv[i]);
      return 2;
    }
    inputs.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  LLVMFuzzerInitialize(&argc, &argv);
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    std::printf("%s\n", argv[i + 1]);
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(reinterpret_cast<unsigned char const*>(inputs[i].data()),
                           inputs[i].size());
  }
  std::filesystem::path const place = std::filesystem::current_path();
  std::filesystem::remove_all(place);
}
