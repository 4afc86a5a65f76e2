"""Fits: parameters from data, with intervals. `tavelo-fit` on the command line, `Fit` in Python."""

from .fit import Fit

__all__ = ["Fit"]
