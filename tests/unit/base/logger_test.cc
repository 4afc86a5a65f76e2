// Would catch: a window of the filter that is open at an end or too wide, a number that opens the
// wrong file, files opened before they are used or opened again, text with additions.

#include "base/logger.h"

#include <gtest/gtest.h>

#include <cmath>

#include "base/run_state.h"
#include "support/work_dir.h"

namespace {

namespace fs = std::filesystem;

class LoggerTest : public testing::Test {
 protected:
  LoggerTest() { close_all(); }
  ~LoggerTest() override { close_all(); }

  /// The handles outlive a test as they outlive a run; each test starts without any.
  static void close_all() {
    for (FILE** const handle :
         {&Logger::model_vorn_rates, &Logger::atp_ase_rates_6states, &Logger::atp_ase_rates_8states,
          &Logger::see_stiffness, &Logger::myosin_head_states, &Logger::titin_data,
          &Logger::convergence_data, &Logger::crossbridge_convergence}) {
      if (*handle) std::fclose(*handle);
      *handle = nullptr;
    }
  }

  static bool passes_filter(double time) {
    timeForAll = time;
    std::size_t const before = read_file("convergence_data.csv").size();
    Logger::Write("row\n", 6, true);
    return read_file("convergence_data.csv").size() == before + 4;
  }
};

TEST_F(LoggerTest, FilterKeepsTheStartAndTheFirstHalfTimeUnit) {
  for (double const time : {-1.0, -1.0 - 0.9e-6, -1.0 + 0.9e-6, 0.0, 0.25, 0.5}) {
    EXPECT_TRUE(passes_filter(time)) << time;
  }
  for (double const time :
       {-1.0 - 1.1e-6, -1.0 + 1.1e-6, std::nextafter(0.0, -1.0), std::nextafter(0.5, 1.0), 0.7}) {
    EXPECT_FALSE(passes_filter(time)) << time;
  }
  Logger::Write("1.5,", 0, false);  // unfiltered, the text goes as it stands at any time
  Logger::Write("100%s\n", 0, false);
  EXPECT_EQ(read_file("model_vorn_rates.csv"), "1.5,100%s\n");
}

TEST_F(LoggerTest, EachNumberOpensItsFileAtItsFirstUseAndOthersNone) {
  std::vector<std::string> const names = {
      "model_vorn_rates.csv", "atp_ase_rates_6states.csv",  "atp_ase_rates_8states.csv",
      "see_stiffness.csv",    "myosin_head_states.csv",     "titin_data.csv",
      "convergence_data.csv", "crossbridge_convergence.csv"};
  for (int number = 0; number < 8; ++number) {
    std::string const& name = names[static_cast<std::size_t>(number)];
    EXPECT_FALSE(fs::exists(name));
    FILE* const file = Logger::GetFile(number);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(fs::exists(name)) << name;
    EXPECT_EQ(Logger::GetFile(number), file);
  }
  auto const entries = [] {
    return std::distance(fs::directory_iterator("."), fs::directory_iterator());
  };
  auto const before = entries();
  for (int const number : {8, -1}) {
    EXPECT_EQ(Logger::GetFile(number), nullptr);
    Logger::Write("row\n", number, false);
  }
  EXPECT_EQ(entries(), before);
}

}  // namespace
