#include "scheme/scheme_json.h"

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

constexpr unsigned intervals = 400;

/// Grows by one when a key changes its meaning.
constexpr int format = 1;

std::vector<double> strains(Scheme const& scheme) {
  std::vector<double> found;
  double const step = (scheme.last_strain() - scheme.first_strain()) / intervals;
  for (unsigned i = 0; i <= intervals; ++i) found.push_back(scheme.first_strain() + i * step);
  return found;
}

template <class Function>
Json over(std::vector<double> const& x, Function function) {
  Json values = Json::array();
  for (double const x_i : x) values.push_back(function(x_i));
  return values;
}

Json factors(SiteFactors_s const& site) {
  Json names = Json::array();
  if (site.open) names.push_back("open");
  if (site.on) names.push_back("on");
  if (site.stroke) names.push_back("stroke");
  if (site.off) names.push_back("off");
  return names;
}

Json parameters(Scheme const& scheme) {
  Json found = Json::array();
  for (SchemeParameter_s const& parameter : scheme.as_read().parameters) {
    found.push_back({{"name", parameter.name},
                     {"value", scheme.values().at(parameter.name)},
                     {"unit", parameter.unit},
                     {"as_read", parameter.solution ? "solution of " + parameter.solution->law.text
                                                    : parameter.formula.text},
                     {"about", parameter.about}});
  }
  return found;
}

Json states(Scheme const& scheme, std::vector<double> const& x) {
  Json found = Json::array();
  for (unsigned s = 0; s < scheme.n_states(); ++s) {
    SchemeState_s const& state = scheme.as_read().states[s];
    Json entry = {{"name", state.name},
                  {"attached", state.attached},
                  {"lever", scheme.lever(s)},
                  {"colour", state.colour},
                  {"energy_as_read", state.energy.text}};
    if (scheme.has_energy(s))
      entry["energy"] = over(x, [&](double y) { return scheme.energy(s, y); });
    if (state.attached) entry["force"] = over(x, [&](double y) { return scheme.force(s, y); });
    found.push_back(entry);
  }
  return found;
}

Json rates(Scheme const& scheme, std::vector<double> const& x) {
  Json found = Json::array();
  for (Scheme::Rate_s const& rate : scheme.rates()) {
    SchemeTransition_s const& transition = scheme.as_read().transitions[rate.transition];
    found.push_back(
        {{"from", rate.from},
         {"to", rate.to},
         {"transition", rate.transition},
         {"reverse", rate.is_reverse},
         {"as_read", rate.is_reverse ? transition.reverse_rate.text : transition.rate.text},
         {"site", factors(rate.site)},
         {"binding", !rate.is_reverse && transition.binding.has_value()},
         {"fuel", transition.fuel},
         {"follows_time", rate.follows_time},
         {"values", over(x, [&](double y) { return scheme.evaluate(rate, y); })}});
  }
  return found;
}

}  // namespace

std::string scheme_json(Scheme const& scheme, std::string const& law,
                        std::vector<std::string> const& checks) {
  SchemeFile const& file = scheme.as_read();
  auto const x = strains(scheme);
  Json const whole = {{"format", format},
                      {"file", file.file},
                      {"name", file.name},
                      {"source", file.source},
                      {"law", law},
                      {"exact", file.exact},
                      {"follows_calcium", scheme.follows_calcium()},
                      {"kBT", scheme.kBT()},
                      {"energy_per_ATP", scheme.energy_per_ATP()},
                      {"parameters", parameters(scheme)},
                      {"strain", x},
                      {"states", states(scheme, x)},
                      {"rates", rates(scheme, x)},
                      {"checks", checks}};
  return whole.dump(1, ' ', false, Json::error_handler_t::replace) + '\n';
}
