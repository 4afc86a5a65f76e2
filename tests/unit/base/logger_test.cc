// Would catch: a window of the filter that is open at an end or too wide, a number that opens the
// wrong file, files opened before they are used or opened again, text with additions.

#include "base/logger.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "base/run_state.h"
#include "support/work_dir.h"

namespace {

namespace fs = std::filesystem;

FILE** const handles[] = {&Logger::model_vorn_rates,      &Logger::atp_ase_rates_6states,
                          &Logger::atp_ase_rates_8states, &Logger::see_stiffness,
                          &Logger::myosin_head_states,    &Logger::titin_data,
                          &Logger::convergence_data,      &Logger::crossbridge_convergence};

std::string const names[] = {"model_vorn_rates", "atp_ase_rates_6states",  "atp_ase_rates_8states",
                             "see_stiffness",    "myosin_head_states",     "titin_data",
                             "convergence_data", "crossbridge_convergence"};

/// The handles outlive a test as they outlive a run; each test starts without any.
struct LoggerTest : testing::Test {
  LoggerTest() {
    for (FILE** const handle : handles) {
      if (*handle) std::fclose(std::exchange(*handle, nullptr));
    }
  }
};

TEST_F(LoggerTest, FilterKeepsTheStartAndTheFirstHalfTimeUnit) {
  std::string expected;
  for (double const time : {-1.0, -1.0 - 0.9e-6, -1.0 + 0.9e-6, 0.0, 0.25, 0.5}) {
    timeForAll = time;
    Logger::Write("row\n", 6, true);
    EXPECT_EQ(read_file("convergence_data.csv"), expected += "row\n") << time;
  }
  double const before_0 = std::nextafter(0.0, -1.0), after_half = std::nextafter(0.5, 1.0);
  for (double const time : {-1.0 - 1.1e-6, -1.0 + 1.1e-6, before_0, after_half, 0.7}) {
    timeForAll = time;
    Logger::Write("row\n", 6, true);
    EXPECT_EQ(read_file("convergence_data.csv"), expected) << time;
  }
  Logger::Write("1.5,", 0, false);  // unfiltered, the text goes as it stands at any time
  Logger::Write("100%s\n", 0, false);
  EXPECT_EQ(read_file("model_vorn_rates.csv"), "1.5,100%s\n");
}

TEST_F(LoggerTest, EachNumberOpensItsFileAtItsFirstUseAndOthersNone) {
  for (int number = 0; number < 8; ++number) {
    std::string const file = names[number] + ".csv";
    EXPECT_FALSE(fs::exists(file)) << file;
    EXPECT_EQ(Logger::GetFile(number), *handles[number]);
    EXPECT_TRUE(fs::exists(file)) << file;
    EXPECT_EQ(Logger::GetFile(number), *handles[number]);
  }
  for (int const number : {8, -1}) {
    EXPECT_EQ(Logger::GetFile(number), nullptr);
    Logger::Write("row\n", number, false);
  }
}

}  // namespace
