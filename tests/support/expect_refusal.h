#pragma once
/// An act that must end the program with exit status 1 and a message, on either output.

#include <gtest/gtest.h>

#include <string>

#include "support/stdout_to_stderr.h"

template <class Act>
void expect_refusal(Act act, std::string const& message) {
  EXPECT_EXIT((stdout_to_stderr(), act()), testing::ExitedWithCode(1), message) << message;
}
