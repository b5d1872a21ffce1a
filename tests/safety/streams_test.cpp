// What holds for every stream of the golden table besides its bytes: its frames take no memory and do not call the
// system, and streams in other threads do not change them. scripts/check_symbols sees that the library has no lock to
// take.
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <functional>
#include <iterator>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "golden/golden_cases.h"
#include "support/allocation_log.h"
#include "support/eight_threads.h"
#include "support/failing_malloc.h"

namespace {

using golden::Case;

constexpr std::ptrdiff_t kFramesOfARoute = 10'000, kFramesOfAStream = 1'000;
constexpr int kFramesOfAPicture = 4;  ///< painting takes longer than processing

/// Kernel, exported function or kind of handle.
std::string RouteOf(const Case& item) { return item.name.substr(0, item.name.find(' ')); }

constexpr int kUnconfined = 2;

/// Takes every system call but the exit from this process; whatever confines it already stays.
bool Confine() {
  sock_filter steps[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                         BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit, 0, 1),
                         BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
                         BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS)};
  const sock_fprog filter = {std::size(steps), steps};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

/// Runs it in a process of its own, which the kernel kills at its first system call, and tells how that ended: 0 where
/// all is well.
int RunConfined(const std::function<bool()>& isWell) {
  const pid_t child = fork();
  if (child == 0) syscall(SYS_exit, Confine() ? (isWell() ? 0 : 1) : kUnconfined);
  int status = -1;
  waitpid(child, &status, 0);
  return status;
}

TEST(Streams, TakeNoMemoryAndCallNoSystemInAFrame) {
  const int planted = RunConfined([] { return syscall(SYS_getppid) > 0; });
  if (WIFEXITED(planted) && WEXITSTATUS(planted) == kUnconfined) GTEST_SKIP() << "no process can be confined here";
  ASSERT_TRUE(WIFSIGNALED(planted) && WTERMSIG(planted) == SIGSYS) << planted;
  const std::vector<Case> cases = golden::AllCases();
  for (const Case& item : cases) {
    const auto isAlike = [&](const Case& other) { return RouteOf(other) == RouteOf(item); };
    const auto frames = std::max(kFramesOfAStream, kFramesOfARoute / std::ranges::count_if(cases, isAlike) + 1);
    golden::Stream stream = item.start();
    stream.Paint(0);
    stream.Process();  // the first frame after a set-up may take memory
    const int status = RunConfined([&] {
      const testing_support::AllocationLog log;
      const testing_support::MallocCount mallocs;
      for (int n = 0; n < frames; ++n) {
        if (n % kFramesOfAPicture == 0) stream.Paint(n / kFramesOfAPicture);
        stream.Process();
      }
      return log.Total() == 0 && mallocs.Bytes() == 0;
    });
    EXPECT_EQ(status, 0) << item.name << (WIFSIGNALED(status) ? ": a system call" : ": memory was taken");
  }
}

/// Fails each request of a set-up and its first frame, one at a time. Whatever that ended, the same handle, or where
/// the exported functions ask for it another one, then gives the sums of a stream that lacked nothing, without the
/// set-up where it has had one before; none of its memory is left over.
void ExpectRecovery(const Case& item, bool isChecked, bool isChange) {
  const std::string expected = item.start().Sum();
  bool hasFailed = true;
  for (int failing = 0; hasFailed; ++failing) {
    SCOPED_TRACE(failing);
    testing_support::AllocationLog log;
    std::optional<golden::Stream> stream = item.start();
    if (isChange) stream->setUp();
    bool isTold = false;
    {
      const testing_support::FailingMalloc without(failing);
      try {
        stream->Process();
      } catch (const vidproc::Error& refusal) {
        isTold = refusal.Status() == VIDPROC_ERROR_OUT_OF_MEMORY;
      } catch (const std::bad_alloc&) {
        isTold = !isChecked;
      }
      hasFailed = testing_support::FailingMalloc::HasFailed();
    }
    EXPECT_EQ(isTold, hasFailed);
    stream->isSetUp = stream->isSetUp || isChange;
    if (hasFailed) {
      EXPECT_EQ(stream->Sum(), expected);
    }
    stream.reset();
    // kept: the processor of a second attempt never reaches the handle.
    if (failing == 0) testing_support::Processor(static_cast<VideoProcessor*>(log.Only(sizeof(VideoProcessor))));
    EXPECT_EQ(log.Held(), 0);
  }
}

TEST(Streams, RecoverWhereMemoryIsOutOnce) {
  testing::internal::CaptureStderr();  // where noise is told to lack memory
  for (const Case& item : golden::AllCases()) {
    SCOPED_TRACE(item.name);
    const std::string route = RouteOf(item);
    const bool isChecked = route == "pre" || route == "post" || route == "exposure";
    ExpectRecovery(item, isChecked, false);
    if (isChecked) ExpectRecovery(item, isChecked, true);
  }
  testing::internal::GetCapturedStderr();
}

TEST(Streams, DoNotDisturbEachOtherInEightThreads) {
  const std::vector<Case> cases = golden::AllCases();
  const std::vector<std::string> lines = golden::KeptLines();
  ASSERT_EQ(lines.size(), cases.size());
  testing_support::RunInEightThreads(cases.size(),
                                     [&](std::size_t i) { EXPECT_EQ(golden::LineOf(cases[i]), lines[i]); });
}

}  // namespace
