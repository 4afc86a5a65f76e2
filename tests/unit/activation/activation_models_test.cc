// Would catch: segments or sites drawn in another order or with more than one draw, the sites of a
// segment that differ or lie elsewhere, wrong factors of a state, the wrong ratio or value of the
// protocol, a bound head that doesn't hold its segment, counts of the wrong state, a regulation
// chosen by the wrong indicator or percentage, a protocol that moves on late, a shifted dump.

#include <filesystem>

#include "activation/activation_2s.h"
#include "support/bare_geometry.h"
#include "support/expect_refusal.h"
#include "support/regulated_filament.h"

namespace {

/// The sites of both fibres in order. With state, binding factor and factor of the stroke: o open
/// (0, 1, 1), c closed (2, 1, 0), B blocked (1, 0, 0), b blocked with first factors (1, 1, 1),
/// x open but switched off (0, 0, 0).
std::string sites(RegulatedFilament const& filament) {
  std::map<std::tuple<unsigned, double, double>, char> const letters = {
      {{0, 1, 1}, 'o'}, {{2, 1, 0}, 'c'}, {{1, 0, 0}, 'B'}, {{1, 1, 1}, 'b'}, {{0, 0, 0}, 'x'}};
  std::string text;
  for (unsigned const fibre : {1u, 2u}) {
    for (ActinSite_s const& site : filament.data.sites[fibre]) {
      auto const found = letters.find({site.state, site.k_on_factor, site.k_stroke_factor});
      text += found == letters.end() ? '?' : found->second;
    }
    text += ' ';
  }
  return text;
}

/// The 32-bit integers of a dump, which are below 10, as digits: four chains.
std::string dumped(RegulatedFilament const& filament) {
  std::string const bytes = filament.dump();
  std::string digits;
  for (std::size_t i = 0; i < bytes.size(); i += 4) {
    if (i % (bytes.size() / 4) == 0) digits += ' ';
    digits += static_cast<char>('0' + bytes[i]);
  }
  return digits;
}

using Info = std::vector<double>;
using Counts = std::vector<int>;

// Fixed

/// `row` is the protocol from its type on.
RegulatedFilament fixed(std::string const& row) {
  write_file("ca_protocol.dat", "0 1 0 " + row);
  return {"Fixed", 4, 8, 1.0};
}

TEST(ActivationFixed, DrawsSiteBySiteFromFibreOneUntilTheValueChanges) {
  RegulatedFilament filament = fixed("0 0.5");
  MyosinHead_s head = {};
  filament.data.sites[2][1] = {1, 0.3, 0.3, 0.4, &head};
  filament.step({{0, 0.4}, {1, 0.6}, {2, 0.4}, {3, 0.4}, {5, 0.4}});
  EXPECT_EQ(sites(filament), "xoxx oxoo ");
  EXPECT_EQ(filament.info(), (Info{4, 4}));
  EXPECT_EQ(filament.data.sites[2][1].k_off_factor, 0.4);
  EXPECT_EQ(filament.data.sites[2][1].head, &head);
  filament.n_draws = 0;
  filament.step({}, 1.0);
  EXPECT_EQ(sites(filament), "xoxx oxoo ");
  RegulatedFilament rising = fixed("1 0.5 0.5");
  for (double const time : {0.0, 1.0}) rising.step({{2, 0.7}}, time);
  EXPECT_EQ(sites(rising), "ooxo oooo ");  // a draw of 1 isn't below the value 1
  EXPECT_EQ(rising.info(), (Info{1, 7}));
}

// Lumped2S

/// Segments of three sites. As it stands k_12 dt = 0.4; at the calcium 1e-2, k1t Ca = 1, q = 2 and
/// L = 4 / (2.5 * 4) = 0.4: a segment switches off below 0.16.
RegulatedFilament lumped(std::string const& settings = "k1t=100 k2t=200 ep=0.5 lam=4 k_12=4") {
  write_file("ca_protocol.dat", "0 0.001 0 0 -2\n0.5 0.001 0 0 -9\n1 0.001 0 0 0\n");
  write_settings("activ_2s.prm", "structure: segment_length=3; two_state: " + settings);
  return {"Lumped2S", 12, 8, 0.1};
}

TEST(ActivationLumped2S, RatioFollowsTheTwoIons) {
  auto const ratio = [](std::string const& settings, double Ca) {
    RegulatedFilament const filament = lumped(settings);
    return dynamic_cast<Activation2SModel const&>(*filament.model).get_lti(Ca);
  };
  EXPECT_NEAR(ratio("lam=8", 1e12), 1.0 / 8.0, 1e-12);
  EXPECT_DOUBLE_EQ(ratio("lam=8 ep=0.01", 1e-6), (1.0 + 1.24 + 0.1984) / ((0.0124 + 0.1984) * 8.0));
  EXPECT_NEAR(ratio("e0=0.5 ep=0.02 lam=4", 0.0), 1.0 / (0.5 * 0.02 * 4.0), 1e-12);
}

TEST(ActivationLumped2S, OneDrawServesBothMoves) {
  RegulatedFilament filament = lumped();
  filament.step({{0, 0.39}, {1, 0.41}, {2, 0.15}});  // on, still off, on and off again
  EXPECT_EQ(sites(filament), "oBoBoBbbbbbb bbbbbbbbbbbb ");
  EXPECT_EQ(filament.info(), (Info{21, 3}));
  filament.step({{0, 0.17}});
  EXPECT_EQ(sites(filament), "oBoBoBbbbbbb bbbbbbbbbbbb ");
  filament.step({{0, 0.15}}, 0.7);  // the protocol's later rows don't count
  EXPECT_EQ(sites(filament), "BBBBBBbbbbbb bbbbbbbbbbbb ");
  filament.data.bound_count[2][5] = 1;
  filament.step({{6, 0.01}, {7, 0.01}});  // the bound head holds its segment on
  EXPECT_EQ(sites(filament), "BBBBBBbbbbbb bobobobBbBbB ");
}

// Geeves6S

/// Chains of 7 and 6 sites; 8 segments of 5 sites, or as `length` says.
///
/// With steps of 0.1 and the value 1, a variate leads under calcium from 0 to 1 up to 0.5 and to 3
/// up to 0.8, from 3 to 0 up to 0.3, to 4 up to 0.5 and to 6 up to 0.7; under kb from 0 to 1 up to
/// 0.4, from 1 to 0 up to 0.1 and to 4 up to 0.6, from 4 to 1 up to 0.05. Beyond that all stay.
RegulatedFilament geeves(int indicator, std::string const& length = "5") {
  std::string const structure = "structure: segment_length=" + length;
  write_file("ca_protocol.dat", "0 0.001 0 0 1\n0.5 0.001 0 0 0\n1 0.001 0 0 0\n");
  write_settings(
      "CaActivation3x3s.prm",
      structure +
          "; Ca_regulation: K_Ca=1 k_Ca_off=5 K_Ca_p=1 k_Ca_off_p=2; "
          "Blocket2Closed_regulation: K_TnB=1 k_c_b=3; Closed2Open_regulation: K_TnT=1 k_o_c=2");
  write_settings("KbActivationRigid.prm",
                 structure + "; six_state: k1t=4 k_21=1 k2t=0 k_25=5 ep=1 lam=10");
  return {"Geeves6S", 13, 8, 0.1, indicator};
}

TEST(ActivationGeeves6S, SegmentsDrawChainAfterChainAndSetTheirSites) {
  RegulatedFilament filament = geeves(1);
  filament.step({{1, 0.7}, {6, 0.7}});
  EXPECT_EQ(filament.counts, (Counts{6, 0, 0, 2, 0, 0, 0, 0, 0}));
  EXPECT_EQ(sites(filament), "BBBBBBBBBBcBc BcBcBcBcBcBBB ");
  filament.step({{1, 0.6}, {2, 0.3}, {6, 0.2}});
  EXPECT_EQ(filament.counts, (Counts{6, 1, 0, 0, 0, 0, 1, 0, 0}));
  EXPECT_EQ(sites(filament), "BBBBBBBBBBoBo BBBBBBBBBBBBB ");
}

TEST(ActivationGeeves6S, BoundHeadsHoldTheirSegmentOutOfTheBlockedPosition) {
  RegulatedFilament filament = geeves(1);
  filament.step({{0, 0.7}, {1, 0.7}});
  MyosinHead_s first = {}, second = {};
  filament.bind(first, 1, 0);
  filament.bind(second, 1, 8);
  filament.step({{0, 0.2}, {1, 0.2}});
  EXPECT_EQ(filament.counts, (Counts{7, 0, 0, 1, 0, 0, 0, 0, 0}));
  EXPECT_EQ(sites(filament), "cBcBcBcBcBBBB BBBBBBBBBBBBB ");
  // Sites by state, then segments by number of bound sites.
  EXPECT_EQ(filament.info(), (Info{0, 35, 5, 0, 0, 0, 7, 0, 1, 0, 0, 0}));
  filament.data.attached.clear();
  filament.step({{0, 0.2}});
  EXPECT_EQ(filament.info(), (Info{0, 40, 0, 0, 0, 0, 8, 0, 0, 0, 0, 0}));
}

TEST(ActivationGeeves6S, WithoutIndicatorTheValueIsKb) {
  RegulatedFilament filament = geeves(0);
  filament.step({{0, 0.39}, {1, 0.41}});
  EXPECT_EQ(filament.counts, (Counts{7, 1, 0, 0, 0, 0, 0, 0, 0}));
  filament.step({{0, 0.5}, {1, 0.39}}, 0.5);  // the second row begins behind this step
  EXPECT_EQ(filament.counts, (Counts{6, 1, 0, 0, 1, 0, 0, 0, 0}));
  EXPECT_EQ(sites(filament), "oBoBoBoBoBBBB BBBBBBBBBBBBB ");
  filament.step({{0, 0.04}, {1, 0.5}, {2, 0.39}}, 0.6);
  EXPECT_EQ(filament.counts, (Counts{6, 1, 0, 0, 1, 0, 0, 0, 0}));
}

TEST(ActivationGeeves6S, OneDrawDecidesBetweenHealthyAndMutated) {
  write_file("ca_protocol.dat", "0 1 0 0 1\n");
  for (auto const& [indicator, percent, r, file] :
       {std::make_tuple(1, 50, 0.49, "CaActivation3x3s.prm"),
        std::make_tuple(2, 50, 0.51, "CaActivation3x3s_mutated.prm"),
        std::make_tuple(0, 100, 1.0, "KbActivationRigid.prm"),
        std::make_tuple(0, 0, 0.001, "KbActivationRigid_mutated.prm")}) {
    RegulatedFilament("Geeves6S", 13, 8, 0.1, indicator, percent, {r});
    EXPECT_TRUE(std::filesystem::remove(file)) << file;  // written with its defaults
  }
}

TEST(ActivationGeeves6S, DumpShowsHeadsAndTroponinsAndPadsShortChains) {
  MyosinHead_s weak = {}, strong = {};
  weak.state = 4;
  strong.state = 2;
  RegulatedFilament filament = geeves(1);
  filament.bind(weak, 1, 2);
  filament.bind(strong, 2, 7);
  EXPECT_EQ(dumped(filament), " 1510111101 1110111101 1110111101 1113111101");
  // Chains of 3, 2, 3, 2 segments without a place 3.
  EXPECT_EQ(dumped(geeves(1, "3")), " 111111111 111111000 111111111 111111000");
}

TEST(ActivationGeeves6S, LatticeWithoutChainsIsLeftAloneOrRefused) {
  BareGeometry const lattice;
  ActivationModelParameter const parameter = {&lattice, nullptr, nullptr, 1, 100};
  RegulatedFilament filament = geeves(1);
  filament.model = create_component<ActivationModel>("Geeves6S", parameter, "", "");
  filament.n_draws = 0;
  filament.step();
  EXPECT_EQ(filament.counts, Counts(9, 0));
  EXPECT_TRUE(filament.dump().empty());
  expect_refusal([&] { create_component<ActivationModel>("FChain", parameter, "", ""); },
                 "four chains");
}

}  // namespace
