// SPDX-License-Identifier: GPL-2.0-or-later
// Runs the tests inside a libobs that draws on the display; blocks that are left at its end fail the program.
#include <gtest/gtest.h>

#include <cstdio>
#include <exception>

#include "studio.h"

int main(int argc, char** argv) try {
  testing::InitGoogleTest(&argc, argv);
  vidproc_obs_tests::StartStudio();
  const int result = RUN_ALL_TESTS();
  const long left = vidproc_obs_tests::EndStudio();
  if (left != 0) std::fprintf(stderr, "%ld blocks of libobs are left\n", left);
  return result != 0 || left != 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
