// Would catch: a regulation chosen by the wrong indicator or percentage, segments visited in
// another order or with more than one draw, a lumped state with wrong factors, counts of the wrong
// status, a protocol that moves on late, a dump whose rows are shifted or padded with leftovers.

#include "activation/activation_geeves_6s.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

#include "lattice/geometry_vertebrae.h"
#include "records/filament_data.h"
#include "support/bare_geometry.h"
#include "support/scripted_rand.h"
#include "support/work_dir.h"

namespace {

/// Two thin filaments of 13 nodes, so chains of 7 and 6 sites; 8 segments of 5 sites.
///
/// With steps of 0.1 and the value 1, a variate leads under calcium from 0 to 1 up to 0.5 and to 3
/// up to 0.8, from 3 to 0 up to 0.3, to 4 up to 0.5 and to 6 up to 0.7; under kb from 0 to 1 up to
/// 0.4, from 1 to 0 up to 0.1 and to 4 up to 0.6, from 4 to 1 up to 0.05. Beyond that all stay.
struct Bench {
  explicit Bench(int indicator, std::string const& length = "5") {
    write_parameters("geom_vertebrae.prm", "actin", {"dx_actin = 1", "length_actin = 13"});
    geometry = std::make_unique<GeometryVertebrae>(GeometryParameter_s{});
    geometry->initialize_filament(data);
    write_file("ca_protocol.dat", "0 0.001 0 0 1\n0.5 0.001 0 0 0\n1 0.001 0 0 0\n");
    std::string const structure =
        "subsection structure\n set segment_length = " + length + "\nend\n";
    write_file(
        "CaActivation3x3s.prm",
        structure +
            "subsection Ca_regulation\n set K_Ca = 1\n set k_Ca_off = 5\n set K_Ca_p = 1\n"
            " set k_Ca_off_p = 2\nend\nsubsection Blocket2Closed_regulation\n set K_TnB = 1\n"
            " set k_c_b = 3\nend\nsubsection Closed2Open_regulation\n set K_TnT = 1\n"
            " set k_o_c = 2\nend\n");
    write_file("KbActivationRigid.prm",
               structure +
                   "subsection six_state\n set k1t = 4\n set k_21 = 1\n set k2t = 0\n"
                   " set k_25 = 5\n set ep = 1\n set lam = 10\nend\n");
    model = std::make_unique<ActivationGeeves6SModel>(
        ActivationModelParameter{geometry.get(), nullptr, nullptr, 0.1, indicator, 100});
  }

  /// A step in which the first segments draw these variates, and the others 1.
  void step(std::vector<double> variates, double time = 0.0) {
    variates.resize(8, 1.0);
    ScriptedRand::script(variates);
    model->state_change(data, time, counts);
    EXPECT_EQ(ScriptedRand::unused(), 0u);
  }

  void expect_site(unsigned fibre, unsigned node, unsigned state) const {
    ActinSite_s const& site = data.sites[fibre][node];
    EXPECT_EQ(site.state, state) << fibre << ", " << node;
    EXPECT_EQ(site.k_on_factor, state == 1 ? 0.0 : 1.0) << fibre << ", " << node;
    EXPECT_EQ(site.k_stroke_factor, state == 0 ? 1.0 : 0.0) << fibre << ", " << node;
  }

  void bind(MyosinHead_s& head, unsigned fibre, unsigned node) {
    data.bound_count[fibre][node] = 1;
    data.sites[fibre][node].head = &head;
  }

  /// What the model appends to "TroponinAngles.csv".
  std::vector<int> dump() const {
    FILE* const file = std::fopen("dump", "wb");
    model->write_state_data(data, file, true);
    std::fclose(file);
    std::string const bytes = read_file("dump");
    std::vector<int> numbers(bytes.size() / 4);
    if (numbers.empty()) return numbers;  // `memcpy` takes no null pointer
    std::memcpy(numbers.data(), bytes.data(), bytes.size());
    return numbers;
  }

  std::unique_ptr<GeometryVertebrae> geometry;
  FilamentData data;
  std::unique_ptr<ActivationGeeves6SModel> model;
  std::vector<int> counts;
};

TEST(ActivationGeeves6S, SegmentsDrawChainAfterChainAndSetTheirSites) {
  Bench bench(1);
  bench.step({0.9, 0.7, 0.9, 0.9, 0.9, 0.9, 0.7, 0.9});
  EXPECT_EQ(bench.counts, (std::vector<int>{6, 0, 0, 2, 0, 0, 0, 0, 0}));
  for (unsigned node = 0; node < 13; ++node) {
    bench.expect_site(1, node, node == 10 || node == 12 ? 2 : 1);
    bench.expect_site(2, node, node % 2 == 1 && node < 11 ? 2 : 1);
  }
  bench.step({0.9, 0.6, 0.3, 0.9, 0.9, 0.9, 0.2, 0.9});
  EXPECT_EQ(bench.counts, (std::vector<int>{6, 1, 0, 0, 0, 0, 1, 0, 0}));
  bench.expect_site(1, 10, 0);
  bench.expect_site(1, 8, 1);
  bench.expect_site(2, 9, 1);
}

TEST(ActivationGeeves6S, BoundHeadsHoldTheirSegmentOutOfTheBlockedPosition) {
  Bench bench(1);
  MyosinHead_s head = {};
  bench.step({0.7, 0.7});
  bench.bind(head, 1, 0);
  bench.bind(head, 1, 8);
  bench.step({0.2, 0.2});
  EXPECT_EQ(bench.counts, (std::vector<int>{7, 0, 0, 1, 0, 0, 0, 0, 0}));
  bench.expect_site(1, 4, 2);
  std::vector<double> info;
  bench.model->state_info(info);  // sites by state, then segments by number of bound sites
  EXPECT_EQ(info, (std::vector<double>{0, 35, 5, 0, 0, 0, 7, 0, 1, 0, 0, 0}));
  bench.data.bound_count[1][0] = bench.data.bound_count[1][8] = 0;
  bench.step({0.2});
  EXPECT_EQ(bench.counts[0], 8);
}

TEST(ActivationGeeves6S, WithoutIndicatorTheValueIsKb) {
  Bench bench(0);
  EXPECT_NE(listing_text().find("\t\tCALCIUM PROTOCOL\n\n0.00 0.00 0 0 1.00 \n"),
            std::string::npos);
  EXPECT_NE(listing_text().find("\n\n\t\tKb ACTIVATION - Rigid Chain\n\n"), std::string::npos);
  bench.step({0.39, 0.41});
  EXPECT_EQ(bench.counts, (std::vector<int>{7, 1, 0, 0, 0, 0, 0, 0, 0}));
  bench.expect_site(1, 0, 1);
  bench.step({0.5, 0.39}, 0.5);  // the second row begins behind this step
  EXPECT_EQ(bench.counts, (std::vector<int>{6, 1, 0, 0, 1, 0, 0, 0, 0}));
  bench.expect_site(1, 0, 0);
  bench.step({0.04, 0.5, 0.39}, 0.6);
  EXPECT_EQ(bench.counts, (std::vector<int>{6, 1, 0, 0, 1, 0, 0, 0, 0}));
}

TEST(ActivationGeeves6S, OneDrawDecidesBetweenHealthyAndMutated) {
  write_file("ca_protocol.dat", "0 0.001 0 0 1\n");
  GeometryVertebrae const geometry{GeometryParameter_s{}};
  struct Case_s {
    int indicator;
    int percent;
    double r;
    char const* file;
  };
  for (Case_s const& c : {Case_s{1, 50, 0.49, "CaActivation3x3s.prm"},
                          Case_s{2, 50, 0.51, "CaActivation3x3s_mutated.prm"},
                          Case_s{0, 100, 1.0, "KbActivationRigid.prm"},
                          Case_s{0, 0, 0.001, "KbActivationRigid_mutated.prm"}}) {
    ScriptedRand::script({c.r});
    unsigned const before = ScriptedRand::draws();
    ActivationGeeves6SModel({&geometry, nullptr, nullptr, 0.1, c.indicator, c.percent});
    EXPECT_EQ(ScriptedRand::draws(), before + 1);
    EXPECT_TRUE(std::filesystem::remove(c.file)) << c.file;  // written with its defaults
  }
}

TEST(ActivationGeeves6S, DumpShowsHeadsAndTroponins) {
  MyosinHead_s weak = {}, strong = {};
  weak.state = 4;
  strong.state = 2;
  Bench bench(1);
  bench.bind(weak, 1, 2);
  bench.bind(strong, 2, 7);
  std::vector<int> const bare = {1, 1, 1, 0, 1, 1, 1, 1, 0, 1};
  std::vector<int> expected = {1, 5, 1, 0, 1, 1, 1, 1, 0, 1};
  expected.insert(expected.end(), bare.begin(), bare.end());
  expected.insert(expected.end(), bare.begin(), bare.end());
  expected.insert(expected.end(), {1, 1, 1, 3, 1, 1, 1, 1, 0, 1});
  EXPECT_EQ(bench.dump(), expected);
}

TEST(ActivationGeeves6S, DumpPadsShortChainsWithZeros) {
  Bench const bench(1, "3");  // chains of 3, 2, 3, 2 segments without a place 3
  std::vector<int> expected(36, 1);
  for (int const i : {15, 16, 17, 33, 34, 35}) expected[i] = 0;
  EXPECT_EQ(bench.dump(), expected);
}

TEST(ActivationGeeves6S, LatticeWithoutChainsIsLeftAlone) {
  BareGeometry const lattice;
  Bench bench(1);
  bench.model = std::make_unique<ActivationGeeves6SModel>(
      ActivationModelParameter{&lattice, nullptr, nullptr, 0.1, 1, 100});
  bench.model->state_change(bench.data, 0.0, bench.counts);
  EXPECT_EQ(bench.counts, std::vector<int>(9, 0));
  EXPECT_EQ(bench.data.sites[1][0].state, 0u);
  EXPECT_TRUE(bench.dump().empty());
}

TEST(ActivationGeeves6SDeathTest, NeedsItsProtocol) {
  GeometryVertebrae const geometry{GeometryParameter_s{}};
  ActivationModelParameter const parameter = {&geometry, nullptr, nullptr, 0.1, 1, 100};
  EXPECT_EXIT(ActivationGeeves6SModel model(parameter), testing::ExitedWithCode(1),
              "ca_protocol.dat");
  write_file("ca_protocol.dat", "");
  EXPECT_EXIT(ActivationGeeves6SModel model(parameter), testing::ExitedWithCode(1),
              "ca_protocol.dat.*rows is '0'");
}

}  // namespace
