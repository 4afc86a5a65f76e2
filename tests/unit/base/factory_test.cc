// Would catch: a component that is not linked or not registered under its name, a second
// registration that is lost, an unknown name that is passed over in silence.

#include "base/factory.h"

#include <gtest/gtest.h>

#include "activation/activation.h"
#include "control/macro_model.h"
#include "elastic/XB_Models.h"
#include "elastic/create_law.h"
#include "kinetics/model.h"
#include "lattice/geometry.h"
#include "support/work_dir.h"

namespace {

struct Shape {
  explicit Shape(int n) : corners(n) {}
  virtual ~Shape() = default;
  int corners;
};

struct Polygon : Shape {
  using Shape::Shape;
};

struct Prism : Shape {
  explicit Prism(int n) : Shape(2 * n) {}
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
  shapes.register_type("Solid", &FactoryHelper<Prism, Shape, int>::create);
  std::unique_ptr<Shape> const made(shapes.create_type("Solid", 5));
  EXPECT_EQ(made->corners, 10);
}

TEST(Factory, ComponentWithoutAClassEndsTheRunWithFileAndKey) {
  EXPECT_EXIT(create_component<Shape>("polygon", 5, "shapes.prm", "shape"),
              testing::ExitedWithCode(1), "shapes\\.prm: shape is 'polygon'; accepted: Polygon");
}

/// The family's component of that name, made with default parameters.
template <class Base, class Param>
std::unique_ptr<Base> create(std::string const& name, Param const& param) {
  std::unique_ptr<Base> component(Factory<Base, Param>::instance().create_type(name, param));
  EXPECT_NE(component, nullptr) << name;
  return component;
}

// Names of components that exist; one that is added belongs here too.
TEST(Factory, EveryComponentCanBeCreatedByItsName) {
  testing::internal::CaptureStdout();  // greetings of the components and
  testing::internal::CaptureStderr();  // warnings of files that are missing
  ModelParameter_s model_parameter;
  model_parameter.xb_model = create_elastic_law("ConstantStiffness", "xb_");
  std::vector<std::unique_ptr<Model>> models;
  for (char const* name : {"Huxley", "HuxleyMyBPC"}) {
    models.push_back(create<Model>(name, model_parameter));
  }
  write_parameters("numeric_mc.prm", "monte_carlo", {"geometry = Vertebrae", "filaments = 1"});
  Model const* const huxley = models[0].get();
  create<MacroModel>("MonteCarlo", MacroModelParameter{huxley, huxley, models[1].get()});
  std::unique_ptr<Geometry> geometry;
  for (char const* name : {"Vertebrae"}) {
    geometry = create<Geometry>(name, GeometryParameter_s{});
  }
  write_file("ca_protocol.dat", "0 1 0 0 0\n");
  ActivationModelParameter const parameter = {geometry.get(), huxley, huxley, 0.001, 0, 100};
  for (char const* name : {"Fixed"}) create<ActivationModel>(name, parameter);
  testing::internal::GetCapturedStdout();
  testing::internal::GetCapturedStderr();
}

}  // namespace
