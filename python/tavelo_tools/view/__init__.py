"""Shows the lattice of a run in three dimensions: a page for a browser, and files for ParaView."""
