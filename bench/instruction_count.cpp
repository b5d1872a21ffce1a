// Runs a frame of one contestant inside CountedFrame, for a profiler that counts instructions in there only:
//
//   valgrind --tool=callgrind --toggle-collect=CountedFrame vidproc_instruction_count NAME [FRAMES]
//
// where NAME is one of vidproc_bench's. Without NAME it lists them. FRAMES frames, each another one of the scene, run
// one after the other; without it one does.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <utility>

#include "contest.h"

namespace {

struct Entry {
  bench::Contest contest;
  std::function<bench::Run()> make;
};

std::map<std::string, Entry>& Entries() {
  static std::map<std::string, Entry> entries;
  return entries;
}

}  // namespace

extern "C" [[gnu::noinline]] void CountedFrame(const bench::Run& run, const std::uint8_t* source,
                                               std::uint8_t* destination) {
  run(source, destination);
}

void bench::Enter(const Contest& contest, const std::string& contestant, std::function<Run()> make) {
  Entries()[Name(contest, contestant)] = {contest, std::move(make)};
}

int main(int argc, char** argv) {
  if (argc != 2 && argc != 3) {
    for (const auto& [name, entry] : Entries()) std::puts(name.c_str());
    return 0;
  }
  const auto found = Entries().find(argv[1]);
  if (found == Entries().end()) {
    std::fprintf(stderr, "no contestant %s\n", argv[1]);
    return 1;
  }
  const bench::Contest& contest = found->second.contest;
  const auto frame = [&](int index) { return bench::Frame(contest.format, contest.in, index).data(); };
  const bench::Run run = found->second.make();
  bench::Bytes destination(bench::FrameBytes(contest.format, contest.out));
  // The first frame meets no history and no plan.
  run(frame(0), destination.data());
  const int frames = argc == 3 ? std::atoi(argv[2]) : 1;
  for (int n = 1; n <= frames; ++n) {
    if (contest.inPlace) std::memcpy(destination.data(), frame(0), destination.size());
    CountedFrame(run, frame(argc == 3 ? n : n % contest.frames), destination.data());
  }
  return 0;
}
