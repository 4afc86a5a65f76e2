// Entry point of the unit tests. Every test runs in an empty directory of its own and finds the
// process-wide state as a program finds it at its start.

#include <deal.II/base/exceptions.h>
#include <deal.II/base/multithread_info.h>
#include <gtest/gtest.h>

#include "support/work_dir.h"

int main(int argc, char** argv) {
  dealii::MultithreadInfo::set_thread_limit(1);
  dealii::deal_II_exceptions::disable_abort_on_exception();
  testing::InitGoogleTest(&argc, argv);
  testing::UnitTest::GetInstance()->listeners().Append(new FreshWorkDir);
  return RUN_ALL_TESTS();
}
