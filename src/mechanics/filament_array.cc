#include "mechanics/filament_array.h"

FilamentArray::FilamentArray(unsigned full_sarcomer)
    : in_series(full_sarcomer > 0), n_series(in_series ? 2 * full_sarcomer : 1) {}

void FilamentArray::add(std::unique_ptr<Filament> filament) {
  filaments.push_back(std::move(filament));
}

unsigned FilamentArray::n_attached() const {
  unsigned sum = 0;
  for (auto const& filament : filaments) sum += filament->n_attached();
  return sum;
}

unsigned FilamentArray::number_dofs() const {
  unsigned offset = 0;
  for (auto const& filament : filaments) {
    filament->prepare_nodes();
    filament->set_offset(offset);
    offset += filament->n_dofs();
  }
  return offset + 1;
}

std::string FilamentArray::place_of(unsigned dof) const {
  std::size_t i = size() - 1;
  if (dof > filaments[i]->get_bnd_dof(1, filaments[i]->n_fibre() - 1)) {
    return "the outer end of the series elastic element";
  }
  while (filaments[i]->get_bnd_dof(0, 0) > dof) --i;
  bool const is_thick = dof <= filaments[i]->get_bnd_dof(1, 0);
  return std::string(is_thick ? "the thick filament" : "a thin filament") + " of half-sarcomere " +
         std::to_string(i % n_series + 1) + " of row " + std::to_string(i / n_series + 1);
}
