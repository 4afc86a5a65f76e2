#pragma once
/// Lets an act end in a refusal.

#include <functional>

/// Returns when the act has ended, or would have ended the process with exit status 1.
void try_to(std::function<void()> const& act);
