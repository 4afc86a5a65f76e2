#pragma once
/// Elastic laws by name.

#include <string>

class XB_Model;

/// Creates the law of that name from the file `prefix` + name + ".prm"; null for an unknown name.
/// The law lives to the end of the process: models and filaments keep plain pointers to it.
XB_Model* create_elastic_law(std::string const& name, std::string const& prefix);

/// The same for what only resists: refuses a law whose stiffness without extension is below 0.
XB_Model* create_passive_law(std::string const& name, std::string const& prefix);
