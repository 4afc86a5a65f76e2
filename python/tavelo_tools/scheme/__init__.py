"""Kinetic schemes: what the program tells of one, drawn. `tavelo-scheme` on the command line."""
