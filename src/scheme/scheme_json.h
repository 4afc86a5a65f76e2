#pragma once
/// A scheme with its rates and free energies over the strain as JSON, for whoever draws it.

#include <string>
#include <vector>

#include "scheme/scheme.h"

/// `law` is the name of the crossbridge law, `checks` what a check of the scheme told.
std::string scheme_json(Scheme const& scheme, std::string const& law,
                        std::vector<std::string> const& checks);
