// Lines on standard error; see errors.h.
#include "errors.h"

#include <algorithm>
#include <atomic>
#include <cstdio>

namespace vidproc::tool {
namespace {

std::atomic<bool> notesAreSilent = false;

}  // namespace

void SilenceNotes() { notesAreSilent = true; }

void Note(const std::string& text) {
  if (!notesAreSilent) PrintError("note: " + text);
}

void PrintError(const std::string& text) {
  std::string line = "vidproc: " + text;
  std::replace_if(
      line.begin(), line.end(), [](unsigned char byte) { return byte < ' ' || byte == 0x7f; }, '?');
  std::fputs((line + "\n").c_str(), stderr);
}

}  // namespace vidproc::tool
