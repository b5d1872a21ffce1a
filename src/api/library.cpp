// What concerns the library as a whole: version, texts of statuses, the instruction set in use.
#include <cstring>
#include <iterator>

#include "levels/cpu_level.h"
#include "vidproc/vidproc.h"

namespace {

#define VIDPROC_TEXT(value) #value
#define VIDPROC_VERSION_TEXT(major, minor, patch) VIDPROC_TEXT(major) "." VIDPROC_TEXT(minor) "." VIDPROC_TEXT(patch)

constexpr const char* kStatusTexts[] = {
    "success",        "invalid argument",     "not supported",    "out of memory",
    "not configured", "frame does not match", "buffer too small", "frames overlap",
};
static_assert(std::size(kStatusTexts) == VIDPROC_ERROR_OVERLAP + 1);

}  // namespace

extern "C" {

const char* vidproc_status_text(vidproc_status status) {
  const bool isKnown = status >= 0 && static_cast<std::size_t>(status) < std::size(kStatusTexts);
  return isKnown ? kStatusTexts[status] : "unknown status";
}

uint32_t vidproc_version_number() { return VIDPROC_VERSION_NUMBER; }

const char* vidproc_version_string() {
  return VIDPROC_VERSION_TEXT(VIDPROC_VERSION_MAJOR, VIDPROC_VERSION_MINOR, VIDPROC_VERSION_PATCH);
}

const char* vidproc_level() { return vidproc::LevelName(vidproc::LevelInUse()); }

vidproc_status vidproc_cap_level(const char* name) {
  if (name == nullptr) {
    vidproc::CapLevel(vidproc::BestLevel());
    return VIDPROC_OK;
  }
  for (const vidproc::Level level : vidproc::kAllLevels) {
    if (std::strcmp(name, vidproc::LevelName(level)) != 0) continue;
    vidproc::CapLevel(level);
    return VIDPROC_OK;
  }
  return VIDPROC_ERROR_INVALID_ARGUMENT;
}

}  // extern "C"
