#include "support/work_dir.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "base/protocol.h"
#include "base/run_state.h"
#include "support/scripted_rand.h"

namespace fs = std::filesystem;

void FreshWorkDir::OnTestStart(testing::TestInfo const&) {
  home = fs::current_path();
  std::string pattern = (fs::temp_directory_path() / "tavelo-test-XXXXXX").string();
  if (!mkdtemp(pattern.data())) std::abort();
  dir = pattern;
  fs::current_path(dir);
  fOutputFile = std::fopen("TaveloOutput.lst", "wt");
  fIterationNorms = std::fopen("IterationNorms.csv", "wt");
  fConvergenceListing = std::fopen("ListingConvergence.dat", "wt");
  t_timeStep = 0;
  timeForAll = 0.0;
  currentTimeStep = 0.0;
  numberOfAtachments = 0;
  numberOfDetachments = 0;
  run_facts = {};
  Protocol::TimeOffset = 0.0;
  ScriptedRand::reset();
}

void FreshWorkDir::OnTestEnd(testing::TestInfo const&) {
  for (FILE* file : {fOutputFile, fIterationNorms, fConvergenceListing}) {
    if (file) std::fclose(file);
  }
  fOutputFile = fIterationNorms = fConvergenceListing = nullptr;
  fs::current_path(home);
  std::error_code ignored;
  fs::remove_all(dir, ignored);
}

void write_file(std::string const& name, std::string const& text) {
  std::ofstream(name, std::ios::binary) << text;
}

std::string read_file(std::string const& name) {
  std::ifstream file(name, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::vector<std::string> read_lines(std::string const& name) {
  std::ifstream file(name);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

std::string listing_text() {
  std::fflush(fOutputFile);
  return read_file("TaveloOutput.lst");
}

void write_parameters(std::string const& name, std::string const& section,
                      std::vector<std::string> const& settings) {
  std::string text = "subsection " + section + "\n";
  for (std::string const& setting : settings) text += "  set " + setting + "\n";
  write_file(name, text + "end\n");
}

void write_settings(std::string const& name, std::string const& settings) {
  std::string text;
  std::istringstream sections(settings);
  for (std::string section; std::getline(sections >> std::ws, section, ';');) {
    auto const colon = section.find(':');
    text += "subsection " + section.substr(0, colon) + '\n';
    std::istringstream words(section.substr(colon + 1));
    for (std::string setting; words >> setting;) text += "  set " + setting + '\n';
    text += "end\n";
  }
  write_file(name, text);
}
