// SPDX-License-Identifier: GPL-2.0-or-later
// What leaves the filter in libobs's own chain has the bytes of the library with the same settings and the same
// history.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "studio.h"

namespace {

using namespace vidproc_obs_tests;

constexpr Format kUyvy = {VIDEO_FORMAT_UYVY, VIDPROC_FORMAT_UYVY}, kNv12 = {VIDEO_FORMAT_NV12, VIDPROC_FORMAT_NV12};
constexpr Format kFormats[] = {kUyvy,
                               kNv12,
                               {VIDEO_FORMAT_YUY2, VIDPROC_FORMAT_YUYV},
                               {VIDEO_FORMAT_I420, VIDPROC_FORMAT_I420},
                               {VIDEO_FORMAT_I422, VIDPROC_FORMAT_I422},
                               {VIDEO_FORMAT_BGRA, 0},
                               {VIDEO_FORMAT_Y800, 0}};

/// The library's own stream of the same frames.
struct Library {
  explicit Library(const vidproc::PreOptions& settings) : options(settings) {}

  Bytes Show(const Shape& shape, unsigned number) {
    Bytes bytes = Noise(shape, number);
    if (shape.format.frame == 0) return bytes;
    options.input = options.output = shape.Info();
    pre.Configure(options);
    pre.Process(vidproc::InputOver(shape.Info(), bytes), vidproc::OutputOver(shape.Info(), bytes));
    return bytes;
  }

  vidproc::PreOptions options;
  vidproc::Pre pre;
};

TEST(Filter, GivesTheBytesOfTheLibraryAndTakesNoMemoryForAFrame) {
  vidproc::PreOptions changed("low-light");
  changed.denoise_auto = 200, changed.sharpening = 3, changed.motion_smoothing = 1, changed.denoise_taps = 16;
  const std::pair<const char*, vidproc::PreOptions> cases[] = {
      {"{}", vidproc::PreOptions("webcam")},
      {R"({"preset": "none"})", vidproc::PreOptions("none")},
      {R"({"preset": "low-light", "denoise_auto": 200, "sharpening": 3, "motion_smoothing": true, "denoise_taps": 16})",
       changed}};
  for (const auto& [settings, options] : cases) {
    Camera camera(settings);
    Library library(options);
    for (const Format& format : kFormats) {
      for (const auto& [width, height] : {std::pair{128, 72}, {320, 180}}) {
        SCOPED_TRACE(std::string(settings) + ", format " + std::to_string(format.source) + " of " +
                     std::to_string(width));
        const Shape shape{format, width, height};
        for (unsigned number = 0; number < 3; ++number) {
          ASSERT_EQ(camera.Show(shape, number), library.Show(shape, number)) << number;
          const bool mayTake = number == 0 && format.frame != 0;
          ASSERT_EQ(BlocksOfLastFrame() != 0, mayTake);
        }
      }
    }
  }
}

TEST(Filter, TakesSettingsWhileFramesFlow) {
  const Shape shape{kNv12, 128, 72};
  Camera camera(R"({"preset": "none", "temporal_strength": 120})");
  vidproc::PreOptions options("none");
  options.temporal_strength = 120;
  Library library(options);
  unsigned number = 0;
  for (const int sharpening : {0, 4, 16}) {
    camera.Set("{\"sharpening\": " + std::to_string(sharpening) + "}");
    library.options.sharpening = sharpening;
    for (int i = 0; i < 3; ++i, ++number) ASSERT_EQ(camera.Show(shape, number), library.Show(shape, number)) << number;
  }
}

TEST(Filter, ForgetsThePastWhereTimeJumps) {
  const Shape shape{kUyvy, 128, 72};
  vidproc::PreOptions options("none");
  options.temporal_strength = 120;
  constexpr std::uint64_t kMillisecond = 1'000'000, kBegin = 100'000 * kMillisecond;
  const struct {
    std::uint64_t next;
    bool forgets;
  } cases[] = {{kBegin + 1900 * kMillisecond, false}, {kBegin + 2100 * kMillisecond, true}, {kBegin - 1, true}};
  for (const auto& one : cases) {
    Camera camera(R"({"preset": "none", "temporal_strength": 120})");
    Library library(options);
    ASSERT_EQ(camera.ShowAt(kBegin, shape, 0), library.Show(shape, 0));
    if (one.forgets) library.pre.Reset();
    EXPECT_EQ(camera.ShowAt(one.next, shape, 1), library.Show(shape, 1)) << one.next;
  }
}

TEST(Filter, LogsWhatIsRefusedAndGoesOn) {
  const Shape shape{kUyvy, 128, 72}, tooWide{kUyvy, 16386, 2};
  Camera camera(R"({"preset": "none", "sharpening": 5})");
  Library library(vidproc::PreOptions("none"));
  library.options.sharpening = 5;
  TakeLog();
  ASSERT_EQ(camera.Show(shape, 0), library.Show(shape, 0));
  camera.Set(R"({"sharpening": 17})");
  ASSERT_EQ(camera.Show(shape, 1), library.Show(shape, 1));
  EXPECT_NE(TakeLog().find("sharpening is 17, allowed 0 to 16"), std::string::npos);
  camera.Set(R"({"sharpening": 5})");
  EXPECT_EQ(camera.Show(tooWide, 2), Noise(tooWide, 2));
  EXPECT_NE(TakeLog().find("width is 16386, allowed 2 to 16384"), std::string::npos);
  EXPECT_EQ(camera.Show(shape, 3), library.Show(shape, 3));
  camera.Set(R"({"preset": "nowhere", "sharpening": 5})");
  EXPECT_NE(TakeLog().find("there is no preset nowhere"), std::string::npos);
  library.options = vidproc::PreOptions(vidproc_pre_preset(0));
  library.options.sharpening = 5;
  EXPECT_EQ(camera.Show(shape, 4), library.Show(shape, 4));
}

/// A dialog as OBS Studio opens it.
struct Dialog {
  explicit Dialog(obs_source_t* filter)
      : properties(obs_source_properties(filter)), settings(obs_source_get_settings(filter)) {}
  Dialog(const Dialog&) = delete;
  Dialog& operator=(const Dialog&) = delete;
  ~Dialog() {
    obs_data_release(settings);
    obs_properties_destroy(properties);
  }

  obs_properties_t* properties;
  obs_data_t* settings;
};

TEST(Dialog, ShowsPresetAndStrengthFirstAndThenWhatTheLibraryLists) {
  const Camera camera("{}");
  const Dialog dialog(camera.Filter());
  obs_property_t* property = obs_properties_first(dialog.properties);
  EXPECT_STREQ(obs_property_name(property), "preset");
  EXPECT_STREQ(obs_property_list_item_string(property, 1), vidproc_pre_preset(1));
  ASSERT_TRUE(obs_property_next(&property));
  EXPECT_STREQ(obs_property_name(property), "denoise_auto");
  EXPECT_EQ(obs_property_int_max(property), 400);
  ASSERT_TRUE(obs_property_next(&property));
  property = obs_properties_first(obs_property_group_content(property));
  for (int number = 0; const vidproc_option* const option = vidproc_pre_option(number); ++number) {
    if (std::string(option->name) == "denoise_auto") continue;
    EXPECT_STREQ(obs_property_name(property), option->name);
    obs_property_next(&property);
  }
}

TEST(Dialog, TakesBackSettingsWhereAnotherPresetIsChosen) {
  const Shape shape{kNv12, 128, 72};
  Camera camera(R"({"preset": "low-light", "sharpening": 9, "denoise_auto": 30})");
  const Dialog dialog(camera.Filter());
  obs_property_t* const preset = obs_properties_get(dialog.properties, "preset");
  EXPECT_FALSE(obs_property_modified(preset, dialog.settings));
  EXPECT_EQ(obs_data_get_int(dialog.settings, "sharpening"), 9);
  obs_data_set_string(dialog.settings, "preset", "webcam");
  EXPECT_TRUE(obs_property_modified(preset, dialog.settings));
  const vidproc::PreOptions webcam("webcam");
  EXPECT_EQ(obs_data_get_int(dialog.settings, "sharpening"), webcam.sharpening);
  EXPECT_EQ(obs_data_get_int(dialog.settings, "denoise_auto"), webcam.denoise_auto);
  WaitForPictures();
  Library library(webcam);
  EXPECT_EQ(camera.Show(shape, 0), library.Show(shape, 0));
}

}  // namespace
