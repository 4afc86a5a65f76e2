#pragma once
/// Registry that turns a name from a parameter file into an object.
///
/// One registry exists for each family of components (kinetic models, macro models, lattices,
/// activation models). A concrete class enters it before `main` by one line in its own source file:
///
///     REGISTER_COMPONENT(ModelHuxley, Model, ModelParameter_s, "Huxley");
///
/// or the short form of its family (here `REGISTER_MODEL`), and needs no other edit in the program.

#include <cstdio>
#include <map>
#include <memory>
#include <string>

#include "base/diagnostics.h"

template <class Base, class Param>
class Factory {
 public:
  using Creator = Base* (*)(Param const&);

  /// The family's one registry. It comes into being at first use, so that registration during
  /// static initialisation is safe in any order.
  static Factory& instance() {
    static Factory factory;
    return factory;
  }

  Factory(Factory const&) = delete;
  Factory& operator=(Factory const&) = delete;

  /// Enters a creator; a name registered before is replaced.
  void register_type(std::string const& name, Creator creator) { creators[name] = creator; }

  /// Creates an object, which the caller owns. An unknown name is reported on standard output and
  /// gives null.
  Base* create_type(std::string const& name, Param const& param) const {
    auto const found = creators.find(name);
    if (found != creators.end()) return found->second(param);
    std::printf("%s is an unknown type\n", name.c_str());
    return nullptr;
  }

  /// All registered names with their creators, in alphabetical order.
  std::map<std::string, Creator> const& types() const { return creators; }

 private:
  Factory() = default;

  std::map<std::string, Creator> creators;
};

/// The names of a family in alphabetical order.
template <class Base, class Param>
std::string known_types(std::string const& separator) {
  std::string known;
  for (auto const& type : Factory<Base, Param>::instance().types()) {
    known += (known.empty() ? "" : separator) + type.first;
  }
  return known;
}

template <class Derived, class Base, class Param>
class FactoryHelper {
 public:
  static Base* create(Param const& param) { return new Derived(param); }
};

/// Creates the component that `key` in `file` asks for; a name without a class ends the run.
template <class Base, class Param>
std::unique_ptr<Base> create_component(std::string const& name, Param const& param,
                                       std::string const& file, std::string const& key) {
  std::unique_ptr<Base> component(Factory<Base, Param>::instance().create_type(name, param));
  if (component) return component;
  refuse(file, key, name, known_types<Base, Param>(", "));
}

#define REGISTER_COMPONENT(Derived, Base, Param, name)                                            \
  static bool const registered_##Derived = [] {                                                   \
    Factory<Base, Param>::instance().register_type(std::string(name),                             \
                                                   &FactoryHelper<Derived, Base, Param>::create); \
    return true;                                                                                  \
  }()
