// Elements come from the plugin path that the tests are run with.
#include <gst/gst.h>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  gst_init(&argc, &argv);
  const int result = RUN_ALL_TESTS();
  gst_deinit();
  return result;
}
