#pragma once
/// Small numeric tools of the rate integrals, in the pointer form of the routines that use them.

/// exp(x), held at its values at x = -70 and x = 70 beyond them.
double exprot(double x);

/// Dawson's integral.
///
/// Law:     F(x) = exp(-x^2) * integral from 0 to x of exp(t^2) dt; odd, and 0 at 0
/// Source:  G. B. Rybicki, Computers in Physics 3 (1989) 85: sampling with step 0.4, six terms on
///          each side; a series below 0.2
/// Accuracy: relative 5e-7
double dawson_(double const* x);

/// The nearest integer, ties away from 0.
long i_dnnt(double const* x);

/// |a| with the sign of b; a b of 0 counts as positive.
double d_sign(double const* a, double const* b);

/// `exprot` in the same form, which no rate needs.
double exprot_(double const* x);
