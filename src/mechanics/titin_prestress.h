#pragma once

class Geometry;
class XB_Model;

/// Passive force of titin at rest [pN], with the thick filament stretched by it.
///
/// Solves F(x) / K + M + L + x = actin end for the extension x of titin by fixed-point iteration: F
/// titin's law, K stiffness and M length of the thick filament, L rest length of titin. Ends the
/// run where titin is stiffer than the thick filament, since the iteration then has no end.
double FindTitinForce(XB_Model const& titin, Geometry const& geometry);
