"""Fits: parameters from data, with intervals. `tavelo-fit` on the command line, `ParameterFit` in Python."""

from .fit import ParameterFit

__all__ = ["ParameterFit"]
