// Would catch: a component that is not linked or not registered under its name, a second
// registration that is lost, an unknown name that is passed over in silence.

#include "base/factory.h"

#include "activation/activation.h"
#include "control/macro_model.h"
#include "kinetics/model.h"
#include "lattice/geometry.h"
#include "support/expect_refusal.h"

namespace {

struct Shape {
  explicit Shape(int n) : corners(n) {}
  virtual ~Shape() = default;
  int corners;
};

struct Polygon : Shape {
  using Shape::Shape;
};

using Shapes = Factory<Shape, int>;

Shapes* const early_instance = &Shapes::instance();
REGISTER_COMPONENT(Polygon, Shape, int, "Polygon");

TEST(Factory, CreatesByTheExactNameOnly) {
  EXPECT_EQ(&Shapes::instance(), early_instance);
  std::unique_ptr<Shape> const made(Shapes::instance().create_type("Polygon", 5));
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(made->corners, 5);
  for (std::string const name : {"polygon", "Poly", "Polygon ", ""}) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(Shapes::instance().create_type(name, 5), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), name + " is an unknown type\n");
  }
}

TEST(Factory, LaterRegistrationReplacesTheFirst) {
  Shapes& shapes = Shapes::instance();
  shapes.register_type("Solid", &FactoryHelper<Polygon, Shape, int>::create);
  shapes.register_type("Solid", [](int const& n) { return new Shape(2 * n); });
  std::unique_ptr<Shape> const made(shapes.create_type("Solid", 5));
  EXPECT_EQ(made->corners, 10);
}

TEST(Factory, ComponentWithoutAClassEndsTheRunWithFileAndKey) {
  expect_refusal([] { create_component<Shape>("polygon", 5, "shapes.prm", "shape"); },
                 "shapes\\.prm: shape is 'polygon'; accepted: Polygon");
}

template <class Base, class Param>
std::string names_of_family() {
  std::string names;
  for (auto const& type : Factory<Base, Param>::instance().types()) names += type.first + ' ';
  return names;
}

// One that is added belongs here too.
TEST(Factory, FamiliesHaveTheseComponents) {
  EXPECT_EQ((names_of_family<Model, ModelParameter_s>()),
            "BrekAtpaseFiber Duke DukeMyBPC Huxley HuxleyMyBPC Rombel Scheme Tolen9 Vorn ");
  EXPECT_EQ((names_of_family<Geometry, GeometryParameter_s>()), "Flight Simple Tolen Vertebrae ");
  EXPECT_EQ((names_of_family<ActivationModel, ActivationModelParameter>()),
            "FChain Fixed Geeves6S Lumped2S ");
  EXPECT_EQ((names_of_family<MacroModel, MacroModelParameter>()), "MonteCarlo ");
}

}  // namespace
