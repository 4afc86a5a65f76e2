// Would catch: a run that starts on half-read parameters, defaults that are not those declared,
// refusals that don't say where and what, limits that are off by one.

#include "base/parameter_file.h"

#include "control/mcModelParameters.h"
#include "support/expect_refusal.h"
#include "support/work_dir.h"

namespace {

namespace fs = std::filesystem;

// A component with keys of all kinds: text, selection, counts and numbers above 0.
using Component = McModelParameters;

/// Reads the file with the defaults expected; gives what is said on standard error.
std::string read_defaults(std::string const& file) {
  testing::internal::CaptureStderr();
  Component const component(file);
  EXPECT_EQ(component.geometry, "Simple");
  EXPECT_EQ(component.activation, "None");
  EXPECT_EQ(component.filaments, 10u);
  EXPECT_EQ(component.sarcomer.dispSqLimit, 1e-6);
  return testing::internal::GetCapturedStderr();
}

TEST(ParameterFile, SetsWhatStandsInItAndKeepsOtherDefaults) {
  write_file("mc.prm", "# a comment\nsubsection monte_carlo\n\n set filaments=3\nend\n");
  Component const component("mc.prm");
  EXPECT_EQ(component.filaments, 3u);
  EXPECT_EQ(component.geometry, "Simple");
}

TEST(ParameterFile, MissingFileIsWrittenWithTheDefaultsWhichHold) {
  EXPECT_NE(read_defaults("mc.prm").find("mc.prm"), std::string::npos);
  EXPECT_EQ(read_defaults("mc.prm"), "");  // the second time it is there
  std::string text = read_file("mc.prm");  // with all its keys, ready to be edited
  text.replace(text.find("Simple"), 6, "Flight");
  write_file("mc.prm", text);
  EXPECT_EQ(Component("mc.prm").geometry, "Flight");
}

TEST(ParameterFile, EmptyFileIsToldOf) {
  write_file("mc.prm", " \n");
  EXPECT_NE(read_defaults("mc.prm").find("mc.prm is empty"), std::string::npos);
  write_file("mc.prm", "# as they are\n");
  EXPECT_EQ(read_defaults("mc.prm"), "");
  EXPECT_EQ(read_file("mc.prm"), "# as they are\n");
}

TEST(ParameterFile, EmptyNameGivesDefaultsWithoutAFileOrAWord) {
  EXPECT_EQ(read_defaults(""), "");
  for (auto const& entry : fs::directory_iterator(".")) EXPECT_NE(entry.path().extension(), ".prm");
}

TEST(ParameterFile, RefusesWhatItCannotTake) {
  std::string garbage;
  for (int i = 0; i < 4096; ++i) garbage += static_cast<char>((i * 37 + 11) % 256);
  std::string const section = "subsection monte_carlo\n";
  std::vector<std::pair<std::string, std::string>> const cases = {
      {section + "\n  set filament = 2\nend\n", "mc\\.prm.*3.*filament.*accepted.*filaments"},
      {"set filaments = 2\n", "mc\\.prm.*1.*filaments.*accepted"},
      {"subsection mc\n  set filaments = 2\nend\n", "mc\\.prm.*mc.*accepted.*monte_carlo"},
      {section + "  set filaments = 2.5\nend\n", "mc\\.prm.*2.*2\\.5.*filaments.*Integer"},
      {section + "  set filaments = 0\nend\n",
       "mc\\.prm, section monte_carlo: filaments is '0'; accepted: a whole number of at least 1"},
      {section + "  set activation = none\nend\n", "mc\\.prm.*none.*None.FChain"},
      {section + "  set dispSqLimit = tight\nend\n", "mc\\.prm.*2.*tight.*dispSqLimit.*Double"},
      {section + "  set dispSqLimit = nan\nend\n", "mc\\.prm.*nan"},
      {section + "  set dispSqLimit = 1e999\nend\n", "mc\\.prm.*1e999"},
      {section + "  filaments = 2\nend\n", "mc\\.prm.*2.*filaments = 2"},
      {section + "  set filaments = 2\n", "mc\\.prm.*monte_carlo"},  // no end
      {"include mc.prm\n", "mc\\.prm, line 1.*include"},             // without an end of its own
      {garbage, "mc\\.prm"}};
  for (auto const& [text, message] : cases) {
    write_file("mc.prm", text);
    expect_refusal([] { Component("mc.prm"); }, message);
  }
  expect_refusal([] { Component(std::string(300, 'm')); }, "mmm: can't be read");
  fs::create_directory("folder.prm");
  expect_refusal([] { Component("folder.prm"); }, "folder\\.prm.*directory");
}

}  // namespace
