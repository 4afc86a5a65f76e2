// Hostile input: bytes that libFuzzer, or the replay of what it has found, gives to a reader, which
// must take or refuse them. TAVELO_READER names the reader.

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <string>

#include "activation/ca_activation_3x2s.h"
#include "activation/fchain_model.h"
#include "base/protocol.h"
#include "base/run_state.h"
#include "control/mcModelParameters.h"
#include "control/simulation.h"
#include "control/writing_times.h"
#include "elastic/XB_Models.h"
#include "elastic/XB_StiffnessFunction.h"
#include "elastic/create_law.h"
#include "kinetics/model_duke.h"
#include "kinetics/model_huxley.h"
#include "lattice/geometry_simple.h"
#include "refusal.h"
#include "scheme/scheme.h"
#include "scheme/scheme_checks.h"

namespace {

void write(std::string const& name, std::string const& text) { std::ofstream(name) << text; }

/// The text behind the first byte, which chooses the file.
void read_parameters(std::string const& text) {
  static XB_Model* const law = create_elastic_law("ConstantStiffness", "xb_");
  static std::function<void()> const readers[] = {
      [] { SimParameter("in.prm"); },
      [] { McModelParameters("in.prm"); },
      [] { GeometrySimple({}); },
      [] {
        ModelHuxley({law, "in.prm"});
      },
      [] {
        ModelDuke({law, "in.prm"});
      },
      [] { FChainModel(); },
      [] { CaActivation3x2SModel("in.prm", 1, 1.0); },
      [] { XB_ConstantStiffness("in.prm"); },
      [] { XB_SigmoidalStiffness("in.prm"); },
      [] { XB_ThreeLinearForce("in.prm"); },
  };
  for (char const* const name : {"in.prm", "geom_simple.prm", "mg_old.prm"}) {
    write(name, text.empty() ? "#" : text.substr(1) + "#");
  }
  std::size_t const chosen = text.empty() ? 0 : static_cast<unsigned char>(text[0]);
  readers[chosen % std::size(readers)]();
}

/// A protocol, and behind a line "table" the table that it may name.
void read_protocol(std::string const& text) {
  std::string const mark = "table\n";
  auto const end = text.find("\n" + mark);
  write("protocol.dat", text.substr(0, end == std::string::npos ? end : end + 1));
  write("table.dat", end == std::string::npos ? "0 0\n1 1\n" : text.substr(end + 1 + mark.size()));
  Protocol::TimeOffset = 0.0;
  Protocol protocol("protocol.dat");
  protocol.require_end();
  protocol.WriteToTaveloOutput();
  double time = 0.0;
  for (int step = 0; step < 300; ++step) {
    time += protocol.get_dt();
    protocol.prescribed_at(time, 1.0);
    protocol.refuse_missed_end(time);
    if (protocol.checkForNewProtocol(time)) break;
  }
}

void read_table(std::string const& text) {
  write("xbStiffnessFileName.dat", text);
  XB_StiffnessFunction const law("xb_StiffnessFunction.prm");
  for (double const x : {-1e3, -1.0, 0.0, 0.5, 1e3}) {
    law.GetStiffness(x);
    law.GetForce(x);
    law.GetEnergy(x);
  }
}

void read_times(std::string const& text) {
  write("WritingDistributionSteps.dat", text);
  write("WritingLatticeSteps.dat", text);
  read_writing_times();
  read_lattice_times();
}

/// A kinetic scheme up to its first rates; tables would take most of the time.
void read_scheme(std::string const& text) {
  static XB_Model const* const law = create_elastic_law("ConstantStiffness", "xb_");
  Scheme const scheme(parse_scheme(text, "in.toml"), *law);
  refuse_unsound(scheme);
  cycle_warnings(scheme);
  fastest_state(scheme, 10.0);
}

std::map<std::string, void (*)(std::string const&)> const readers = {
    {"parameters", read_parameters}, {"protocol", read_protocol}, {"scheme", read_scheme},
    {"table", read_table},           {"times", read_times},
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  char place[] = "/tmp/tavelo-fuzz-XXXXXX";
  if (!mkdtemp(place) || chdir(place) != 0) std::abort();
  fOutputFile = std::fopen("TaveloOutput.lst", "wt");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(unsigned char const* data, std::size_t size) {
  char const* const name = std::getenv("TAVELO_READER");
  auto const reader = readers.find(name ? name : "");
  if (reader == readers.end()) std::abort();
  run_facts = {};
  std::rewind(fOutputFile);
  try_to([&] { reader->second({reinterpret_cast<char const*>(data), size}); });
  return 0;
}
