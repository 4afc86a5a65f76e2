// Would catch: a wrong term in a row's law, a row taken too early or too late, time offsets added
// twice or to the wrong row, a wrong listing, rows that are half read instead of refused.

#include "base/protocol.h"

#include <cmath>

#include "support/expect_refusal.h"
#include "support/work_dir.h"

namespace {

Protocol make_protocol(std::string const& rows) {
  write_file("protocol.dat", rows);
  return Protocol("protocol.dat");
}

double value_at(Protocol& protocol, double time, double last_response = 0.0) {
  unsigned mode = 99;
  double value = -99.0;
  EXPECT_TRUE(protocol.get_value(time, mode, value, last_response));
  return value;
}

/// What the protocol prints when asked for a new row, and "end" or "on" for its answer.
std::string next_row(Protocol& protocol, double time) {
  testing::internal::CaptureStdout();
  bool const end = protocol.checkForNewProtocol(time);
  return testing::internal::GetCapturedStdout() + (end ? "end" : "on");
}

std::string const end_message = "Kraj - poslednji red protokola dostignut\n";

// The twitch with time constants 0.2 and 0.1 is y - y^2 with y = exp(-tau/0.2): its maximum 1/4
// stands at y = 1/2. The log-normal law has L = 1 at tau = 0.01 and L = 2 at 0.1.
TEST(Protocol, EveryLawFollowsItsClosedForm) {
  double const ln2 = std::log(2.0);
  struct {
    std::string row;
    std::vector<std::pair<double, double>> course;  // time, value
  } const laws[] = {
      {"1 0.1 0 0 7.5", {{3, 7.5}}},
      {"0.5 0.1 0 1 -4 3", {{0.5, 3}, {0.75, 2}}},
      {"1 0.1 0 2 4 0.5 2 0.5", {{1, 6}, {2, -2}}},
      {"1 0.1 0 2 4 0.25 2 0", {{4 / 3.0, 4}}},
      {"1 0.1 0 3 0.2 0.1 8 3", {{1, 3}, {1 + 0.2 * ln2, 11}, {1 + 0.4 * ln2, 9}}},
      // Time constants 3 and 1: y^(1/3) - y has its peak 2 / (3 sqrt(3)) where y^(2/3) = 1/3.
      {"1 0.1 0 3 3 1 8 3", {{1 + 1.5 * std::log(3.0), 11}}},
      {"0 0.1 0 5 3 0.6931471805599453 2 5", {{0.1, 7.5}, {0.01, 15 * std::exp(-0.5)}}},
      {"1 0.1 0 999 t.dat", {{2, 3}, {3.5, 4.5}, {0, -1}, {6, 2}}},
      {"1 0.1 0 77", {{6, 0}}}};
  write_file("t.dat", "0 1\n\n2 5\n3 4\n");
  for (auto const& law : laws) {
    Protocol protocol = make_protocol(law.row + "\n900 1 0 0 0\n");
    for (auto const& [time, expected] : law.course) {
      EXPECT_NEAR(value_at(protocol, time), expected, 1e-12) << law.row << " at " << time;
    }
  }
}

TEST(Protocol, LogNormalIsZeroAtFirstAndEveryValueHasItsRowAtOnce) {
  Protocol protocol = make_protocol("1 0.1 0 5 3 1 2 5\n3 0.1 0 0 4\n9 0.1 0 0 0\n");
  EXPECT_EQ(value_at(protocol, 1.00109999), 0.0);
  EXPECT_GT(value_at(protocol, 1.00110001), 0.0);
  EXPECT_DOUBLE_EQ(value_at(protocol, 1.1), 7.5);
  std::vector<std::string> const rows = read_lines("Ca_function.csv");
  ASSERT_EQ(rows.size(), 4u);
  EXPECT_EQ(rows[0], "Time, Calcium");
  EXPECT_EQ(rows[1], "1.099990e-03,0.000000e+00");
  EXPECT_EQ(rows[3], "1.000000e-01,7.500000e+00");
  EXPECT_EQ(next_row(protocol, 3.0), "Novi protocol\non");
  value_at(protocol, 3.0);
  EXPECT_EQ(read_lines("Ca_function.csv").size(), 4u);  // no other law writes
}

TEST(Protocol, SwitchesAtTheStartOfTheNextRowAndEndsWithTheLast) {
  Protocol protocol = make_protocol("-1 0.1 0 0 1\n0 0.2 1 1 10 0\n2 0.3 0 0 3\n");
  EXPECT_EQ(next_row(protocol, -1e-9), "on");  // short by 1e-9: not yet
  EXPECT_EQ(protocol.get_dt(), 0.1);
  EXPECT_EQ(next_row(protocol, -0.99e-9), "Novi protocol\non");
  EXPECT_EQ(protocol.get_dt(), 0.2);
  unsigned mode = 99;
  double value = 0.0;
  EXPECT_TRUE(protocol.get_value(0.37, mode, value, 0.0));
  EXPECT_EQ(mode, 1u);
  EXPECT_DOUBLE_EQ(value, 3.7);  // counted from the row's start
  EXPECT_EQ(next_row(protocol, 2.1), "Novi protocol\n" + end_message + "end");
  EXPECT_EQ(next_row(protocol, 2.1), "end");
  EXPECT_EQ(protocol.get_dt(), 0.3);
}

TEST(Protocol, RampFromThePresentStateShiftsAllLaterRows) {
  Protocol protocol =
      make_protocol("0 0.1 0 0 5\n1 0.1 0 4 2 10\n0.5 0.1 0 1 3 1\n2 0.1 0 0 9\n4 0.1 0 0 0\n");
  EXPECT_EQ(next_row(protocol, 1.0), "Novi protocol\non");
  EXPECT_EQ(Protocol::TimeOffset, 0.0);
  // From 4 to 10 at 2 per time unit: three time units from the first question on.
  EXPECT_DOUBLE_EQ(value_at(protocol, 1.25, 4.0), 4.5);
  EXPECT_DOUBLE_EQ(Protocol::TimeOffset, 4.25);
  EXPECT_DOUBLE_EQ(value_at(protocol, 1.5, -100.0), 5.0);
  EXPECT_DOUBLE_EQ(Protocol::TimeOffset, 4.25);
  // The rows behind it stand relative to its end.
  EXPECT_EQ(next_row(protocol, 4.7), "on");
  EXPECT_EQ(next_row(protocol, 4.75), "Novi protocol\non");
  EXPECT_DOUBLE_EQ(value_at(protocol, 5.75), 4.0);
  EXPECT_EQ(next_row(protocol, 6.2), "on");
  EXPECT_EQ(next_row(protocol, 6.25), "Novi protocol\non");
  EXPECT_EQ(next_row(protocol, 8.2), "on");
  EXPECT_EQ(next_row(protocol, 8.25), "Novi protocol\n" + end_message + "end");
  // A target below: the distance counts without its sign.
  Protocol away = make_protocol("0 0.1 0 4 2 10\n1 0.1 0 0 0\n");
  EXPECT_DOUBLE_EQ(value_at(away, 0.5, 16.0), 17.0);
  EXPECT_DOUBLE_EQ(Protocol::TimeOffset, 3.5);
}

TEST(Protocol, TableEndsTheRunByItself) {
  write_file("table.dat", "0 1\n3 4\n");
  Protocol protocol = make_protocol("0 0.1 0 999 table.dat\n1 0.1 0 0 0\n");
  EXPECT_EQ(next_row(protocol, 1.0), "on");  // rows behind it are never reached
  EXPECT_EQ(next_row(protocol, 3.0 - 1.1e-7), "on");
  EXPECT_EQ(next_row(protocol, 3.0 - 0.9e-7), end_message + "end");
  EXPECT_EQ(next_row(protocol, 3.0 + 0.9e-7), end_message + "end");
  EXPECT_EQ(next_row(protocol, 3.0 + 1.1e-7), "on");
  protocol.refuse_missed_end(3.0 + 0.9e-7);
  expect_refusal([&] { protocol.refuse_missed_end(3.1); }, "table.dat.*3\\.1");
}

TEST(Protocol, ListsTheRowsThatHaveAFormat) {
  write_file("table.dat", "0 1\n3 4\n");
  make_protocol("0 0.5 0 2 1 2 3 4\n3 0.5 0 3 1 2 3 4\n4 0.5 1 4 2 -7\n6 0.5 0 999 table.dat\n")
      .WriteToTaveloOutput();
  EXPECT_EQ(listing_text(),
            "0.00 0.50 0 2 1.00 2.00 3.00 4.00 \n4.00 0.50 1 4 2.00 -7.00 \ntable.dat \n\n");
}

TEST(Protocol, RefusesRowsThatItCannotUse) {
  std::vector<std::pair<std::string, std::string>> const cases = {
      {"0 0.1 0 0 1\n\n1 0.1 zero 0 1\n", "protocol\\.dat, line 3: mode is 'zero'"},
      {"one 0.1 0 0 1\n", "protocol\\.dat, line 1: start is 'one'"},
      {"0 0 0 0 1\n", "line 1: step is '0"},
      {"0 nan 0 0 1\n", "line 1: step is 'nan'"},
      {"0 0.1 -1 0 1\n", "line 1: mode is '-1'"},
      {"0 0.1 0\n", "line 1: type is ''"},
      {"0 0.1 0 1 5\n", "line 1: p1 is ''"},
      {"0 0.1 0 3 1 2 3\n", "line 1: p3 is ''"},
      {"0 0.1 0 0 1\n-0.5 0.1 0 0 1\n", "line 2: start is '-0.5"},
      {"0 0.1 0 4 0 1\n", "line 1: p0 is '0"},
      {" \n\n", "protocol\\.dat: .*rows is '0'"},
      {"0 0.1 0 999\n", "line 1: table file is ''"},
      {"0 0.1 0 999 none.dat\n", "protocol\\.dat, line 1: none\\.dat"},
      {"0 0.1 0 999 short.dat\n", "short\\.dat: .*rows is '1'"},
      {"0 0.1 0 999 words.dat\n", "words\\.dat, line 2: value is 'four'"},
      {"0 0.1 0 999 flat.dat\n", "flat\\.dat, line 3: time is '1"}};
  write_file("short.dat", "0 1\n\n");
  write_file("words.dat", "0 1\n3 four\n");
  write_file("flat.dat", "0 1\n1 2\n1 3\n");
  for (auto const& [rows, message] : cases) {
    expect_refusal([&, &text = rows] { make_protocol(text); }, message);
  }
  expect_refusal([] { Protocol("none.dat"); }, "none\\.dat: can't be read");
}

TEST(Protocol, NeedsAnEndWhenItDrivesTheRun) {
  write_file("table.dat", "0 1\n3 4\n");
  make_protocol("0 0.1 0 999 table.dat\n").require_end();
  make_protocol("0 0.1 0 0 1\n0 0.1 0 0 1\n").require_end();
  Protocol const single = make_protocol("0 0.1 0 0 1\n");
  expect_refusal([&] { single.require_end(); }, "protocol\\.dat: .*rows is '1'");
}

}  // namespace
